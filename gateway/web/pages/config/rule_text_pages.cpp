// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/rule_text_pages.h>

#include <gateway/form/rule_rows.h>
#include <gateway/form/utf8.h>
#include <gateway/rules/rules_text.h>
#include <gateway/web/pages/config/finding_list.h>
#include <gateway/web/pages/config/rule_page.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/framework/time.h>

namespace tav::pages {

namespace {

constexpr const char* kAway = "The service \"obis\" is away. Try again in a moment.";

// A finding repeats what was sent, line breaks included.
std::string OneLine(std::string text) {
  for (char& letter : text)
    if (letter == '\n' || letter == '\r') letter = ' ';
  return text;
}

}  // namespace

void cRuleLintPage::Start() {
  rules::cRawRule rule;
  std::string error;
  if (!ReadRawRule(Query("id"), Query("name"), Query("obis"), Query("map"), rule, error)) return ShowError(400, error);
  if (!Gateway().obis.loaded) return ShowError(503, kAway);
  std::string lines;
  for (const rules::cFinding& finding : About(CheckWith(Gateway().obis.map, rule), rule.id))
    lines += std::string(form::LevelText(finding.level)) + ": " + OneLine(form::ToUtf8(finding.text)) + "\n";
  ShowText("text/plain; charset=utf-8", lines);
}

void cRulesDownloadPage::Start() {
  if (!Gateway().obis.loaded) return ShowError(503, kAway);
  AddHeader("Content-Disposition: attachment; filename=\"rules.toml\"");
  ShowText("application/toml",
           rules::WriteRulesText(Gateway().obis.map, "OBIS mapping rules, " + vorn::cTime::Now().ToISO8601String()));
}

}  // namespace tav::pages
