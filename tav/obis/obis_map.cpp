// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_map.h>

#include <algorithm>
#include <functional>
#include <string_view>

#include <tav/record/meter_tav.h>

namespace tav {

namespace {

std::uint32_t Number(std::string_view text) { return static_cast<std::uint32_t>(std::hash<std::string_view>{}(text)); }

std::uint32_t Number(std::string_view dif, std::string_view vif) { return Number(dif) * 31 + Number(vif); }

bool Give(const cObisMapEntry* found, cObisMapEntry& entry) {
  if (found == nullptr) return false;
  entry = *found;
  return true;
}

}  // namespace

cObisMap::cRow cObisMap::MakeRow(const cObisMapEntry& entry) {
  const cObisMapEntry::cKeys keys = entry.GetKeys();
  return {Number(entry.GetObisID()), Number(entry.GetObisIDWithoutChannel()), Number(keys.dif, keys.vif),
          Number(keys.reg), &entry};
}

cObisMap::Rows::iterator cObisMap::RowAt(unsigned long long id) {
  return std::lower_bound(m_rows.begin(), m_rows.end(), id,
                          [](const cRow& row, unsigned long long wanted) { return row.entry->GetID() < wanted; });
}

template <typename Matches>
const cObisMapEntry* cObisMap::Find(std::uint32_t cRow::*key, std::uint32_t wanted, const Matches& matches) const {
  for (const cRow& row : m_rows)
    if (row.*key == wanted && matches(*row.entry)) return row.entry;
  return nullptr;
}

cObisMap::cObisMap(const cObisMap& other) : m_entries(other.m_entries) {
  m_rows.reserve(m_entries.size());
  for (const auto& [id, entry] : m_entries) m_rows.push_back(MakeRow(entry));
}

cObisMap& cObisMap::operator=(const cObisMap& other) {
  cObisMap copy(other);
  m_entries.swap(copy.m_entries);
  m_rows.swap(copy.m_rows);
  return *this;
}

cObisMap::~cObisMap() = default;

bool cObisMap::Add(const cObisMapEntry& entry) {
  const auto [place, added] = m_entries.emplace(entry.GetID(), entry);
  if (added) m_rows.insert(RowAt(entry.GetID()), MakeRow(place->second));
  return added;
}

bool cObisMap::Set(const cObisMapEntry& entry) {
  // Anew, not assigned: an assignment would leave the earlier rule's error text.
  const cObisMapEntry copy(entry);  // NOLINT(performance-unnecessary-copy-initialization)
  Remove(copy);
  return Add(copy);
}

bool cObisMap::Remove(const cObisMapEntry& entry) { return Remove(entry.GetID()); }

bool cObisMap::Remove(unsigned long long id) {
  if (!m_entries.Contains(id)) return true;
  m_rows.erase(RowAt(id));
  m_entries.Remove(id);
  return true;
}

void cObisMap::Clear() {
  m_rows.clear();
  m_entries.clear();
}

bool cObisMap::GetEntryByObisId(const std::string& obis, cObisMapEntry& entry, bool withoutChannel) const {
  const std::string normal = cMeterTav::ObisNormalize(obis);
  const std::string wanted = withoutChannel ? ObisWithoutChannel(normal) : normal;
  const auto key = withoutChannel ? &cRow::obisWithoutChannel : &cRow::obis;
  const cObisMapEntry* found = Find(key, Number(wanted), [&](const cObisMapEntry& rule) {
    return (withoutChannel ? rule.GetObisIDWithoutChannel() : rule.GetObisID()) == wanted;
  });
  if (!Give(found, entry)) return false;
  entry.CorrectVV(normal);
  return true;
}

bool cObisMap::GetEntryByDibVibFromMBUS(const std::string& meterAddr, const std::string&, const std::string& medium,
                                        const vorn::cData& dib, const vorn::cData& vib, cObisMapEntry& entry) const {
  const std::string dif = dib.ToString(0);
  const std::string vif = vib.ToString(0);
  const cObisMapEntry* found = Find(&cRow::blocks, Number(dif, vif), [&](const cObisMapEntry& rule) {
    if (rule.GetProtocol() != cObisMapEntry::eMapProtoMbus) return false;
    const cObisMapEntry::cKeys keys = rule.GetKeys();
    return keys.AreFor(meterAddr, medium) && keys.dif == dif && keys.vif == vif;
  });
  return Give(found, entry);
}

bool cObisMap::GetEntryByObisIdFromDLMS(const std::string& obis, cObisMapEntry& entry) const {
  const cObisMapEntry* found = Find(&cRow::obis, Number(obis), [&](const cObisMapEntry& rule) {
    return rule.GetProtocol() == cObisMapEntry::eMapProtoDlms && rule.GetObisID() == obis;
  });
  return Give(found, entry);
}

bool cObisMap::GetEntryFromMODBUS(const std::string& meterAddr, const std::string&, const std::string& medium,
                                  const std::string& reg, cObisMapEntry& entry) const {
  const cObisMapEntry* found = Find(&cRow::reg, Number(reg), [&](const cObisMapEntry& rule) {
    if (rule.GetProtocol() != cObisMapEntry::eMapProtoModbus) return false;
    const cObisMapEntry::cKeys keys = rule.GetKeys();
    return keys.AreFor(meterAddr, medium) && keys.reg == reg;
  });
  return Give(found, entry);
}

vorn::cRecord cObisMap::ToRecord() const {
  vorn::cRecord record;
  for (const auto& [id, entry] : m_entries) record.AppendRecordPar("entry", entry.ToRecord());
  return record;
}

void cObisMap::FromRecord(const vorn::cRecord& rec) {
  vorn::cRecord rules;
  if (!rec.GetPar("obis-map").GetRecord(rules)) return;
  // Every parameter from the first "entry" on is tried, whatever its name.
  for (vorn::cRecordPar par = rules.GetPar("entry"); par.IsValid(); par = par.Next()) {
    vorn::cRecord rule;
    cObisMapEntry entry;
    if (par.GetRecord(rule) && entry.FromRecord(rule)) Set(entry);
  }
}

std::string cObisMap::ToString() const {
  std::string text;
  for (const auto& [id, entry] : m_entries) {
    if (!text.empty()) text += "; ";
    text += entry.ToString();
  }
  return text;
}

}  // namespace tav
