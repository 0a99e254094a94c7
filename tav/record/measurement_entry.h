// SPDX-License-Identifier: Apache-2.0
// cMeasurementEntry: one measured value of a reading: OBIS identifier, value and unit as texts, time, signature.
//
// The value stays exactly as the driver formatted it; no numeric type is imposed. The name may be any other key that a
// driver uses before the reading is filtered through the OBIS map.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/data.h>
#include <tav/framework/record.h>
#include <tav/record/meter_tav.h>

namespace tav {

class TAV_API cMeasurementEntry {
 public:
  cMeasurementEntry() = default;
  cMeasurementEntry(const std::string& name, const std::string& value, const std::string& unit, unsigned int timestamp,
                    cMeterTav::eTimeSource timesource);
  cMeasurementEntry(const cMeasurementEntry&) = default;
  cMeasurementEntry(cMeasurementEntry&&) = default;
  cMeasurementEntry& operator=(const cMeasurementEntry&) = default;
  cMeasurementEntry& operator=(cMeasurementEntry&&) = default;
  virtual ~cMeasurementEntry();

  // Leaves the signature as it is. timestamp: seconds since 1970-01-01 UTC; an empty unit: the value has none.
  void Set(const std::string& name, const std::string& value, const std::string& unit, unsigned int timestamp,
           cMeterTav::eTimeSource timesource);
  void SetName(const std::string& name) { m_name = name; }
  void SetTimeStamp(unsigned int timestamp) { m_timestamp = timestamp; }
  void SetTimesource(cMeterTav::eTimeSource timesource) { m_timesource = timesource; }
  void SetSignature(const vorn::cData& signature) { m_signature = signature; }

  const std::string& GetName() const { return m_name; }
  const std::string& GetValue() const { return m_value; }
  const std::string& GetUnit() const { return m_unit; }
  unsigned int GetTimestamp() const { return m_timestamp; }
  cMeterTav::eTimeSource GetTimesource() const { return m_timesource; }
  std::string GetTimesourceText() const;
  const vorn::cData& GetSignature() const { return m_signature; }

  // Parameters name, value, unit, timestamp, time-source (as text), signature; an empty unit or signature is left out.
  vorn::cRecord ToRecord() const;
  // One line: "{obis=1-0:1.8.0) time=2014-03-01T12:00:00Z(Meter) value=12345.6 Wh}", its brackets as they are.
  std::string ToString() const;

 private:
  friend class cMeterRecord;
  // Takes all fields from the form that ToRecord writes; what is missing becomes empty.
  void Read(const vorn::cRecord& record);

  std::string m_name;
  std::string m_value;
  std::string m_unit;
  unsigned int m_timestamp = 0;
  cMeterTav::eTimeSource m_timesource = cMeterTav::eTsUnknown;
  vorn::cData m_signature;
};

}  // namespace tav
