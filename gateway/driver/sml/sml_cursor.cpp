// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_cursor.h>

namespace tav::sml {

// Each further byte brings four more bits of length. The length counts the bytes of the field itself, except in a list.
cTypeLength ReadLongTypeLength(const std::uint8_t* at, const std::uint8_t* end) {
  constexpr std::uint32_t kMaxLength = 0x0FFFFFFF;  // far above any frame; one more digit of it still fits
  const std::uint8_t* const begin = at;
  cTypeLength head;
  head.type = *at & 0x70;
  head.size = *at & 0x0F;
  while ((*at++ & kTlMore) != 0) {
    if (head.size > kMaxLength >> 4) head.expected = "a length below 2^28";
    if (at == end || (*at & 0x70) != 0) head.expected = "another byte of length";
    if (*head.expected != '\0') return head;
    head.size = head.size << 4 | (*at & 0x0F);
  }
  const std::ptrdiff_t own = at - begin;
  if (own > 0xFF)
    head.expected = "a shorter type-length field";
  else if (head.type != eTlList && head.size < static_cast<std::uint32_t>(own))
    head.expected = "a length that counts its own bytes";
  else
    head.own = static_cast<std::uint8_t>(own);
  return head;
}

void NoteFault(cSmlFault& fault, std::uint32_t offset, int found, const char* field, const char* expected) {
  fault = {offset, field, expected, found};
}

}  // namespace tav::sml
