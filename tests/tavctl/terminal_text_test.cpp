// SPDX-License-Identifier: Apache-2.0
#include <tavctl/terminal_text.h>

#include <gtest/gtest.h>

namespace tav::ctl {
namespace {

TEST(TerminalText, ShowsControlCharactersInsteadOfSendingThem) {
  EXPECT_EQ(ForTerminal("a\x1b[2Jb"), "a\\x1b[2Jb");
  EXPECT_EQ(ForTerminal("line\nline\t\x7f"), "line\\x0aline\\x09\\x7f");
  EXPECT_EQ(ForTerminal("\xC2\x9B"), "\\x9b") << "the one-byte form of an escape sequence's beginning";
  EXPECT_EQ(ForTerminal("\x9B"), "\\x9b") << "also where it came as ISO 8859-1";
  EXPECT_EQ(ForTerminal("m\xB3"), "m\xC2\xB3");
}

TEST(TerminalText, KnowsHowWideATextIs) {
  const struct {
    const char* text;
    std::size_t width;
  } cases[] = {
      {"", 0},
      {"kWh", 3},
      {"m\xC2\xB3", 2},
      {"e\xCC\x81", 1},         // e and a combining accent
      {"\xE6\xB0\xB4", 2},      // a wide character
      {"\xF0\x9F\x94\x8C", 2},  // a pictogram
      {"\xE2\x80\x8B", 0},      // a space without width
      {"\xC3\x84rger", 5},
  };
  for (const auto& [text, width] : cases) EXPECT_EQ(DisplayWidth(text), width) << text;
}

}  // namespace
}  // namespace tav::ctl
