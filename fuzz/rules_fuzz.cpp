// SPDX-License-Identifier: Apache-2.0
// Any text taken for a file of OBIS rules: it is refused with a reason or read; what was read is judged, and comes back
// equal from the text that is written of it. A map of rules from anywhere is refused by the service with a reason, or
// every rule of it is one.
#include <cstdlib>
#include <string>

#include <gateway/rules/rule_check.h>
#include <gateway/rules/rules_file.h>
#include <gateway/rules/rules_text.h>
#include <gateway/service/obis/rule_form.h>

namespace {

constexpr std::size_t kMostTextBytes = 1000;

void Check(bool holds) {
  if (!holds) std::abort();
}

void CheckText(const std::string& text) {
  std::string error;
  std::vector<tav::rules::cRawRule> raw;
  const bool isText = tav::rules::ReadRawRules(text, "rules.toml", raw, error);
  Check(isText != !error.empty());
  tav::rules::Check(raw);
  tav::cObisMap map;
  error.clear();
  if (!tav::rules::ReadRulesText(text, "rules.toml", map, error)) return Check(!error.empty());
  tav::cObisMap again;
  Check(tav::rules::ReadRulesText(tav::rules::WriteRulesText(map, "again"), "rules.toml", again, error));
  Check(again.ToString() == map.ToString());
}

void CheckForm(const vorn::cRecord& form) {
  tav::cObisMap map;
  if (!tav::gateway::ReadRules(form, kMostTextBytes, map).empty()) return;
  for (const auto& [id, rule] : map.GetEntries()) Check(!rule.GetObisID().empty() && !rule.GetMap().empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  CheckText(std::string(reinterpret_cast<const char*>(bytes), size));
  vorn::cRecord form;
  if (vorn::cRecord::FromBytes(bytes, size, form)) CheckForm(form);
  return 0;
}
