// SPDX-License-Identifier: Apache-2.0
// What has to change for a map to hold other rules: what an import does, and what it would do.
#pragma once

#include <optional>
#include <vector>

#include <tav/obis/obis_map.h>

namespace tav::rules {

// A rule that is set, or the ID of one that is removed.
struct cRuleChange {
  unsigned long long id = 0;
  std::optional<cObisMapEntry> rule;
};

// Removals first, each in the order of the IDs; a rule that is there as it is wanted is no change. replace: also remove
// what is not wanted.
std::vector<cRuleChange> Difference(const cObisMap& present, const cObisMap& wanted, bool replace);

void Apply(const std::vector<cRuleChange>& changes, cObisMap& map);

}  // namespace tav::rules
