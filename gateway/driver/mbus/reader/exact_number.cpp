// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/exact_number.h>

#include <algorithm>
#include <string_view>

namespace tav::mbus {

cExactNumber::cExactNumber(std::uint64_t magnitude) {
  for (; magnitude != 0; magnitude /= kLimb) m_limbs[m_count++] = static_cast<std::uint32_t>(magnitude % kLimb);
}

void cExactNumber::MultiplyBy(std::uint32_t factor) {
  std::uint64_t carry = 0;
  for (std::size_t i = 0; i < m_count; ++i) {
    carry += std::uint64_t{m_limbs[i]} * factor;
    m_limbs[i] = static_cast<std::uint32_t>(carry % kLimb);
    carry /= kLimb;
  }
  for (; carry != 0 && m_count < kLimbs; carry /= kLimb) m_limbs[m_count++] = static_cast<std::uint32_t>(carry % kLimb);
}

void cExactNumber::MultiplyByPower(std::uint32_t base, unsigned int exponent) {
  for (; exponent >= 8; exponent -= 8) {
    const std::uint32_t square = base * base;
    MultiplyBy(square * square);
    MultiplyBy(square * square);
  }
  for (; exponent > 0; --exponent) MultiplyBy(base);
}

cDecimalText cExactNumber::ToDecimal(bool negative, int scaler) const {
  std::array<char, kLimbs * kLimbDigits> digits;
  std::size_t at = digits.size();
  for (std::size_t i = 0; i < m_count; ++i)
    for (std::uint32_t limb = m_limbs[i], place = 0; place < kLimbDigits; ++place, limb /= 10)
      digits[--at] = static_cast<char>('0' + limb % 10);
  while (at < digits.size() && digits[at] == '0') ++at;
  const std::string_view text(digits.data() + at, digits.size() - at);
  return {negative, text.empty() ? "0" : text, scaler};
}

}  // namespace tav::mbus
