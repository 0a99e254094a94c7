// SPDX-License-Identifier: Apache-2.0
// cObisMapEntry: one rule of the OBIS map: which identifier and name a value read over M-Bus, DLMS or Modbus is to
// carry.
//
// The rule is a mapping text of options, "protocol=mbus,meteraddr=12,dif=04,vif=03", judged once when it is set. Very
// many rules may be kept, so an option is found in the text when it is asked for, without a copy.
// Options that the system reads: protocol, meteraddr, medium, dif and vif (M-Bus), register (Modbus); all others are
// kept too. Values are compared as texts, so dif and vif are written as vorn::cData::ToString(0) writes them: "0C", "02
// FD".
#pragma once

#include <string>
#include <string_view>

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
  vorn::cMap<std::string, std::string> GetMapOptions() const;
  // Empty when there is no such option.
  std::string GetMapOption(const std::string& key) const;
  // As atoi reads it; def when the option is absent or empty.
  int GetMapOptionAsInt(const std::string& key, int def) const;
  // Whether the rule is for that medium or meter: its option is absent, empty or equal.
  bool IsMedium(const std::string& medium) const;
  bool IsMeterAddr(const std::string& addr) const;
  // The options that lookups compare, empty when absent, all found in one go. Valid until the entry is changed.
  struct cKeys {
    std::string_view meterAddr;
    std::string_view medium;
    std::string_view dif;
    std::string_view vif;
    std::string_view reg;

    // See IsMedium and IsMeterAddr.
    bool AreFor(std::string_view addr, std::string_view ofMedium) const {
      return (meterAddr.empty() || meterAddr == addr) && (medium.empty() || medium == ofMedium);
    }
  };
  cKeys GetKeys() const;

 private:
  bool Fail(const char* error);
  std::string_view FindOption(std::string_view key) const;
  const std::string& GetOptionText() const { return m_hasOtherOptions ? m_otherOptions : m_map; }

  unsigned long long m_id = 0;
  std::string m_name;
  std::string m_obis;
  std::string m_obisWithoutChannel;
  std::string m_map;
  std::string m_error;
  std::string m_otherOptions;  // that a refused mapping text has left behind, in place of those of m_map
  bool m_hasOtherOptions = false;
  eMapProtocol m_protocol = eMapProtoNone;
};

// The channel-free form of an OBIS text: group B as 0, any group F as the text "nn". Without a head A-B: it is "1-0";
// empty for a text without a dot behind its head. "1-2:1.8.0*101" gives "1-0:1.8.0*nn", "1.8.0" gives "1-0:1.8.0".
TAV_API std::string ObisWithoutChannel(const std::string& obis);

}  // namespace tav
