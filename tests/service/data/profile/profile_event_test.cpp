// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_event.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <vector>

#include <tav/framework/time.h>
#include <tests/support/time_zone.h>

namespace tav::data {
namespace {

using testing::ElementsAre;

constexpr const char* kBerlin = "CET-1CEST,M3.5.0,M10.5.0/3";

std::int64_t Utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  std::tm time{};
  time.tm_year = year - 1900;
  time.tm_mon = month - 1;
  time.tm_mday = day;
  time.tm_hour = hour;
  time.tm_min = minute;
  time.tm_sec = second;
  return timegm(&time);
}

// The events behind a time, as UTC texts.
std::vector<std::string> Events(const std::string& type, std::int64_t from, int count, unsigned int distance = 1) {
  const auto event = cProfileEvent::Parse(type, distance);
  std::vector<std::string> texts;
  for (std::int64_t at = from; event && count > 0; --count) {
    at = event->Next(at);
    texts.push_back(vorn::cTime::FromSeconds(static_cast<unsigned int>(at), true).ToISO8601String());
    EXPECT_EQ(event->Last(at), at);
    EXPECT_EQ(event->Next(event->Before(at) + 1), at);
    EXPECT_EQ(event->Last(at - 1), event->Before(at));
    ++at;
  }
  return texts;
}

TEST(ProfileEvent, QuartersHoursAndSecondsLieOnMultiplesOfUtc) {
  const cTimeZone zone("<+0545>-5:45");  // UTC+5:45: nothing local here is on a UTC hour
  const std::int64_t from = Utc(2026, 3, 1, 11, 50, 1);
  EXPECT_THAT(Events("15min", from, 2), ElementsAre("2026-03-01T12:00:00Z", "2026-03-01T12:15:00Z"));
  EXPECT_THAT(Events("hour", from, 2), ElementsAre("2026-03-01T12:00:00Z", "2026-03-01T13:00:00Z"));
  EXPECT_THAT(Events("900", from, 2), ElementsAre("2026-03-01T12:00:00Z", "2026-03-01T12:15:00Z"));
  EXPECT_THAT(Events("1", from, 2), ElementsAre("2026-03-01T11:50:01Z", "2026-03-01T11:50:02Z"));
}

TEST(ProfileEvent, AnEventIsItsOwnNextOne) {
  const auto event = cProfileEvent::Parse("15min");
  EXPECT_EQ(event->Next(900), 900);
  EXPECT_EQ(event->Next(901), 1800);
  EXPECT_EQ(event->Last(900), 900);
  EXPECT_EQ(event->Last(899), 0);
  EXPECT_EQ(event->Before(900), 0);
}

TEST(ProfileEvent, DaysBeginAtLocalMidnightAlsoWhenClocksAreMoved) {
  const cTimeZone zone(kBerlin);
  EXPECT_THAT(Events("day", Utc(2026, 3, 28, 12), 3),  // summer time begins on the 29th: 23 hours
              ElementsAre("2026-03-28T23:00:00Z", "2026-03-29T22:00:00Z", "2026-03-30T22:00:00Z"));
  EXPECT_THAT(Events("day", Utc(2026, 10, 24, 12), 3),  // it ends on the 25th: 25 hours
              ElementsAre("2026-10-24T22:00:00Z", "2026-10-25T23:00:00Z", "2026-10-26T23:00:00Z"));
}

TEST(ProfileEvent, ADayWithoutMidnightBeginsWithItsFirstSecond) {
  const cTimeZone zone("<-04>4<-03>,M10.1.0/0,M3.4.0/0");  // Paraguay; 2023-10-01: from 0:00 to 1:00
  EXPECT_THAT(Events("day", Utc(2023, 9, 30, 12), 2), ElementsAre("2023-10-01T04:00:00Z", "2023-10-02T03:00:00Z"));
}

TEST(ProfileEvent, ADayWithTwoMidnightsBeginsWithTheFirst) {
  const cTimeZone zone("CST5CDT,M3.2.0/0,M11.1.0/1");  // Cuba; 2023-11-05: from 1:00 to 0:00
  EXPECT_THAT(Events("day", Utc(2023, 11, 4, 12), 2), ElementsAre("2023-11-05T04:00:00Z", "2023-11-06T05:00:00Z"));
}

TEST(ProfileEvent, MonthsHaveTheirOwnLengths) {
  const cTimeZone zone(kBerlin);
  EXPECT_THAT(Events("month", Utc(2024, 1, 15), 4), ElementsAre("2024-01-31T23:00:00Z", "2024-02-29T23:00:00Z",
                                                                "2024-03-31T22:00:00Z", "2024-04-30T22:00:00Z"));
}

TEST(ProfileEvent, ADistanceTakesEveryNthEvent) {
  const cTimeZone zone("UTC");
  const std::int64_t from = Utc(2026, 1, 2, 0, 1);
  EXPECT_THAT(Events("15min", from, 2, 4), ElementsAre("2026-01-02T01:00:00Z", "2026-01-02T02:00:00Z"));
  EXPECT_THAT(Events("month", from, 3, 3),
              ElementsAre("2026-04-01T00:00:00Z", "2026-07-01T00:00:00Z", "2026-10-01T00:00:00Z"));
  EXPECT_THAT(Events("month", from, 2, 12), ElementsAre("2027-01-01T00:00:00Z", "2028-01-01T00:00:00Z"));
  EXPECT_THAT(Events("day", from, 2, 7), ElementsAre("2026-01-08T00:00:00Z", "2026-01-15T00:00:00Z"));
  EXPECT_EQ(Events("15min", from, 2, 0), Events("15min", from, 2, 1));
}

TEST(ProfileEvent, GoesToTheEndsOfItsTime) {
  const cTimeZone zone("NZST-12NZDT,M9.5.0,M4.1.0/3");
  for (const char* type : {"15min", "hour", "day", "month", "31622400"})
    for (const unsigned int distance : {1u, cProfileEvent::kMaxDistance})
      for (const std::int64_t time : {std::int64_t{0}, std::int64_t{0xFFFFFFFF}}) {
        const auto event = cProfileEvent::Parse(type, distance);
        EXPECT_GE(event->Next(time), time);
        EXPECT_LE(event->Last(time), time);
        EXPECT_LT(event->Before(event->Last(time)), time);
      }
}

TEST(ProfileEvent, RefusesWhatIsNone) {
  for (const char* type :
       {"", "15 min", "15MIN", "week", "0", "-900", "900s", "9e2", " 900", "31622401", "99999999999999999999"})
    EXPECT_FALSE(cProfileEvent::Parse(type)) << type;
  EXPECT_TRUE(cProfileEvent::Parse("31622400"));
  EXPECT_TRUE(cProfileEvent::Parse("day", cProfileEvent::kMaxDistance));
  EXPECT_FALSE(cProfileEvent::Parse("day", cProfileEvent::kMaxDistance + 1));
}

}  // namespace
}  // namespace tav::data
