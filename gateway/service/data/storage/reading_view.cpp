// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/reading_view.h>

#include <tav/record/meter_tav.h>

namespace tav::data {

namespace {

// Entries of an unmapped value may repeat: they are no OBIS identifier yet.
constexpr std::string_view kUnmapped = "0-0:0.0.254";

// Below that comparing with each beats hashing.
constexpr std::size_t kManyEntries = 24;

bool Has(const vorn::cRecordPar& parameter, vorn::eParType type) {
  return parameter.GetType() == type && !parameter.IsEmpty();
}

std::string_view BytesOf(const vorn::cRecordPar& parameter, vorn::eParType type) {
  return Has(parameter, type) ? parameter.GetBytesView() : std::string_view();
}

unsigned int UIntOf(const vorn::cRecordPar& parameter) {
  return Has(parameter, vorn::eParUInt) ? parameter.GetUInt() : 0;
}

}  // namespace

bool cReadingView::Read(const vorn::cRecord& record) {
  m_texts.clear();
  entries.clear();
  if (record.IsEmpty()) return Fail("record is empty");
  if (record.GetUIntPar("version") != 1) return Fail("unknown message version");
  if (!CheckMandatory(record)) return false;
  vorn::cRecord measurement;
  if (!record.GetPar("measurement").GetRecord(measurement)) return Fail("unknown");
  ReadFields(record);
  ReadEntries(measurement);
  m_error.clear();
  return true;
}

bool cReadingView::Fail(const char* error) {
  m_error = error;
  return false;
}

bool cReadingView::CheckMandatory(const vorn::cRecord& record) {
  const vorn::cRecordPar meter = record.GetPar("meterID");
  if (!meter.IsValid()) return Fail("meterID invalid");
  if (meter.IsEmpty()) return Fail("meterID is empty");
  if (!meter.IsText()) return Fail("bad type in meterID");
  const vorn::cRecordPar measurement = record.GetPar("measurement");
  if (!measurement.IsValid()) return Fail("measurement invalid");
  if (measurement.IsEmpty()) return Fail("measurement is empty");
  if (!measurement.IsRecord()) return Fail("bad type in measurement");
  return true;
}

void cReadingView::ReadFields(const vorn::cRecord& record) {
  manufactor = TextOf(record.GetPar("manufactor"));
  medium = TextOf(record.GetPar("medium"));
  meterId = TextOf(record.GetPar("meterID"));
  addr = TextOf(record.GetPar("addr"));
  status = TextOf(record.GetPar("status"));
  driver = TextOf(record.GetPar("driver"));
  timestamp = record.GetPar("timestamp").GetUInt();
  osc = record.GetPar("osc").GetUInt();
  raw = BytesOf(record.GetPar("raw"), vorn::eParData);
  timeSource = TimeSourceOf(record.GetPar("time-source"));
  storeOsc = UIntOf(record.GetPar("store-osc"));
  storeUtc = UIntOf(record.GetPar("store-utc"));
  learning = record.GetPar("learning").GetBool();
  interfaceName = BytesOf(record.GetPar("interface-name"), vorn::eParText);
  interfaceProtocol = BytesOf(record.GetPar("interface-protocol"), vorn::eParText);
  interfaceOptions = BytesOf(record.GetPar("interface-options"), vorn::eParText);
  eventRaster = UIntOf(record.GetPar("event-raster"));
  const vorn::cRecordPar strength = record.GetPar("rssi");
  rssi = strength.IsInt() ? strength.GetInt() : 0;
}

void cReadingView::ReadEntries(const vorn::cRecord& measurement) {
  m_names.clear();
  vorn::cRecord entry;
  for (vorn::cRecordPar at = measurement.GetPar("entry"); at.IsValid(); at = at.NextSame())
    if (at.GetRecord(entry)) ReadEntry(entry);
}

void cReadingView::ReadEntry(const vorn::cRecord& record) {
  cEntryView entry;
  entry.name = TextOf(record.GetPar("name"));
  if (!IsNew(entry.name)) return;
  entry.value = TextOf(record.GetPar("value"));
  entry.unit = TextOf(record.GetPar("unit"));
  entry.timestamp = record.GetPar("timestamp").GetUInt();
  entry.timeSource = TimeSourceOf(record.GetPar("time-source"));
  entry.signature = BytesOf(record.GetPar("signature"), vorn::eParData);
  entries.push_back(entry);
}

bool cReadingView::IsNew(std::string_view name) {
  if (name == kUnmapped) return true;
  if (entries.size() < kManyEntries) {
    for (const cEntryView& entry : entries)
      if (entry.name == name) return false;
    return true;
  }
  if (m_names.empty())
    for (const cEntryView& entry : entries) m_names.insert(entry.name);
  return m_names.insert(name).second;
}

std::string_view cReadingView::TextOf(const vorn::cRecordPar& parameter) {
  if (!parameter.IsValid() || parameter.IsText()) return parameter.GetBytesView();
  return m_texts.emplace_back(parameter.GetText());
}

unsigned int cReadingView::TimeSourceOf(const vorn::cRecordPar& parameter) {
  return cMeterTav::GetTimeSource(std::string(TextOf(parameter)));
}

}  // namespace tav::data
