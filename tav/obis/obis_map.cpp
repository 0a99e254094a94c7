// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_map.h>

#include <tav/record/meter_tav.h>

namespace tav {

namespace {

bool Give(const cObisMapEntry* found, cObisMapEntry& entry) {
  if (found == nullptr) return false;
  entry = *found;
  return true;
}

}  // namespace

template <typename Matches>
const cObisMapEntry* cObisMap::Find(const Matches& matches) const {
  for (const auto& [id, entry] : m_entries)
    if (matches(entry)) return &entry;
  return nullptr;
}

cObisMap::~cObisMap() = default;

bool cObisMap::Add(const cObisMapEntry& entry) { return m_entries.emplace(entry.GetID(), entry).second; }

bool cObisMap::Set(const cObisMapEntry& entry) {
  // Anew, not assigned: an assignment would leave the earlier rule's error text.
  const cObisMapEntry copy(entry);
  m_entries.erase(copy.GetID());
  m_entries.emplace(copy.GetID(), copy);
  return true;
}

bool cObisMap::Remove(const cObisMapEntry& entry) {
  m_entries.Remove(entry.GetID());
  return true;
}

bool cObisMap::GetEntryByObisId(const std::string& obis, cObisMapEntry& entry, bool withoutChannel) const {
  const std::string normal = cMeterTav::ObisNormalize(obis);
  const std::string wanted = withoutChannel ? ObisWithoutChannel(normal) : normal;
  const cObisMapEntry* found = Find([&](const cObisMapEntry& rule) {
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
  return Give(Find([&](const cObisMapEntry& rule) {
                return rule.GetProtocol() == cObisMapEntry::eMapProtoMbus && rule.IsMeterAddr(meterAddr) &&
                       rule.IsMedium(medium) && rule.GetDif() == dif && rule.GetVif() == vif;
              }),
              entry);
}

bool cObisMap::GetEntryByObisIdFromDLMS(const std::string& obis, cObisMapEntry& entry) const {
  return Give(Find([&](const cObisMapEntry& rule) {
                return rule.GetProtocol() == cObisMapEntry::eMapProtoDlms && rule.GetObisID() == obis;
              }),
              entry);
}

bool cObisMap::GetEntryFromMODBUS(const std::string& meterAddr, const std::string&, const std::string& medium,
                                  const std::string& reg, cObisMapEntry& entry) const {
  return Give(Find([&](const cObisMapEntry& rule) {
                return rule.GetProtocol() == cObisMapEntry::eMapProtoModbus && rule.IsMeterAddr(meterAddr) &&
                       rule.IsMedium(medium) && rule.GetRegister() == reg;
              }),
              entry);
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
