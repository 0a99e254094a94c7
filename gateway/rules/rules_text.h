// SPDX-License-Identifier: Apache-2.0
// OBIS mapping rules as the TOML text that rules_file.h reads: what is written and read again is the same map.
#pragma once

#include <string>

#include <tav/obis/obis_map.h>

namespace tav::rules {

// A line of comment, then the rules in the order of their IDs. A text that is not UTF-8 is taken as ISO 8859-1, since
// TOML is UTF-8: that one comes back converted.
std::string WriteRulesText(const cObisMap& map, const std::string& comment);

}  // namespace tav::rules
