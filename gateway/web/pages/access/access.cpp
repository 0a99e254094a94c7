// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/access.h>

#include <gateway/web/pages/access/password_hash.h>
#include <gateway/web/pages/core/request_header.h>
#include <tav/http/http_protocol.h>

namespace tav::pages {

namespace {

constexpr std::string_view kBearer = "Bearer ";
constexpr std::size_t kCodeLength = 24;  // hexadecimal digits

}  // namespace

cAccess::cAccess(vorn::cScmService* service, const cOptions& options,
                 std::function<void(const vorn::cUuid& sid)> onEnded)
    : accounts(options.file),
      logins(service, options.timeoutSec, std::move(onEnded)),
      m_setupCode(MakeSecret().substr(0, kCodeLength)),
      m_delay(service->GetClock()) {}

cVisitor cAccess::Identify(const cHttpRequest& request, bool withToken, bool renew) {
  cHttpCookie cookie;
  if (request.GetCookie(cLogins::kCookie, cookie))
    if (const cVisitor* const visitor = logins.Find(cookie.value, renew)) return *visitor;
  const std::string authorization = withToken ? HeaderOf(request, "authorization") : std::string();
  if (authorization.starts_with(kBearer) && accounts.KnowsToken(authorization.substr(kBearer.size())))
    return {eRole::Viewer, "token", {}, {}};
  return {};
}

bool cAccess::MustWait(const std::string& address, std::string& error, unsigned int& waitSec) const {
  waitSec = m_delay.GetWait(address);
  if (waitSec == 0) return false;
  error =
      "Too many wrong passwords: try again in " + std::to_string(waitSec) + (waitSec == 1 ? " second." : " seconds.");
  return true;
}

bool cAccess::SetUp(const std::string& code, const std::string& password, const std::string& address,
                    std::string& error) {
  unsigned int wait = 0;
  if (!NeedsSetup()) {
    error = "A password is set already.";
    return false;
  }
  if (MustWait(address, error, wait)) return false;
  if (!AreSame(code, m_setupCode)) {
    m_delay.Failed(address);
    error = "That is not the code that the gateway has told when it started.";
    return false;
  }
  return accounts.Set(kFirstAccount, eRole::Admin, password, error);
}

const cVisitor* cAccess::LogIn(const std::string& name, const std::string& password, const std::string& address,
                               std::string& error, unsigned int& waitSec) {
  if (MustWait(address, error, waitSec)) return nullptr;
  const cAccount* const account = accounts.Find(name);
  if (FitsPassword(password, account != nullptr ? account->hash : std::string())) {
    m_delay.Succeeded(address);
    return &logins.Begin(account->name, account->role);
  }
  m_delay.Failed(address);
  error = "Name or password is wrong.";
  return nullptr;
}

// ---- changes

bool cAccess::ChangePassword(const cVisitor& visitor, const std::string& old, const std::string& fresh,
                             const std::string& address, std::string& error, unsigned int& waitSec) {
  if (MustWait(address, error, waitSec)) return false;
  const cAccount* const account = accounts.Find(visitor.name);
  if (!FitsPassword(old, account != nullptr ? account->hash : std::string())) {
    m_delay.Failed(address);
    error = "The old password is wrong.";
    return false;
  }
  m_delay.Succeeded(address);
  return SetAccount(visitor.name, account->role, fresh, visitor.sid, error);
}

bool cAccess::SetAccount(const std::string& name, eRole role, const std::string& password, const vorn::cUuid& but,
                         std::string& error) {
  if (!accounts.Set(name, role, password, error)) return false;
  logins.EndAll(name, but);
  return true;
}

bool cAccess::RemoveAccount(const std::string& name, const vorn::cUuid& but, std::string& error) {
  if (!accounts.Remove(name, error)) return false;
  logins.EndAll(name, but);
  return true;
}

std::string SessionCookie(const vorn::cUuid& sid, bool isSecure) {
  return std::string("Set-Cookie: ") + cLogins::kCookie + "=" + sid.ToString() + "; Path=/; HttpOnly; SameSite=Strict" +
         (isSecure ? "; Secure" : "");
}

std::string NoSessionCookie() {
  return std::string("Set-Cookie: ") + cLogins::kCookie + "=; Path=/; HttpOnly; SameSite=Strict; Max-Age=0";
}

}  // namespace tav::pages
