// SPDX-License-Identifier: Apache-2.0
// A capture as people keep them: raw bytes, or the same as text of hexadecimal digits. Which it is is found by looking.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tav {

class cCaptureBytes {
 public:
  // Text is taken as digits when it holds nothing but pairs of them, blanks and line ends, and at least one pair.
  explicit cCaptureBytes(std::string_view capture);

  std::span<const std::uint8_t> Get() const {
    return {reinterpret_cast<const std::uint8_t*>(m_bytes.data()), m_bytes.size()};
  }
  bool IsHexText() const { return m_hexText; }

 private:
  std::string m_bytes;
  bool m_hexText = false;
};

// The other way round: upper-case digits, two a byte.
std::string HexDigits(std::span<const std::uint8_t> bytes);

}  // namespace tav
