// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/exact_number.h>

#include <gtest/gtest.h>

using tav::mbus::cExactNumber;

namespace {

std::string Power(std::uint32_t base, unsigned int exponent) {
  cExactNumber number(1);
  number.MultiplyByPower(base, exponent);
  return number.ToDecimal(false, 0).ToString();
}

}  // namespace

TEST(ExactNumber, KeepsEveryDigit) {
  for (const std::uint64_t magnitude : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{999'999'999},
                                        std::uint64_t{1'000'000'000}, std::uint64_t{1'000'000'001}, UINT64_MAX})
    EXPECT_EQ(cExactNumber(magnitude).ToDecimal(false, 0).ToString(), std::to_string(magnitude));
}

TEST(ExactNumber, MultipliesWithoutRounding) {
  cExactNumber number(UINT64_MAX);
  number.MultiplyBy(UINT32_MAX);
  EXPECT_EQ(number.ToDecimal(false, 0).ToString(), "79228162495817593515539431425");
  number.MultiplyBy(1);
  EXPECT_EQ(number.ToDecimal(true, -28).ToString(), "-7.9228162495817593515539431425");
  number.MultiplyBy(0);
  EXPECT_EQ(number.ToDecimal(false, 0).ToString(), "0");
}

TEST(ExactNumber, PowersAreExact) {
  EXPECT_EQ(Power(2, 0), "1");
  EXPECT_EQ(Power(5, 1), "5");
  EXPECT_EQ(Power(5, 7), "78125");
  EXPECT_EQ(Power(5, 8), "390625");
  EXPECT_EQ(Power(5, 9), "1953125");
  EXPECT_EQ(Power(2, 63), "9223372036854775808");
  EXPECT_EQ(Power(2, 104), "20282409603651670423947251286016");
  EXPECT_EQ(Power(10, 150), "1" + std::string(150, '0'));
}

TEST(ExactNumber, ZeroStaysZeroWhateverItIsMultipliedBy) {
  cExactNumber number(0);
  number.MultiplyByPower(5, 150);
  EXPECT_EQ(number.ToDecimal(false, 3).ToString(), "0");
  EXPECT_EQ(number.ToDecimal(false, -3).ToString(), "0.000");
}
