// SPDX-License-Identifier: Apache-2.0
// cObisMap: the gateway's OBIS mapping rules, and the questions asked of them: which rule names an identifier, and
// which one applies to a value read over M-Bus, DLMS or Modbus.
//
// Every lookup goes over the rules in the order of their IDs; the first match, so the smallest ID, wins. It hands out a
// copy by cObisMapEntry's assignment, and leaves the target untouched and gives false when nothing matches.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <tav/export.h>
#include <tav/framework/data.h>
#include <tav/framework/map.h>
#include <tav/framework/record.h>
#include <tav/obis/obis_map_entry.h>

namespace tav {

class TAV_API cObisMap {
 public:
  cObisMap() = default;
  cObisMap(const cObisMap& other);
  cObisMap& operator=(const cObisMap& other);
  virtual ~cObisMap();

  // Stores a copy; false, and nothing changed, when there is a rule of that ID.
  bool Add(const cObisMapEntry& entry);
  // Stores a copy in place of a rule of that ID; always true.
  bool Set(const cObisMapEntry& entry);
  // Removes the rule of that ID, nothing else of the entry is looked at; true whether or not there was one.
  bool Remove(const cObisMapEntry& entry);
  bool Remove(unsigned long long id);
  void Clear();

  // A neutral F group of the request is dropped first. withoutChannel: channel and F group do not count. The copy bears
  // the F group of the request.
  bool GetEntryByObisId(const std::string& obis, cObisMapEntry& entry, bool withoutChannel) const;
  // The second text of this and of the Modbus lookup is reserved.
  bool GetEntryByDibVibFromMBUS(const std::string& meterAddr, const std::string& spare, const std::string& medium,
                                const vorn::cData& dib, const vorn::cData& vib, cObisMapEntry& entry) const;
  // The request is taken as it is, neutral F group included.
  bool GetEntryByObisIdFromDLMS(const std::string& obis, cObisMapEntry& entry) const;
  bool GetEntryFromMODBUS(const std::string& meterAddr, const std::string& spare, const std::string& medium,
                          const std::string& reg, cObisMapEntry& entry) const;

  // One record parameter "entry" a rule.
  vorn::cRecord ToRecord() const;
  // Adds the rules of the form that ToRecord writes, inside a record parameter "obis-map"; a later rule of an ID
  // replaces an earlier one, bad ones are left out. The map is not cleared first.
  void FromRecord(const vorn::cRecord& rec);
  // The rules' texts joined by "; ".
  virtual std::string ToString() const;

  const vorn::cMap<unsigned long long, cObisMapEntry>& GetEntries() const { return m_entries; }

 private:
  // What a lookup goes over: a rule's texts as numbers, side by side in the order of the IDs, so that only rules that
  // are likely to match are touched.
  struct cRow {
    std::uint32_t obis;
    std::uint32_t obisWithoutChannel;
    std::uint32_t blocks;  // dif and vif
    std::uint32_t reg;
    const cObisMapEntry* entry;
  };
  using Rows = std::vector<cRow>;

  static cRow MakeRow(const cObisMapEntry& entry);
  Rows::iterator RowAt(unsigned long long id);
  // The first rule with that number that a predicate takes, null when there is none.
  template <typename Matches>
  const cObisMapEntry* Find(std::uint32_t cRow::*key, std::uint32_t wanted, const Matches& matches) const;

  vorn::cMap<unsigned long long, cObisMapEntry> m_entries;
  Rows m_rows;
};

}  // namespace tav
