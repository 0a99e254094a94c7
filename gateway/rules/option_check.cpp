// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/option_check.h>

#include <algorithm>
#include <set>
#include <string_view>

#include <tav/framework/data.h>
#include <tav/framework/helper.h>
#include <tav/record/meter_tav.h>

namespace tav::rules {

namespace {

using Options = vorn::cMap<std::string, std::string>;

struct cOptionRow {
  std::string_view name;
  std::string_view readers;  // the protocols whose lookup compares it
};

// clang-format off
constexpr cOptionRow kOptions[] = {
  {"protocol",  "mbus dlms modbus"},
  {"meteraddr", "mbus modbus"},
  {"medium",    "mbus modbus"},
  {"dif",       "mbus"},
  {"vif",       "mbus"},
  {"register",  "modbus"},
};
// clang-format on

constexpr std::string_view kProtocols[] = {"mbus", "dlms", "modbus"};
constexpr const char* kBlanks = " \t\r\n";

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

bool HasBlanksAround(const std::string& text) {
  return !text.empty() && (text.find_first_not_of(kBlanks) != 0 || text.find_last_not_of(kBlanks) + 1 != text.size());
}

class cOptionCheck {
 public:
  cOptionCheck(const std::string& map, const Report& report)
      : m_tokens(vorn::cHelper::GetStringTokens(map, ",")),
        m_options(vorn::cHelper::TokensAsNameValue(m_tokens)),
        m_report(report) {
    m_options.Get("protocol", m_protocol);
  }

  void Run() {
    for (const std::string& token : m_tokens) CheckToken(token);
    if (m_options.empty()) return Error(eFinding::Mapping, "it has no option; write such as protocol=dlms");
    CheckProtocol();
    if (m_protocol == "mbus") {
      CheckBlock("dif");
      CheckBlock("vif");
    }
    if (m_protocol == "modbus" && ValueOf("register").empty())
      Error(eFinding::Option, "a modbus rule without register is for no value; add register=NUMBER");
    CheckMedium();
  }

 private:
  void Error(eFinding kind, const std::string& text) const { m_report(eLevel::Error, kind, text); }
  void Warn(const std::string& text) const { m_report(eLevel::Warning, eFinding::Option, text); }
  std::string ValueOf(const char* name) const {
    std::string value;
    m_options.Get(name, value);
    return value;
  }

  void CheckToken(const std::string& token) {
    const std::size_t equals = token.find('=');
    if (equals == std::string::npos)
      return Warn(Quoted(token) + " has no \"=\" and is not read; write NAME=VALUE, or remove it");
    const std::string name = token.substr(0, equals);
    if (HasBlanksAround(name) || HasBlanksAround(token.substr(equals + 1)))
      return Error(eFinding::Option, "blanks around a name or a value count: remove those in " + Quoted(token));
    if (!m_seen.insert(name).second)
      return Warn("option " + Quoted(name) + " is given more than once and the last one counts; remove the others");
    CheckName(name);
  }

  void CheckName(const std::string& name) const {
    const auto* const row = std::find_if(std::begin(kOptions), std::end(kOptions),
                                         [&](const cOptionRow& each) { return each.name == name; });
    if (row == std::end(kOptions))
      return Warn("no lookup reads option " + Quoted(name) +
                  "; remove it, or write one of protocol, meteraddr, medium, dif, vif, register");
    if (name == "protocol") return;
    if (m_protocol.empty())
      return Warn("option " + Quoted(name) + " is not read without a protocol; add " + WithProtocol(*row));
    if (row->readers.find(m_protocol) == std::string_view::npos)
      Warn("protocol " + m_protocol + " does not read option " + Quoted(name) + "; remove it, or write " +
           WithProtocol(*row));
  }

  static std::string WithProtocol(const cOptionRow& row) {
    return "protocol=" + std::string(row.readers.substr(0, row.readers.find(' ')));
  }

  void CheckProtocol() const {
    if (!m_options.Contains("protocol") ||
        std::find(std::begin(kProtocols), std::end(kProtocols), m_protocol) != std::end(kProtocols))
      return;
    Error(eFinding::Option, "there is no protocol " + Quoted(m_protocol) + "; write mbus, dlms or modbus");
  }

  void CheckBlock(const char* name) const {
    const std::string value = ValueOf(name);
    if (value.empty())
      return Error(eFinding::Option,
                   std::string("an mbus rule without ") + name + " is for no value; add " + name + "=BYTES");
    if (HasBlanksAround(value)) return;  // told
    vorn::cData bytes;
    if (!vorn::cData::FromHex(value, bytes) || bytes.IsEmpty())
      return Error(eFinding::Option, std::string(name) + " " + Quoted(value) +
                                         " are no bytes; write two upper-case hexadecimal digits a byte and a blank "
                                         "between bytes, such as 8C 10");
    if (bytes.ToString(0) != value)
      return Error(eFinding::Option, std::string(name) + " is compared as a text, and " + Quoted(value) +
                                         " is never it; write " + Quoted(bytes.ToString(0)));
    if (name == std::string_view("dif") && !IsOneDib(bytes))
      Warn("dif " + Quoted(value) + " is no DIF with its extensions, in which all bytes but the last are 80 or more; " +
           "the bytes behind belong to vif");
  }

  static bool IsOneDib(const vorn::cData& bytes) {
    for (std::size_t i = 0; i < bytes.GetSize(); ++i)
      if ((bytes[i] >= 0x80) != (i + 1 < bytes.GetSize())) return false;
    return true;
  }

  void CheckMedium() const {
    const std::string medium = ValueOf("medium");
    if (medium.empty() || HasBlanksAround(medium) || medium == "X" || cMeterTav::MediumToString(medium) != "unknown")
      return;
    Warn("no meter has the medium " + Quoted(medium) +
         "; write a medium letter, such as E electricity, G gas, H heat, W warm water, w water");
  }

  std::vector<std::string> m_tokens;
  Options m_options;
  const Report& m_report;
  std::string m_protocol;
  std::set<std::string> m_seen;
};

}  // namespace

void CheckMapping(const std::string& map, const Report& report) {
  if (map.empty())
    return report(eLevel::Error, eFinding::Mapping,
                  "the map text is empty, and the OBIS service refuses such a rule; write such as protocol=dlms");
  cOptionCheck(map, report).Run();
}

}  // namespace tav::rules
