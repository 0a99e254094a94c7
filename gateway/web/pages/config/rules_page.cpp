// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/rules_page.h>

#include <algorithm>
#include <cctype>

#include <gateway/form/utf8.h>
#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

namespace {

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::tolower(letter); });
  return text;
}

bool Fits(const cObisMapEntry& rule, const std::string& wanted) {
  const std::string text =
      std::to_string(rule.GetID()) + '\n' + rule.GetName() + '\n' + rule.GetObisID() + '\n' + rule.GetMap();
  return Lower(form::ToUtf8(text)).find(Lower(form::ToUtf8(wanted))) != std::string::npos;
}

cHtml Row(const cObisMapEntry& rule, const Findings& findings) {
  const std::string id = std::to_string(rule.GetID());
  cHtml texts;
  for (const rules::cFinding& finding : findings) texts.Put("<br><small>{}</small>", finding.text);
  return cHtml().Put(
      "<tr><td class=\"num\"><a href=\"{}\">{}</a></td><td><code>{}</code></td><td>{}</td><td><code>{}</code></td>"
      "<td>{}{}</td></tr>\n",
      MakeUrl("/rule", {{"id", id}}), id, rule.GetObisID(), rule.GetName(), rule.GetMap(), WorstMark(findings), texts);
}

}  // namespace

cHtml StaleRulesNote(bool loaded) {
  if (loaded) return {};
  return cHtml().Put(
      "<p class=\"note\">The service \"obis\" is away: these are the rules as they were last known.</p>\n");
}

void cRulesPage::Start() {
  const cObisMap& map = Gateway().obis.map;
  const Findings findings = rules::Check(map);
  cHtml body;
  if (Query("done") == "deleted") body.Put(DoneNote("The rule is deleted."));
  body.Put(StaleRulesNote(Gateway().obis.loaded));
  body.Put("<p>A rule says which identifier and name a value gets. Of rules that fit, the smallest ID wins.</p>\n{}",
           Tools());
  if (!findings.empty())
    body.Put("<details open><summary>{} findings</summary>\n{}</details>\n", findings.size(), FindingList(findings));
  body.Put(Rules(map, findings));
  ShowPage("OBIS rules", body);
}

cHtml cRulesPage::Tools() const {
  cHtml links;
  if (GetVisitor().MayChange()) links.Put("<a class=\"button\" href=\"/rule\">New rule</a> ");
  links.Put(
      "<a class=\"button\" href=\"/rules/why\">Which rule names a value?</a> "
      "<a class=\"button\" href=\"/rules/download\" download>Download all</a>");
  return cHtml().Put(
      "<p class=\"actions\">{}</p>\n<form class=\"range\" method=\"get\" action=\"/rules\">\n{}"
      "<div class=\"actions\"><button>Search</button></div></form>\n",
      links, TextField({"q", "Rules with", Query("q"), "Part of an ID, a name, an identifier or a mapping."}));
}

cHtml cRulesPage::Rules(const cObisMap& map, const Findings& findings) const {
  cHtml rows;
  for (const auto& [id, rule] : map.GetEntries())
    if (Fits(rule, Query("q"))) rows.Put(Row(rule, About(findings, id)));
  if (rows.IsEmpty())
    return cHtml().Put("<p class=\"empty\">{}</p>\n",
                       map.GetEntries().empty() ? "There are no rules." : "No rule has that text.");
  return Table({"#ID", "OBIS", "Name", "Mapping", "Findings"}, rows);
}

}  // namespace tav::pages
