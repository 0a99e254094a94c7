// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/login_page.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class LoginPage : public cPagesWorld {
 protected:
  cAnswer LogIn(const std::string& password, const cFields& more = {}) {
    cFields fields = {{"name", "admin"}, {"password", password}};
    fields.insert(fields.end(), more.begin(), more.end());
    return Post("/login", fields);
  }
  // Takes the cookie that an answer gives.
  void TakeCookie(const cAnswer& answer) {
    const std::string line = answer.Header("Set-Cookie");
    m_cookie = line.substr(4, line.find(';') - 4);
  }
  cAnswer SetUpWith(const std::string& code, const std::string& password, const std::string& again) {
    return Post("/setup", {{"code", code}, {"password", password}, {"again", again}});
  }
};

TEST_F(LoginPage, TheFirstPasswordIsSetWithTheCodeOfTheConsole) {
  const std::string code = m_pages->GetAccess().GetSetupCode();
  EXPECT_THAT(Get("/setup", {{"code", code}}).body, HasSubstr("value=\"" + code + "\""));
  const cAnswer answer = SetUpWith(code, kPassword, kPassword);
  EXPECT_EQ(answer.Status(), 303u) << answer.body;
  TakeCookie(answer);
  EXPECT_EQ(Get("/").Status(), 200u) << "who sets it is logged in";
  EXPECT_EQ(Get("/setup").Header("Location"), "/login") << "and nobody sets it again";
  EXPECT_EQ(SetUpWith(code, "something else", "something else").Header("Location"), "/login");
}

TEST_F(LoginPage, TheFirstPasswordIsRefusedWithAReason) {
  const std::string code = m_pages->GetAccess().GetSetupCode();
  EXPECT_THAT(SetUpWith(code, "secret-1", "secret-2").body, HasSubstr("The two passwords are not the same."));
  EXPECT_THAT(SetUpWith(code, "seven77", "seven77").body, HasSubstr("at least 8 characters"));
  EXPECT_THAT(SetUpWith("guessed", kPassword, kPassword).body, HasSubstr("not the code"));
  EXPECT_THAT(SetUpWith(code, kPassword, kPassword).body, HasSubstr("try again in"))
      << "codes are not guessed faster than passwords";
  EXPECT_TRUE(m_pages->GetAccess().NeedsSetup());
}

TEST_F(LoginPage, ACookieIsForThisSiteOnlyAndOutOfScriptsReach) {
  MakeAccount();
  const std::string cookie = LogIn(kPassword).Header("Set-Cookie");
  EXPECT_THAT(cookie, StartsWith("sid="));
  EXPECT_THAT(cookie, HasSubstr("; Path=/; HttpOnly; SameSite=Strict"));
  EXPECT_THAT(cookie, Not(HasSubstr("Secure")));
}

TEST_F(LoginPage, ACookieOfAnEncryptedConnectionStaysOnSuch) {
  MakeAccount();
  vorn::cMsg request = MakeRequest("POST", "/login", {}, {{"name", "admin"}, {"password", kPassword}});
  request.Record().SetTextPar(http::kRequestScheme, "https");
  EXPECT_THAT(Ask(request).Header("Set-Cookie"), HasSubstr("; Secure"));
}

TEST_F(LoginPage, AWrongPasswordSaysNotWhatWasWrong) {
  MakeAccount();
  const cAnswer wrongPassword = LogIn("wrong password");
  EXPECT_EQ(wrongPassword.Status(), 403u);
  m_address = "127.0.0.2";
  const cAnswer wrongName = Post("/login", {{"name", "nobody"}, {"password", kPassword}});
  EXPECT_EQ(wrongName.Status(), 403u);
  EXPECT_THAT(wrongPassword.body, HasSubstr("Name or password is wrong."));
  EXPECT_THAT(wrongName.body, HasSubstr("Name or password is wrong."));
  EXPECT_EQ(wrongName.Header("Set-Cookie"), "");
}

