// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/data.h>

namespace vorn {

namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

bool cData::IsPrintable() const {
  for (char c : m_bytes)
    if (c < 0x20 || c > 0x7E) return false;
  return !m_bytes.empty();
}

std::string cData::ToString(std::size_t perLine) const {
  static const char digits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(m_bytes.size() * (2 + m_separator.size()));
  for (std::size_t i = 0; i < m_bytes.size(); ++i) {
    if (i != 0) {
      if (perLine != 0 && i % perLine == 0)
        text += '\n';
      else
        text += m_separator;
    }
    const auto byte = static_cast<unsigned char>(m_bytes[i]);
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

bool cData::FromHex(std::string_view text, cData& data) {
  std::string bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r') {
      ++i;
      continue;
    }
    const int high = HexDigit(text[i]);
    const int low = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
    if (high < 0 || low < 0) return false;
    bytes += static_cast<char>(high << 4 | low);
    i += 2;
  }
  data.m_bytes = std::move(bytes);
  return true;
}

}  // namespace vorn
