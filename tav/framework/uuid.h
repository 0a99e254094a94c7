// SPDX-License-Identifier: Apache-2.0
// cUuid: a transaction, request or session identifier of 16 bytes. The nil identifier is not valid.
#pragma once

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include <tav/framework/export.h>

namespace vorn {

class VORN_API cUuid {
 public:
  static constexpr std::size_t kSize = 16;

  // Nil.
  cUuid() = default;
  explicit cUuid(const std::array<unsigned char, kSize>& bytes) : m_bytes(bytes) {}

  // Gives this one a fresh random value (RFC 9562, version 4).
  void Create();
  void Clear() { m_bytes.fill(0); }
  // The canonical form in either case; leaves the value alone and returns false for any other text.
  bool FromString(std::string_view text);

  bool IsValid() const { return *this != cUuid(); }
  // Canonical, lower case: "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx".
  std::string ToString() const;
  const std::array<unsigned char, kSize>& GetBytes() const { return m_bytes; }

  friend bool operator==(const cUuid& a, const cUuid& b) {
    return std::memcmp(a.m_bytes.data(), b.m_bytes.data(), kSize) == 0;
  }
  friend bool operator!=(const cUuid& a, const cUuid& b) { return !(a == b); }
  friend bool operator<(const cUuid& a, const cUuid& b) {
    return std::memcmp(a.m_bytes.data(), b.m_bytes.data(), kSize) < 0;
  }

 private:
  std::array<unsigned char, kSize> m_bytes{};
};

}  // namespace vorn
