// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/password_hash.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string Hash(const std::string& password) {
  std::string error;
  return HashPassword(password, error);
}

std::string Fault(const std::string& password) {
  std::string error;
  EXPECT_EQ(HashPassword(password, error), "");
  return error;
}

TEST(PasswordHash, FitsItsPasswordOnly) {
  const std::string hash = Hash("correct horse");
  EXPECT_THAT(hash, StartsWith("$y$"));
  EXPECT_TRUE(FitsPassword("correct horse", hash));
  for (const std::string& other : {std::string(), std::string("correct hors"), std::string("correct horse "),
                                   std::string("Correct horse"), std::string("correct horse\0", 14)})
    EXPECT_FALSE(FitsPassword(other, hash)) << other;
}

TEST(PasswordHash, IsSalted) { EXPECT_NE(Hash("correct horse"), Hash("correct horse")); }

TEST(PasswordHash, APasswordHasALength) {
  EXPECT_THAT(Fault(std::string(kMinPassword - 1, 'x')), HasSubstr("at least 8"));
  EXPECT_TRUE(FitsPassword(std::string(kMinPassword, 'x'), Hash(std::string(kMinPassword, 'x'))));
  const std::string longest(kMaxPassword, 'x');
  EXPECT_TRUE(FitsPassword(longest, Hash(longest)));
  EXPECT_FALSE(FitsPassword(longest.substr(1), Hash(longest))) << "every byte counts";
  EXPECT_THAT(Fault(longest + "x"), HasSubstr("at most 256"));
  EXPECT_FALSE(FitsPassword(longest + "x", Hash(longest)));
  EXPECT_THAT(Fault(std::string("12345678\0abc", 12)), HasSubstr("value 0"));
}

TEST(PasswordHash, AnyBytesAreAPassword) {
  const std::string bytes = "\xFF\xFE caf\xC3\xA9 \n";
  EXPECT_TRUE(FitsPassword(bytes, Hash(bytes)));
}

TEST(PasswordHash, WhatIsNoHashFitsNothing) {
  for (const char* hash : {"", "*0", "*1", "x", "$y$", "$9$nonsense", "plain password"}) {
    EXPECT_FALSE(FitsPassword("plain password", hash)) << hash;
    EXPECT_FALSE(FitsPassword("", hash)) << hash;
    EXPECT_FALSE(FitsToken("plain password", hash)) << hash;
  }
}

TEST(PasswordHash, SecretsAreLongAndDiffer) {
  const std::string secret = MakeSecret();
  EXPECT_EQ(secret.size(), 64u);
  EXPECT_EQ(secret.find_first_not_of("0123456789abcdef"), std::string::npos);
  EXPECT_NE(secret, MakeSecret());
}

TEST(PasswordHash, ATokenFitsItsHashOnly) {
  const std::string secret = MakeSecret();
  const std::string hash = HashToken(secret);
  EXPECT_THAT(hash, StartsWith("$5$"));
  EXPECT_TRUE(FitsToken(secret, hash));
  EXPECT_FALSE(FitsToken(MakeSecret(), hash));
  EXPECT_FALSE(FitsToken(secret + std::string(1, '\0'), hash));
}

TEST(PasswordHash, TextsAreTheSameToTheLastByte) {
  EXPECT_TRUE(AreSame("", ""));
  EXPECT_TRUE(AreSame("abc", "abc"));
  EXPECT_FALSE(AreSame("abc", "abd"));
  EXPECT_FALSE(AreSame("abc", "ab"));
  EXPECT_FALSE(AreSame("a\x80", std::string("a\x00", 2)));
}

}  // namespace
}  // namespace tav::pages
