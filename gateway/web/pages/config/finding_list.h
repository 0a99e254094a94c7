// SPDX-License-Identifier: Apache-2.0
// What is wrong with mapping rules, as the pages show it: all findings of a map, or those that concern one rule.
#pragma once

#include <vector>

#include <gateway/rules/rule_check.h>
#include <gateway/web/pages/core/html.h>

namespace tav::pages {

using Findings = std::vector<rules::cFinding>;

// Those about the rule, and those of others that it stands in the way of.
Findings Concerning(const Findings& all, unsigned long long id);
// Those about the rule alone.
Findings About(const Findings& all, unsigned long long id);
// The map with one more rule, or another one of its ID, whatever is wrong with it.
Findings CheckWith(const cObisMap& map, const rules::cRawRule& rule);
Findings CheckWithout(const cObisMap& map, unsigned long long id);

// A list with a link to each rule; nothing where there are no findings.
cHtml FindingList(const Findings& findings);
// "error" or "warning" as a mark; nothing where there are no findings.
cHtml WorstMark(const Findings& findings);

}  // namespace tav::pages
