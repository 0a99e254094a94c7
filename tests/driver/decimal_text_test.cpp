// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/decimal_text.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using namespace tav;

namespace {

std::string Signed(std::int64_t value, int scaler) {
  const auto bits = static_cast<std::uint64_t>(value);
  return cDecimalText(value < 0, value < 0 ? 0 - bits : bits, scaler).ToString();
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
  const int most = cDecimalText::kMostScaler;
  const std::string zeros(cDecimalText::kMostScaler, '0');
  for (const int scaler : {most, most + 1, 1000000})
    EXPECT_EQ(cDecimalText(true, UINT64_MAX, scaler).View(), "-18446744073709551615" + zeros) << scaler;
  for (const int scaler : {-most, -most - 1, -1000000})
    EXPECT_EQ(cDecimalText(true, 1, scaler).View(), "-0." + zeros.substr(1) + "1") << scaler;
}

TEST(DecimalText, TakesDigitsOfAnySize) {
  EXPECT_EQ(cDecimalText(true, "123456789012345678901234567890", -29).View(), "-1.23456789012345678901234567890");
  EXPECT_EQ(cDecimalText(false, "0", 5).View(), "0");
  const std::string most(cDecimalText::kMostDigits, '7');
  EXPECT_EQ(cDecimalText(true, most, cDecimalText::kMostScaler).View(), "-" + most + std::string(400, '0'));
  EXPECT_EQ(cDecimalText(true, most + "8", -400).View(), "-0." + std::string(240, '0') + most);
}
