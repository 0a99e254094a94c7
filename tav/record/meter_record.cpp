// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_record.h>

#include <array>
#include <string_view>
#include <unordered_set>

#include <tav/framework/helper.h>
#include <tav/framework/time.h>
#include <tav/record/record_fields.h>
#include <tav/record/time_source.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr unsigned int kVersion = 1;
constexpr std::string_view kUnknownWirelessMapping = "0-0:0.0.254";

void TraceDuplicate(const cMeasurementEntry& entry) {
  vorn::Trace(UnitTAV(), 4, "AddMeasurementEntry: duplicate obis-id in ", [&] { return entry.ToString(); });
}

// The names of a list that is being read. Few are compared one by one, many are hashed: a frame holds tens of thousands
// of entries, and reading one must not hold up the loop.
class cNames {
 public:
  // False when the name is there already. The text must stay where it is.
  bool Add(const std::string& name) {
    if (name == kUnknownWirelessMapping) return true;
    return m_count < kFew ? AddToFew(name) : m_many.insert(name).second;
  }

 private:
  static constexpr std::size_t kFew = 16;

  bool AddToFew(const std::string& name) {
    for (std::size_t i = 0; i < m_count; ++i)
      if (m_few[i] == name) return false;
    m_few[m_count++] = name;
    if (m_count == kFew) m_many.insert(m_few.begin(), m_few.end());
    return true;
  }

  std::array<std::string_view, kFew> m_few;
  std::size_t m_count = 0;
  std::unordered_set<std::string_view> m_many;
};

}  // namespace

cMeterRecord::cMeterRecord(const std::string& driver, const std::string& manufactor, const std::string& medium,
                           const std::string& meterID, const std::string& addr, const std::string& status,
                           unsigned int timestamp, cMeterTav::eTimeSource timesource, unsigned int osc) {
  Set(driver, manufactor, medium, meterID, addr, status, timestamp, timesource, osc);
}

cMeterRecord::~cMeterRecord() = default;

void cMeterRecord::Init() {
  m_valid = false;
  m_version = kVersion;
  m_rssi = 0;
  m_timestamp = 0;
  m_timesource = cMeterTav::eTsUnknown;
  m_osc = 0;
  m_learning = false;
  m_eventRaster = 0;
  m_storeUtc = 0;
  m_storeOsc = 0;
  m_entries.clear();
}

void cMeterRecord::Set(const std::string& driver, const std::string& manufactor, const std::string& medium,
                       const std::string& meterID, const std::string& addr, const std::string& status,
                       unsigned int timestamp, cMeterTav::eTimeSource timesource, unsigned int osc) {
  m_driver = driver;
  m_manufactor = manufactor;
  m_medium = medium;
  m_meterID = meterID;
  m_addr = addr;
  m_status = status;
  m_timestamp = timestamp;
  m_timesource = timesource;
  m_osc = osc;
  m_valid = true;
}

void cMeterRecord::SetTimeStamp(unsigned int ts, bool all) {
  m_timestamp = ts;
  if (!all) return;
  for (cMeasurementEntry& entry : m_entries) entry.SetTimeStamp(ts);
}

void cMeterRecord::SetTimesource(cMeterTav::eTimeSource ts, bool all) {
  m_timesource = ts;
  if (!all) return;
  for (cMeasurementEntry& entry : m_entries) entry.SetTimesource(ts);
}

void cMeterRecord::SetInterfaceInfo(const std::string& name, const std::string& protocol, const std::string& options) {
  m_interfaceName = name;
  m_interfaceProtocol = protocol;
  m_interfaceOptions = options;
}

bool cMeterRecord::AddMeasurementEntry(const cMeasurementEntry& entry) {
  for (const cMeasurementEntry& held : m_entries) {
    if (held.GetName() != entry.GetName() || held.GetName() == kUnknownWirelessMapping) continue;
    TraceDuplicate(entry);
    return false;
  }
  m_entries.push_back(entry);
  return true;
}

vorn::cRecord cMeterRecord::ToRecord() const {
  vorn::cRecord record;
  record.AppendUIntPar("version", m_version);
  AppendUnlessEmpty(record, "driver", m_driver);
  AppendUnlessEmpty(record, "meterID", m_meterID);
  AppendUnlessEmpty(record, "addr", m_addr);
  AppendUnlessEmpty(record, "manufactor", m_manufactor);
  AppendUnlessEmpty(record, "medium", m_medium);
  AppendUnlessEmpty(record, "status", m_status);
  record.AppendUIntPar("timestamp", m_timestamp);
  record.AppendTextPar("time-source", TimeSourceText(m_timesource));
  record.AppendUIntPar("osc", m_osc);
  record.AppendBoolPar("learning", m_learning);
  record.AppendIntPar("rssi", m_rssi);
  record.AppendUIntPar("store-osc", m_storeOsc);
  record.AppendUIntPar("store-utc", m_storeUtc);
  AppendUnlessEmpty(record, "interface-name", m_interfaceName);
  AppendUnlessEmpty(record, "interface-protocol", m_interfaceProtocol);
  AppendUnlessEmpty(record, "interface-options", m_interfaceOptions);
  vorn::cRecord measurement;
  for (const cMeasurementEntry& entry : m_entries) measurement.AppendRecordPar("entry", entry.ToRecord());
  if (!measurement.IsEmpty()) record.AppendRecordPar("measurement", measurement);
  if (!m_raw.IsEmpty()) record.AppendDataPar("raw", m_raw);
  if (m_eventRaster != 0) record.AppendUIntPar("event-raster", m_eventRaster);
  return record;
}

