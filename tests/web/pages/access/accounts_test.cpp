// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/accounts.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include <gateway/web/pages/access/password_hash.h>
#include <tests/support/temp_folder.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;

class Accounts : public testing::Test {
 protected:
  static constexpr const char* kPassword = "correct horse";

  bool Set(const std::string& name, eRole role = eRole::Admin, const std::string& password = kPassword) {
    return m_accounts.Set(name, role, password, m_error);
  }
  void Write(const std::string& text) const { std::ofstream(m_folder.File("accounts.json")) << text; }
  std::string Content() const {
    std::ifstream in(m_folder.File("accounts.json"));
    return {std::istreambuf_iterator<char>(in), {}};
  }

  cTempFolder m_folder;
  cAccounts m_accounts{m_folder.File("accounts.json")};
  std::string m_error;
};

TEST_F(Accounts, WithoutAFileThereAreNone) {
  EXPECT_TRUE(m_accounts.Load(m_error)) << m_error;
  EXPECT_TRUE(m_accounts.IsEmpty());
  EXPECT_EQ(m_accounts.Find("admin"), nullptr);
}

TEST_F(Accounts, AreThereAgainWhenTheFileIsRead) {
  ASSERT_TRUE(Set("admin"));
  ASSERT_TRUE(Set("eve", eRole::Viewer));
  std::string token;
  ASSERT_TRUE(m_accounts.AddToken("caf\xE9", token, m_error)) << m_error;
  cAccounts again(m_folder.File("accounts.json"));
  ASSERT_TRUE(again.Load(m_error)) << m_error;
  ASSERT_EQ(again.GetAccounts().size(), 2u);
  EXPECT_EQ(again.Find("admin")->role, eRole::Admin);
  EXPECT_EQ(again.Find("eve")->role, eRole::Viewer);
  EXPECT_TRUE(FitsPassword(kPassword, again.Find("eve")->hash));
  EXPECT_TRUE(again.KnowsToken(token));
  EXPECT_EQ(again.GetTokens().at(0).note, "caf\xC3\xA9");
}

