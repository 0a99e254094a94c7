// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rule_difference.h>

#include <gtest/gtest.h>

namespace tav::rules {
namespace {

cObisMap MapOf(std::initializer_list<cObisMapEntry> rules) {
  cObisMap map;
  for (const cObisMapEntry& rule : rules) map.Add(rule);
  return map;
}
cObisMapEntry Rule(unsigned long long id, const std::string& name = "Energy",
                   const std::string& map = "protocol=dlms") {
  return {id, name, "1-0:1.8.0", map};
}
// "-3 +5": removed and set.
std::string Text(const std::vector<cRuleChange>& changes) {
  std::string text;
  for (const cRuleChange& change : changes)
    text += (text.empty() ? "" : " ") + std::string(change.rule ? "+" : "-") + std::to_string(change.id);
  return text;
}

TEST(RuleDifference, SetsWhatIsNewOrOther) {
  const cObisMap present = MapOf({Rule(1), Rule(2), Rule(3)});
  const cObisMap wanted = MapOf({Rule(2), Rule(3, "Renamed"), Rule(4), Rule(1, "Energy", "protocol=mbus")});
  EXPECT_EQ(Text(Difference(present, wanted, false)), "+1 +3 +4");
}

TEST(RuleDifference, RemovesTheOthersFirstWhenTheyAreToBeReplaced) {
  const cObisMap present = MapOf({Rule(1), Rule(2), Rule(9)});
  EXPECT_EQ(Text(Difference(present, MapOf({Rule(2), Rule(3)}), true)), "-1 -9 +3");
  EXPECT_EQ(Text(Difference(present, MapOf({Rule(2), Rule(3)}), false)), "+3");
}

TEST(RuleDifference, OfTheSameMapIsNothing) {
  const cObisMap map = MapOf({Rule(1), Rule(2)});
  EXPECT_EQ(Text(Difference(map, map, true)), "");
}

TEST(RuleDifference, AppliedMakesTheOneMapTheOther) {
  cObisMap map = MapOf({Rule(1), Rule(2)});
  const cObisMap wanted = MapOf({Rule(2, "Renamed"), Rule(3)});
  Apply(Difference(map, wanted, true), map);
  EXPECT_EQ(map.ToString(), wanted.ToString());
}

}  // namespace
}  // namespace tav::rules
