// SPDX-License-Identifier: Apache-2.0
#include <tav/config/hardware_id.h>

#include <gtest/gtest.h>

using tav::GetHWNameFromID;

TEST(HardwareId, EveryCodeHasItsName) {
  const struct {
    const char *code, *name;
  } kCases[] = {
      {"001", "RS485 / LAN / GPRS"},
      {"002", "RS485 / WMBUS / LAN / GPRS"},
      {"003", "RS485 / LAN / WAN / GPRS"},
      {"004", "RS485 / WMBUS / LAN / WAN / GPRS"},
      {"005", "RS485 / LAN"},
      {"006", "RS485 / WMBUS / LAN"},
      {"007", "RS485 / LAN / WAN"},
      {"008", "RS485 / WMBUS / LAN / WAN"},
      {"012", "RS232 / WMBUS / LAN / GPRS"},
      {"014", "RS232 / WMBUS / LAN / WAN / GPRS"},
      {"015", "RS232 / LAN"},
      {"016", "RS232 / WMBUS / LAN"},
      {"017", "RS232 / LAN / WAN"},
      {"018", "RS232 / WMBUS / LAN / WAN"},
  };
  for (const auto& c : kCases) EXPECT_EQ(GetHWNameFromID(std::string("GW-") + c.code), c.name);
}

TEST(HardwareId, Codes011And013AreWrittenWithoutBlanks) {
  EXPECT_EQ(GetHWNameFromID("GW-011"), "RS232/LAN/GPRS");
  EXPECT_EQ(GetHWNameFromID("GW-013"), "RS232/LAN/WAN/GPRS");
}

TEST(HardwareId, TheSecondPartIsTheCodeAndNoOtherCounts) {
  EXPECT_EQ(GetHWNameFromID("001-005-013"), "RS485 / LAN");
  EXPECT_EQ(GetHWNameFromID("-005"), "RS485 / LAN") << "the first part may be empty";
  EXPECT_EQ(GetHWNameFromID("-005-"), "RS485 / LAN");
}

TEST(HardwareId, AnyOtherIsUnknown) {
  for (const char* id : {"", "-", "001", "GW", "GW-", "GW-000", "GW-009", "GW-010", "GW-019", "GW-1", "GW-0001",
                         "GW- 001", "GW--001", "GW-001 "})
    EXPECT_EQ(GetHWNameFromID(id), "Hardware ID unknown") << id;
}
