// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_map_entry.h>

#include <cstdlib>
#include <string_view>

#include <tav/framework/helper.h>
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
  m_options = other.m_options;
  m_protocol = other.m_protocol;
  m_keys = other.m_keys;
  return *this;
}

cObisMapEntry::~cObisMapEntry() = default;

bool cObisMapEntry::Set(unsigned long long id, const std::string& name, const std::string& obis,
                        const std::string& map) {
  if (name.empty() || obis.empty()) return Fail("missing parameters");
  if (!cMeterTav::ObisIsValid(obis)) return Fail("obis-id invalid");
  TakeOptions(map);
  if (!map.empty() && m_options.empty()) return Fail("syntax error in mapping");
  if (!TakeProtocol()) return Fail("unknown protocol");
  m_id = id;
  m_name = name;
  m_obis = obis;
  m_obisWithoutChannel = ObisWithoutChannel(m_obis);
  m_map = map;
  return true;
}

bool cObisMapEntry::Fail(const char* error) {
  m_error = error;
  return false;
}

void cObisMapEntry::TakeOptions(const std::string& map) {
  m_options = vorn::cHelper::TokensAsNameValue(vorn::cHelper::GetStringTokens(map, ","));
  m_keys.meterAddr = GetMapOption("meteraddr");
  m_keys.medium = GetMapOption("medium");
  m_keys.dif = GetMapOption("dif");
  m_keys.vif = GetMapOption("vif");
  m_keys.reg = GetMapOption("register");
}

bool cObisMapEntry::TakeProtocol() {
  m_protocol = eMapProtoNone;
  std::string text;
  if (!m_options.Get("protocol", text)) return true;
  m_protocol = eMapProtoUnknown;
  for (const cProtocolRow& row : kProtocols)
    if (text == row.text) m_protocol = row.protocol;
  return m_protocol != eMapProtoUnknown;
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

std::string cObisMapEntry::GetMapOption(const std::string& key) const {
  std::string value;
  m_options.Get(key, value);
  return value;
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
