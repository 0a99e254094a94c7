// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/json.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace tav::form {
namespace {

using testing::HasSubstr;

std::string Nested(int depth) {
  const auto count = static_cast<std::size_t>(depth);
  return std::string(count, '[') + std::string(count, ']');
}

std::string ErrorOf(const std::string& text) {
  cJson json = "before";
  std::string error;
  EXPECT_FALSE(ParseJson(text, json, error)) << text.substr(0, 80);
  EXPECT_EQ(json, "before") << "what cannot be read changes nothing";
  return error;
}

TEST(Json, KeepsTheOrderOfMembers) {
  cJson json;
  std::string error;
  ASSERT_TRUE(ParseJson("{\"z\": 1, \"a\": [true, null, \"x\"]}", json, error)) << error;
  EXPECT_EQ(ToLine(json), "{\"z\":1,\"a\":[true,null,\"x\"]}");
}

TEST(Json, SaysWhereATextIsNone) {
  EXPECT_THAT(ErrorOf("{\"a\": }"), testing::StartsWith("parse error at line 1, column 7"));
  EXPECT_THAT(ErrorOf(""), HasSubstr("unexpected end of input"));
  EXPECT_THAT(ErrorOf("{} x"), HasSubstr("column 4"));
  EXPECT_THAT(ErrorOf("\"\xFF\""), HasSubstr("UTF-8"));
  EXPECT_THAT(ErrorOf("[1e999]"), HasSubstr("number overflow"));
}

TEST(Json, IsNestedOnlySoDeep) {
  cJson json;
  std::string error;
  EXPECT_TRUE(ParseJson(Nested(kMaxJsonDepth - 1), json, error));
  EXPECT_TRUE(ParseJson(Nested(kMaxJsonDepth), json, error));
  EXPECT_EQ(ToLine(json), Nested(kMaxJsonDepth));
  EXPECT_EQ(ErrorOf(Nested(kMaxJsonDepth + 1)), "nested deeper than 32");
  EXPECT_EQ(ErrorOf("{\"a\": " + Nested(kMaxJsonDepth) + "}"), "nested deeper than 32");
  EXPECT_EQ(ErrorOf(Nested(1'000'000)), "nested deeper than 32");
  EXPECT_THAT(ErrorOf(std::string(1'000'000, '[')), HasSubstr("unexpected end of input"));
}

TEST(Json, IsOneLineOfUtf8WhateverItsTextsAre) {
  EXPECT_EQ(ToLine(cJson{{"a", "x\ny"}, {"b", "\xC3"}}), "{\"a\":\"x\\ny\",\"b\":\"\xEF\xBF\xBD\"}");
}

}  // namespace
}  // namespace tav::form
