// SPDX-License-Identifier: Apache-2.0
// Readings and record forms that the tests of cMeterRecord share.
#pragma once

#include <string>
#include <vector>

#include <tav/record/meter_record.h>

namespace meter_record_fixture {

using tav::cMeasurementEntry;
using tav::cMeterRecord;
using tav::cMeterTav;

inline constexpr unsigned int kNoon = 1393675200;  // 2014-03-01T12:00:00Z

inline cMeasurementEntry Entry(const std::string& name, const std::string& value = "1") {
  return {name, value, "Wh", kNoon, cMeterTav::eTsMeter};
}

inline vorn::cData Bytes(const std::string& bytes) { return vorn::cData(bytes); }

inline cMeterRecord Bare() { return {"ehzif", "EMH", "E", "4711", "12", "ok", kNoon, cMeterTav::eTsMeterUtc, 99}; }

// Every field that a driver can set has a value.
inline cMeterRecord Full() {
  cMeterRecord record = Bare();
  record.SetRSSI(-70);
  record.SetRaw(Bytes("\x1B\x1B"));
  record.SetLearning(true);
  record.SetEventRaster(900);
  record.SetInterfaceInfo("RS485-1", "SML", "baud=9600,Learn,");
  record.AddMeasurementEntry(Entry("1-0:1.8.0", "12345.6"));
  cMeasurementEntry second = Entry("1-0:2.8.0", "7");
  second.SetSignature(Bytes("sig"));
  record.AddMeasurementEntry(second);
  return record;
}

// The least that is read.
inline vorn::cRecord Form(const std::vector<vorn::cRecord>& entries) {
  vorn::cRecord measurement;
  for (const vorn::cRecord& entry : entries) measurement.AppendRecordPar("entry", entry);
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("meterID", "4711");
  form.AppendRecordPar("measurement", measurement);
  return form;
}
inline vorn::cRecord Form() { return Form({Entry("1-0:1.8.0").ToRecord()}); }

inline std::vector<std::string> Names(const cMeterRecord& record) {
  std::vector<std::string> names;
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries()) names.push_back(entry.GetName());
  return names;
}

}  // namespace meter_record_fixture
