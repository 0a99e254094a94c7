// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/utf8.h>

#include <gtest/gtest.h>

namespace tav::form {
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

TEST(Utf8, GivesTheCharactersOfATextOneByOne) {
  std::string_view text = "m\xC2\xB3\xF0\x9F\x94\x8C\xFF";
  EXPECT_EQ(TakeCharacter(text), U'm');
  EXPECT_EQ(TakeCharacter(text), U'\u00B3');
  EXPECT_EQ(TakeCharacter(text), U'\U0001F50C');
  EXPECT_EQ(TakeCharacter(text), kNoCharacter);
  EXPECT_EQ(text, "\xFF") << "what is none stays there";
}

}  // namespace
}  // namespace tav::form
