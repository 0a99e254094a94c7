// SPDX-License-Identifier: Apache-2.0
#include <tav/record/measurement_entry.h>

#include <tav/framework/time.h>
#include <tav/record/record_fields.h>
#include <tav/record/time_source.h>

namespace tav {

cMeasurementEntry::cMeasurementEntry(const std::string& name, const std::string& value, const std::string& unit,
                                     unsigned int timestamp, cMeterTav::eTimeSource timesource)
    : m_name(name), m_value(value), m_unit(unit), m_timestamp(timestamp), m_timesource(timesource) {}

cMeasurementEntry::~cMeasurementEntry() = default;

void cMeasurementEntry::Set(const std::string& name, const std::string& value, const std::string& unit,
                            unsigned int timestamp, cMeterTav::eTimeSource timesource) {
  m_name = name;
  m_value = value;
  m_unit = unit;
  m_timestamp = timestamp;
  m_timesource = timesource;
}

std::string cMeasurementEntry::GetTimesourceText() const { return cMeterTav::GetTimeSourceText(m_timesource); }

vorn::cRecord cMeasurementEntry::ToRecord() const {
  vorn::cRecord record;
  record.AppendTextPar("name", m_name);
  record.AppendTextPar("value", m_value);
  if (!m_unit.empty()) record.AppendTextPar("unit", m_unit);
  record.AppendUIntPar("timestamp", m_timestamp);
  record.AppendTextPar("time-source", TimeSourceText(m_timesource));
  if (!m_signature.IsEmpty()) record.AppendDataPar("signature", m_signature);
  return record;
}

std::string cMeasurementEntry::ToString() const {
  return "{obis=" + m_name + ") time=" + vorn::cTime::FromSeconds(m_timestamp, true).ToISO8601String() + "(" +
         GetTimesourceText() + ") value=" + m_value + " " + m_unit + "}";
}

void cMeasurementEntry::Read(const vorn::cRecord& record) {
  ReadText(m_name, record.GetPar("name"));
  ReadText(m_value, record.GetPar("value"));
  ReadText(m_unit, record.GetPar("unit"));
  m_timestamp = record.GetPar("timestamp").GetUInt();
  m_timesource = ReadTimeSource(record.GetPar("time-source"));
  const vorn::cRecordPar signature = record.GetPar("signature");
  if (signature.IsData() && !signature.IsEmpty()) m_signature = signature.GetData();
}

}  // namespace tav
