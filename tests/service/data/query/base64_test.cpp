// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/base64.h>

#include <gtest/gtest.h>

namespace tav::data {
namespace {

TEST(Base64, WritesTheExamplesOfItsStandard) {
  constexpr std::pair<std::string_view, std::string_view> kExamples[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="},
      {"foobar", "Zm9vYmFy"},
  };
  for (const auto& [bytes, text] : kExamples) EXPECT_EQ(ToBase64(bytes), text);
}

TEST(Base64, WritesAllBytes) { EXPECT_EQ(ToBase64({"\x00\x10\x83\xFF\xEF\xBE", 6}), "ABCD/+++"); }

}  // namespace
}  // namespace tav::data