TEST_F(Accounts, TheFileIsPrivateAndHoldsNoSecret) {
  ASSERT_TRUE(Set("admin"));
  std::string token;
  ASSERT_TRUE(m_accounts.AddToken("note", token, m_error));
  struct stat info {};
  ASSERT_EQ(stat(m_folder.File("accounts.json").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_THAT(Content(), testing::Not(HasSubstr(kPassword)));
  EXPECT_THAT(Content(), testing::Not(HasSubstr(token.substr(13))));
}

TEST_F(Accounts, TakesNamesOfThisForm) {
  EXPECT_TRUE(Set("a"));
  EXPECT_TRUE(Set("Eve.B_c-9@example"));
  EXPECT_TRUE(Set(std::string(cAccounts::kMaxName, 'x')));
  EXPECT_TRUE(Set(std::string(cAccounts::kMaxName - 1, 'x')));
  for (const std::string& name : {std::string(), std::string(cAccounts::kMaxName + 1, 'x'), std::string("a b"),
                                  std::string("<b>"), std::string("\xC3\xA9"), std::string("a\0b", 3)}) {
    EXPECT_FALSE(Set(name)) << name;
    EXPECT_THAT(m_error, HasSubstr("A name has 1 to 64"));
  }
}

TEST_F(Accounts, ThereAreOnlySoMany) {
  for (std::size_t i = 0; i < cAccounts::kMaxAccounts; ++i) ASSERT_TRUE(Set("a" + std::to_string(i))) << i;
  EXPECT_FALSE(Set("more"));
  EXPECT_EQ(m_error, "There are 32 accounts: remove one first.");
  EXPECT_TRUE(Set("a0", eRole::Viewer)) << "one that is there may change";
  EXPECT_TRUE(m_accounts.Remove("a1", m_error));
  EXPECT_TRUE(Set("more"));
}

TEST_F(Accounts, OneThatMayChangeThingsAlwaysStays) {
  EXPECT_FALSE(Set("eve", eRole::Viewer)) << "the first one too";
  ASSERT_TRUE(Set("admin"));
  ASSERT_TRUE(Set("eve", eRole::Viewer));
  EXPECT_FALSE(Set("admin", eRole::Viewer));
  EXPECT_FALSE(m_accounts.Remove("admin", m_error));
  EXPECT_EQ(m_error, "There has to be an account that may change things.");
  EXPECT_EQ(m_accounts.Find("admin")->role, eRole::Admin);
  EXPECT_TRUE(m_accounts.Remove("eve", m_error));
  EXPECT_FALSE(m_accounts.Remove("eve", m_error));
  EXPECT_EQ(m_error, "There is no account 'eve'.");
}

TEST_F(Accounts, TokensAreKnownToTheLetter) {
  std::string token;
  ASSERT_TRUE(m_accounts.AddToken("note", token, m_error));
  EXPECT_TRUE(m_accounts.KnowsToken(token));
  for (const std::string& other :
       {std::string(), std::string("tav_"), token + "0", token.substr(0, token.size() - 1), token.substr(4),
        "tav_00000000_" + token.substr(13), token.substr(0, 13), token + std::string(1, '\0')})
    EXPECT_FALSE(m_accounts.KnowsToken(other)) << other;
  EXPECT_TRUE(m_accounts.RemoveToken(m_accounts.GetTokens().at(0).id, m_error));
  EXPECT_FALSE(m_accounts.KnowsToken(token));
  EXPECT_FALSE(m_accounts.RemoveToken("nonsense", m_error));
}

TEST_F(Accounts, TokensHaveANoteAndThereAreOnlySoMany) {
  std::string token;
  EXPECT_FALSE(m_accounts.AddToken("", token, m_error));
  EXPECT_FALSE(m_accounts.AddToken(std::string(cAccounts::kMaxName + 1, 'x'), token, m_error));
  EXPECT_THAT(m_error, HasSubstr("Say in 1 to 64 characters"));
  for (std::size_t i = 0; i < cAccounts::kMaxTokens; ++i)
    ASSERT_TRUE(m_accounts.AddToken(std::string(cAccounts::kMaxName, 'x'), token, m_error)) << i;
  EXPECT_FALSE(m_accounts.AddToken("more", token, m_error));
  EXPECT_EQ(m_error, "There are 32 tokens: remove one first.");
}

TEST_F(Accounts, ADamagedFileIsRefusedWithItsName) {
  ASSERT_TRUE(Set("admin"));
  const std::string whole = Content();
  for (std::size_t length = 0; length + 2 < whole.size(); length += 7) {
    Write(whole.substr(0, length));
    EXPECT_FALSE(m_accounts.Load(m_error)) << length;
    EXPECT_THAT(m_error, HasSubstr("accounts.json' is damaged: "));
  }
  for (const char* text : {"[]", "{}", "null", "7", R"({"version":2,"accounts":[],"tokens":[]})", R"({"version":"1"})",
                           R"({"version":1,"accounts":{},"tokens":7})", R"({"version":1,"accounts":[7],"tokens":[]})",
                           R"({"version":1,"accounts":[{"name":"a","role":"root","hash":""}],"tokens":[]})",
                           R"({"version":1,"accounts":[{"name":7,"role":"admin","hash":""}],"tokens":[]})",
                           R"({"version":1,"accounts":[],"tokens":[{"id":"1"}]})"}) {
    Write(text);
    EXPECT_FALSE(m_accounts.Load(m_error)) << text;
  }
  EXPECT_NE(m_accounts.Find("admin"), nullptr) << "what was known stays";
}

TEST_F(Accounts, AFileNestedWithoutEndIsRefused) {
  Write(std::string(1'000'000, '['));
  EXPECT_FALSE(m_accounts.Load(m_error));
}

TEST_F(Accounts, AnAccountWithoutAHashLetsNobodyIn) {
  Write(R"({"version":1,"accounts":[{"name":"admin","role":"admin","hash":""}],"tokens":[]})");
  ASSERT_TRUE(m_accounts.Load(m_error)) << m_error;
  EXPECT_FALSE(FitsPassword("", m_accounts.Find("admin")->hash));
}

TEST_F(Accounts, AFileThatCannotBeReadIsRefused) {
  std::filesystem::create_directory(m_folder.File("accounts.json"));
  EXPECT_FALSE(m_accounts.Load(m_error));
  EXPECT_THAT(m_error, HasSubstr("accounts.json'"));
}

TEST_F(Accounts, WhatCannotBeWrittenDoesNotCount) {
  cAccounts nowhere(m_folder.File("gone/accounts.json"));
  EXPECT_FALSE(nowhere.Set("admin", eRole::Admin, kPassword, m_error));
  EXPECT_THAT(m_error, HasSubstr("gone/accounts.json' cannot be written: "));
  EXPECT_TRUE(nowhere.IsEmpty());
  std::string token;
  EXPECT_FALSE(nowhere.AddToken("note", token, m_error));
  EXPECT_TRUE(token.empty());
  EXPECT_TRUE(nowhere.GetTokens().empty());
}

TEST_F(Accounts, RolesAreWords) {
  eRole role = eRole::Nobody;
  EXPECT_TRUE(ReadRole("admin", role));
  EXPECT_EQ(RoleText(role), "admin");
  EXPECT_TRUE(ReadRole("viewer", role));
  EXPECT_EQ(RoleText(role), "viewer");
  EXPECT_FALSE(ReadRole("nobody", role));
  EXPECT_FALSE(ReadRole("", role));
}

}  // namespace
}  // namespace tav::pages
