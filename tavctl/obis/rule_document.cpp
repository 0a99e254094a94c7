// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_document.h>

#include <gateway/form/rule_rows.h>
#include <gateway/rules/rules_file.h>
#include <tavctl/failure.h>
#include <tavctl/input_file.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

template <typename Rules, typename Reader>
Rules Read(const std::string& file, cContext& context, const Reader& reader) {
  Rules rules;
  std::string error;
  if (reader(ReadInput(file, context.streams.in, kMaxRulesFile), RulesSource(file), rules, error)) return rules;
  throw cFailure(eExitNegative, ForTerminal(error));
}

}  // namespace

std::vector<rules::cRawRule> ReadRules(const std::string& file, cContext& context) {
  return Read<std::vector<rules::cRawRule>>(file, context, rules::ReadRawRules);
}

cObisMap ReadRuleMap(const std::string& file, cContext& context) {
  return Read<cObisMap>(file, context, rules::ReadRulesText);
}

void NoteFindings(const std::vector<rules::cFinding>& findings, const cContext& context) {
  for (const rules::cFinding& finding : findings)
    context.Note((finding.place.empty() ? "" : finding.place + ": ") + form::LevelText(finding.level) + ": rule " +
                 std::to_string(finding.id) + ": " + ForTerminal(finding.text));
}

void WriteFindings(const std::vector<rules::cFinding>& findings, const cContext& context) {
  const bool withPlaces = !findings.empty() && !findings.front().place.empty();
  const auto rows =
      context.Rows(Columns(form::kFindingColumns).first(std::size(form::kFindingColumns) - (withPlaces ? 0 : 1)));
  for (const rules::cFinding& finding : findings) rows->Write(form::RowOf(finding));
  rows->End();
}

}  // namespace tav::ctl
