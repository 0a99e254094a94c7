// SPDX-License-Identifier: Apache-2.0
// cMeterRecord: one reading of one meter: who read it, which meter, when and by which clock, its values. The spine of
// the library; its record form is the wire format of every reading.
//
// Drivers fill it and hand it to cDbCtrlIO; the receiving service rebuilds it with FromRecord. A reading without
// entries can be written but not read back: a reading carries one value at least.
#pragma once

#include <list>
#include <string>

#include <tav/export.h>
#include <tav/framework/data.h>
#include <tav/framework/record.h>
#include <tav/record/measurement_entry.h>
#include <tav/record/meter_status.h>
#include <tav/record/meter_tav.h>

namespace tav {

class cObisMap;

class TAV_API cMeterRecord {
 public:
  cMeterRecord() = default;
  // timestamp: seconds since 1970-01-01 UTC; osc: vorn::GetOSC() when the reading was made.
  cMeterRecord(const std::string& driver, const std::string& manufactor, const std::string& medium,
               const std::string& meterID, const std::string& addr, const std::string& status, unsigned int timestamp,
               cMeterTav::eTimeSource timesource, unsigned int osc);
  cMeterRecord(const cMeterRecord&) = default;
  cMeterRecord(cMeterRecord&&) = default;
  // The embedded status as cMeterStatus assigns.
  cMeterRecord& operator=(const cMeterRecord&) = default;
  cMeterRecord& operator=(cMeterRecord&&) = default;
  virtual ~cMeterRecord();

  // Resets flags, numbers and entries; texts, raw bytes, error and the embedded status stay.
  void Init();
  void Set(const std::string& driver, const std::string& manufactor, const std::string& medium,
           const std::string& meterID, const std::string& addr, const std::string& status, unsigned int timestamp,
           cMeterTav::eTimeSource timesource, unsigned int osc);

  void SetMeterID(const std::string& meterID) { m_meterID = meterID; }
  void SetStatus(const std::string& status) { m_status = status; }
  void SetVersion(unsigned int version) { m_version = version; }
  void SetOSC(unsigned int osc) { m_osc = osc; }
  void SetEventRaster(unsigned int eventRaster) { m_eventRaster = eventRaster; }  // 0: none
  void SetRSSI(int rssi) { m_rssi = rssi; }
  void SetLearning(bool learning) { m_learning = learning; }
  // Data replaces the raw bytes, a text is appended to them.
  void SetRaw(const vorn::cData& raw) { m_raw = raw; }
  void SetRaw(const std::string& raw) { m_raw.Append(raw.data(), raw.size()); }
  // all: of every entry already there as well.
  void SetTimeStamp(unsigned int ts, bool all);
  void SetTimesource(cMeterTav::eTimeSource ts, bool all);
  void SetInterfaceInfo(const std::string& name, const std::string& protocol, const std::string& options);

  // False, with a trace, for an entry of a name that is there already. Entries named 0-0:0.0.254 (unknown wireless
  // M-Bus mapping) may come any number of times.
  bool AddMeasurementEntry(const cMeasurementEntry& entry);
  // Replaces the whole list, unchecked.
  void AddMeasurementList(const std::list<cMeasurementEntry>& entries) { m_entries = entries; }

  // Into out: this reading with only the entries that the map knows, under the map's identifiers without channel. The
  // renaming is done on this record's entries too; keepNames: none. The place holders 0-0:0.0.0, 0-0:0.0.1 and
  // 0-0:0.0.254 stay, known or not.
  void ProcessFilter(const cObisMap& map, cMeterRecord& out, bool keepNames);
  // From the record form of an SML get-list response (BSI TR-03109 SML, SML_GetList.Res). False when "serverId" or
  // "valList" is missing or malformed; a bad entry alone is left out.
  bool FromSmlGetListRes(const std::string& driver, const std::string& medium, cMeterTav::eTimeSource timesource,
                         unsigned int timestamp, const vorn::cRecord& res);

  vorn::cRecord ToRecord() const;
  // False with the reason in GetError(), except for an empty record, which leaves the error as it was.
  bool FromRecord(const vorn::cRecord& rec);
  std::string ToString() const;

  // The embedded status; one that is not valid yet takes what the reading knows, except the identity.
  cMeterStatus& GetMeterStatus();

  // Not cleared by a later success.
  const std::string& GetError() const { return m_error; }
  bool IsValid() const { return m_valid; }
  unsigned int GetVersion() const { return m_version; }
  const std::string& GetDriver() const { return m_driver; }
  std::string& GetMeterID() { return m_meterID; }
  const std::string& GetMeterID() const { return m_meterID; }
  const std::string& GetAddr() const { return m_addr; }
  const std::string& GetManufactor() const { return m_manufactor; }
  const std::string& GetMedium() const { return m_medium; }
  const std::string& GetStatus() const { return m_status; }
  int GetRSSI() const { return m_rssi; }
  unsigned int GetTimestamp() const { return m_timestamp; }
  cMeterTav::eTimeSource GetTimesource() const { return m_timesource; }
  std::string GetTimesourceText() const { return cMeterTav::GetTimeSourceText(m_timesource); }
  unsigned int GetOSC() const { return m_osc; }
  const vorn::cData& GetRaw() const { return m_raw; }
  bool GetLearning() const { return m_learning; }
  unsigned int GetEventRaster() const { return m_eventRaster; }
  const std::string& GetInterfaceName() const { return m_interfaceName; }
  const std::string& GetInterfaceProtocol() const { return m_interfaceProtocol; }
  const std::string& GetInterfaceOptions() const { return m_interfaceOptions; }
  unsigned int GetStoreUtc() const { return m_storeUtc; }
  unsigned int GetStoreOsc() const { return m_storeOsc; }
  const std::list<cMeasurementEntry>& GetMeasurementEntries() const { return m_entries; }

 private:
  bool Refuse(const std::string& fault);
  void ReadFields(const vorn::cRecord& rec);
  void ReadEntries(const vorn::cRecord& measurement);
  void FillMeterStatus();
  void TakeSmlValue(const vorn::cRecord& entry);
  void AddSmlEntry(const vorn::cRecord& value, unsigned long long obis, const std::string& text, unsigned int unit);

  cMeterStatus m_meterStatus;
  std::string m_error;
  bool m_valid = false;
  unsigned int m_version = 1;
  std::string m_driver;
  std::string m_meterID;
  std::string m_addr;
  std::string m_manufactor;
  std::string m_medium;
  std::string m_status;
  int m_rssi = 0;
  unsigned int m_timestamp = 0;
  cMeterTav::eTimeSource m_timesource = cMeterTav::eTsUnknown;
  unsigned int m_osc = 0;
  vorn::cData m_raw;
  bool m_learning = false;
  unsigned int m_eventRaster = 0;
  std::string m_interfaceName;
  std::string m_interfaceProtocol;
  std::string m_interfaceOptions;
  unsigned int m_storeUtc = 0;  // carried for the storing service
  unsigned int m_storeOsc = 0;
  std::list<cMeasurementEntry> m_entries;
};

}  // namespace tav
