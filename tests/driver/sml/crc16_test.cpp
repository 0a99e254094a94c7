// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/crc16.h>

#include <gtest/gtest.h>

#include <string>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

// The definition: bit by bit, lowest first.
std::uint16_t BitByBit(const std::string& bytes, std::uint16_t start) {
  std::uint32_t crc = start;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0x8408 : crc >> 1;
  }
  return static_cast<std::uint16_t>(crc);
}

}  // namespace

TEST(Crc16, GivesThePublishedCheckValues) {
  EXPECT_EQ(Crc16X25(View("123456789")), 0x906E);
  EXPECT_EQ(Crc16Kermit(View("123456789")), 0x2189);
}

TEST(Crc16, AgreesWithTheDefinitionAtEveryLength) {
  std::string bytes;
  for (unsigned int size = 0; size <= 100; ++size) {
    EXPECT_EQ(Crc16Kermit(View(bytes)), BitByBit(bytes, 0)) << size;
    EXPECT_EQ(Crc16X25(View(bytes)), static_cast<std::uint16_t>(~BitByBit(bytes, 0xFFFF))) << size;
    bytes += static_cast<char>(size * 37 + 201);
  }
}

TEST(Crc16, KnowsEachVariantByItsOrderOnTheWire) {
  const std::string bytes = "123456789";
  EXPECT_EQ(MatchCrc16(View(bytes), 0x6E, 0x90), eCrcX25) << "low byte first";
  EXPECT_EQ(MatchCrc16(View(bytes), 0x21, 0x89), eCrcKermit) << "high byte first";
  EXPECT_EQ(MatchCrc16(View(bytes), 0x90, 0x6E), eCrcNone);
  EXPECT_EQ(MatchCrc16(View(bytes), 0x89, 0x21), eCrcNone);
}

TEST(Crc16, NamesItsVariants) {
  EXPECT_STREQ(CrcKindText(eCrcX25), "CRC-16/X-25");
  EXPECT_STREQ(CrcKindText(eCrcKermit), "CRC-16/KERMIT");
  EXPECT_STREQ(CrcKindText(eCrcNone), "none");
}
