// SPDX-License-Identifier: Apache-2.0
#include <tav/config/config_interface.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using tav::cConfigInterface;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

// Every field but the map.
std::string Dump(const cConfigInterface& c) {
  return (c.valid ? "valid " : "invalid ") + c.physicalLayer + "|" + c.config + "|" + c.options + "|" + c.error;
}

}  // namespace

TEST(ConfigInterface, StartsEmptyAndInvalid) {
  const cConfigInterface config;
  EXPECT_EQ(Dump(config), "invalid |||");
  EXPECT_THAT(config.optionMap, IsEmpty());
}

TEST(ConfigInterface, TakesLayerAndOptionsApart) {
  cConfigInterface config;
  EXPECT_TRUE(config.SetConfig("RS485,baud=9600,parity=none"));
  EXPECT_EQ(Dump(config), "valid RS485|RS485,baud=9600,parity=none|baud=9600,parity=none|");
  EXPECT_THAT(config.optionMap, ElementsAre(Pair("baud", "9600"), Pair("parity", "none")));
}

TEST(ConfigInterface, ALayerAloneIsEnough) {
  cConfigInterface config;
  EXPECT_TRUE(config.SetConfig("RS485"));
  EXPECT_EQ(Dump(config), "valid RS485|RS485||");
  EXPECT_THAT(config.optionMap, IsEmpty());
}

TEST(ConfigInterface, WithoutALayerItSaysSoInGerman) {
  for (const char* text : {"", ",", ",,,"}) {
    cConfigInterface config;
    EXPECT_FALSE(config.SetConfig(text));
    EXPECT_EQ(Dump(config), std::string("invalid |") + text + "||physikalischer Layer fehlt");
  }
}

TEST(ConfigInterface, AFailureKeepsTheLayerAndASuccessTheErrorText) {
  cConfigInterface config;
  EXPECT_TRUE(config.SetConfig("RS485,baud=9600"));
  EXPECT_FALSE(config.SetConfig(""));
  EXPECT_EQ(Dump(config), "invalid RS485|||physikalischer Layer fehlt");
  EXPECT_TRUE(config.SetConfig("RS232"));
  EXPECT_EQ(Dump(config), "valid RS232|RS232||physikalischer Layer fehlt");
}

TEST(ConfigInterface, OptionsOfEarlierTextsStayUntilCleaned) {
  cConfigInterface config;
  config.SetConfig("RS485,baud=9600,term");
  config.SetConfig("RS232,baud=2400,parity=none");
  EXPECT_EQ(config.options, "baud=2400,parity=none") << "the text is the last one's alone";
  EXPECT_THAT(config.optionMap, ElementsAre(Pair("baud", "2400"), Pair("parity", "none"), Pair("term", "")));
  config.Clean();
  EXPECT_EQ(Dump(config), "invalid |||");
  EXPECT_THAT(config.optionMap, IsEmpty());
}

TEST(ConfigInterface, OptionsOfOddFormsKeepTheirKey) {
  cConfigInterface config;
  EXPECT_TRUE(config.SetConfig(",RS485,,a=,=b,c=2=3, d = e ,"));
  EXPECT_EQ(config.options, "a=,=b,c=2=3, d = e ");
  EXPECT_THAT(config.optionMap, ElementsAre(Pair("", "b"), Pair(" d ", " e "), Pair("a", ""), Pair("c", "")));
}

TEST(ConfigInterface, TheFirstTokenIsTheLayerWhateverItIs) {
  cConfigInterface config;
  EXPECT_TRUE(config.SetConfig("baud=9600,RS485"));
  EXPECT_EQ(config.physicalLayer, "baud=9600");
  EXPECT_THAT(config.optionMap, ElementsAre(Pair("RS485", "")));
}

TEST(ConfigInterface, TakesItsOwnTexts) {
  cConfigInterface config;
  config.SetConfig("RS485,baud=9600,term");
  EXPECT_TRUE(config.SetConfig(config.options));
  EXPECT_EQ(Dump(config), "valid baud=9600|baud=9600,term|term|");
  EXPECT_TRUE(config.SetConfig(config.config));
  EXPECT_EQ(Dump(config), "valid baud=9600|baud=9600,term|term|");
}

TEST(ConfigInterface, TheTextHasTheOptionsInTheOrderOfTheirKeys) {
  cConfigInterface config;
  config.SetConfig("RS485,term,baud=9600");
  EXPECT_EQ(config.ToString(), "RS485:baud=9600,term");
  config.Clean();
  config.SetConfig("RS485");
  EXPECT_EQ(config.ToString(), "RS485:");
  EXPECT_EQ(cConfigInterface().ToString(), ":");
}
