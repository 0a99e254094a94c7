// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_json.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/form/config_columns.h>

namespace tav::form {
namespace {

cMeterConfig Meter() {
  cMeterConfig meter;
  meter.SetIdentification("123", "5", "E", "ABC");
  meter.SetKey("0011");
  cCollectorConfig collector;
  collector.SetAddr("lp");
  meter.AddCollector(collector);
  return meter;
}

TEST(ConfigJson, HoldsAMeterWithItsCollectors) {
  Faults faults;
  cMeterConfig read;
  MeterFromJson(MeterToJson(Meter(), eSecrets::Show), read, "meter", faults);
  EXPECT_TRUE(faults.empty());
  EXPECT_EQ(read.ToRecord(), Meter().ToRecord());
  EXPECT_FALSE(MeterToJson(Meter(), eSecrets::Leave).contains("key"));
}

TEST(ConfigJson, LeavesAloneWhatAnObjectDoesNotHave) {
  cMeterConfig meter = Meter();
  Faults faults;
  MeterFromJson(cJson{{"vendor", "V"}}, meter, {}, faults);
  EXPECT_EQ(meter.vendor, "V");
  EXPECT_EQ(meter.key, "0011");
  EXPECT_EQ(meter.collectors.size(), 1u);
}

TEST(ConfigJson, NamesEveryFaultOfATemplateWithItsPlace) {
  const cJson object = {{"name", 5},
                        {"meter-config", {{"collectors", cJson::array({{{"addr", true}}, 7})}}},
                        {"push-config", {{"hst", "x"}}}};
  cMeterTemplate preset;
  Faults faults;
  TemplateFromJson(object, preset, "template", faults);
  std::vector<std::string> places;
  for (const cFault& fault : faults) places.push_back(fault.place);
  EXPECT_THAT(places, testing::ElementsAre("template.name", "template.meter-config.collectors[0].addr",
                                           "template.meter-config.collectors[1]", "template.push-config.hst"));
}

TEST(ConfigJson, RefusesAThingThatIsNoObject) {
  for (const char* text : {"5", "null", "[]", "\"x\""}) {
    cMeterTemplate preset;
    Faults faults;
    TemplateFromJson(cJson::parse(text), preset, "template", faults);
    ASSERT_EQ(faults.size(), 1u) << text;
    EXPECT_EQ(faults[0].what, std::string("expected fields, found ") + text);
  }
}

TEST(ConfigJson, IsARowOfAListing) {
  const vorn::cRecord row = RowOf(MeterToJson(Meter(), eSecrets::Leave));
  EXPECT_EQ(ToLine(RowToJson(row, Columns(kMeterColumns).first(3))), R"({"meterID":"123","addr":"5","medium":"E"})");
  EXPECT_FALSE(row.GetPar(kCollectors).IsValid());
}

}  // namespace
}  // namespace tav::form
