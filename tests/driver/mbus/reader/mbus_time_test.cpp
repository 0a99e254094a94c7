// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_time.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav::mbus;

namespace {

constexpr const char* kInvalid = "a time that the meter calls invalid";
constexpr const char* kNoPoint = "no point in time";

// The text, or why there is none.
std::string Text(const std::vector<std::uint8_t>& bytes) {
  cMBusTime time;
  time.day = 77;
  const char* mark = "not set";
  const bool good = ReadTime(bytes, time, mark);
  EXPECT_EQ(good, mark == nullptr);
  return good ? time.ToString() : mark;
}

std::string Text(const std::string& digits) { return Text(Bytes(digits)); }

// Types of EN 13757-3 by their fields, each put where its bits are.
std::string Date(unsigned int year, unsigned int month, unsigned int day) {
  return HexOf((year & 7) << 5 | day) + HexOf(year >> 3 << 4 | month);
}
std::string G(unsigned int year, unsigned int month, unsigned int day) { return Text(Date(year, month, day)); }
std::string F(unsigned int century, unsigned int year, unsigned int hour, unsigned int minute) {
  return Text(HexOf(minute) + HexOf(century << 5 | hour) + Date(year, 7, 21));
}
std::string J(unsigned int hour, unsigned int minute, unsigned int second) {
  return Text(HexOf(second) + HexOf(minute) + HexOf(hour));
}
std::string I(unsigned int year, unsigned int hour, unsigned int minute, unsigned int second) {
  return Text(HexOf(second) + HexOf(minute) + HexOf(hour) + Date(year, 7, 21) + "1E");
}

}  // namespace

TEST(MBusTime, ReadsWhatMetersSend) {
  EXPECT_EQ(Text("DF 1C"), "2014-12-31");
  EXPECT_EQ(Text("2D 0D 38 11"), "2009-01-24T13:45:00");
  EXPECT_EQ(Text("1E 1D 0D"), "13:29:30");
  EXPECT_EQ(Text("1E 1D 4D 98 11 04"), "2012-01-24T13:29:30");
}

TEST(MBusTime, EveryDayAndMonthOfADate) {
  for (unsigned int day = 0; day < 32; ++day)
    EXPECT_EQ(G(24, 2, day), "2024-02-" + std::string(day < 10 ? "0" : "") + std::to_string(day));
  for (unsigned int month = 0; month <= 12; ++month)
    EXPECT_EQ(G(24, month, 1), "2024-" + std::string(month < 10 ? "0" : "") + std::to_string(month) + "-01");
  EXPECT_EQ(G(24, 13, 1), kNoPoint);
  EXPECT_EQ(G(24, 14, 1), kNoPoint);
}

TEST(MBusTime, YearsWithoutACenturyTurnAt80) {
  EXPECT_EQ(G(0, 7, 21), "2000-07-21");
  EXPECT_EQ(G(80, 7, 21), "2080-07-21");
  EXPECT_EQ(G(81, 7, 21), "1981-07-21");
  EXPECT_EQ(G(99, 7, 21), "1999-07-21");
  EXPECT_EQ(I(80, 1, 2, 3), "2080-07-21T01:02:03");
  EXPECT_EQ(I(81, 1, 2, 3), "1981-07-21T01:02:03");
}

