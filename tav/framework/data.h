// SPDX-License-Identifier: Apache-2.0
// cData: bytes, and their text form in hexadecimal digits.
//
// The separator between two bytes of the text form is state of the object: it is copied, but neither
// compared nor sent. A fresh object separates by one blank ("0A 01"); an empty separator gives "0A01".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <tav/framework/export.h>

namespace vorn {

class VORN_API cData {
 public:
  cData() = default;
  cData(const void* bytes, std::size_t size) { Append(bytes, size); }
  explicit cData(const std::string& bytes) : m_bytes(bytes) {}

  void Append(const void* bytes, std::size_t size) {
    if (size != 0) m_bytes.append(static_cast<const char*>(bytes), size);
  }
  void Clear() { m_bytes.clear(); }

  // The text put between two bytes by ToString.
  void SetSeparator(const std::string& separator) { m_separator = separator; }

  std::size_t GetSize() const { return m_bytes.size(); }
  bool IsEmpty() const { return m_bytes.empty(); }
  // Valid until the object is changed; never null.
  const unsigned char* GetBytes() const { return reinterpret_cast<const unsigned char*>(m_bytes.data()); }
  // The bytes taken as text, as they are.
  std::string AsText() const { return m_bytes; }
  std::string_view AsView() const { return m_bytes; }
  // At least one byte, and all in 0x20..0x7E.
  bool IsPrintable() const;
  // Two upper-case hexadecimal digits a byte; a line break after every perLine bytes, none for 0.
  std::string ToString(std::size_t perLine) const;
  // Hexadecimal digits, two a byte, in either case; blanks between bytes are skipped.
  // Leaves data alone and returns false when the text is anything else.
  static bool FromHex(std::string_view text, cData& data);

  // The byte at a position; 0 behind the end.
  unsigned char operator[](std::size_t at) const {
    return at < m_bytes.size() ? static_cast<unsigned char>(m_bytes[at]) : static_cast<unsigned char>(0);
  }
  friend bool operator==(const cData& a, const cData& b) { return a.m_bytes == b.m_bytes; }
  friend bool operator!=(const cData& a, const cData& b) { return !(a == b); }

 private:
  std::string m_bytes;
  std::string m_separator = " ";
};

}  // namespace vorn
