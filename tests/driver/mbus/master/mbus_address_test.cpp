// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_address.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::mbus {
namespace {

using testing::HasSubstr;

cMBusAddress Parsed(const std::string& text) {
  cMBusAddress address;
  std::string error;
  EXPECT_TRUE(cMBusAddress::Parse(text, address, error)) << error;
  return address;
}

TEST(MBusAddress, IsReadFromItsText) {
  const std::pair<std::string, cMBusAddress> kCases[] = {
      {"0", cMBusAddress::Primary(0)},
      {"5", cMBusAddress::Primary(5)},
      {"250", cMBusAddress::Primary(250)},
      {"254", cMBusAddress::Primary(kBroadcastReply)},
      {"44950146", {kSecondary, 0x44950146}},
      {"4495FFFF", {kSecondary, 0x4495FFFF}},
      {"449501464D341804", {kSecondary, 0x44950146, 0x4D34, 0x18, 0x04}},
      {"FFFFFFFF4D34FF07", {kSecondary, 0xFFFFFFFF, 0x4D34, 0xFF, 0x07}},
      {"0000000100000000", {kSecondary, 0x00000001, 0, 0, 0}},
  };
  for (const auto& [text, address] : kCases) {
    EXPECT_EQ(Parsed(text), address) << text;
    EXPECT_EQ(address.ToString(), text);
  }
  EXPECT_EQ(Parsed("4495ffff"), Parsed("4495FFFF"));
  EXPECT_EQ(Parsed("005"), Parsed("5"));
  EXPECT_EQ(Parsed("44950146FFFFFFFF").ToString(), "44950146");
}

TEST(MBusAddress, RefusesWhatIsNone) {
  const std::pair<std::string, std::string> kCases[] = {
      {"251", "'251' is no primary address; they go from 0 to 250"},
      {"253", "no primary address"},
      {"255", "no primary address"},
      {"999", "no primary address"},
      {"", "'' is no address; expected"},
      {"-1", "'-1' is no address"},
      {" 5", "is no address"},
      {"1000", "is no address"},
      {"A1", "is no address"},
      {"4495014", "is no address"},
      {"449501461", "is no address"},
      {"4495014G", "is no address"},
      {"449501464D34180", "is no address"},
      {"449501464D3418044", "is no address"},
      {"0x950146", "is no address"},
  };
  for (const auto& [text, reason] : kCases) {
    cMBusAddress address = cMBusAddress::Primary(9);
    std::string error;
    EXPECT_FALSE(cMBusAddress::Parse(text, address, error)) << text;
    EXPECT_THAT(error, HasSubstr(reason)) << text;
    EXPECT_EQ(address, cMBusAddress::Primary(9)) << text;
  }
}

TEST(MBusAddress, MatchesTheMetersItMeans) {
  cMBusHeader header;
  header.hasMeter = true;
  header.id = 0x44950146;
  header.manufacturer = 0x4D34;
  header.version = 0x18;
  header.medium = 0x04;
  EXPECT_TRUE(cMBusAddress().Matches(header));
  EXPECT_TRUE(cMBusAddress::Of(header).Matches(header));
  for (const char* text : {"44950146", "F4F5F1F6", "FFFFFFFF4D341804", "FFFFFFFFFFFFFF04"})
    EXPECT_TRUE(Parsed(text).Matches(header)) << text;
  for (const char* text : {"44950147", "54950146", "F4F5F1F7", "449501464D351804", "449501464D341904",
                           "449501464D341805", "FFFFFFFFFFFFFF05"})
    EXPECT_FALSE(Parsed(text).Matches(header)) << text;
}

TEST(MBusAddress, TellsWhetherSeveralMetersMayBeMeant) {
  for (const char* text : {"0", "5", "250", "44950146", "449501464D341804"})
    EXPECT_FALSE(Parsed(text).MayBeSeveral()) << text;
  for (const char* text : {"254", "4495014F", "F4950146", "FFFFFFFF4D341804"})
    EXPECT_TRUE(Parsed(text).MayBeSeveral()) << text;
}

}  // namespace
}  // namespace tav::mbus