TEST(MBusTime, DateAndTimeNameTheirCentury) {
  const struct {
    unsigned int century, year;
    const char* date;
  } kCases[] = {
      {0, 0, "2000-07-21"}, {0, 80, "2080-07-21"}, {0, 81, "1981-07-21"}, {0, 99, "1999-07-21"},
      {1, 0, "2000-07-21"}, {1, 80, "2080-07-21"}, {1, 81, "2081-07-21"}, {1, 99, "2099-07-21"},
      {2, 0, "2100-07-21"}, {2, 99, "2199-07-21"}, {3, 0, "2200-07-21"},  {3, 99, "2299-07-21"},
      {0, 127, "--07-21"},  {1, 127, "--07-21"},   {2, 127, "--07-21"},   {3, 127, "--07-21"},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(F(c.century, c.year, 13, 29), c.date + std::string("T13:29:00")) << c.century << " " << c.year;
}

TEST(MBusTime, ADueDateMayComeBackEveryYearOrMonth) {
  EXPECT_EQ(G(127, 12, 31), "--12-31");
  EXPECT_EQ(G(127, 15, 30), "---30");
  EXPECT_EQ(G(127, 15, 31), kInvalid);  // as a date alone these are all the bits, which mean something else
  EXPECT_EQ(Text("1D 0D" + Date(127, 15, 31)), "---31T13:29:00");
  EXPECT_EQ(G(24, 15, 1), "---01");
  EXPECT_EQ(Text("1D 0D" + Date(127, 15, 1)), "---01T13:29:00");
}

TEST(MBusTime, ADateThatIsNotSetStaysAsItWasSent) {
  EXPECT_EQ(Text("00 00"), "2000-00-00");
  EXPECT_EQ(Text("00 00 00 00"), "2000-00-00T00:00:00");
  EXPECT_EQ(Text("00 00 00 00 00 00"), "2000-00-00T00:00:00");
  EXPECT_EQ(Text("00 00 00"), "00:00:00");
}

TEST(MBusTime, HoursMinutesAndSecondsHaveTheirLimits) {
  EXPECT_EQ(F(0, 24, 23, 59), "2024-07-21T23:59:00");
  EXPECT_EQ(I(24, 23, 59, 59), "2024-07-21T23:59:59");
  EXPECT_EQ(J(23, 59, 59), "23:59:59");
  for (unsigned int hour = 24; hour < 32; ++hour) {
    EXPECT_EQ(F(0, 24, hour, 0), kNoPoint);
    EXPECT_EQ(I(24, hour, 0, 0), kNoPoint);
    EXPECT_EQ(J(hour, 0, 0), kNoPoint);
  }
  for (unsigned int minute = 60; minute < 64; ++minute) {
    EXPECT_EQ(F(0, 24, 0, minute), kNoPoint);
    EXPECT_EQ(I(24, 0, minute, 0), kNoPoint);
    EXPECT_EQ(J(0, minute, 0), kNoPoint);
    EXPECT_EQ(I(24, 0, 0, minute), kNoPoint);
    EXPECT_EQ(J(0, 0, minute), kNoPoint);
  }
}

TEST(MBusTime, AMeterMayCallItsTimeInvalid) {
  EXPECT_EQ(Text("AD 0D 38 11"), kInvalid);
  EXPECT_EQ(Text("80 00 00 00"), kInvalid);
  EXPECT_EQ(Text("1E 9D 4D 98 11 04"), kInvalid);
  EXPECT_EQ(Text("00 80 00 00 00 00"), kInvalid);
  for (const std::size_t size : {2, 3, 4, 6}) EXPECT_EQ(Text(Repeated("FF", size)), kInvalid) << size;
}

TEST(MBusTime, FlagsOfSummerTimeWeekAndLeapYearDoNotMatter) {
  EXPECT_EQ(Text("6D 8D 38 11"), "2009-01-24T13:45:00");
  EXPECT_EQ(Text("DE 5D ED 98 11 FF"), "2012-01-24T13:29:30");
  EXPECT_EQ(Text("DE DD ED"), "13:29:30");
}

TEST(MBusTime, NoTypeHasAnotherLength) {
  for (const std::size_t size : {0, 1, 5, 7, 8})
    for (const char* byte : {"00", "FF"})
      EXPECT_EQ(Text(Repeated(byte, size)), "a time of a length that no type has") << size;
}

TEST(MBusTime, KnowsWhichPartsWereSent) {
  const struct {
    const char* digits;
    bool date, time, seconds;
  } kCases[] = {
      {"DF 1C", true, false, false},
      {"1E 1D 0D", false, true, true},
      {"2D 0D 38 11", true, true, false},
      {"1E 1D 4D 98 11 04", true, true, true},
  };
  for (const auto& c : kCases) {
    cMBusTime time;
    const char* mark = nullptr;
    ASSERT_TRUE(ReadTime(Bytes(c.digits), time, mark));
    EXPECT_EQ(time.hasDate, c.date) << c.digits;
    EXPECT_EQ(time.hasTime, c.time) << c.digits;
    EXPECT_EQ(time.hasSeconds, c.seconds) << c.digits;
  }
}
