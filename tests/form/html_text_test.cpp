// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/html_text.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tav::form {
namespace {

TEST(HtmlText, EscapesWhateverWouldBecomeMarkup) {
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {"plain text", "plain text"},
      {"<script>alert('x')</script>", "&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;"},
      {"\" onclick=\"x", "&quot; onclick=&quot;x"},
      {"a & b &amp; c", "a &amp; b &amp;amp; c"},
      {"{}", "{}"},
      {"\xC3\xA4", "\xC3\xA4"},
      {"\xE4", "\xC3\xA4"},
      {"\xC0\xBC", "\xC3\x80\xC2\xBC"},  // an overlong "<" is two letters
      {"a\nb\tc\rd", "a\nb\tc\rd"},
  };
  for (const auto& [text, escaped] : cases) EXPECT_EQ(EscapeHtml(text), escaped) << text;
}

TEST(HtmlText, ShowsThatThereWasAControlCharacter) {
  for (int code = 0; code < 0x20; ++code) {
    if (code == '\n' || code == '\t' || code == '\r') continue;
    EXPECT_EQ(EscapeHtml(std::string(1, static_cast<char>(code))), "\xEF\xBF\xBD") << code;
  }
  EXPECT_EQ(EscapeHtml("\x7F"), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace tav::form
