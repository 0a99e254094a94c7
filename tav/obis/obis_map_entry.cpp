// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_map_entry.h>

#include <cstdlib>
#include <string_view>

#include <tav/record/meter_tav.h>

namespace tav {

namespace {

struct cProtocolRow {
  const char* text;
  cObisMapEntry::eMapProtocol protocol;
};

// clang-format off
constexpr cProtocolRow kProtocols[] = {
  {"mbus",   cObisMapEntry::eMapProtoMbus},
  {"dlms",   cObisMapEntry::eMapProtoDlms},
  {"modbus", cObisMapEntry::eMapProtoModbus},
};
// clang-format on

// Calls visit with name and value of each token of the text that holds "=".
template <typename Visit>
void ForEachOption(std::string_view text, const Visit& visit) {
  while (!text.empty()) {
    const std::string_view token = text.substr(0, text.find(','));
    text.remove_prefix(token.size() < text.size() ? token.size() + 1 : token.size());
    const std::size_t equals = token.find('=');
    if (equals != std::string_view::npos) visit(token.substr(0, equals), token.substr(equals + 1));
  }
}

bool HasOptions(std::string_view text) {
  bool any = false;
  ForEachOption(text, [&](std::string_view, std::string_view) { any = true; });
  return any;
}

// The protocol of a mapping text.
cObisMapEntry::eMapProtocol ProtocolOf(std::string_view text) {
  auto protocol = cObisMapEntry::eMapProtoNone;
  ForEachOption(text, [&](std::string_view name, std::string_view value) {
    if (name != "protocol") return;
    protocol = cObisMapEntry::eMapProtoUnknown;
    for (const cProtocolRow& row : kProtocols)
      if (value == row.text) protocol = row.protocol;
  });
  return protocol;
}

// In place of whatever stands from the first star on.
void ReplaceTail(std::string& text, std::string_view tail) {
  const std::size_t star = text.find('*');
  if (star != std::string::npos) text.resize(star);
  text += tail;
}

}  // namespace

cObisMapEntry::cObisMapEntry(unsigned long long id, const std::string& name, const std::string& obis,
                             const std::string& map) {
  Set(id, name, obis, map);
}

cObisMapEntry& cObisMapEntry::operator=(const cObisMapEntry& other) {
  m_id = other.m_id;
  m_name = other.m_name;
  m_obis = other.m_obis;
  m_obisWithoutChannel = other.m_obisWithoutChannel;
  m_map = other.m_map;
  m_otherOptions = other.m_otherOptions;
  m_hasOtherOptions = other.m_hasOtherOptions;
  m_protocol = other.m_protocol;
  return *this;
}

cObisMapEntry::~cObisMapEntry() = default;

bool cObisMapEntry::Set(unsigned long long id, const std::string& name, const std::string& obis,
                        const std::string& map) {
  if (name.empty() || obis.empty()) return Fail("missing parameters");
  if (!cMeterTav::ObisIsValid(obis)) return Fail("obis-id invalid");
  m_otherOptions = map;
  m_hasOtherOptions = true;
  if (!map.empty() && !HasOptions(map)) return Fail("syntax error in mapping");
  m_protocol = ProtocolOf(map);
  if (m_protocol == eMapProtoUnknown) return Fail("unknown protocol");
  m_id = id;
  m_name = name;
  m_obis = obis;
  m_obisWithoutChannel = ObisWithoutChannel(m_obis);
  m_map = map;
  m_hasOtherOptions = false;
  std::string().swap(m_otherOptions);  // its room too
  return true;
}

bool cObisMapEntry::Fail(const char* error) {
  m_error = error;
  return false;
}

void cObisMapEntry::CorrectVV(const std::string& obis) {
  const std::size_t star = obis.find('*');
  const std::string tail =
      star != std::string::npos ? obis.substr(star) : std::string();  // obis may be the entry's own
  ReplaceTail(m_obis, tail);
  ReplaceTail(m_obisWithoutChannel, tail);
}

vorn::cRecord cObisMapEntry::ToRecord() const {
  vorn::cRecord record;
  record.AppendUInt64Par("ID", m_id);
  record.AppendTextPar("name", m_name);
  record.AppendTextPar("obis", m_obis);
  record.AppendTextPar("map", m_map);
  return record;
}

bool cObisMapEntry::FromRecord(const vorn::cRecord& rec) {
  const vorn::cRecordPar id = rec.GetPar("ID");
  const vorn::cRecordPar name = rec.GetPar("name");
  const vorn::cRecordPar obis = rec.GetPar("obis");
  const vorn::cRecordPar map = rec.GetPar("map");
  if (id.IsEmpty() || name.IsEmpty() || obis.IsEmpty() || map.IsEmpty()) return false;
  return Set(id.GetUInt64(), name.GetText(), obis.GetText(), map.GetText());
}

std::string cObisMapEntry::ToString() const {
  std::string text = m_obis + " " + m_name;
  if (!m_map.empty()) text += " " + m_map;
  return text;
}

// Of an option that is given twice the last one holds.
std::string_view cObisMapEntry::FindOption(std::string_view key) const {
  std::string_view found;
  ForEachOption(GetOptionText(), [&](std::string_view name, std::string_view value) {
    if (name == key) found = value;
  });
  return found;
}

cObisMapEntry::cKeys cObisMapEntry::GetKeys() const {
  cKeys keys;
  ForEachOption(GetOptionText(), [&](std::string_view name, std::string_view value) {
    if (name == "dif")
      keys.dif = value;
    else if (name == "vif")
      keys.vif = value;
    else if (name == "medium")
      keys.medium = value;
    else if (name == "meteraddr")
      keys.meterAddr = value;
    else if (name == "register")
      keys.reg = value;
  });
  return keys;
}

vorn::cMap<std::string, std::string> cObisMapEntry::GetMapOptions() const {
  vorn::cMap<std::string, std::string> options;
  ForEachOption(GetOptionText(), [&](std::string_view name, std::string_view value) {
    options.Set(std::string(name), std::string(value));
  });
  return options;
}

std::string cObisMapEntry::GetMapOption(const std::string& key) const { return std::string(FindOption(key)); }

bool cObisMapEntry::IsMedium(const std::string& medium) const {
  const std::string_view option = FindOption("medium");
  return option.empty() || option == medium;
}

bool cObisMapEntry::IsMeterAddr(const std::string& addr) const {
  const std::string_view option = FindOption("meteraddr");
  return option.empty() || option == addr;
}

int cObisMapEntry::GetMapOptionAsInt(const std::string& key, int def) const {
  const std::string value = GetMapOption(key);
  return value.empty() ? def : std::atoi(value.c_str());
}

std::string ObisWithoutChannel(const std::string& obis) {
  const std::string_view text = obis;
  const std::size_t colon = text.find(':');
  const std::string_view head = colon != std::string_view::npos ? text.substr(0, colon) : "1-0";
  const std::string_view rest = colon != std::string_view::npos ? text.substr(colon + 1) : text;
  const std::size_t dash = head.find('-');
  const std::size_t star = rest.find('*');
  const std::string_view cde = rest.substr(0, star);
  if (cde.find('.') == std::string_view::npos) return {};
  std::string result(dash != std::string_view::npos ? head.substr(0, dash) : "1");
  result += "-0:";
  result += cde;
  if (star != std::string_view::npos && star + 1 < rest.size()) result += "*nn";
  return result;
}

}  // namespace tav
