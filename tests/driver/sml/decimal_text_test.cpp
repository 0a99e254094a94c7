// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/decimal_text.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using namespace tav::sml;

namespace {

std::string Signed(std::int64_t value, int scaler) {
  cSmlValue sent;
  sent.type = eSmlInt;
  sent.bits = static_cast<std::uint64_t>(value);
  return cDecimalText(sent, static_cast<std::int8_t>(scaler)).ToString();
}

}  // namespace

TEST(DecimalText, IsExact) {
  const struct {
    std::int64_t value;
    int scaler;
    const char* text;
  } kCases[] = {
      {54301577, -1, "5430157.7"},
      {2324, 3, "2324000"},
      {0, 0, "0"},
      {0, -1, "0.0"},
      {0, -3, "0.000"},
      {0, 3, "0"},
      {5, -1, "0.5"},
      {5, -2, "0.05"},
      {12, -3, "0.012"},
      {12, -2, "0.12"},
      {123, -2, "1.23"},
      {101700000, -5, "1017.00000"},
      {-5, 0, "-5"},
      {-5, -1, "-0.5"},
      {-5, -2, "-0.05"},
      {-29912, -2, "-299.12"},
      {-5, 2, "-500"},
      {INT64_MAX, 0, "9223372036854775807"},
      {INT64_MIN, 0, "-9223372036854775808"},
      {INT64_MIN, -19, "-0.9223372036854775808"},
      {INT64_MIN, -20, "-0.09223372036854775808"},
      {INT64_MIN, 2, "-922337203685477580800"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Signed(c.value, c.scaler), c.text) << c.value << " " << c.scaler;
}

TEST(DecimalText, TakesTheLargestUnsignedNumber) {
  EXPECT_EQ(cDecimalText(false, UINT64_MAX, 0).View(), "18446744073709551615");
  EXPECT_EQ(cDecimalText(false, UINT64_MAX, -20).View(), "0.18446744073709551615");
}

TEST(DecimalText, HasRoomForTheOutermostScalers) {
  EXPECT_EQ(cDecimalText(true, UINT64_MAX, 127).View(), "-18446744073709551615" + std::string(127, '0'));
  EXPECT_EQ(cDecimalText(true, 1, -128).View(), "-0." + std::string(127, '0') + "1");
}
