// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/helper.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using vorn::cHelper;
using vorn::FormatString;

TEST(Helper, GivesTokensInOrderWithoutEmptyOnes) {
  EXPECT_THAT(cHelper::GetStringTokens("a,b,c", ","), ElementsAre("a", "b", "c"));
  EXPECT_THAT(cHelper::GetStringTokens(",a,,b,", ","), ElementsAre("a", "b"));
  EXPECT_THAT(cHelper::GetStringTokens("", ","), IsEmpty());
  EXPECT_THAT(cHelper::GetStringTokens(",,", ","), IsEmpty());
  EXPECT_THAT(cHelper::GetStringTokens("a", ","), ElementsAre("a"));
}

TEST(Helper, KeepsBlanksInTokens) {
  EXPECT_THAT(cHelper::GetStringTokens(" a , ,b", ","), ElementsAre(" a ", " ", "b"));
}

TEST(Helper, TakesTheSeparatorAsOneText) {
  EXPECT_THAT(cHelper::GetStringTokens("a, b,c", ", "), ElementsAre("a", "b,c"));
  EXPECT_THAT(cHelper::Split("a--b-c", "--"), ElementsAre("a", "b-c"));
  EXPECT_THAT(cHelper::Split("aaa", "aa"), ElementsAre("", "a"));
}

TEST(Helper, SeparatesNothingByAnEmptySeparator) {
  EXPECT_THAT(cHelper::GetStringTokens("a,b", ""), ElementsAre("a,b"));
  EXPECT_THAT(cHelper::Split("a,b", ""), ElementsAre("a,b"));
}

TEST(Helper, SplitKeepsEmptyParts) {
  EXPECT_THAT(cHelper::Split("a=b", "="), ElementsAre("a", "b"));
  EXPECT_THAT(cHelper::Split("=a==", "="), ElementsAre("", "a", "", ""));
  EXPECT_THAT(cHelper::Split("", "="), ElementsAre(""));
  EXPECT_THAT(cHelper::Split("a", "="), ElementsAre("a"));
}

TEST(Helper, ReadsNameValueTokensSplitAtTheFirstEqualsSign) {
  EXPECT_THAT(cHelper::TokensAsNameValue({"a=1", "b=x=y", "c="}),
              ElementsAre(Pair("a", "1"), Pair("b", "x=y"), Pair("c", "")));
}

TEST(Helper, DropsTokensWithoutAnEqualsSign) {
  EXPECT_THAT(cHelper::TokensAsNameValue({"a", "", "b=1"}), ElementsAre(Pair("b", "1")));
}

TEST(Helper, KeepsTheLastValueOfAName) {
  EXPECT_THAT(cHelper::TokensAsNameValue({"a=1", "a=2", "=3"}), ElementsAre(Pair("", "3"), Pair("a", "2")));
}

TEST(FormatString, FollowsTheRulesOfPrintf) {
  EXPECT_EQ(FormatString("%s-%05d-%#x %.2f%%", "a", 42, 255, 1.005e2), "a-00042-0xff 100.50%");
  EXPECT_EQ(FormatString("%s", ""), "");
}

TEST(FormatString, GivesTextsOfAnyLengthWhole) {
  for (const std::size_t size : {254u, 255u, 256u, 257u, 70000u}) {
    const std::string text(size, 'x');
    EXPECT_EQ(FormatString("%s", text.c_str()), text);
  }
}

TEST(OperatingSeconds, CountSinceBoot) {
  double uptime = 0;
  std::FILE* file = std::fopen("/proc/uptime", "r");
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(std::fscanf(file, "%lf", &uptime), 1);
  std::fclose(file);
  const unsigned int seconds = vorn::GetOSC();
  EXPECT_GE(seconds + 2, static_cast<unsigned int>(uptime));
  EXPECT_LE(seconds, static_cast<unsigned int>(uptime) + 60);
}
