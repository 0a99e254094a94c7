// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/list_reading.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <gateway/driver/sml/dlms_units.h>

#include "sml_telegrams.h"

namespace tav::sml {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int kNoon = 1'700'000'000;

struct cMade {
  bool made = false;
  cMeterRecord reading;
};

cMade Make(const std::string& payload) {
  struct cSink : cSmlSink {
    void OnList(const cSmlFrame&, const cSmlList& list) override {
      made.made = ToReading(list, "ehzif", "E", cMeterTav::eTsMeter, kNoon, made.reading);
    }
    cMade made;
  } sink;
  AddDlmsUnits();
  std::make_unique<cSmlReader>(sink)->ReadPayload(View(payload));
  return sink.made;
}

std::vector<std::string> Values(const std::vector<cTestEntry>& entries) {
  const cMeterRecord reading = Make(Payload(entries)).reading;
  std::vector<std::string> values;
  for (const cMeasurementEntry& entry : reading.GetMeasurementEntries())
    values.push_back(entry.GetName() + "=" + entry.GetValue() + " " + entry.GetUnit());
  return values;
}

cTestEntry Energy(unsigned int e, unsigned int f, const std::string& value) {
  return {PackObis(1, 0, 1, 8, e, f), "", "", "621E", "5201", value, ""};
}

}  // namespace

TEST(ListReading, BearsWhoWhatAndWhen) {
  const auto [made, reading] = Make(Payload({Energy(0, 255, "6205")}));
  ASSERT_TRUE(made);
  EXPECT_EQ(reading.GetDriver(), "ehzif");
  EXPECT_EQ(reading.GetMedium(), "E");
  EXPECT_EQ(reading.GetMeterID(),
            "0A01545354000102"
            "0304");
  EXPECT_EQ(reading.GetAddr(), reading.GetMeterID());
  EXPECT_EQ(reading.GetTimestamp(), kNoon);
  EXPECT_EQ(reading.GetTimesource(), cMeterTav::eTsMeter);
  EXPECT_TRUE(reading.IsValid());
}

TEST(ListReading, HasTheValuesThatHaveAUnit) {
  EXPECT_THAT(Values({{PackObis(1, 0, 96, 50, 1, 1), "", "", "", "", "04544156", ""},
                      Energy(0, 255, "6205"),
                      {PackObis(1, 0, 32, 7, 0), "", "", "6223", "52FF", "6308FD", ""}}),
              ElementsAre("1-0:1.8.0=50 Wh", "1-0:32.7.0=230.1 V"));
}

// As the library's import names it.
TEST(ListReading, NamesASingleValueWithAGroupFAsTheImportDoes) {
  EXPECT_THAT(Values({Energy(0, 255, "6205"), Energy(0, 1, "6206")}),
              ElementsAre("1-0:1.8.0=50 Wh", "1-0:1.8.0*17301759=60 Wh"));
}

TEST(ListReading, LosesNoneOfTheValuesThatTheImportTakesForOne) {
  EXPECT_THAT(Values({Energy(0, 255, "6201"), Energy(0, 96, "6202"), Energy(0, 97, "6203"), Energy(1, 97, "6204"),
                      Energy(0, 100, "6205")}),
              ElementsAre("1-0:1.8.0=10 Wh", "1-0:1.8.0*17301759=20 Wh", "1-0:1.8.1*17302015=40 Wh",
                          "1-0:1.8.0*97=30 Wh", "1-0:1.8.0*100=50 Wh"));
}

TEST(ListReading, KeepsTheFirstOfAnIdentifierThatComesTwice) {
  EXPECT_THAT(Values({Energy(0, 255, "6201"), Energy(0, 255, "6202"), Energy(0, 96, "6203"), Energy(0, 97, "6204"),
                      Energy(0, 97, "6205")}),
              ElementsAre("1-0:1.8.0=10 Wh", "1-0:1.8.0*17301759=30 Wh", "1-0:1.8.0*97=40 Wh"));
}

TEST(ListReading, PassesOverAConfusedEntryWithoutAUnit) {
  EXPECT_THAT(Values({Energy(0, 255, "6201"),
                      {PackObis(1, 0, 96, 50, 1, 1), "", "", "", "", "04544156", ""},
                      {PackObis(1, 0, 96, 50, 1, 4), "", "", "", "", "04544156", ""}}),
              ElementsAre("1-0:1.8.0=10 Wh"));
}

TEST(ListReading, IsNoneWithoutAValue) {
  const auto [made, reading] = Make(Payload({{PackObis(1, 0, 96, 50, 1, 1), "", "", "", "", "04544156", ""}}));
  EXPECT_FALSE(made);
  EXPECT_THAT(Make(Payload({})).reading.GetMeasurementEntries(), IsEmpty());
  EXPECT_FALSE(Make(Payload({})).made);
}

}  // namespace tav::sml
