// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/rule_page.h>

#include <cstdint>

#include <gateway/form/config_fields.h>
#include <gateway/rules/default_rules.h>
#include <gateway/web/pages/config/rules_page.h>
#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/obis/obis_protocol.h>

namespace tav::pages {

namespace {

bool ReadId(const std::string& text, unsigned long long& id, std::string& error) {
  std::uint64_t number = 0;
  std::string expected;
  if (!form::TakeText(text, UINT64_MAX, number, expected)) {
    error = "ID: expected " + expected + ", found \"" + text + "\"";
    return false;
  }
  id = number;
  return true;
}

// Where a rule's verdict is asked for while it is typed.
constexpr std::string_view kLintPath = "/rules/lint";

std::string NextId(const cObisMap& map) {
  const auto id = rules::FreeRuleId(map);
  return id ? std::to_string(*id) : std::string();
}

std::string DoneText(const std::string& word) {
  if (word == "saved") return "The rule is saved.";
  return {};
}

}  // namespace

bool ReadRawRule(const std::string& id, const std::string& name, const std::string& obis, const std::string& map,
                 rules::cRawRule& rule, std::string& error) {
  rule = {0, name, obis, map, {}};
  return ReadId(id, rule.id, error);
}

const cObisMapEntry* cRulePage::Find(const std::string& id) {
  unsigned long long number = 0;
  std::string ignored;
  if (!ReadId(id, number, ignored)) return nullptr;
  const auto at = Gateway().obis.map.GetEntries().find(number);
  return at != Gateway().obis.map.GetEntries().end() ? &at->second : nullptr;
}

void cRulePage::Start() {
  m_original = Query("id");
  if (IsPost()) return Take();
  if (m_original.empty()) {
    if (!GetVisitor().MayChange()) return ShowError(400, "Which rule? The address names none.");
    m_typed = {NextId(Gateway().obis.map), Query("name"), Query("obis"), Query("map")};
  } else {
    const cObisMapEntry* const rule = Find(m_original);
    if (rule == nullptr) return ShowError(404, "There is no rule \"" + m_original + "\".");
    m_typed = {std::to_string(rule->GetID()), rule->GetName(), rule->GetObisID(), rule->GetMap()};
  }
  Show(200, {});
}

// ---- changes

void cRulePage::Take() {
  m_typed = {Posted("id"), Posted("name"), Posted("obis"), Posted("map")};
  const std::string action = Posted("do");
  if (action == "delete") return Delete();
  rules::cRawRule rule;
  if (const std::string fault = FaultOf(rule); !fault.empty()) return Show(400, fault);
  if (action == "save") return Save(rule);
  Show(200, {});
}

std::string cRulePage::FaultOf(rules::cRawRule& rule) const {
  std::string error;
  if (!ReadRawRule(m_typed.id, m_typed.name, m_typed.obis, m_typed.map, rule, error)) return error;
  return {};
}

void cRulePage::Save(const rules::cRawRule& rule) {
  const std::string id = std::to_string(rule.id);
  if (id != m_original && Find(id) != nullptr)
    return Show(409, "There is a rule " + id + " already: choose another ID, or change that one.");
  if (rules::HasError(About(CheckWith(Gateway().obis.map, rule), rule.id)))
    return Show(400, "The rule has an error, and was not sent.");
  cObisMapEntry entry;
  if (!entry.Set(rule.id, rule.name, rule.obis, rule.map)) return Show(400, "The rule is no rule: " + entry.GetError());
  Await(
      obis::kProtocol, obis::eSetRule, Gateway().obis.SetEntry(Id(), entry),
      [this, id](const vorn::cRecord&) {
        Redirect(MakeUrl("/rule", {{"id", id}, {"done", "saved"}}));
      },
      [this](const std::string& reason) { Show(409, "The service \"obis\" refused: " + reason); });
}

void cRulePage::Delete() {
  const cObisMapEntry* const rule = Find(m_original);
  if (rule == nullptr) return Show(409, "There is no rule \"" + m_original + "\" any more.");
  cObisMapEntry entry = *rule;
  Await(
      obis::kProtocol, obis::eRemoveRule, Gateway().obis.RemoveEntry(Id(), entry),
      [this](const vorn::cRecord&) { Redirect("/rules?done=deleted"); },
      [this](const std::string& reason) { Show(409, "The service \"obis\" refused: " + reason); });
}

// ---- what is shown

void cRulePage::Show(unsigned int status, const std::string& fault) {
  cHtml body;
  body.Put(ErrorNote(fault)).Put(DoneNote(IsPost() ? std::string() : DoneText(Query("done"))));
  body.Put(StaleRulesNote(Gateway().obis.loaded));
  body.Put(Form()).Put(Verdicts()).Put("<p><a href=\"/rules\">All rules</a></p>\n");
  ShowPage(m_original.empty() ? "New rule" : "Rule " + m_original, body, status);
}

cHtml cRulePage::Form() const {
  if (!GetVisitor().MayChange())
    return cHtml().Put(
        "<dl class=\"facts\"><dt>ID</dt><dd>{}</dd><dt>Name</dt><dd>{}</dd><dt>OBIS identifier</dt>"
        "<dd><code>{}</code></dd><dt>Mapping</dt><dd><code>{}</code></dd></dl>\n",
        m_typed.id, m_typed.name, m_typed.obis, m_typed.map);
  cHtml fields;
  fields.Put(TextField({"id",
                        "ID",
                        m_typed.id,
                        m_original.empty() ? "A number; of rules that fit, the smallest wins."
                                           : "Another ID makes one more rule; this one stays as it is.",
                        {},
                        kLintPath}));
  fields.Put(TextField({"name", "Name", m_typed.name, {}, {}, kLintPath}));
  fields.Put(TextField({"obis", "OBIS identifier", m_typed.obis, "Such as 1-0:1.8.0.", {}, kLintPath}));
  fields.Put(TextField(
      {"map", "Mapping", m_typed.map, "Such as protocol=dlms, or protocol=mbus,dif=04,vif=03.", {}, kLintPath}));
  fields.Put("<pre class=\"hint\" id=\"verdict\"></pre>\n");
  cHtml buttons = Button("save", "Save");
  buttons.Put(Button("check", "Check only"));
  if (!m_original.empty()) buttons.Put(DangerButton("delete", "Delete", "Delete this rule?"));
  return PostForm(m_original.empty() ? "/rule" : MakeUrl("/rule", {{"id", m_original}}), CsrfField(), fields, buttons);
}

cHtml cRulePage::Verdicts() {
  const auto show = [](const Findings& findings) {
    return findings.empty() ? cHtml().Put("<p class=\"empty\">Nothing is wrong.</p>\n") : FindingList(findings);
  };
  const cObisMap& map = Gateway().obis.map;
  cHtml verdicts;
  unsigned long long id = 0;
  std::string ignored;
  if (ReadId(m_original, id, ignored))
    verdicts.Put("<section><h2>As it is</h2>\n{}</section>\n", show(Concerning(rules::Check(map), id)));
  rules::cRawRule rule;
  if (IsPost() && FaultOf(rule).empty())
    verdicts.Put("<section><h2>As it would be</h2>\n{}</section>\n", show(Concerning(CheckWith(map, rule), rule.id)));
  return verdicts;
}

}  // namespace tav::pages
