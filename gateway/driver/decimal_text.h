// SPDX-License-Identifier: Apache-2.0
// The exact decimal text of a whole number times a power of ten, without floating point and without the heap:
// 54301577 and -1 give "5430157.7", -5 and -2 "-0.05", 2324 and 3 "2324000", 0 and -1 "0.0".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tav {

class cDecimalText {
 public:
  // Digits there may be, and how far they may be shifted either way; what is more is cut off.
  static constexpr std::size_t kMostDigits = 160;
  static constexpr int kMostScaler = 400;

  cDecimalText(bool negative, std::uint64_t magnitude, int scaler);
  // digits: decimal, without leading zeros; "0" for nothing.
  cDecimalText(bool negative, std::string_view digits, int scaler);

  std::string_view View() const { return {m_text, m_size}; }
  std::string ToString() const { return std::string(View()); }

 private:
  void Set(bool negative, std::string_view digits, int scaler);
  void Append(std::string_view text);
  void AppendZeros(std::size_t count);

  std::size_t m_size = 0;
  char m_text[4 + kMostDigits + kMostScaler];  // sign, "0." and all the digits and zeros
};

}  // namespace tav
