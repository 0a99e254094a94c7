// SPDX-License-Identifier: Apache-2.0
// Files of mapping rules, and what is wrong with them.
#pragma once

#include <string>
#include <vector>

#include <gateway/rules/raw_rule.h>
#include <gateway/rules/rule_check.h>
#include <tav/obis/obis_map.h>
#include <tavctl/context.h>

namespace tav::ctl {

inline constexpr std::size_t kMaxRulesFile = std::size_t{4} << 20;

// What notes call a file: its name, or "standard input" for "-".
inline std::string RulesSource(const std::string& file) { return file == "-" ? "standard input" : file; }

// The rules of a TOML file, or of standard input for "-". Throws a cFailure that names file and line.
std::vector<rules::cRawRule> ReadRules(const std::string& file, cContext& context);
// The same as a map: every rule has to be right.
cObisMap ReadRuleMap(const std::string& file, cContext& context);

// A line beside the output for each finding: "rules.toml:12: warning: rule 7: is never used ...".
void NoteFindings(const std::vector<rules::cFinding>& findings, const cContext& context);
// The same as rows of the output.
void WriteFindings(const std::vector<rules::cFinding>& findings, const cContext& context);

}  // namespace tav::ctl
