// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/gate.h>

#include <gateway/web/pages/core/routes.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

using Gate = cPagesWorld;

TEST_F(Gate, SendsAVisitorWithoutALoginToTheLogin) {
  MakeAccount();
  const cAnswer answer = Get("/");
  EXPECT_EQ(answer.Status(), 303u);
  EXPECT_EQ(answer.Header("Location"), "/login");
  EXPECT_EQ(Get("/meter").Header("Location"), "/login?to=%2Fmeter");
}

TEST_F(Gate, SendsEverybodyToTheSetupWhileThereIsNoPassword) {
  EXPECT_EQ(Get("/").Header("Location"), "/setup");
  EXPECT_EQ(Get("/login").Header("Location"), "/setup");
}

TEST_F(Gate, LetsInWhoHasACookieOfALogin) {
  Enter();
  EXPECT_EQ(Get("/").Status(), 200u);
  m_cookie = vorn::cUuid().ToString();
  EXPECT_EQ(Get("/").Status(), 303u);
  m_cookie = "nonsense";
  EXPECT_EQ(Get("/").Status(), 303u);
}

TEST_F(Gate, EveryPageButThoseOfTheLoginNeedsOne) {
  MakeAccount();
  for (const cRoute& route : GetRoutes()) {
    const cAnswer answer = Get(std::string(route.path));
    if (route.least == eRole::Nobody)
      EXPECT_EQ(answer.Header("Location").substr(0, 6), route.path == "/setup" ? "/login" : "") << route.path;
    else
      EXPECT_EQ(answer.Status(), route.isForPrograms ? 401u : 303u) << route.path;
  }
}

TEST_F(Gate, TellsAProgramInPlainTextThatItNeedsAToken) {
  MakeAccount();
  const cAnswer answer = Get("/download");
  EXPECT_EQ(answer.Status(), 401u);
  EXPECT_EQ(answer.Header("WWW-Authenticate"), "Bearer realm=\"tav gateway\"");
  EXPECT_EQ(answer.body, "Log in, or show a token.\n");
}

TEST_F(Gate, LetsAProgramInByItsToken) {
  MakeAccount();
  std::string token;
  std::string error;
  ASSERT_TRUE(m_pages->GetAccess().accounts.AddToken("a test", token, error)) << error;
  m_headers = {{"authorization", "Bearer " + token}};
  EXPECT_EQ(Get("/download").Status(), 400u) << "it is let in, and told what is missing";
  EXPECT_EQ(Get("/").Status(), 303u) << "pages for people are no concern of programs";
  m_headers = {{"authorization", "Bearer " + token + "0"}};
  EXPECT_EQ(Get("/download").Status(), 401u);
}

TEST_F(Gate, ATokenChangesNothing) {
  MakeAccount();
  for (const cRoute& route : GetRoutes())
    if (route.isForPrograms) {
      EXPECT_EQ(route.sender, eSender::None) << route.path;
    }
}

TEST_F(Gate, RefusesAnUnknownPage) {
  Enter();
  EXPECT_EQ(Get("/nowhere").Status(), 404u);
  EXPECT_EQ(Get("").Status(), 404u);
}

TEST_F(Gate, RefusesMethodsThatAPageDoesNotTake) {
  Enter();
  EXPECT_EQ(Post("/", {}).Status(), 405u);
  EXPECT_EQ(Ask(MakeRequest("DELETE", "/", {}, {})).Status(), 405u);
  EXPECT_EQ(Ask(MakeRequest("PUT", "/login", {}, {})).Header("Allow"), "GET, HEAD, POST");
}

TEST_F(Gate, AnswersHeadAsGet) {
  Enter();
  EXPECT_EQ(Ask(MakeRequest("HEAD", "/", {}, {})).Status(), 200u);
}

TEST_F(Gate, RefusesAFormWithoutItsToken) {
  Enter();
  const cAnswer answer = Ask(MakeRequest("POST", "/logout", {}, {}));
  EXPECT_EQ(answer.Status(), 403u);
  EXPECT_THAT(answer.body, HasSubstr("Open the page again."));
  EXPECT_EQ(Ask(MakeRequest("POST", "/logout", {}, {{"csrf", "0"}})).Status(), 403u);
  EXPECT_EQ(Get("/").Status(), 200u) << "still logged in";
}

TEST_F(Gate, RefusesAFormOfAnotherSite) {
  Enter();
  for (const auto& [name, value] : cFields{{"origin", "http://evil.example"},
                                           {"origin", "https://127.0.0.1:8080"},
                                           {"origin", "null"},
                                           {"sec-fetch-site", "cross-site"},
                                           {"sec-fetch-site", "same-site"}}) {
    m_headers = {{name, value}};
    EXPECT_EQ(Post("/logout", {}).Status(), 403u) << name << " " << value;
    EXPECT_EQ(Post("/login", {{"name", "admin"}, {"password", kPassword}}).Status(), 403u) << name << " " << value;
  }
  m_headers = {{"origin", "http://127.0.0.1:8080"}, {"sec-fetch-site", "same-origin"}};
  EXPECT_EQ(Post("/logout", {}).Status(), 303u);
}

TEST_F(Gate, AViewerSeesNoPageThatOnlyTheAdministratorMay) {
  Enter(eRole::Viewer);
  for (const cRoute& route : GetRoutes())
    if (route.least == eRole::Admin) {
      EXPECT_EQ(Get(std::string(route.path)).Status(), 403u) << route.path;
    }
}

TEST_F(Gate, TheNavigationLeadsToWhatAVisitorMaySee) {
  for (const eRole role : {eRole::Viewer, eRole::Admin}) {
    Enter(role);
    const std::string body = Get("/").body;
    for (const cRoute& route : GetRoutes()) {
      if (route.name.empty()) continue;
      const std::string link = "<li><a href=\"" + std::string(route.path) + "\"";
      if (route.least <= role)
        EXPECT_THAT(body, HasSubstr(link)) << route.path;
      else
        EXPECT_THAT(body, Not(HasSubstr(link))) << route.path;
    }
  }
}

TEST_F(Gate, AViewerChangesNothing) {
  Enter(eRole::Viewer);
  for (const cRoute& route : GetRoutes())
    if (route.sender == eSender::Admin) {
      EXPECT_EQ(Post(std::string(route.path), {}).Status(), 403u) << route.path;
    }
}

TEST_F(Gate, EscapesWhatAVisitorSends) {
  Enter();
  const cAnswer answer = Get("/meter", {{"id", "<script>alert(1)</script>"}});
  EXPECT_EQ(answer.Status(), 404u);
  EXPECT_THAT(answer.body, HasSubstr("&lt;script&gt;"));
  EXPECT_THAT(answer.body, Not(HasSubstr("<script>alert")));
}

}  // namespace
}  // namespace tav::pages
