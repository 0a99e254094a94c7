// SPDX-License-Identifier: Apache-2.0
// cObisMapEntry: one rule of the OBIS map: which identifier and name a value read over M-Bus, DLMS or Modbus is to
// carry.
//
// The rule is a mapping text of options, "protocol=mbus,meteraddr=12,dif=04,vif=03", parsed once when it is set.
// Options that the system reads: protocol, meteraddr, medium, dif and vif (M-Bus), register (Modbus); all others are
// kept too. Values are compared as texts, so dif and vif are written as vorn::cData::ToString(0) writes them: "0C", "02
// FD".
#pragma once

#include <string>
#include <vector>

#include <tav/export.h>
#include <tav/framework/map.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cObisMapEntry {
 public:
  enum eMapProtocol : int {
    eMapProtoNone = 0,     // no option "protocol"
    eMapProtoUnknown = 1,  // any other text; Set refuses it
    eMapProtoMbus = 2,     // "mbus"
    eMapProtoDlms = 3,     // "dlms"
    eMapProtoModbus = 4,   // "modbus"
  };

  cObisMapEntry() = default;
  // Set, its result dropped: an entry whose GetObisID() is empty was refused.
  cObisMapEntry(unsigned long long id, const std::string& name, const std::string& obis, const std::string& map);
  cObisMapEntry(const cObisMapEntry&) = default;
  // Leaves the error text as it is.
  cObisMapEntry& operator=(const cObisMapEntry& other);
  virtual ~cObisMapEntry();

  // id: the key in the map. False with the reason in GetError(): "missing parameters", "obis-id invalid", "syntax error
  // in mapping" or "unknown protocol"; the last two leave the new options behind. A later success keeps the error text.
  bool Set(unsigned long long id, const std::string& name, const std::string& obis, const std::string& map);
  // Takes the F group of a requested identifier in place of the entry's own.
  void CorrectVV(const std::string& obis);

  // Parameters ID, name, obis, map.
  vorn::cRecord ToRecord() const;
  // False, the entry untouched, when one of the four is missing or empty (an empty map too, which Set accepts).
  bool FromRecord(const vorn::cRecord& rec);
  // Identifier, blank, name; a blank and the mapping text unless that is empty.
  virtual std::string ToString() const;

  unsigned long long GetID() const { return m_id; }
  const std::string& GetName() const { return m_name; }
  const std::string& GetObisID() const { return m_obis; }
  // ObisWithoutChannel of it.
  const std::string& GetObisIDWithoutChannel() const { return m_obisWithoutChannel; }
  const std::string& GetMap() const { return m_map; }
  const std::string& GetError() const { return m_error; }
  eMapProtocol GetProtocol() const { return m_protocol; }
  const vorn::cMap<std::string, std::string>& GetMapOptions() const { return m_options; }
  // Empty when there is no such option.
  std::string GetMapOption(const std::string& key) const;
  // As atoi reads it; def when the option is absent or empty.
  int GetMapOptionAsInt(const std::string& key, int def) const;
  // Whether the rule is for that medium or meter: its option is absent, empty or equal.
  bool IsMedium(const std::string& medium) const { return IsFree(m_keys.medium) || m_keys.medium == medium; }
  bool IsMeterAddr(const std::string& addr) const { return IsFree(m_keys.meterAddr) || m_keys.meterAddr == addr; }
  // The options of the lookups; empty when absent.
  const std::string& GetDif() const { return m_keys.dif; }
  const std::string& GetVif() const { return m_keys.vif; }
  const std::string& GetRegister() const { return m_keys.reg; }

 private:
  // The options that lookups compare, taken out so that a scan over all rules compares texts and nothing else.
  struct cKeys {
    std::string meterAddr;
    std::string medium;
    std::string dif;
    std::string vif;
    std::string reg;
  };

  static bool IsFree(const std::string& option) { return option.empty(); }
  bool Fail(const char* error);
  void TakeOptions(const std::string& map);
  bool TakeProtocol();

  unsigned long long m_id = 0;
  std::string m_name;
  std::string m_obis;
  std::string m_obisWithoutChannel;
  std::string m_map;
  std::string m_error;
  vorn::cMap<std::string, std::string> m_options;
  eMapProtocol m_protocol = eMapProtoNone;
  cKeys m_keys;
};

// The channel-free form of an OBIS text: group B as 0, any group F as the text "nn". Without a head A-B: it is "1-0";
// empty for a text without a dot behind its head. "1-2:1.8.0*101" gives "1-0:1.8.0*nn", "1.8.0" gives "1-0:1.8.0".
TAV_API std::string ObisWithoutChannel(const std::string& obis);

}  // namespace tav
