// SPDX-License-Identifier: Apache-2.0
// cMeterStatus: the state of one meter as the gateway sees it: identity, last answer, lost packets, status text, radio
// strength, interface, encryption, versions, activation.
//
// Valid once its identity was set or a record was read; a status that is not valid has an empty record form.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/record.h>
#include <tav/record/meter_tav.h>

namespace tav {

class cMeterRecord;

class TAV_API cMeterStatus {
 public:
  cMeterStatus() = default;
  cMeterStatus(const std::string& meterID, const std::string& addr, const std::string& medium,
               const std::string& manufactor);
  cMeterStatus(const cMeterStatus&) = default;
  // Leaves activation and the stored meter record as they are: they belong to the place, not to the reading.
  cMeterStatus& operator=(const cMeterStatus& other);
  ~cMeterStatus() = default;

  // Resets the flags, the numbers, vendor and key; all other texts, the time source and the stored record stay.
  void Init();
  void SetMeterInfos(const std::string& meterID, const std::string& addr, const std::string& medium,
                     const std::string& manufactor, const std::string& vendor, const std::string& key);
  void SetStatus(const std::string& status) { m_status = status; }
  void SetActivation(bool activation) { m_activation = activation; }
  void SetRSSI(int rssi) { m_rssi = rssi; }
  // ts: seconds since 1970-01-01 UTC.
  void SetLastReplyReceived(unsigned int ts, cMeterTav::eTimeSource tsrc);
  void SetInterfaceInfo(const std::string& name, const std::string& protocol, const std::string& options);
  // Known to the one who keeps the status, not to a reading.
  void SetLostPackets(unsigned int lostPackets) { m_lostPackets = lostPackets; }
  void SetEncryption(const std::string& encryption) { m_encryption = encryption; }
  void SetSoftwareVersion(const std::string& version) { m_softwareVersion = version; }
  void SetHardwareVersion(const std::string& version) { m_hardwareVersion = version; }

  vorn::cRecord ToRecord() const;
  // With the reading as nested record "meter-rec".
  vorn::cRecord ToRecordWithMeterRec(const cMeterRecord& rec) const;
  // False for an unknown version only. A missing or bad meterID gives true and leaves the status not valid: ask
  // IsValid. Encryption is never taken from a record, and an absent "activation" reads as not activated.
  bool FromRecord(vorn::cRecord rec);
  // "meterID=... (address) status=...", or "invalid".
  std::string ToString() const;

  // What the last FromRecord found wrong; not cleared by a later success.
  const std::string& GetError() const { return m_error; }
  bool IsValid() const { return m_valid; }
  unsigned int GetVersion() const { return m_version; }
  bool GetActivation() const { return m_activation; }
  unsigned int GetLastReplyReceived() const { return m_lastReplyReceived; }
  cMeterTav::eTimeSource GetLastReplyTimesource() const { return m_lastReplyTimesource; }
  unsigned int GetLostPackets() const { return m_lostPackets; }
  const std::string& GetMeterID() const { return m_meterID; }
  const std::string& GetAddr() const { return m_addr; }
  const std::string& GetManufactor() const { return m_manufactor; }
  const std::string& GetMedium() const { return m_medium; }
  const std::string& GetVendor() const { return m_vendor; }
  const std::string& GetKey() const { return m_key; }
  const vorn::cRecord& GetMeterRec() const { return m_meterRec; }
  int GetRSSI() const { return m_rssi; }
  const std::string& GetInterfaceName() const { return m_interfaceName; }
  const std::string& GetInterfaceProtocol() const { return m_interfaceProtocol; }
  const std::string& GetInterfaceOptions() const { return m_interfaceOptions; }
  const std::string& GetStatus() const { return m_status; }
  const std::string& GetEncryption() const { return m_encryption; }
  const std::string& GetSoftwareVersion() const { return m_softwareVersion; }
  const std::string& GetHardwareVersion() const { return m_hardwareVersion; }

 private:
  void ReadFields(const vorn::cRecord& rec);

  std::string m_error;
  bool m_valid = false;
  unsigned int m_version = 1;
  bool m_activation = true;
  unsigned int m_lastReplyReceived = 0;
  cMeterTav::eTimeSource m_lastReplyTimesource = cMeterTav::eTsUnknown;
  unsigned int m_lostPackets = 0;
  std::string m_meterID;
  std::string m_addr;
  std::string m_manufactor;
  std::string m_medium;
  std::string m_vendor;
  std::string m_key;
  vorn::cRecord m_meterRec;
  int m_rssi = 0;
  std::string m_interfaceName;
  std::string m_interfaceProtocol;
  std::string m_interfaceOptions;
  std::string m_status;
  std::string m_encryption;
  std::string m_softwareVersion;
  std::string m_hardwareVersion;
};

}  // namespace tav
