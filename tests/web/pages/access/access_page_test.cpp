// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/access_page.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class AccessPage : public cPagesWorld {
 protected:
  static constexpr const char* kFresh = "battery staple";

  void EnterWithViewer() {
    MakeAccount();
    MakeAccount("viewer", eRole::Viewer);
    Enter();
  }
  cAnswer Change(const std::string& old, const std::string& fresh, const std::string& again) {
    return Post("/access", {{"do", "password"}, {"old-password", old}, {"password", fresh}, {"again", again}});
  }
  cAnswer Account(const std::string& action, const std::string& name, const std::string& role = "viewer",
                  const std::string& password = kFresh) {
    return Post("/access/accounts", {{"do", action}, {"name", name}, {"role", role}, {"password", password}});
  }
  bool Fits(const std::string& name, const std::string& password) {
    std::string error;
    unsigned int wait = 0;
    return m_pages->GetAccess().LogIn(name, password, "192.0.2.77", error, wait) != nullptr;
  }
  const cAccounts& Accounts() { return m_pages->GetAccess().accounts; }
};

// ---- one's own password

TEST_F(AccessPage, EverybodyChangesHisOwnPassword) {
  EnterWithViewer();
  Enter(eRole::Viewer);
  EXPECT_EQ(Change(kPassword, kFresh, kFresh).Header("Location"), "/access?done=password");
  EXPECT_TRUE(Fits("viewer", kFresh));
  EXPECT_EQ(Accounts().Find("viewer")->role, eRole::Viewer);
  EXPECT_THAT(Get("/access", {{"done", "password"}}).body, HasSubstr("The password is changed"));
}

TEST_F(AccessPage, ANewPasswordEndsTheOtherLoginsOfTheAccount) {
  EnterWithViewer();
  const std::string other = m_cookie;
  Enter(eRole::Viewer);
  const std::string viewer = m_cookie;
  Enter();
  EXPECT_EQ(Change(kPassword, kFresh, kFresh).Status(), 303u);
  EXPECT_EQ(Get("/").Status(), 200u) << "this one goes on";
  m_cookie = other;
  EXPECT_EQ(Get("/").Status(), 303u);
  m_cookie = viewer;
  EXPECT_EQ(Get("/").Status(), 200u) << "others are none of its";
}

TEST_F(AccessPage, TheOldPasswordIsAskedAndGuessingItWaits) {
  Enter();
  const cAnswer wrong = Change("wrong password", kFresh, kFresh);
  EXPECT_EQ(wrong.Status(), 403u);
  EXPECT_THAT(wrong.body, HasSubstr("The old password is wrong."));
  const cAnswer soon = Change(kPassword, kFresh, kFresh);
  EXPECT_EQ(soon.Status(), 429u);
  EXPECT_EQ(soon.Header("Retry-After"), "1");
  EXPECT_EQ(Post("/login", {{"name", "admin"}, {"password", kPassword}}).Status(), 429u) << "the login waits with it";
  m_address = "127.0.0.2";
  EXPECT_EQ(Change(kPassword, kFresh, kFresh).Status(), 303u);
}

TEST_F(AccessPage, ANewPasswordIsRefusedWithAReason) {
  Enter();
  EXPECT_THAT(Change(kPassword, kFresh, "another one").body, HasSubstr("are not the same"));
  EXPECT_THAT(Change(kPassword, "seven77", "seven77").body, HasSubstr("at least 8 characters"));
  EXPECT_THAT(Change(kPassword, std::string(257, 'x'), std::string(257, 'x')).body, HasSubstr("at most 256"));
  EXPECT_TRUE(Fits("admin", kPassword));
}

// ---- accounts

TEST_F(AccessPage, AnAdministratorAddsAccounts) {
  Enter();
  EXPECT_EQ(Account("add", "eve").Header("Location"), "/access?done=added");
  EXPECT_TRUE(Fits("eve", kFresh));
  EXPECT_EQ(Accounts().Find("eve")->role, eRole::Viewer);
  EXPECT_EQ(Account("add", "adam", "admin").Status(), 303u);
  EXPECT_EQ(Accounts().Find("adam")->role, eRole::Admin);
  EXPECT_THAT(Get("/access").body, HasSubstr("<th scope=\"row\">eve</th><td>viewer</td>"));
}

TEST_F(AccessPage, WhatIsNoAccountIsRefused) {
  Enter();
  EXPECT_EQ(Account("add", "admin").Status(), 409u) << "there is one";
  EXPECT_EQ(Account("set", "nobody").Status(), 409u) << "there is none";
  EXPECT_EQ(Account("add", "eve", "root").Status(), 400u);
  EXPECT_EQ(Account("add", "eve", "viewer", "short").Status(), 409u);
  EXPECT_EQ(Account("explode", "eve").Status(), 400u);
  const cAnswer answer = Account("add", "<b>eve</b>");
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("value=\"&lt;b&gt;eve&lt;/b&gt;\"")) << "what was typed stays";
  EXPECT_THAT(answer.body, Not(HasSubstr(kFresh))) << "but for a password";
  EXPECT_EQ(Accounts().GetAccounts().size(), 1u);
}