TEST_F(LoginPage, AfterAWrongPasswordTheNextAttemptHasToWait) {
  MakeAccount();
  LogIn("wrong password");
  const cAnswer answer = LogIn(kPassword);
  EXPECT_EQ(answer.Status(), 429u);
  EXPECT_EQ(answer.Header("Retry-After"), "1");
  EXPECT_THAT(answer.body, HasSubstr("try again in 1 second."));
  m_address = "127.0.0.2";
  EXPECT_EQ(LogIn(kPassword).Status(), 303u) << "others are let in";
}

TEST_F(LoginPage, GoesWhereTheVisitorWantedToGo) {
  MakeAccount();
  EXPECT_THAT(Get("/login", {{"to", "/meter"}}).body, HasSubstr("name=\"to\" value=\"/meter\""));
  EXPECT_EQ(LogIn(kPassword, {{"to", "/meter"}}).Header("Location"), "/meter");
}

TEST_F(LoginPage, GoesNowhereElse) {
  MakeAccount();
  for (const char* elsewhere :
       {"https://evil.example/", "//evil.example", "/\\evil.example", "/nowhere", "", "/meter\r\nX-Injected: 1"})
    EXPECT_EQ(LogIn(kPassword, {{"to", elsewhere}}).Header("Location"), "/") << elsewhere;
}

TEST_F(LoginPage, WhoIsInNeedsNoLogin) {
  Enter();
  EXPECT_EQ(Get("/login").Header("Location"), "/");
}

TEST_F(LoginPage, EveryLoginHasAnIdentifierOfItsOwn) {
  MakeAccount();
  TakeCookie(LogIn(kPassword));
  const std::string first = m_cookie;
  TakeCookie(LogIn(kPassword));
  EXPECT_NE(m_cookie, first);
}

TEST_F(LoginPage, LoggingOutEndsTheSessionAndTakesTheCookieAway) {
  Enter();
  const cAnswer answer = Post("/logout", {});
  EXPECT_EQ(answer.Header("Location"), "/login");
  EXPECT_THAT(answer.Header("Set-Cookie"), HasSubstr("Max-Age=0"));
  EXPECT_EQ(Get("/").Status(), 303u) << "the cookie is worth nothing any more";
}

TEST_F(LoginPage, LoggingOutEndsWhatIsOpen) {
  Enter();
  const vorn::cUuid live = Send(MakeRequest("GET", "/live", {}, {}));
  ASSERT_TRUE(Await([&] { return m_answers[live].outputs > 1; }));
  Post("/logout", {});
  EXPECT_TRUE(Await([&] { return m_answers[live].isFinished; }));
  EXPECT_TRUE(m_answers[live].isWhole) << "events have no end that could be missing";
}

TEST_F(LoginPage, ALoginEndsWhenItIsNotUsed) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  clock->Advance(599'000);
  EXPECT_EQ(Get("/").Status(), 200u);
  clock->Advance(599'000);
  EXPECT_EQ(Get("/").Status(), 200u) << "each request starts the time anew";
  clock->Advance(602'000);
  PollUntilIdle(*m_pages);
  EXPECT_EQ(Get("/").Status(), 303u);
  EXPECT_EQ(m_pages->GetAccess().logins.Count(), 0u);
}

TEST_F(LoginPage, WhatPagesAskForByThemselvesDoesNotKeepALogin) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  clock->Advance(599'000);
  EXPECT_EQ(Get("/api/series").Status(), 400u);
  clock->Advance(3'000);
  PollUntilIdle(*m_pages);
  EXPECT_EQ(Get("/").Status(), 303u);
}

TEST_F(LoginPage, OneLoginMoreThanThereAreEndsTheOldest) {
  Enter();
  const std::string oldest = m_cookie;
  for (std::size_t i = 1; i < cLogins::kMaxLogins; ++i) Enter();
  m_cookie = oldest;
  EXPECT_EQ(Get("/").Status(), 200u);
  Enter();
  EXPECT_EQ(Get("/").Status(), 200u);
  m_cookie = oldest;
  EXPECT_EQ(Get("/").Status(), 303u);
}

}  // namespace
}  // namespace tav::pages
