// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_types.h>

#include <gtest/gtest.h>

using namespace tav::sml;

TEST(SmlFault, SaysWhereWhatAndWhy) {
  EXPECT_EQ((cSmlFault{37, "scaler", "a signed integer", 0x62}).ToString(),
            "byte 37, scaler: expected a signed integer, found 0x62");
  EXPECT_EQ((cSmlFault{0, "crc", "0x00", -1}).ToString(), "byte 0, crc: expected 0x00, found the end of the bytes");
}

TEST(SmlValue, KnowsItsSign) {
  cSmlValue value;
  value.bits = ~std::uint64_t{0} - 4;
  value.type = eSmlInt;
  EXPECT_TRUE(value.IsNegative());
  EXPECT_EQ(value.Magnitude(), 5u);
  EXPECT_EQ(value.Signed(), -5);
  value.type = eSmlUInt;
  EXPECT_FALSE(value.IsNegative());
  EXPECT_EQ(value.Magnitude(), value.bits);
}

TEST(SmlTime, IsAPointInTimeOnlyAsATimestamp) {
  EXPECT_FALSE((cSmlTime{eSmlNoTime}).IsAbsolute());
  EXPECT_FALSE((cSmlTime{eSmlSecIndex, 5}).IsAbsolute());
  EXPECT_FALSE((cSmlTime{eSmlBareSeconds, 5}).IsAbsolute());
  EXPECT_TRUE((cSmlTime{eSmlTimestamp, 5}).IsAbsolute());
  EXPECT_TRUE((cSmlTime{eSmlLocalTimestamp, 5}).IsAbsolute());
}
