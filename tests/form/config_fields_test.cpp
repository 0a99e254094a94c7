// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_fields.h>

#include <gtest/gtest.h>

namespace tav::form {
namespace {

TEST(ConfigFields, AreSetByNameFromTheirText) {
  cCollectorConfig collector;
  std::string error;
  EXPECT_TRUE(SetByName(collector, kCollectorFields, "addr", "lp", error));
  EXPECT_TRUE(SetByName(collector, kCollectorFields, "activation", "true", error));
  EXPECT_TRUE(SetByName(collector, kCollectorFields, "push-random-offset", "65535", error));
  EXPECT_EQ(collector.addr, "lp");
  EXPECT_TRUE(collector.activation);
  EXPECT_EQ(FieldText(collector, *FindField(kCollectorFields, "push-random-offset")), "65535");
  EXPECT_EQ(FieldText(collector, *FindField(kCollectorFields, "activation")), "true");
}

TEST(ConfigFields, SayWhatIsWrongWithATextAndKeepTheirValue) {
  const struct {
    const char* name;
    const char* text;
    const char* error;
  } cases[] = {
      {"idy", "1",
       "there is no field 'idy'; there are idx, name, enabled, protocoll, host, uri, username, password, "
       "collect, maxruntime, log-enabled, post-enabled"},
      {"idx", "-1", "idx: expected a whole number from 0 to 18446744073709551615, found \"-1\""},
      {"idx", "18446744073709551616",
       "idx: expected a whole number from 0 to 18446744073709551615, found "
       "\"18446744073709551616\""},
      {"collect", "", "collect: expected a whole number from 0 to 4294967295, found \"\""},
      {"enabled", "yes", "enabled: expected true or false, found \"yes\""},
  };
  cPushTarget target;
  const vorn::cRecord before = target.ToRecord();
  for (const auto& [name, text, expected] : cases) {
    std::string error;
    EXPECT_FALSE(SetByName(target, kPushTargetFields, name, text, error));
    EXPECT_EQ(error, expected);
  }
  EXPECT_EQ(target.ToRecord(), before);
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
