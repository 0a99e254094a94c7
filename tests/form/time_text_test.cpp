// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/time_text.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/time_zone.h>

namespace tav::form {
namespace {

using testing::HasSubstr;

constexpr unsigned int kNow = 1'709'294'400;  // 2024-03-01T12:00:00Z, 13:00 in the zone of the tests

class TimeText : public testing::Test {
 protected:
  // 0 when it is refused.
  static unsigned int Parse(const std::string& text) {
    unsigned int seconds = 0;
    std::string error;
    EXPECT_EQ(ParseTime(text, kNow, seconds, error), error.empty()) << text;
    return seconds;
  }
  static std::string ErrorOf(const std::string& text) {
    unsigned int seconds = 7;
    std::string error;
    EXPECT_FALSE(ParseTime(text, kNow, seconds, error)) << text;
    EXPECT_EQ(seconds, 7u) << "left alone";
    return error;
  }

  cTimeZone zone;
};

TEST_F(TimeText, TakesEveryForm) {
  const struct {
    const char* text;
    unsigned int seconds;
  } cases[] = {
      {"2024-03-01T12:00:00Z", kNow},
      {"2024-03-01T12:00:00z", kNow},
      {"2024-03-01 12:00:00Z", kNow},
      {"2024-03-01T12:00Z", kNow},
      {"2024-03-01T13:00:00+01:00", kNow},
      {"2024-03-01T13:00:00+0100", kNow},
      {"2024-03-01T13:00:00+01", kNow},
      {"2024-03-01T06:30-05:30", kNow},
      {"2024-03-01T13:00:00", kNow},        // local
      {"2024-03-01", kNow - 13 * 3600},     // local midnight
      {"2024-07-01T00:00", 1'719'784'800},  // local in summer
      {"2024-02-29", 1'709'161'200},        // there is one
      {"1709294400", kNow},
      {"0", 0},
      {"4294967295", 4'294'967'295},
      {"now", kNow},
      {"today", kNow - 13 * 3600},
      {"yesterday", kNow - 37 * 3600},
      {"-2h", kNow - 7200},
      {"-7d", kNow - 7 * 86400},
      {"-90s", kNow - 90},
      {"-30m", kNow - 1800},
      {"-1w", kNow - 7 * 86400},
      {"-1d12h", kNow - 36 * 3600},
      {"+1h", kNow + 3600},
      {"-0s", kNow},
  };
  for (const auto& [text, seconds] : cases) EXPECT_EQ(Parse(text), seconds) << text;
}

TEST_F(TimeText, RefusesWhatIsNone) {
  for (const char* text : {"",
                           "-",
                           "+",
                           "2h",
                           "-2",
                           "-h",
                           "-2y",
                           "-2h3",
                           "--2h",
                           "- 2h",
                           "-2 h",
                           "tomorrow",
                           "Today",
                           "2024",
                           "2024-3-1x",
                           "2024-03",
                           "2024-02-30",
                           "2023-02-29",
                           "2024-13-01",
                           "2024-00-10",
                           "2024-03-01T",
                           "2024-03-01T12",
                           "2024-03-01T24:00",
                           "2024-03-01T12:60",
                           "2024-03-01T12:00:60",
                           "2024-03-01T12:00:00+",
                           "2024-03-01T12:00+1",
                           "2024-03-01T12:00+01:",
                           "2024-03-01T12:00+24:00",
                           "2024-03-01T12:00+01:60",
                           "2024-03-01T12:00ZZ",
                           "2024-03-01Z",
                           "2024-03-01x12:00",
                           " now",
                           "now ",
                           "1e9",
                           "0x10",
                           "-99999999999999999999d"}) {
    if (std::string(text) == "2024") continue;  // seconds since 1970
    EXPECT_THAT(ErrorOf(text), HasSubstr("expected a time such as 2024-03-01")) << text;
    EXPECT_THAT(ErrorOf(text), HasSubstr("found \"" + std::string(text) + "\""));
  }
}

TEST_F(TimeText, RefusesWhatTheSystemCannotStore) {
  for (const char* text : {"1969-12-31T23:59:59Z", "1970-01-01", "2106-02-07T06:28:16Z", "-1000w1000w1000w", "+9999w",
                           "9999-12-31", "-4000000000w"})
    EXPECT_EQ(ErrorOf(text), "expected a time from 1970 to 2106, found \"" + std::string(text) + "\"");
  EXPECT_EQ(Parse("1970-01-01T00:00:00Z"), 0u);
  EXPECT_EQ(Parse("2106-02-07T06:28:15Z"), 4'294'967'295u);
}

TEST_F(TimeText, TakesTheDayBeforeAChangeOfTheClocks) {
  unsigned int seconds = 0;
  std::string error;
  // On 2024-03-31 the clocks go from 02:00 to 03:00; asked at noon of that day.
  ASSERT_TRUE(ParseTime("today", 1'711'879'200, seconds, error));
  EXPECT_EQ(FormatTime(seconds), "2024-03-31T00:00:00+01:00");
  ASSERT_TRUE(ParseTime("yesterday", 1'711'965'600, seconds, error));
  EXPECT_EQ(FormatTime(seconds), "2024-03-31T00:00:00+01:00") << "25 hours would miss it";
}

TEST_F(TimeText, ShowsLocalTimeWithItsOffset) {
  EXPECT_EQ(FormatTime(kNow), "2024-03-01T13:00:00+01:00");
  EXPECT_EQ(FormatTime(1'719'784'800), "2024-07-01T00:00:00+02:00");
  const cTimeZone india("IST-5:30");
  EXPECT_EQ(FormatTime(kNow), "2024-03-01T17:30:00+05:30");
}

}  // namespace
}  // namespace tav::form
