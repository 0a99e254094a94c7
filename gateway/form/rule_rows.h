// SPDX-License-Identifier: Apache-2.0
// Mapping rules, what is wrong with them and which of them names a value, as rows under columns.
#pragma once

#include <gateway/form/columns.h>
#include <gateway/rules/rule_check.h>
#include <gateway/rules/rule_match.h>

namespace tav::form {

// Of a rule's own record.
inline constexpr cColumn kRuleColumns[] = {{"ID", "ID"}, {"obis", "OBIS"}, {"name", "NAME"}, {"map", "MAP"}};

// The place comes last: only rules of a file have one.
inline constexpr cColumn kFindingColumns[] = {{"level", "LEVEL"},
                                              {"ID", "RULE", eForm::Number},
                                              {"other", "OTHER", eForm::Number},
                                              {"text", "FINDING"},
                                              {"place", "PLACE"}};

inline constexpr cColumn kVerdictColumns[] = {
    {"fit", "FIT"}, {"ID", "ID", eForm::Number}, {"obis", "OBIS"}, {"name", "NAME"}, {"map", "MAP"}, {"why", "WHY"}};

// "error", "warning"
const char* LevelText(rules::eLevel level);
// "names", "behind", "no"
const char* FitText(rules::eFit fit);

vorn::cRecord RowOf(const rules::cFinding& finding);
// While the map lives that was asked.
vorn::cRecord RowOf(const rules::cVerdict& verdict);

}  // namespace tav::form
