// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/show.h>

#include <gtest/gtest.h>

#include <tests/support/time_zone.h>

namespace tav::pages {
namespace {

constexpr unsigned int kNoon = 1'709'294'400;  // 2024-03-01T12:00:00Z

TEST(Show, TimesAreLocal) {
  const cTimeZone zone;
  EXPECT_EQ(ShowTime(kNoon), "2024-03-01 13:00:00");
  EXPECT_EQ(ShowTime(0), "");
  EXPECT_EQ(ShowTime(0xFFFFFFFF), "2106-02-07 07:28:15");
  EXPECT_EQ(TimeElement(kNoon).GetText(), "<time datetime=\"2024-03-01T12:00:00Z\">2024-03-01 13:00:00</time>");
  EXPECT_TRUE(TimeElement(0).IsEmpty());
}

TEST(Show, AValueIsReadFromItsRow) {
  const cTimeZone zone;
  vorn::cRecord row;
  row.AppendTextPar("meterID", "m<1>");
  row.AppendTextPar("obis-id", "1-0:1.8.0");
  row.AppendTextPar("value", "0012.50");
  row.AppendTextPar("unit", "m\xB3");
  row.AppendUIntPar("timestamp", kNoon);
  row.AppendTextPar("time-source", "rtc");
  const cShownValue value(row);
  EXPECT_EQ(value.meterId, "m<1>");
  EXPECT_EQ(value.value, "0012.50") << "exactly as it is stored";
  EXPECT_EQ(value.unit, "m\xC2\xB3");
  EXPECT_EQ(value.when, "2024-03-01 13:00:00");
  EXPECT_EQ(value.timeSource, "rtc");
}

TEST(Show, AnIdentifierIsCalledByItsRulesName) {
  cObisMap map;
  map.Add({1, "Energy import", "1-0:1.8.0", "protocol=dlms"});
  EXPECT_EQ(ObisText("1-0:1.8.0", map), "Energy import");
  EXPECT_EQ(ObisText("<no>", map), "<no>");
}

}  // namespace
}  // namespace tav::pages
