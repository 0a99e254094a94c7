// SPDX-License-Identifier: Apache-2.0
// cAccess: who may do what. Accounts, those who are logged in, the delay behind wrong passwords, and the code with
// which the first password is set. docs/security.md tells the model.
#pragma once

#include <functional>
#include <string>

#include <gateway/web/pages/access/accounts.h>
#include <gateway/web/pages/access/attempt_delay.h>
#include <gateway/web/pages/access/logins.h>
#include <tav/http/http_request.h>

namespace tav::pages {

class cAccess {
 public:
  struct cOptions {
    std::string file;                // of the accounts
    unsigned int timeoutSec = 1800;  // a login that is not used
  };

  // onEnded: a login has ended. The service outlives this.
  cAccess(vorn::cScmService* service, const cOptions& options, std::function<void(const vorn::cUuid& sid)> onEnded);

  // False, and in error why, when the accounts cannot be read.
  bool Load(std::string& error) { return accounts.Load(error); }

  // Who sends a request: by the cookie of a login, or, where programs are let in so, by a token. renew: his time starts
  // anew.
  cVisitor Identify(const cHttpRequest& request, bool withToken, bool renew);

  // Nobody has set a password yet.
  bool NeedsSetup() const { return accounts.IsEmpty(); }
  // What the first visitor has to know: told on the gateway itself.
  const std::string& GetSetupCode() const { return m_setupCode; }
  // Makes the first account, "admin". False, and in error what to do, when it does not.
  bool SetUp(const std::string& code, const std::string& password, const std::string& address, std::string& error);
  // The login that begins; null, and in error what to do, when it does not. waitSec: not before so many seconds.
  const cVisitor* LogIn(const std::string& name, const std::string& password, const std::string& address,
                        std::string& error, unsigned int& waitSec);

  // ---- changes of accounts, each of which ends the logins of that account, but for the login of whoever makes the
  // change: he is to hear of it. False, and in error why, when nothing has changed.
  // By the account's own user, who shows that he is it by the old password: guessing waits as at a login.
  bool ChangePassword(const cVisitor& visitor, const std::string& old, const std::string& fresh,
                      const std::string& address, std::string& error, unsigned int& waitSec);
  // An account that is there or a new one, by an administrator.
  bool SetAccount(const std::string& name, eRole role, const std::string& password, const vorn::cUuid& but,
                  std::string& error);
  bool RemoveAccount(const std::string& name, const vorn::cUuid& but, std::string& error);

  static constexpr const char* kFirstAccount = "admin";

  cAccounts accounts;
  cLogins logins;

 private:
  bool MustWait(const std::string& address, std::string& error, unsigned int& waitSec) const;

  std::string m_setupCode;
  cAttemptDelay m_delay;
};

// The line of a header that gives a visitor his cookie, or takes it away.
std::string SessionCookie(const vorn::cUuid& sid, bool isSecure);
std::string NoSessionCookie();

}  // namespace tav::pages