TEST_F(AccessPage, AnAccountThatChangesLosesItsLogins) {
  EnterWithViewer();
  Enter(eRole::Viewer);
  const std::string viewer = m_cookie;
  Enter();
  EXPECT_EQ(Account("set", "viewer", "admin").Header("Location"), "/access?done=set");
  EXPECT_EQ(Accounts().Find("viewer")->role, eRole::Admin);
  m_cookie = viewer;
  EXPECT_EQ(Get("/").Status(), 303u);
}

TEST_F(AccessPage, AnAccountThatIsRemovedLosesItsLoginsAndWhatTheyHaveOpen) {
  EnterWithViewer();
  Enter(eRole::Viewer);
  const std::string viewer = m_cookie;
  const vorn::cUuid live = Send(MakeRequest("GET", "/live", {}, {}));
  ASSERT_TRUE(Await([&] { return m_answers[live].outputs > 1; }));
  Enter();
  EXPECT_EQ(Account("remove", "viewer").Header("Location"), "/access?done=removed");
  EXPECT_TRUE(Await([&] { return m_answers[live].isFinished; }));
  EXPECT_TRUE(m_answers[live].isWhole);
  m_cookie = viewer;
  EXPECT_EQ(Get("/").Status(), 303u);
}

TEST_F(AccessPage, WhoRemovesHisOwnAccountHearsOfItAndIsOut) {
  MakeAccount();
  MakeAccount("other", eRole::Admin);
  Enter();
  const cAnswer answer = Account("remove", "admin");
  EXPECT_EQ(answer.Status(), 303u);
  EXPECT_TRUE(answer.isWhole);
  EXPECT_EQ(Get("/").Status(), 303u);
}

TEST_F(AccessPage, TheLastAdministratorStays) {
  EnterWithViewer();
  const cAnswer answer = Account("remove", "admin");
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("There has to be an account that may change things."));
  EXPECT_EQ(Get("/").Status(), 200u) << "still logged in";
}

TEST_F(AccessPage, OnesOwnPasswordNeedsTheOldOneHereToo) {
  Enter();
  EXPECT_EQ(Account("set", "admin", "admin").Status(), 409u);
  EXPECT_TRUE(Fits("admin", kPassword));
}

TEST_F(AccessPage, AViewerSeesNoAccountsAndNoTokens) {
  EnterWithViewer();
  Enter(eRole::Viewer);
  const std::string body = Get("/access").body;
  EXPECT_THAT(body, HasSubstr("Your password"));
  EXPECT_THAT(body, Not(HasSubstr("/access/accounts")));
  EXPECT_THAT(body, Not(HasSubstr("/access/tokens")));
  EXPECT_EQ(Account("add", "eve").Status(), 403u);
  EXPECT_EQ(Post("/access/tokens", {{"do", "add"}, {"note", "x"}}).Status(), 403u);
}

TEST_F(AccessPage, AddressesOfChangesLeadToThePage) {
  Enter();
  EXPECT_EQ(Get("/access/accounts").Header("Location"), "/access");
  EXPECT_EQ(Get("/access/tokens").Header("Location"), "/access");
}

// ---- tokens

TEST_F(AccessPage, ATokenIsShownOnceAndLetsAProgramIn) {
  Enter();
  const cAnswer answer = Post("/access/tokens", {{"do", "add"}, {"note", "a <program>"}});
  EXPECT_EQ(answer.Status(), 200u);
  const std::size_t begin = answer.body.find("<code>tav_") + 6;
  ASSERT_NE(begin, std::string::npos + 6);
  const std::string token = answer.body.substr(begin, answer.body.find('<', begin) - begin);
  EXPECT_TRUE(Accounts().KnowsToken(token));
  const std::string later = Get("/access").body;
  EXPECT_THAT(later, HasSubstr("a &lt;program&gt;"));
  EXPECT_THAT(later, Not(HasSubstr(token)));
}

TEST_F(AccessPage, ATokenIsRemoved) {
  Enter();
  std::string token;
  std::string error;
  ASSERT_TRUE(m_pages->GetAccess().accounts.AddToken("note", token, error)) << error;
  const std::string id = Accounts().GetTokens().at(0).id;
  EXPECT_EQ(Post("/access/tokens", {{"do", "remove"}, {"id", id}}).Header("Location"), "/access?done=token-removed");
  EXPECT_FALSE(Accounts().KnowsToken(token));
  EXPECT_EQ(Post("/access/tokens", {{"do", "remove"}, {"id", id}}).Status(), 409u);
}

TEST_F(AccessPage, WhatIsNoTokenIsRefused) {
  Enter();
  EXPECT_EQ(Post("/access/tokens", {{"do", "add"}, {"note", ""}}).Status(), 409u);
  EXPECT_EQ(Post("/access/tokens", {{"note", "note"}}).Status(), 400u);
  EXPECT_EQ(Post("/access/tokens", {{"do", "add"}, {"note", "caf\xE9"}}).Status(), 200u) << "whatever bytes it has";
}

}  // namespace
}  // namespace tav::pages
