// SPDX-License-Identifier: Apache-2.0
#include <tavctl/utf8.h>

#include <gtest/gtest.h>

namespace tav::ctl {
namespace {

TEST(Utf8, LeavesUtf8Alone) {
  for (const char* text : {"", "kWh", "m\xC2\xB3", "\xE2\x82\xAC", "\xF0\x9F\x94\x8C", "\xEF\xBF\xBD"})
    EXPECT_EQ(ToUtf8(text), text);
}

TEST(Utf8, TakesEverythingElseAsIso8859) {
  EXPECT_EQ(ToUtf8("m\xB3"), "m\xC2\xB3");
  EXPECT_EQ(ToUtf8("\xB0"
                   "C"),
            "\xC2\xB0"
            "C");
  EXPECT_EQ(ToUtf8("\xFF"), "\xC3\xBF");
}

TEST(Utf8, KnowsWhatIsNoUtf8) {
  const struct {
    const char* text;
    const char* why;
  } cases[] = {
      {"\xC2", "cut off"},
      {"\xE2\x82", "cut off"},
      {"\x80", "begins with a continuation"},
      {"\xC0\x80", "longer than necessary"},
      {"\xE0\x80\x80", "longer than necessary"},
      {"\xF0\x80\x80\x80", "longer than necessary"},
      {"\xED\xA0\x80", "a surrogate"},
      {"\xF4\x90\x80\x80", "behind the last character"},
      {"\xF5\x80\x80\x80", "no lead byte"},
      {"\xE2\x28\xA1", "no continuation"},
  };
  for (const auto& [text, why] : cases) EXPECT_NE(ToUtf8(text), text) << why;
}

TEST(Utf8, ShowsControlCharactersInsteadOfSendingThem) {
  EXPECT_EQ(ForTerminal("a\x1b[2Jb"), "a\\x1b[2Jb");
  EXPECT_EQ(ForTerminal("line\nline\t\x7f"), "line\\x0aline\\x09\\x7f");
  EXPECT_EQ(ForTerminal("\xC2\x9B"), "\\x9b") << "the one-byte form of an escape sequence's beginning";
  EXPECT_EQ(ForTerminal("\x9B"), "\\x9b") << "also where it came as ISO 8859-1";
  EXPECT_EQ(ForTerminal("m\xB3"), "m\xC2\xB3");
}

TEST(Utf8, KnowsHowWideATextIs) {
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
