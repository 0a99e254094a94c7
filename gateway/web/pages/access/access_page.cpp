// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/access_page.h>

#include <gateway/web/pages/access/access.h>
#include <gateway/web/pages/core/form_parts.h>

namespace tav::pages {

namespace {

constexpr std::string_view kPath = "/access";
constexpr std::string_view kAccountsPath = "/access/accounts";
constexpr std::string_view kTokensPath = "/access/tokens";
constexpr std::string_view kRoles[] = {"viewer", "admin"};

struct cDone {
  std::string_view word;
  std::string_view text;
};

constexpr cDone kDone[] = {
    {"password", "The password is changed; other logins of yours have ended."},
    {"added", "The account is added."},
    {"set", "The account is changed; its logins have ended."},
    {"removed", "The account is removed; its logins have ended."},
    {"token-removed", "The token is removed."},
};

cHtml DoneFor(std::string_view word) {
  for (const cDone& done : kDone)
    if (done.word == word) return DoneNote(done.text);
  return {};
}

}  // namespace

// ---- what all of them show

void cAccessForms::ShowForms(unsigned int status, const cHtml& head) {
  cHtml body = head;
  body.Put(OwnPassword());
  if (GetVisitor().MayChange()) body.Put(Accounts()).Put(Tokens());
  ShowPage("Access", body, status);
}

void cAccessForms::ShowFault(unsigned int status, const std::string& fault) { ShowForms(status, ErrorNote(fault)); }

void cAccessForms::Finish(const std::string& done) {
  const cVisitor visitor = GetVisitor();
  Redirect(MakeUrl(kPath, {{"done", done}}));
  const cAccount* const account = Access().accounts.Find(visitor.name);
  if (account == nullptr || account->role != visitor.role) Access().logins.End(visitor.sid);
}

cHtml cAccessForms::OwnPassword() const {
  cHtml fields = PasswordField({"old-password", "Old password"}, "current-password");
  fields.Put(PasswordField({"password", "New password", {}, "At least 8 characters."}, "new-password"));
  fields.Put(PasswordField({"again", "Once more"}, "new-password"));
  return cHtml().Put("<section><h2>Your password</h2>\n<p>You are logged in as {}.</p>\n{}</section>\n",
                     GetVisitor().name, PostForm(kPath, CsrfField(), fields, Button("password", "Change it")));
}

cHtml cAccessForms::AccountRow(const cAccount& account) {
  const bool isOwn = account.name == GetVisitor().name;
  cHtml fields = HiddenField("name", account.name);
  if (!isOwn) {
    fields.Put(ChoiceField({"role", "Role", RoleText(account.role), {}, "role-" + account.name}, kRoles));
    fields.Put(PasswordField({"password", "New password", {}, {}, "password-" + account.name}, "new-password"));
  }
  cHtml buttons = isOwn ? cHtml() : Button("set", "Set");
  buttons.Put(DangerButton("remove", "Remove", "Remove this account?"));
  return cHtml().Put("<tr><th scope=\"row\">{}</th><td>{}</td><td>{}</td></tr>\n", account.name, RoleText(account.role),
                     PostForm(kAccountsPath, CsrfField(), fields, buttons));
}

cHtml cAccessForms::Accounts() {
  cHtml rows;
  for (const cAccount& account : Access().accounts.GetAccounts()) rows.Put(AccountRow(account));
  const bool isAdding = Posted("do") == "add" && !Posted("role").empty();
  cHtml fields = TextField({"name", "Name", isAdding ? Posted("name") : std::string(),
                            "Letters, digits and . _ - @; a viewer sees everything and changes nothing."});
  fields.Put(ChoiceField({"role", "Role", isAdding ? Posted("role") : "viewer"}, kRoles));
  fields.Put(
      PasswordField({"password", "Password", {}, "At least 8 characters.", "new-account-password"}, "new-password"));
  return cHtml().Put("<section><h2>Accounts</h2>\n{}<h3>New account</h3>\n{}</section>\n",
                     Table({"Name", "Role", "Change"}, rows),
                     PostForm(kAccountsPath, CsrfField(), fields, Button("add", "Add")));
}

cHtml cAccessForms::Tokens() {
  cHtml rows;
  for (const cToken& token : Access().accounts.GetTokens())
    rows.Put("<tr><td><code>{}</code></td><td>{}</td><td>{}</td></tr>\n", token.id, token.note,
             PostForm(kTokensPath, CsrfField(), HiddenField("id", token.id),
                      DangerButton("remove", "Remove", "Remove this token?")));
  cHtml tokens;
  tokens.Put("<section><h2>Tokens of programs</h2>\n<p>A token lets a program read values, and nothing else.</p>\n");
  if (!rows.IsEmpty()) tokens.Put(Table({"Token", "For", "Change"}, rows));
  return tokens.Put(
      "<h3>New token</h3>\n{}</section>\n",
      PostForm(kTokensPath, CsrfField(), TextField({"note", "What it is for", Posted("note")}), Button("add", "Add")));
}

// ---- one's own password

void cAccessPage::Start() {
  if (IsPost()) return ChangePassword();
  ShowForms(200, DoneFor(Query("done")));
}

void cAccessPage::ChangePassword() {
  if (Posted("password") != Posted("again")) return ShowFault(400, "The two new passwords are not the same.");
  std::string error;
  unsigned int wait = 0;
  if (Access().ChangePassword(GetVisitor(), Posted("old-password"), Posted("password"), RemoteAddress(), error, wait))
    return Finish("password");
  if (wait != 0) AddHeader("Retry-After: " + std::to_string(wait));
  ShowFault(wait != 0 ? 429 : 403, error);
}

// ---- accounts

void cAccountsPage::Start() {
  if (!IsPost()) return Redirect(std::string(kPath));
  const std::string action = Posted("do");
  if (action == "add" || action == "set") return Set(action == "add");
  if (action == "remove") return Remove();
  ShowFault(400, "The form does not say what to do.");
}

void cAccountsPage::Set(bool isNew) {
  const std::string name = Posted("name");
  eRole role = eRole::Viewer;
  if (!ReadRole(Posted("role"), role)) return ShowFault(400, "Role: expected admin or viewer.");
  const bool isThere = Access().accounts.Find(name) != nullptr;
  if (isNew && isThere) return ShowFault(409, "There is an account \"" + name + "\" already.");
  if (!isNew && !isThere) return ShowFault(409, "There is no account \"" + name + "\" any more.");
  if (name == GetVisitor().name) return ShowFault(409, "Your own password needs the old one: use its own form.");
  std::string error;
  if (!Access().SetAccount(name, role, Posted("password"), GetVisitor().sid, error)) return ShowFault(409, error);
  Finish(isNew ? "added" : "set");
}

void cAccountsPage::Remove() {
  std::string error;
  if (!Access().RemoveAccount(Posted("name"), GetVisitor().sid, error)) return ShowFault(409, error);
  Finish("removed");
}

// ---- tokens

void cTokensPage::Start() {
  if (!IsPost()) return Redirect(std::string(kPath));
  std::string error;
  if (Posted("do") == "remove") {
    if (!Access().accounts.RemoveToken(Posted("id"), error)) return ShowFault(409, error);
    return Finish("token-removed");
  }
  if (Posted("do") != "add") return ShowFault(400, "The form does not say what to do.");
  std::string token;
  if (!Access().accounts.AddToken(Posted("note"), token, error)) return ShowFault(409, error);
  ShowForms(
      200,
      cHtml().Put("<p class=\"note ok\" role=\"status\">The new token, shown this once: <code>{}</code></p>\n", token));
}

}  // namespace tav::pages
