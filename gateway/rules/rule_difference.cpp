// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rule_difference.h>

namespace tav::rules {

namespace {

bool IsSame(const cObisMapEntry& a, const cObisMapEntry& b) {
  return a.GetName() == b.GetName() && a.GetObisID() == b.GetObisID() && a.GetMap() == b.GetMap();
}

}  // namespace

std::vector<cRuleChange> Difference(const cObisMap& present, const cObisMap& wanted, bool replace) {
  std::vector<cRuleChange> changes;
  if (replace)
    for (const auto& [id, rule] : present.GetEntries())
      if (!wanted.GetEntries().Contains(id)) changes.push_back({id, {}});
  for (const auto& [id, rule] : wanted.GetEntries()) {
    const auto known = present.GetEntries().find(id);
    if (known == present.GetEntries().end() || !IsSame(known->second, rule)) changes.push_back({id, rule});
  }
  return changes;
}

void Apply(const std::vector<cRuleChange>& changes, cObisMap& map) {
  for (const cRuleChange& change : changes)
    if (change.rule)
      map.Set(*change.rule);
    else
      map.Remove(change.id);
}

}  // namespace tav::rules
