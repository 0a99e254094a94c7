// SPDX-License-Identifier: Apache-2.0
#include <tavctl/terminal_text.h>

#include <algorithm>
#include <iterator>

#include <gateway/form/utf8.h>
#include <tav/framework/helper.h>

namespace tav::ctl {

namespace {

struct cRange {
  char32_t first;
  char32_t last;
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
bool IsIn(const cRange (&ranges)[N], char32_t point) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [&](const cRange& range) { return point >= range.first && point <= range.last; });
}

bool IsControl(char32_t point) { return point < 0x20 || (point >= 0x7F && point <= 0x9F); }

}  // namespace

std::string ForTerminal(std::string_view text) {
  const std::string utf8 = form::ToUtf8(text);
  std::string shown;
  for (std::string_view rest = utf8; !rest.empty();) {
    const std::string_view before = rest;
    const char32_t point = form::TakeCharacter(rest);
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
    const char32_t point = form::TakeCharacter(utf8);
    if (point == form::kNoCharacter) utf8.remove_prefix(1);
    width += IsIn(kZeroWidth, point) ? 0 : IsIn(kWide, point) ? 2 : 1;
  }
  return width;
}

}  // namespace tav::ctl
