// SPDX-License-Identifier: Apache-2.0
// What is wrong with OBIS mapping rules: those that a service or a driver would refuse, and those that are there and
// never do anything. Every text says what to do.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gateway/rules/raw_rule.h>
#include <tav/obis/obis_map.h>

namespace tav::rules {

enum class eLevel {
  Error,    // the rule is refused, or no value can ever fit it
  Warning,  // it works, but perhaps not as it was meant
};

enum class eFinding {
  SecondId,     // an earlier rule has that ID
  Name,         // no name
  Identifier,   // no identifier, or one that a lookup does not find
  Mapping,      // the mapping text as a whole
  Option,       // one of its options
  Duplicate,    // another rule says exactly the same
  Unreachable,  // a rule with a smaller ID fits whenever this one does
  HiddenName,   // a rule with a smaller ID gives the identifier another name
};

struct cFinding {
  eLevel level = eLevel::Error;
  eFinding kind = eFinding::Mapping;
  unsigned long long id = 0;
  std::optional<unsigned long long> other;  // the rule that is in its way
  std::string text;
  std::string place;  // that of the rule
};

// In the order of the rules; for each rule first what is wrong with itself.
std::vector<cFinding> Check(const std::vector<cRawRule>& rules);
std::vector<cFinding> Check(const cObisMap& map);

bool HasError(const std::vector<cFinding>& findings);

// Of rules that have no error.
cObisMap MapOf(const std::vector<cRawRule>& rules);

}  // namespace tav::rules
