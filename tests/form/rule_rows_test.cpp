// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/rule_rows.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace tav::form {
namespace {

cObisMap TwoRules() {
  return rules::MapOf(
      {{7, "Import", "1-0:1.8.0", "protocol=dlms", {}}, {8, "Power", "1-0:16.7.0", "protocol=dlms", {}}});
}

TEST(RuleRows, AreThoseOfARulesRecord) {
  EXPECT_EQ(ToLine(RowToJson(TwoRules().GetEntries().begin()->second.ToRecord(), kRuleColumns)),
            R"({"ID":7,"obis":"1-0:1.8.0","name":"Import","map":"protocol=dlms"})");
}

TEST(RuleRows, SayWhatIsWrong) {
  const rules::cFinding alone{rules::eLevel::Error, rules::eFinding::Name, 7, {}, "has no name", {}};
  EXPECT_EQ(ToLine(RowToJson(RowOf(alone), kFindingColumns)),
            R"({"level":"error","ID":7,"other":null,"text":"has no name","place":null})");
  const rules::cFinding both{rules::eLevel::Warning, rules::eFinding::Unreachable, 8, 7, "is never used",
                             "rules.toml:5"};
  EXPECT_EQ(ToLine(RowToJson(RowOf(both), kFindingColumns)),
            R"({"level":"warning","ID":8,"other":7,"text":"is never used","place":"rules.toml:5"})");
}

TEST(RuleRows, SayWhichRuleNamesAValue) {
  const cObisMap map = TwoRules();
  rules::cQuery query;
  query.obis = "1-0:1.8.0";
  const auto verdicts = rules::Match(map, query);
  ASSERT_EQ(verdicts.size(), 2u);
  EXPECT_EQ(ToLine(RowToJson(RowOf(verdicts[0]), kVerdictColumns)),
            R"({"fit":"names","ID":7,"obis":"1-0:1.8.0","name":"Import","map":"protocol=dlms","why":"names it"})");
  EXPECT_EQ(RowOf(verdicts[1]).GetTextPar("fit"), "no");
  EXPECT_STREQ(FitText(rules::eFit::Behind), "behind");
}

}  // namespace
}  // namespace tav::form
