// SPDX-License-Identifier: Apache-2.0
#include <tavctl/utf8.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include <tav/framework/helper.h>

namespace tav::ctl {

namespace {

using CodePoint = char32_t;

constexpr CodePoint kNone = 0xFFFFFFFF;

struct cRange {
  CodePoint first;
  CodePoint last;
};

// The blocks of combining and invisible characters, and those of East Asian Width W and F (Unicode, UAX 11).
constexpr cRange kZeroWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F},
                                 {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x2028, 0x202E},
                                 {0x2060, 0x2064}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
                                 {0xFEFF, 0xFEFF}};
constexpr cRange kWide[] = {{0x1100, 0x115F},  {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xA960, 0xA97F},
                            {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                            {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF},
                            {0x20000, 0x3FFFD}};

template <std::size_t N>
bool IsIn(const cRange (&ranges)[N], CodePoint point) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [&](const cRange& range) { return point >= range.first && point <= range.last; });
}

std::size_t SequenceSize(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

// The next character, taken off the text; kNone, and the text left alone, when there is no valid one.
CodePoint Take(std::string_view& text) {
  constexpr CodePoint kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t size = SequenceSize(lead);
  if (size == 0 || size > text.size()) return kNone;
  CodePoint point = size == 1 ? lead : lead & (0x7Fu >> size);
  for (std::size_t i = 1; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) return kNone;
    point = point << 6 | (byte & 0x3Fu);
  }
  if (point < kSmallest[size] || point > 0x10FFFF || (point >= 0xD800 && point <= 0xDFFF)) return kNone;
  text.remove_prefix(size);
  return point;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty())
    if (Take(text) == kNone) return false;
  return true;
}

bool IsControl(CodePoint point) { return point < 0x20 || (point >= 0x7F && point <= 0x9F); }

}  // namespace

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

std::string ForTerminal(std::string_view text) {
  const std::string utf8 = ToUtf8(text);
  std::string shown;
  for (std::string_view rest = utf8; !rest.empty();) {
    const std::string_view before = rest;
    const CodePoint point = Take(rest);
    if (IsControl(point))
      shown += vorn::FormatString("\\x%02x", static_cast<unsigned int>(point));
    else
      shown += before.substr(0, before.size() - rest.size());
  }
  return shown;
}

std::size_t DisplayWidth(std::string_view utf8) {
  std::size_t width = 0;
  while (!utf8.empty()) {
    const CodePoint point = Take(utf8);
    if (point == kNone) utf8.remove_prefix(1);
    width += IsIn(kZeroWidth, point) ? 0 : IsIn(kWide, point) ? 2 : 1;
  }
  return width;
}

}  // namespace tav::ctl
