// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_naming.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/rules/default_rules.h>

namespace tav::ctl {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

TEST(RuleNaming, TellsTheRuleAndThoseBehindIt) {
  cObisMap map;
  map.Add({5, "Energy", "1-0:1.8.0", "protocol=dlms"});
  map.Add({9, "Import", "1-1:1.8.0", "protocol=dlms"});
  map.Add({12, "Export", "1-0:2.8.0", "protocol=dlms"});
  cRuleNaming naming(map);
  const cObisNaming named = naming.Ask("1-0:1.8.0*255");
  ASSERT_TRUE(named.rule);
  EXPECT_EQ(named.rule->id, 5u);
  EXPECT_EQ(named.rule->name, "Energy");
  EXPECT_EQ(named.rule->obis, "1-0:1.8.0");
  EXPECT_THAT(named.notes,
              ElementsAre("rule 5 (1-0:1.8.0 Energy protocol=dlms) names it",
                          "rule 9 (1-1:1.8.0 Import protocol=dlms) would fit, but rule 5 has the smaller ID"));
}

TEST(RuleNaming, TellsTheNearestWhenNoneFits) {
  cObisMap map;
  map.Add({5, "Heat", "6-0:1.8.0", "protocol=dlms"});
  map.Add({9, "Far", "1-0:96.1.0", "protocol=dlms"});
  cRuleNaming naming(map);
  const cObisNaming& none = naming.Ask("1-0:1.8.0*255");
  EXPECT_FALSE(none.rule);
  EXPECT_THAT(none.notes,
              ElementsAre("no rule names it",
                          "rule 5 (6-0:1.8.0 Heat protocol=dlms) does not fit: identifier: the rule is for 6-0:1.8.0, "
                          "the value is 1-0:1.8.0; the same C.D.E, other medium"));
  EXPECT_THAT(naming.Ask("1-0:77.7.7*255").notes, ElementsAre("no rule names it, and none is near"));
  EXPECT_THAT(cRuleNaming(cObisMap()).Ask("1-0:1.8.0*255").notes, ElementsAre("no rule names it, and none is near"));
}

TEST(RuleNaming, CountsWhatItDoesNotTell) {
  cRuleNaming naming(rules::MakeDefaultRules());
  const cObisNaming& named = naming.Ask("1-0:1.8.0*255");
  ASSERT_THAT(named.notes, SizeIs(2 + cRuleNaming::kShown));
  EXPECT_THAT(named.notes.back(), testing::EndsWith(" more would fit as well"));
}

TEST(RuleNaming, GivesTextsThatMayBeShown) {
  cObisMap map;
  map.Add({5, "a\x1b[2J\xFF", "1-0:1.8.0", "protocol=dlms"});
  const cObisNaming named = cRuleNaming(map).Ask("1-0:1.8.0*255");
  ASSERT_TRUE(named.rule);
  EXPECT_EQ(named.rule->name, "a\\x1b[2J\xC3\xBF");
  EXPECT_EQ(named.notes.front().find('\x1b'), std::string::npos);
}

}  // namespace
}  // namespace tav::ctl
