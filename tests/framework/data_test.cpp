// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/data.h>

#include <gtest/gtest.h>

#include <string>

using vorn::cData;

namespace {

cData Bytes(std::initializer_list<unsigned char> bytes) { return cData(bytes.begin(), bytes.size()); }

}  // namespace

TEST(Data, StartsEmpty) {
  const cData data;
  EXPECT_TRUE(data.IsEmpty());
  EXPECT_EQ(data.GetSize(), 0u);
  EXPECT_EQ(data.AsText(), "");
  EXPECT_EQ(data.ToString(0), "");
  EXPECT_NE(data.GetBytes(), nullptr);
}

TEST(Data, IsMadeFromBytesOrFromAText) {
  EXPECT_EQ(cData("ab", 2), cData(std::string("ab")));
  EXPECT_EQ(cData(nullptr, 0), cData());
  EXPECT_EQ(cData(std::string("a\0b", 3)).GetSize(), 3u);
}

TEST(Data, IsNotMadeFromATextByAccident) {
  EXPECT_FALSE((std::is_convertible_v<std::string, cData>));
  EXPECT_TRUE((std::is_constructible_v<cData, std::string>));
}

TEST(Data, AppendsAndClears) {
  cData data = Bytes({1});
  data.Append("\x02\x03", 2);
  data.Append(nullptr, 0);
  EXPECT_EQ(data, Bytes({1, 2, 3}));
  data.Clear();
  EXPECT_TRUE(data.IsEmpty());
}

TEST(Data, GivesItsBytesAsTheyAre) {
  const cData data = Bytes({'a', 0, 0xFF});
  EXPECT_EQ(data.AsText(), std::string("a\0\xFF", 3));
  EXPECT_EQ(data.AsView(), data.AsText());
  EXPECT_EQ(data.GetBytes()[2], 0xFF);
}

TEST(Data, GivesZeroForAByteBehindItsEnd) {
  const cData data = Bytes({7, 0x80});
  EXPECT_EQ(data[0], 7);
  EXPECT_EQ(data[1], 0x80);
  EXPECT_EQ(data[2], 0);
  EXPECT_EQ(cData()[0], 0);
}

TEST(Data, IsPrintableWithAtLeastOneByteAndNoneOutsideBlankToTilde) {
  EXPECT_FALSE(cData().IsPrintable());
  EXPECT_TRUE(Bytes({0x20, 0x7E}).IsPrintable());
  EXPECT_FALSE(Bytes({'a', 0x1F}).IsPrintable());
  EXPECT_FALSE(Bytes({'a', 0x7F}).IsPrintable());
  EXPECT_FALSE(Bytes({'a', 0x80}).IsPrintable());
  EXPECT_FALSE(Bytes({'a', 0xFF}).IsPrintable());
  EXPECT_FALSE(Bytes({0}).IsPrintable());
}

TEST(Data, PrintsTwoUpperCaseDigitsAByteWithABlankBetween) {
  EXPECT_EQ(Bytes({0x00, 0x0A, 0xFF}).ToString(0), "00 0A FF");
}

TEST(Data, BreaksTheLineAfterEveryPerLineBytes) {
  const cData data = Bytes({1, 2, 3, 4, 5});
  EXPECT_EQ(data.ToString(2), "01 02\n03 04\n05");
  EXPECT_EQ(data.ToString(5), "01 02 03 04 05");
  EXPECT_EQ(data.ToString(1), "01\n02\n03\n04\n05");
}

TEST(Data, PutsItsSeparatorBetweenTwoBytes) {
  cData data = Bytes({1, 2, 3});
  data.SetSeparator("");
  EXPECT_EQ(data.ToString(0), "010203");
  data.SetSeparator(", ");
  EXPECT_EQ(data.ToString(0), "01, 02, 03");
}

TEST(Data, CopiesItsSeparatorButDoesNotCompareIt) {
  cData data = Bytes({1, 2});
  data.SetSeparator("-");
  const cData copy = data;
  EXPECT_EQ(copy.ToString(0), "01-02");
  EXPECT_EQ(copy, Bytes({1, 2}));
}

TEST(Data, ComparesBytes) {
  EXPECT_EQ(Bytes({1, 2}), Bytes({1, 2}));
  EXPECT_NE(Bytes({1, 2}), Bytes({1, 3}));
  EXPECT_NE(Bytes({1, 2}), Bytes({1, 2, 0}));
}

TEST(Data, ReadsHexadecimalDigitsInEitherCase) {
  cData data;
  ASSERT_TRUE(cData::FromHex("0aFF 10\n20\t30\r", data));
  EXPECT_EQ(data, Bytes({0x0A, 0xFF, 0x10, 0x20, 0x30}));
  ASSERT_TRUE(cData::FromHex("", data));
  EXPECT_TRUE(data.IsEmpty());
}

TEST(Data, RefusesEverythingThatIsNotHexadecimalAndStaysAsItWas) {
  for (const char* text : {"0", "0A0", "0 A", "0G", "G0", "0x0A", "0A,0B", "-1", "0A\v"}) {
    cData data = Bytes({42});
    EXPECT_FALSE(cData::FromHex(text, data)) << text;
    EXPECT_EQ(data, Bytes({42})) << text;
  }
}

TEST(Data, ReadsWhatItPrints) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  const cData data(all);
  for (std::size_t perLine : {0, 1, 16, 300}) {
    cData read;
    ASSERT_TRUE(cData::FromHex(data.ToString(perLine), read));
    EXPECT_EQ(read, data);
  }
}
