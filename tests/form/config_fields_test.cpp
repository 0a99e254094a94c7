// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_fields.h>

#include <gtest/gtest.h>

namespace tav::form {
namespace {

TEST(ConfigFields, AreSetByNameFromTheirText) {
  const struct {
    const char* name;
    const char* text;
  } cases[] = {{"addr", "lp"},
               {"activation", "true"},
               {"countRP", "4294967295"},
               {"push-target-idx", "18446744073709551615"},
               {"push-random-offset", "65535"},
               {"push-random-offset", "0"}};
  cCollectorConfig collector;
  for (const auto& [name, text] : cases) {
    std::string error;
    EXPECT_TRUE(SetByName(collector, kCollectorFields, name, text, error)) << error;
    EXPECT_EQ(FieldText(collector, *FindField(kCollectorFields, name)), text);
  }
  EXPECT_EQ(collector.countRP, 4294967295u);
  EXPECT_EQ(collector.pushTargetIdx, 18446744073709551615ull);
}

TEST(ConfigFields, SayWhatIsWrongWithATextAndKeepTheirValue) {
  const struct {
    const char* name;
    const char* text;
    const char* error;
  } cases[] = {
      {"color", "red",
       "there is no field 'color'; there are addr, activation, event-type, obis-ids, countRP, distanceRP, "
       "push-target-idx, push-target-name, push-period, push-enabled, push-raw-enabled, push-random-offset"},
      {"activation", "yes", "activation: expected true or false, found \"yes\""},
      {"countRP", "", "countRP: expected a whole number from 0 to 4294967295, found \"\""},
      {"countRP", "-1", "countRP: expected a whole number from 0 to 4294967295, found \"-1\""},
      {"countRP", "4294967296", "countRP: expected a whole number from 0 to 4294967295, found \"4294967296\""},
      {"push-target-idx", "18446744073709551616",
       "push-target-idx: expected a whole number from 0 to 18446744073709551615, found \"18446744073709551616\""},
      {"push-random-offset", "65536", "push-random-offset: expected a whole number from 0 to 65535, found \"65536\""},
  };
  cCollectorConfig collector;
  const vorn::cRecord before = collector.ToRecord();
  for (const auto& [name, text, expected] : cases) {
    std::string error;
    EXPECT_FALSE(SetByName(collector, kCollectorFields, name, text, error));
    EXPECT_EQ(error, expected);
  }
  EXPECT_EQ(collector.ToRecord(), before);
}

TEST(ConfigFields, OfATemplateReachIntoItsMeterAndPushTarget) {
  cMeterTemplate preset;
  std::string error;
  EXPECT_TRUE(SetTemplateByName(preset, "name", "preset", error));
  EXPECT_TRUE(SetTemplateByName(preset, "meter-config.medium", "E", error));
  EXPECT_TRUE(SetTemplateByName(preset, "push-config.host", "host:1", error));
  EXPECT_EQ(preset.name, "preset");
  EXPECT_EQ(preset.meterConfig.medium, "E");
  EXPECT_EQ(preset.pushConfig.host, "host:1");
  for (const char* name : {"", ".", "medium", "meter-config", "meter-config.", "meter-config.host", "other.name"}) {
    EXPECT_FALSE(SetTemplateByName(preset, name, "x", error)) << name;
    EXPECT_EQ(error.find("there is no field '"), 0u) << error;
  }
}

}  // namespace
}  // namespace tav::form
