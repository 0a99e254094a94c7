// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_query.h>

#include <algorithm>
#include <map>

#include <gateway/form/rule_rows.h>
#include <tavctl/failure.h>
#include <tavctl/options.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

[[noreturn]] void Fail(const std::string& text) { throw cFailure(eExitUsage, "explain: " + text); }

vorn::cData BytesOf(const char* option, const std::string& text) {
  vorn::cData bytes;
  if (!vorn::cData::FromHex(text, bytes))
    Fail(std::string(option) + ": expected two hexadecimal digits a byte, found \"" + ForTerminal(text) + "\"");
  return bytes;
}

}  // namespace

void cRuleQuery::AddOptions(CLI::App& app) {
  AddText(app, "--value", m_value, "In place of FILE: which rule names the value with this identifier, and why");
  AddText(app, "--protocol", m_protocol,
          "How the value comes: dlms, mbus or modbus; without it by its identifier alone");
  AddText(app, "--meteraddr", m_meterAddr, "mbus and modbus: the meter's address");
  AddText(app, "--medium", m_medium, "mbus and modbus: the letter of its medium");
  AddText(app, "--dif", m_dif, "mbus: the bytes of the data information block");
  AddText(app, "--vif", m_vif, "mbus: the bytes of the value information block");
  AddText(app, "--register", m_register, "modbus: the register");
  AddFlag(app, "--all", m_all, "With --value: a verdict on every rule, not only on those that fit and the nearest");
}

rules::cQuery cRuleQuery::Make() const {
  const std::map<std::string, rules::eRoad> roads = {{"", rules::eRoad::Identifier},
                                                     {"dlms", rules::eRoad::Dlms},
                                                     {"mbus", rules::eRoad::Mbus},
                                                     {"modbus", rules::eRoad::Modbus}};
  const auto road = roads.find(m_protocol);
  if (road == roads.end()) Fail("--protocol: expected dlms, mbus or modbus, found \"" + ForTerminal(m_protocol) + "\"");
  const bool isMbus = m_protocol == "mbus", isDevice = isMbus || m_protocol == "modbus";
  if (!isDevice && ObisWithoutChannel(m_value).empty())
    Fail("--value: expected an OBIS identifier, such as 1-0:1.8.0, found \"" + ForTerminal(m_value) + "\"");
  if (!isDevice && !(m_meterAddr + m_medium).empty())
    Fail("--meteraddr and --medium are for --protocol mbus or modbus");
  if (!isMbus && !(m_dif + m_vif).empty()) Fail("--dif and --vif are for --protocol mbus");
  if (m_protocol != "modbus" && !m_register.empty()) Fail("--register is for --protocol modbus");
  return {road->second, m_value, m_meterAddr, m_medium, BytesOf("--dif", m_dif), BytesOf("--vif", m_vif), m_register};
}

eExit cRuleQuery::Answer(const cObisMap& map, const cContext& context) const {
  const rules::cQuery query = Make();
  const bool byIdentifier = query.road == rules::eRoad::Identifier || query.road == rules::eRoad::Dlms;
  if (!byIdentifier && !m_value.empty())
    context.Note("--value is not looked at: " + m_protocol + " values have no identifier before a rule gives them one");
  auto verdicts = rules::Match(map, query);
  if (!m_all) verdicts = rules::Nearest(std::move(verdicts), kNearest);
  const auto rows = context.Rows(form::kVerdictColumns);
  for (const rules::cVerdict& verdict : verdicts) rows->Write(form::RowOf(verdict));
  rows->End();
  if (std::any_of(verdicts.begin(), verdicts.end(), [](const auto& each) { return each.fit == rules::eFit::Names; }))
    return eExitDone;
  context.Note("no rule names it");
  return eExitNegative;
}

}  // namespace tav::ctl
