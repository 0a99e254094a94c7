// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_document.h>

#include <gateway/rules/rules_file.h>
#include <tavctl/failure.h>
#include <tavctl/input_file.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

constexpr cColumn kFindingColumns[] = {{"level", "LEVEL"},
                                       {"ID", "RULE", eForm::Number},
                                       {"other", "OTHER", eForm::Number},
                                       {"text", "FINDING"},
                                       {"place", "PLACE"}};

const char* LevelText(rules::eLevel level) { return level == rules::eLevel::Error ? "error" : "warning"; }

vorn::cRecord RowOf(const rules::cFinding& finding) {
  vorn::cRecord row;
  row.AppendTextPar("level", LevelText(finding.level));
  row.AppendUInt64Par("ID", finding.id);
  if (finding.other) row.AppendUInt64Par("other", *finding.other);
  row.AppendTextPar("text", finding.text);
  if (!finding.place.empty()) row.AppendTextPar("place", finding.place);
  return row;
}

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

cObisMap MapOf(const std::vector<rules::cRawRule>& rules) {
  cObisMap map;
  for (const rules::cRawRule& rule : rules) map.Add({rule.id, rule.name, rule.obis, rule.map});
  return map;
}

void NoteFindings(const std::vector<rules::cFinding>& findings, const cContext& context) {
  for (const rules::cFinding& finding : findings)
    context.Note((finding.place.empty() ? "" : finding.place + ": ") + LevelText(finding.level) + ": rule " +
                 std::to_string(finding.id) + ": " + ForTerminal(finding.text));
}

void WriteFindings(const std::vector<rules::cFinding>& findings, const cContext& context) {
  const bool withPlaces = !findings.empty() && !findings.front().place.empty();
  const auto rows = context.Rows(Columns(kFindingColumns).first(std::size(kFindingColumns) - (withPlaces ? 0 : 1)));
  for (const rules::cFinding& finding : findings) rows->Write(RowOf(finding));
  rows->End();
}

}  // namespace tav::ctl
