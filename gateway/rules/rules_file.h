// SPDX-License-Identifier: Apache-2.0
// OBIS mapping rules as people keep them: a TOML text of
//
//   [[rule]]
//   id = 1                       # optional, counts on from the rule before; the smallest ID wins
//   name = "Energy import"
//   obis = "1-0:1.8.0"
//   map = "protocol=dlms"        # optional here; the OBIS service wants one
//
// TOML has no number above 2^63: such an ID is a text of digits. rules_text.h writes the same form.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gateway/rules/raw_rule.h>
#include <tav/obis/obis_map.h>

namespace tav::rules {

// The rules as they stand there, for rule_check.h. False, and the rules left alone, when it is no such text; error
// names source, line and fault. source: what errors call the text, mostly the file's name.
bool ReadRawRules(std::string_view text, const std::string& source, std::vector<cRawRule>& rules, std::string& error);

// The same as a map: every rule has to be right, and the IDs differ.
bool ReadRulesText(std::string_view text, const std::string& source, cObisMap& map, std::string& error);
bool ReadRulesFile(const std::string& file, cObisMap& map, std::string& error);

}  // namespace tav::rules
