// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_status.h>

#include <utility>

#include <tav/record/meter_record.h>
#include <tav/record/record_fields.h>
#include <tav/record/time_source.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr unsigned int kVersion = 1;

}  // namespace

cMeterStatus::cMeterStatus(const std::string& meterID, const std::string& addr, const std::string& medium,
                           const std::string& manufactor) {
  SetMeterInfos(meterID, addr, medium, manufactor, "", "");
}

cMeterStatus& cMeterStatus::operator=(const cMeterStatus& other) {
  m_error = other.m_error;
  m_valid = other.m_valid;
  m_version = other.m_version;
  m_lastReplyReceived = other.m_lastReplyReceived;
  m_lastReplyTimesource = other.m_lastReplyTimesource;
  m_lostPackets = other.m_lostPackets;
  m_meterID = other.m_meterID;
  m_addr = other.m_addr;
  m_manufactor = other.m_manufactor;
  m_medium = other.m_medium;
  m_vendor = other.m_vendor;
  m_key = other.m_key;
  m_rssi = other.m_rssi;
  m_interfaceName = other.m_interfaceName;
  m_interfaceProtocol = other.m_interfaceProtocol;
  m_interfaceOptions = other.m_interfaceOptions;
  m_status = other.m_status;
  m_encryption = other.m_encryption;
  m_softwareVersion = other.m_softwareVersion;
  m_hardwareVersion = other.m_hardwareVersion;
  return *this;
}

void cMeterStatus::Init() {
  m_valid = false;
  m_version = kVersion;
  m_activation = true;
  m_lastReplyReceived = 0;
  m_lostPackets = 0;
  m_rssi = 0;
  m_vendor.clear();
  m_key.clear();
}

void cMeterStatus::SetMeterInfos(const std::string& meterID, const std::string& addr, const std::string& medium,
                                 const std::string& manufactor, const std::string& vendor, const std::string& key) {
  m_meterID = meterID;
  m_addr = addr;
  m_medium = medium;
  m_manufactor = manufactor;
  m_vendor = vendor;
  m_key = key;
  m_valid = true;
}

void cMeterStatus::SetLastReplyReceived(unsigned int ts, cMeterTav::eTimeSource tsrc) {
  m_lastReplyReceived = ts;
  m_lastReplyTimesource = tsrc;
}

void cMeterStatus::SetInterfaceInfo(const std::string& name, const std::string& protocol, const std::string& options) {
  m_interfaceName = name;
  m_interfaceProtocol = protocol;
  m_interfaceOptions = options;
}

vorn::cRecord cMeterStatus::ToRecord() const {
  vorn::cRecord record;
  if (!m_valid) return record;
  record.AppendUIntPar("version", m_version);
  record.AppendUIntPar("last-reply-received", m_lastReplyReceived);
  record.AppendTextPar("last-reply-received-timesource", TimeSourceText(m_lastReplyTimesource));
  record.AppendUIntPar("lost-packets", m_lostPackets);
  AppendUnlessEmpty(record, "meterID", m_meterID);
  AppendUnlessEmpty(record, "addr", m_addr);
  AppendUnlessEmpty(record, "manufactor", m_manufactor);
  AppendUnlessEmpty(record, "medium", m_medium);
  AppendUnlessEmpty(record, "status", m_status);
  record.AppendIntPar("rssi", m_rssi);
  AppendUnlessEmpty(record, "interface-name", m_interfaceName);
  AppendUnlessEmpty(record, "interface-protocol", m_interfaceProtocol);
  AppendUnlessEmpty(record, "interface-options", m_interfaceOptions);
  AppendUnlessEmpty(record, "vendor", m_vendor);
  AppendUnlessEmpty(record, "key", m_key);
  AppendUnlessEmpty(record, "encryption", m_encryption);
  AppendUnlessEmpty(record, "software-version", m_softwareVersion);
  AppendUnlessEmpty(record, "hardware-version", m_hardwareVersion);
  record.AppendBoolPar("activation", m_activation);
  return record;
}

vorn::cRecord cMeterStatus::ToRecordWithMeterRec(const cMeterRecord& rec) const {
  vorn::cRecord record = ToRecord();
  if (m_valid) record.AppendRecordPar("meter-rec", rec.ToRecord());
  return record;
}

// By value, as the interface has it.
bool cMeterStatus::FromRecord(vorn::cRecord rec) {  // NOLINT(performance-unnecessary-value-param)
  Init();
  m_version = rec.GetUIntPar("version");
  if (m_version != kVersion) {
    // Readers of the log know the line by the meter record's name.
    vorn::Trace(UnitTAV(), 2, "MeterRecord: unknown version");
    m_error = "unknown message version";
    return false;
  }
  std::string fault = ParFault(rec.GetPar("meterID"), vorn::eParText, "meterID");
  if (!fault.empty()) {
    vorn::Trace(UnitTAV(), 2, "MeterStatus: syntax error (", fault, ")");
    m_error = std::move(fault);
    return true;
  }
  ReadFields(rec);
  m_valid = true;
  return true;
}

void cMeterStatus::ReadFields(const vorn::cRecord& rec) {
  m_lastReplyReceived = rec.GetPar("last-reply-received").GetUInt();
  const vorn::cRecordPar source = rec.GetPar("last-reply-received-timesource");
  m_lastReplyTimesource = source.IsEmpty() ? cMeterTav::eTsUnknown : ReadTimeSource(source);
  m_lostPackets = rec.GetPar("lost-packets").GetUInt();
  ReadText(m_meterID, rec.GetPar("meterID"));
  ReadText(m_addr, rec.GetPar("addr"));
  ReadText(m_manufactor, rec.GetPar("manufactor"));
  ReadText(m_medium, rec.GetPar("medium"));
  ReadText(m_status, rec.GetPar("status"));
  m_rssi = rec.GetPar("rssi").GetInt();
  ReadText(m_interfaceName, rec.GetPar("interface-name"));
  ReadText(m_interfaceProtocol, rec.GetPar("interface-protocol"));
  ReadText(m_interfaceOptions, rec.GetPar("interface-options"));
  ReadText(m_vendor, rec.GetPar("vendor"));
  ReadText(m_key, rec.GetPar("key"));
  m_encryption.clear();  // goes to the service, never comes back
  ReadText(m_softwareVersion, rec.GetPar("software-version"));
  ReadText(m_hardwareVersion, rec.GetPar("hardware-version"));
  m_activation = rec.GetPar("activation").GetBool();
  const vorn::cRecordPar meterRec = rec.GetPar("meter-rec");
  if (!meterRec.IsEmpty()) meterRec.GetRecord(m_meterRec);
}

std::string cMeterStatus::ToString() const {
  return m_valid ? "meterID=" + m_meterID + " (" + m_addr + ") status=" + m_status : "invalid";
}

}  // namespace tav
