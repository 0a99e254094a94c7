// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/decimal_text.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace tav {

cDecimalText::cDecimalText(bool negative, std::uint64_t magnitude, int scaler) {
  char buffer[20];
  const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, magnitude);
  Set(negative, {buffer, static_cast<std::size_t>(end.ptr - buffer)}, scaler);
}

cDecimalText::cDecimalText(bool negative, std::string_view digits, int scaler) {
  Set(negative, digits.substr(0, kMostDigits), scaler);
}

void cDecimalText::Set(bool negative, std::string_view digits, int scaler) {
  scaler = std::clamp(scaler, -kMostScaler, kMostScaler);
  if (negative) Append("-");
  if (scaler >= 0) {
    Append(digits);
    if (digits != "0") AppendZeros(static_cast<std::size_t>(scaler));
    return;
  }
  const auto places = static_cast<std::size_t>(-scaler);
  if (places < digits.size()) {
    Append(digits.substr(0, digits.size() - places));
    Append(".");
    Append(digits.substr(digits.size() - places));
  } else {
    Append("0.");
    AppendZeros(places - digits.size());
    Append(digits);
  }
}

void cDecimalText::Append(std::string_view text) {
  std::memcpy(m_text + m_size, text.data(), text.size());
  m_size += text.size();
}

void cDecimalText::AppendZeros(std::size_t count) {
  std::memset(m_text + m_size, '0', count);
  m_size += count;
}

}  // namespace tav
