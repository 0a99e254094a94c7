// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/html.h>

#include <gtest/gtest.h>

namespace tav::pages {
namespace {

TEST(Html, PutsValuesWhereTheTemplateSays) {
  EXPECT_EQ(cHtml().Put("<p>").GetText(), "<p>");
  EXPECT_EQ(cHtml().Put("{}", std::string("<b>")).GetText(), "&lt;b&gt;");
  EXPECT_EQ(cHtml().Put("<a href=\"{}\">{}</a>{}", "/x?a&b", 7, -1LL).GetText(), "<a href=\"/x?a&amp;b\">7</a>-1");
  EXPECT_EQ(cHtml().Put("{}{}", std::string("{}"), std::string("x")).GetText(), "{}x") << "a value is no template";
}

TEST(Html, WhatIsHtmlAlreadyStaysSo) {
  const cHtml inner = cHtml().Put("<b>{}</b>", std::string("<"));
  EXPECT_EQ(cHtml().Put("<p>{}</p>", inner).Put(inner).GetText(), "<p><b>&lt;</b></p><b>&lt;</b>");
}

TEST(Html, CanBeEmptied) {
  cHtml html;
  EXPECT_TRUE(html.IsEmpty());
  html.Put("x");
  EXPECT_FALSE(html.IsEmpty());
  html.Clear();
  EXPECT_TRUE(html.IsEmpty());
}

TEST(Html, AddressesCarryAnyText) {
  EXPECT_EQ(MakeUrl("/meter", {}), "/meter");
  EXPECT_EQ(MakeUrl("/meter", {{"id", "1 EMH&x=\"<\xC3\xA4"}, {"obis", "1-0:1.8.0*255"}}),
            "/meter?id=1%20EMH%26x%3D%22%3C%C3%A4&obis=1-0%3A1.8.0%2A255");
  EXPECT_EQ(MakeUrl("/", {{"a", std::string_view("\r\n\0", 3)}, {"b", ""}}), "/?a=%0D%0A%00&b=");
  EXPECT_EQ(MakeUrl("/", {{"a", "AZaz09-._~"}}), "/?a=AZaz09-._~");
}

}  // namespace
}  // namespace tav::pages
