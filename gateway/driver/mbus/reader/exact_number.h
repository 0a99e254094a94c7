// SPDX-License-Identifier: Apache-2.0
// cExactNumber: a whole number of any size that the numbers of meters can come to. What a meter sends as a real number
// is a whole number times a power of two, which has an exact decimal form as well.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <gateway/driver/decimal_text.h>

namespace tav::mbus {

class cExactNumber {
 public:
  explicit cExactNumber(std::uint64_t magnitude);

  void MultiplyBy(std::uint32_t factor);
  // exponent times the same; no more than a 32-bit real number needs (150) fits beside other factors.
  void MultiplyByPower(std::uint32_t base, unsigned int exponent);
  // The number times a power of ten.
  cDecimalText ToDecimal(bool negative, int scaler) const;

 private:
  static constexpr std::uint32_t kLimb = 1'000'000'000;
  static constexpr std::size_t kLimbDigits = 9;
  static constexpr std::size_t kLimbs = 17;  // 153 digits
  static_assert(kLimbs * kLimbDigits <= cDecimalText::kMostDigits);

  std::array<std::uint32_t, kLimbs> m_limbs{};  // least significant first
  std::size_t m_count = 0;                      // limbs in use
};

}  // namespace tav::mbus
