// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/capture_bytes.h>

#include <utility>

namespace tav {

namespace {

int Digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool FromDigits(std::string_view text, std::string& bytes) {
  for (std::size_t at = 0; at < text.size();) {
    if (IsBlank(text[at])) {
      ++at;
      continue;
    }
    const int high = Digit(text[at]);
    const int low = at + 1 < text.size() ? Digit(text[at + 1]) : -1;
    if (high < 0 || low < 0) return false;
    bytes += static_cast<char>(high << 4 | low);
    at += 2;
  }
  return !bytes.empty();
}

}  // namespace

cCaptureBytes::cCaptureBytes(std::string_view capture) {
  std::string bytes;
  m_hexText = FromDigits(capture, bytes);
  m_bytes = m_hexText ? std::move(bytes) : std::string(capture);
}

std::string HexDigits(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

}  // namespace tav
