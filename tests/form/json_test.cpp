// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/json.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace tav::form {
namespace {

using testing::HasSubstr;

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
}

TEST(Json, IsOneLineOfUtf8WhateverItsTextsAre) {
  EXPECT_EQ(ToLine(cJson{{"a", "x\ny"}, {"b", "\xC3"}}), "{\"a\":\"x\\ny\",\"b\":\"\xEF\xBF\xBD\"}");
}

}  // namespace
}  // namespace tav::form
