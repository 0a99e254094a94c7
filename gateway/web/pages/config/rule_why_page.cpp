// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/rule_why_page.h>

#include <algorithm>
#include <iterator>

#include <gateway/web/pages/config/rules_page.h>
#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

namespace {

// In the order of rules::eRoad.
constexpr std::string_view kRoads[] = {"identifier", "dlms", "mbus", "modbus"};

cHtml FitMark(rules::eFit fit) {
  if (fit == rules::eFit::Names) return cHtml().Put("<span class=\"state ok\">names it</span>");
  if (fit == rules::eFit::Behind) return cHtml().Put("<span class=\"state warn\">comes too late</span>");
  return cHtml().Put("<span class=\"state\">no</span>");
}

cHtml Row(const rules::cVerdict& verdict) {
  const std::string id = std::to_string(verdict.rule->GetID());
  return cHtml().Put(
      "<tr><td>{}</td><td class=\"num\"><a href=\"{}\">{}</a></td><td><code>{}</code></td><td>{}</td>"
      "<td><code>{}</code></td><td>{}</td></tr>\n",
      FitMark(verdict.fit), MakeUrl("/rule", {{"id", id}}), id, verdict.rule->GetObisID(), verdict.rule->GetName(),
      verdict.rule->GetMap(), verdict.text);
}

bool ReadBytes(const char* name, const std::string& text, vorn::cData& bytes, std::string& error) {
  if (vorn::cData::FromHex(text, bytes)) return true;
  error = std::string(name) + ": expected two hexadecimal digits a byte, found \"" + text + "\"";
  return false;
}

}  // namespace

void cRuleWhyPage::Start() {
  cHtml body;
  body.Put(StaleRulesNote(Gateway().obis.loaded)).Put(Form());
  if (Query("road").empty()) return ShowPage("Which rule names a value?", body);
  rules::cQuery query;
  std::string error;
  if (!ReadQuery(query, error)) return ShowPage("Which rule names a value?", ErrorNote(error).Put(body), 400);
  ShowPage("Which rule names a value?", body.Put(Answer(query)));
}

bool cRuleWhyPage::ReadQuery(rules::cQuery& query, std::string& error) const {
  const auto road = std::find(std::begin(kRoads), std::end(kRoads), Query("road"));
  if (road == std::end(kRoads)) {
    error = "Comes by: expected identifier, dlms, mbus or modbus, found \"" + Query("road") + "\"";
    return false;
  }
  query.road = static_cast<rules::eRoad>(road - std::begin(kRoads));
  query.obis = Query("obis");
  query.meterAddr = Query("meteraddr");
  query.medium = Query("medium");
  query.reg = Query("register");
  const bool byIdentifier = query.road == rules::eRoad::Identifier || query.road == rules::eRoad::Dlms;
  if (byIdentifier && ObisWithoutChannel(query.obis).empty()) {
    error = "OBIS identifier: expected one such as 1-0:1.8.0, found \"" + query.obis + "\"";
    return false;
  }
  return ReadBytes("DIF", Query("dif"), query.dib, error) && ReadBytes("VIF", Query("vif"), query.vib, error);
}

cHtml cRuleWhyPage::Answer(const rules::cQuery& query) {
  const auto verdicts = rules::Nearest(rules::Match(Gateway().obis.map, query), kNearest);
  cHtml rows;
  for (const rules::cVerdict& verdict : verdicts) rows.Put(Row(verdict));
  const bool isNamed = std::any_of(verdicts.begin(), verdicts.end(),
                                   [](const rules::cVerdict& each) { return each.fit == rules::eFit::Names; });
  cHtml answer;
  if (!isNamed) answer.Put("<p class=\"note\">No rule names it. These are the nearest.</p>\n");
  return answer.Put(Table({"Fits", "#ID", "OBIS", "Name", "Mapping", "Why"}, rows));
}

cHtml cRuleWhyPage::Form() const {
  cHtml form;
  form.Put("<form class=\"entry\" method=\"get\" action=\"/rules/why\">\n");
  form.Put(ChoiceField({"road", "The value comes by", Query("road"), "\"identifier\": any reading, by its identifier."},
                       kRoads));
  form.Put(TextField({"obis", "OBIS identifier", Query("obis"), "For identifier and dlms, such as 1-0:1.8.0."}));
  form.Put(TextField({"meteraddr", "Meter address", Query("meteraddr"), "For mbus and modbus."}));
  form.Put(TextField({"medium", "Medium", Query("medium"), "For mbus and modbus: its letter, such as E."}));
  form.Put(TextField({"dif", "DIF", Query("dif"), "For mbus: hexadecimal bytes of the data information block."}));
  form.Put(TextField({"vif", "VIF", Query("vif"), "For mbus: hexadecimal bytes of the value information block."}));
  form.Put(TextField({"register", "Register", Query("register"), "For modbus."}));
  return form.Put("<div class=\"actions\"><button>Ask</button></div></form>\n");
}

}  // namespace tav::pages
