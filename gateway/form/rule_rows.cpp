// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/rule_rows.h>

namespace tav::form {

const char* LevelText(rules::eLevel level) { return level == rules::eLevel::Error ? "error" : "warning"; }

const char* FitText(rules::eFit fit) {
  return fit == rules::eFit::Names ? "names" : fit == rules::eFit::Behind ? "behind" : "no";
}

vorn::cRecord RowOf(const rules::cFinding& finding) {
  vorn::cRecord row;
  row.AppendTextPar("level", LevelText(finding.level));
  row.AppendUInt64Par("ID", finding.id);
  if (finding.other) row.AppendUInt64Par("other", *finding.other);
  row.AppendTextPar("text", finding.text);
  if (!finding.place.empty()) row.AppendTextPar("place", finding.place);
  return row;
}

vorn::cRecord RowOf(const rules::cVerdict& verdict) {
  vorn::cRecord row = verdict.rule->ToRecord();
  row.AppendTextPar("fit", FitText(verdict.fit));
  row.AppendTextPar("why", verdict.text);
  return row;
}

}  // namespace tav::form