bool cMeterRecord::FromRecord(const vorn::cRecord& rec) {
  Init();
  if (rec.IsEmpty()) return false;
  m_version = rec.GetUIntPar("version");
  if (m_version != kVersion) {
    vorn::Trace(UnitTAV(), 2, "MeterRecord: unknown version");
    m_error = "unknown message version";
    return false;
  }
  std::string fault = ParFault(rec.GetPar("meterID"), vorn::eParText, "meterID");
  const vorn::cRecordPar measurement = rec.GetPar("measurement");
  if (fault.empty()) fault = ParFault(measurement, vorn::eParRecord, "measurement");
  vorn::cRecord entries;
  if (fault.empty() && !measurement.GetRecord(entries)) fault = "unknown";
  if (!fault.empty()) return Refuse(fault);
  ReadFields(rec);
  ReadEntries(entries);
  m_valid = true;
  FillMeterStatus();
  return true;
}

bool cMeterRecord::Refuse(const std::string& fault) {
  m_error = fault;
  vorn::Trace(UnitTAV(), 2, "MeterRecord: syntax error (", fault, ")");
  return false;
}

void cMeterRecord::ReadFields(const vorn::cRecord& rec) {
  ReadText(m_driver, rec.GetPar("driver"));
  ReadText(m_meterID, rec.GetPar("meterID"));
  ReadText(m_addr, rec.GetPar("addr"));
  ReadText(m_manufactor, rec.GetPar("manufactor"));
  ReadText(m_medium, rec.GetPar("medium"));
  ReadText(m_status, rec.GetPar("status"));
  m_timestamp = rec.GetPar("timestamp").GetUInt();
  m_timesource = ReadTimeSource(rec.GetPar("time-source"));
  m_osc = rec.GetPar("osc").GetUInt();
  m_learning = rec.GetBoolPar("learning");
  m_rssi = rec.GetIntPar("rssi");
  m_storeOsc = rec.GetUIntPar("store-osc");
  m_storeUtc = rec.GetUIntPar("store-utc");
  ReadOnlyText(m_interfaceName, rec.GetPar("interface-name"));
  ReadOnlyText(m_interfaceProtocol, rec.GetPar("interface-protocol"));
  ReadOnlyText(m_interfaceOptions, rec.GetPar("interface-options"));
  const vorn::cRecordPar raw = rec.GetPar("raw");
  if (raw.IsData() && !raw.IsEmpty()) m_raw = raw.GetData();
  m_eventRaster = rec.GetUIntPar("event-raster");
}

void cMeterRecord::ReadEntries(const vorn::cRecord& measurement) {
  cNames names;
  vorn::cRecord nested;
  for (vorn::cRecordPar par = measurement.GetPar("entry"); par.IsValid(); par = par.NextSame()) {
    if (!par.GetRecord(nested)) continue;
    cMeasurementEntry& entry = m_entries.emplace_back();
    entry.Read(nested);
    if (names.Add(entry.GetName())) continue;
    TraceDuplicate(entry);
    m_entries.pop_back();
  }
}

void cMeterRecord::FillMeterStatus() {
  m_meterStatus.SetMeterInfos(m_meterID, m_addr, m_medium, m_manufactor, "", "");
  m_meterStatus.SetStatus(m_status);
  m_meterStatus.SetLastReplyReceived(m_timestamp, m_timesource);
  m_meterStatus.SetInterfaceInfo(m_interfaceName, m_interfaceProtocol, m_interfaceOptions);
  m_meterStatus.SetRSSI(m_rssi);
}

cMeterStatus& cMeterRecord::GetMeterStatus() {
  if (m_meterStatus.IsValid()) return m_meterStatus;
  if (!m_status.empty()) m_meterStatus.SetStatus(m_status);
  m_meterStatus.SetLastReplyReceived(m_timestamp, m_timesource);
  m_meterStatus.SetInterfaceInfo(m_interfaceName, m_interfaceProtocol, m_interfaceOptions);
  m_meterStatus.SetRSSI(m_rssi);
  return m_meterStatus;
}

std::string cMeterRecord::ToString() const {
  std::string text = "{meterID=" + m_meterID + "(" + m_addr + ")/" + m_medium + "/" + m_manufactor;
  text +=
      ", timestamp=" + vorn::cTime::FromSeconds(m_timestamp, true).ToISO8601String() + "(" + GetTimesourceText() + ")";
  text += ", driver=" + m_driver + ", status=" + m_status;
  text += vorn::FormatString(", RSSI=%d osc=%i", m_rssi, static_cast<int>(m_osc));
  text += ", learn=";
  text += m_learning ? "true" : "false";
  text += ", intfName=" + m_interfaceName + ", intfProtocol=" + m_interfaceProtocol;
  text += ", intfOptions=" + m_interfaceOptions;
  if (m_entries.empty()) text += ", no measurement entries (all filtered)";
  for (const cMeasurementEntry& entry : m_entries) text += ", entry=" + entry.ToString();
  if (!m_raw.IsEmpty()) {
    text += vorn::FormatString(", raw[%i]=", static_cast<int>(m_raw.GetSize()));
    text += m_raw.ToString(0);
  }
  return text + "}";
}

}  // namespace tav
