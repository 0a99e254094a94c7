// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/uuid.h>

#include <sys/random.h>

#include <cerrno>

#include <tav/framework/data.h>

namespace vorn {

void cUuid::Create() {
  // Up to 256 bytes are given whole or not at all once the kernel's pool is ready; only a signal during boot
  // interrupts.
  while (getrandom(m_bytes.data(), kSize, 0) != static_cast<ssize_t>(kSize) && errno == EINTR) {
  }
  m_bytes[6] = static_cast<unsigned char>((m_bytes[6] & 0x0F) | 0x40);
  m_bytes[8] = static_cast<unsigned char>((m_bytes[8] & 0x3F) | 0x80);
}

bool cUuid::FromString(std::string_view text) {
  if (text.size() != 36) return false;
  std::string digits;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    if (dash != (text[i] == '-')) return false;
    if (!dash) digits += text[i];
  }
  cData bytes;
  if (!cData::FromHex(digits, bytes) || bytes.GetSize() != kSize) return false;
  std::memcpy(m_bytes.data(), bytes.GetBytes(), kSize);
  return true;
}

std::string cUuid::ToString() const {
  static const char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < kSize; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += digits[m_bytes[i] >> 4];
    text += digits[m_bytes[i] & 15];
  }
  return text;
}

}  // namespace vorn
