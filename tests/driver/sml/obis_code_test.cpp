// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/obis_code.h>

#include <gtest/gtest.h>

using namespace tav::sml;

TEST(ObisCode, IsPackedByteByByte) {
  EXPECT_EQ(PackObis(1, 0, 1, 8, 0), 0x0100010800FFu);
  EXPECT_EQ(PackObis(129, 129, 199, 130, 3), 0x8181C78203FFu);
  EXPECT_EQ(PackObis(1, 0, 96, 50, 1, 1), 0x010060320101u);
}

TEST(ObisCode, AlwaysWritesItsGroupF) {
  EXPECT_EQ(ObisText(0x0100010800FF), "1-0:1.8.0*255");
  EXPECT_EQ(ObisText(0x010001080060), "1-0:1.8.0*96");
  EXPECT_EQ(ObisText(0xFFFFFFFFFFFF), "255-255:255.255.255*255");
  EXPECT_EQ(ObisText(0), "0-0:0.0.0*0");
}

TEST(ObisCode, KnowsStatusWords) {
  EXPECT_TRUE(IsStatusWord(PackObis(1, 0, 96, 5, 5)));
  EXPECT_TRUE(IsStatusWord(PackObis(1, 0, 96, 5, 0)));
  EXPECT_FALSE(IsStatusWord(PackObis(1, 0, 96, 1, 0)));
  EXPECT_FALSE(IsStatusWord(PackObis(1, 0, 5, 96, 0)));
}

TEST(ObisCode, NamesWhatMetersCommonlySend) {
  EXPECT_STREQ(ObisCommonName(PackObis(1, 0, 1, 8, 0)), "active energy import, total");
  EXPECT_STREQ(ObisCommonName(PackObis(1, 0, 72, 7, 0)), "voltage, phase L3");
  EXPECT_EQ(ObisCommonName(PackObis(1, 0, 1, 8, 0, 1)), nullptr);
}
