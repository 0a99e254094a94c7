// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/utf8.h>

#include <cstddef>

namespace tav::form {

namespace {

std::size_t SequenceSize(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty())
    if (TakeCharacter(text) == kNoCharacter) return false;
  return true;
}

}  // namespace

char32_t TakeCharacter(std::string_view& text) {
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t size = SequenceSize(lead);
  if (size == 0 || size > text.size()) return kNoCharacter;
  char32_t point = size == 1 ? lead : lead & (0x7Fu >> size);
  for (std::size_t i = 1; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) return kNoCharacter;
    point = point << 6 | (byte & 0x3Fu);
  }
  if (point < kSmallest[size] || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) return kNoCharacter;
  text.remove_prefix(size);
  return point;
}

std::string ToUtf8(std::string_view text) {
  if (IsUtf8(text)) return std::string(text);
  std::string utf8;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      utf8 += character;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

}  // namespace tav::form
