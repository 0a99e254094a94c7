// SPDX-License-Identifier: Apache-2.0
// The exact decimal text of a whole number times a power of ten, without floating point and without the heap:
// 54301577 and -1 give "5430157.7", -5 and -2 "-0.05", 2324 and 3 "2324000", 0 and -1 "0.0".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

class cDecimalText {
 public:
  cDecimalText(bool negative, std::uint64_t magnitude, std::int8_t scaler);
  // Of a number; the sign and width are those tagged on the wire.
  cDecimalText(const cSmlValue& value, std::int8_t scaler)
      : cDecimalText(value.IsNegative(), value.Magnitude(), scaler) {}

  std::string_view View() const { return {m_text, m_size}; }
  std::string ToString() const { return std::string(View()); }

 private:
  void Append(std::string_view text);
  void AppendZeros(std::size_t count);

  std::size_t m_size = 0;
  char m_text[160];  // sign, point, 20 digits, and 128 zeros at most
};

}  // namespace tav::sml
