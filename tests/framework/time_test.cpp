// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/time.h>

#include <gtest/gtest.h>

#include <tests/support/time_zone.h>

using vorn::cTime;

TEST(Time, StartsAtTheEpoch) {
  EXPECT_EQ(cTime().GetSeconds(), 0u);
  EXPECT_EQ(cTime().ToISO8601String(), "1970-01-01T00:00:00Z");
}

TEST(Time, PrintsUtcWithAZ) {
  EXPECT_EQ(cTime::FromSeconds(1393675200, true).ToISO8601String(), "2014-03-01T12:00:00Z");
  EXPECT_EQ(cTime::FromSeconds(1709210096, true).ToISO8601String(), "2024-02-29T12:34:56Z");
}

TEST(Time, ReachesTheEndOfThirtyTwoBits) {
  EXPECT_EQ(cTime::FromSeconds(0xFFFFFFFF, true).GetSeconds(), 0xFFFFFFFFu);
  EXPECT_EQ(cTime::FromSeconds(0xFFFFFFFF, true).ToISO8601String(), "2106-02-07T06:28:15Z");
}

TEST(Time, PrintsLocalTimeWithItsOffset) {
  const cTime winter = cTime::FromSeconds(1393675200, false);
  const cTime summer = cTime::FromSeconds(1404216000, false);
  {
    const cTimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(winter.ToISO8601String(), "2014-03-01T13:00:00+01:00");
    EXPECT_EQ(summer.ToISO8601String(), "2014-07-01T14:00:00+02:00");
  }
  {
    const cTimeZone zone("NST3:30");
    EXPECT_EQ(winter.ToISO8601String(), "2014-03-01T08:30:00-03:30");
  }
  {
    const cTimeZone zone("UTC0");
    EXPECT_EQ(winter.ToISO8601String(), "2014-03-01T12:00:00+00:00");
  }
}

TEST(Time, NowIsTheClockOfTheMachineInUtc) {
  const auto before = static_cast<unsigned int>(std::time(nullptr));
  const cTime now = cTime::Now();
  EXPECT_GE(now.GetSeconds(), before);
  EXPECT_LE(now.GetSeconds(), static_cast<unsigned int>(std::time(nullptr)));
  EXPECT_EQ(now.ToISO8601String().back(), 'Z');
}

TEST(Time, ComparesThePointInTimeAndNotHowItPrints) {
  EXPECT_TRUE(cTime::FromSeconds(5, true) == cTime::FromSeconds(5, false));
  EXPECT_TRUE(cTime::FromSeconds(5, true) != cTime::FromSeconds(6, true));
  EXPECT_TRUE(cTime::FromSeconds(5, true) < cTime::FromSeconds(6, true));
  EXPECT_FALSE(cTime::FromSeconds(6, true) < cTime::FromSeconds(6, true));
  EXPECT_TRUE(cTime::FromSeconds(0x7FFFFFFF, true) < cTime::FromSeconds(0x80000000, true));
}
