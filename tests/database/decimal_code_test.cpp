// SPDX-License-Identifier: Apache-2.0
#include <gateway/database/decimal_code.h>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <gtest/gtest.h>

#include <random>

namespace tav::data {
namespace {

TEST(DecimalCode, PacksTheTextsOfMeters) {
  struct {
    const char* text;
    std::int64_t packed;
  } const cases[] = {
      {"0", 0},
      {"7", 7 * 16},
      {"-7", -7 * 16},
      {"12.50", 1250 * 16 + 2},
      {"0.0", 1},
      {"-0.0", -1},
      {"0.05", 5 * 16 + 2},
      {"12345678.9", 123456789 * 16 + 1},
      {"-0.5", -(81)},
      {"100", 100 * 16},
      {"0.000000000000001", 16 + 15},
      {"576460752303423487", ((std::int64_t{1} << 59) - 1) * 16},
  };
  for (const auto& [text, packed] : cases) {
    EXPECT_EQ(PackDecimal(text), packed) << text;
    EXPECT_EQ(UnpackDecimal(packed), text);
  }
}

TEST(DecimalCode, LeavesAloneWhatWouldNotComeBackTheSame) {
  for (const char* text : {"",
                           "-",
                           ".",
                           "-0",
                           "+1",
                           "01",
                           "-01",
                           "00.5",
                           ".5",
                           "5.",
                           "1e3",
                           "1,5",
                           " 1",
                           "1 ",
                           "1.2.3",
                           "--1",
                           "NaN",
                           "0x10",
                           "0.0000000000000001",
                           "576460752303423488",
                           "99999999999999999999",
                           "1.",
                           "-.5",
                           "1-",
                           "1.-5"})
    EXPECT_FALSE(PackDecimal(text)) << text;
  EXPECT_FALSE(PackDecimal(std::string_view("1\0", 2)));
  EXPECT_FALSE(PackDecimal("\xB5"));
}

// Texts near the border of the form: mostly digits, with now and then something else.
std::string RandomText(std::mt19937& random) {
  static constexpr std::string_view kOften = "0123456789", kSeldom = "0.-+ eE";
  std::string text;
  for (std::size_t length = random() % 21; text.size() < length;)
    text += random() % 5 != 0 ? kOften[random() % kOften.size()] : kSeldom[random() % kSeldom.size()];
  if (random() % 4 == 0) text.insert(0, "-");
  return text;
}

TEST(DecimalCode, WhatItPacksComesBackByteForByte) {
  std::mt19937 random(1);
  unsigned int packedOnes = 0;
  for (int i = 0; i < 200'000; ++i) {
    const std::string text = RandomText(random);
    const auto packed = PackDecimal(text);
    if (!packed) continue;
    ++packedOnes;
    ASSERT_EQ(UnpackDecimal(*packed), text);
  }
  EXPECT_GT(packedOnes, 20'000u);
}

TEST(DecimalCode, EveryPlainDecimalUpToSeventeenDigitsIsPacked) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 100'000; ++i) {
    std::string text = std::to_string(random() % 100'000'000'000'000'000ull >> random() % 50);
    const std::size_t scale = random() % 16;
    if (text.size() <= scale) text.insert(0, scale + 1 - text.size(), '0');
    if (scale != 0) text.insert(text.size() - scale, ".");
    ASSERT_TRUE(PackDecimal(text)) << text;
    ASSERT_EQ(UnpackDecimal(*PackDecimal(text)), text);
  }
}

TEST(DecimalCode, TheDatabaseAloneUnpacksTheSame) {
  SQLite::Database database(":memory:", SQLite::OPEN_READWRITE);
  SQLite::Statement unpack(database, "SELECT " + UnpackSql("v") + " FROM (SELECT ? AS v)");
  std::mt19937_64 random(3);
  for (int i = 0; i < 20'000; ++i) {
    std::int64_t packed = static_cast<std::int64_t>(random() >> (1 + random() % 63));
    if (random() % 2 == 0) packed = -packed;
    unpack.bind(1, packed);
    ASSERT_TRUE(unpack.executeStep());
    ASSERT_EQ(unpack.getColumn(0).getString(), UnpackDecimal(packed));
    unpack.reset();
  }
  unpack.bind(1, "1e5 stays");
  ASSERT_TRUE(unpack.executeStep());
  EXPECT_EQ(unpack.getColumn(0).getString(), "1e5 stays");
}

}  // namespace
}  // namespace tav::data
