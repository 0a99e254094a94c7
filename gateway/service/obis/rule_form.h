// SPDX-License-Identifier: Apache-2.0
// Reading a mapping rule that somebody hands in: what is wrong with it is said, where the record's own reader only
// refuses.
#pragma once

#include <cstddef>
#include <string>

#include <tav/obis/obis_map.h>

namespace tav::gateway {

// Takes a rule out of its record form. Empty, or what is wrong: which field, what was found.
std::string ReadRule(const vorn::cRecord& form, std::size_t maxTextBytes, cObisMapEntry& rule);

// Takes the rules of a map's record form; the first fault names the rule's place, counted from 1, and its ID. An ID
// that comes twice is a fault.
std::string ReadRules(const vorn::cRecord& form, std::size_t maxTextBytes, cObisMap& rules);

}  // namespace tav::gateway
