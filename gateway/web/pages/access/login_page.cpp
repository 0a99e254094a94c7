// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/login_page.h>

#include <gateway/web/pages/access/access.h>
#include <gateway/web/pages/core/routes.h>
#include <tav/http/http_protocol.h>

namespace tav::pages {

namespace {

cHtml Fault(const std::string& text) {
  if (text.empty()) return {};
  return cHtml().Put("<p class=\"note error\" role=\"alert\" id=\"fault\">{}</p>\n", text);
}

}  // namespace

// ---- the first password

void cSetupPage::Start() {
  if (!Access().NeedsSetup()) return Redirect("/login");
  if (IsPost()) return Take();
  ShowForm(200, {});
}

void cSetupPage::ShowForm(unsigned int status, const std::string& fault) {
  const std::string code = IsPost() ? Posted("code") : Query("code");
  cHtml body;
  body.Put(
      "{}<p>Nobody has set a password for this gateway yet. The code below shows that you may: the gateway tells it on "
      "its console and in its journal when it starts.</p>\n"
      "<form class=\"entry\" method=\"post\" action=\"/setup\">\n"
      "<div class=\"field\"><label for=\"code\">Code</label>"
      "<input id=\"code\" name=\"code\" value=\"{}\" autocomplete=\"off\" required></div>\n"
      "<div class=\"field\"><label for=\"password\">Password for \"admin\"</label>"
      "<input id=\"password\" name=\"password\" type=\"password\" autocomplete=\"new-password\" minlength=\"8\" "
      "required>"
      "<p class=\"hint\">At least 8 characters.</p></div>\n"
      "<div class=\"field\"><label for=\"again\">Once more</label>"
      "<input id=\"again\" name=\"again\" type=\"password\" autocomplete=\"new-password\" required></div>\n"
      "<div class=\"actions\"><button>Set the password</button></div>\n</form>\n",
      Fault(fault), code);
  ShowPage("Set the password", body, status);
}

void cSetupPage::Take() {
  if (Posted("password") != Posted("again")) return ShowForm(400, "The two passwords are not the same.");
  std::string error;
  if (!Access().SetUp(Posted("code"), Posted("password"), RemoteAddress(), error)) return ShowForm(403, error);
  const cVisitor& visitor = Access().logins.Begin(cAccess::kFirstAccount, eRole::Admin);
  AddHeader(SessionCookie(visitor.sid, GetRequest().GetRecord().GetTextPar(http::kRequestScheme) == "https"));
  Redirect("/");
}

// ---- logging in and out

void cLoginPage::Start() {
  if (Access().NeedsSetup()) return Redirect("/setup");
  if (IsPost()) return Take();
  if (GetVisitor().role != eRole::Nobody) return Redirect("/");
  ShowForm(200, {});
}

std::string cLoginPage::Destination() const {
  const std::string path = IsPost() ? Posted("to") : Query("to");
  return FindRoute(path) != nullptr ? path : "/";
}

void cLoginPage::ShowForm(unsigned int status, const std::string& fault) {
  cHtml body;
  body.Put(
      "{}<form class=\"entry\" method=\"post\" action=\"/login\">\n"
      "<input type=\"hidden\" name=\"to\" value=\"{}\">\n"
      "<div class=\"field\"><label for=\"name\">Name</label>"
      "<input id=\"name\" name=\"name\" value=\"{}\" autocomplete=\"username\" autocapitalize=\"none\" "
      "required></div>\n"
      "<div class=\"field\"><label for=\"password\">Password</label>"
      "<input id=\"password\" name=\"password\" type=\"password\" autocomplete=\"current-password\" required></div>\n"
      "<div class=\"actions\"><button>Log in</button></div>\n</form>\n",
      Fault(fault), Destination(), Posted("name"));
  ShowPage("Log in", body, status);
}

void cLoginPage::Take() {
  std::string error;
  unsigned int wait = 0;
  const cVisitor* const visitor = Access().LogIn(Posted("name"), Posted("password"), RemoteAddress(), error, wait);
  if (visitor == nullptr) {
    if (wait != 0) AddHeader("Retry-After: " + std::to_string(wait));
    return ShowForm(wait != 0 ? 429 : 403, error);
  }
  AddHeader(SessionCookie(visitor->sid, GetRequest().GetRecord().GetTextPar(http::kRequestScheme) == "https"));
  Redirect(Destination());
}

void cLogoutPage::Start() {
  if (!IsPost()) return Redirect("/");
  AddHeader(NoSessionCookie());
  const vorn::cUuid sid = GetVisitor().sid;
  Redirect("/login");
  Access().logins.End(sid);
}

}  // namespace tav::pages
