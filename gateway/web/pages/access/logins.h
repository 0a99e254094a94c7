// SPDX-License-Identifier: Apache-2.0
// cLogins: who is logged in. A login is a session of the page framework: it has an identifier, which the visitor's
// cookie bears, and a time-out, which every request of his starts anew.
#pragma once

#include <functional>
#include <map>
#include <memory>

#include <gateway/web/pages/core/visitor.h>
#include <tav/http/http_session.h>

namespace tav::pages {

class cLogin final : public cHttpSession {
 public:
  cLogin(vorn::cUuid& sid, vorn::cScmService* service, unsigned int timeoutSec, const std::string& name, eRole role);
  const cVisitor& GetVisitor() const { return m_visitor; }

 private:
  cVisitor m_visitor;
};

class cLogins {
 public:
  static constexpr std::size_t kMaxLogins = 64;  // the oldest ends when one more begins
  static constexpr const char* kCookie = "sid";

  // onEnded is told every login that ends, however it does. The service outlives this.
  cLogins(vorn::cScmService* service, unsigned int timeoutSec, std::function<void(const vorn::cUuid& sid)> onEnded);
  ~cLogins();
  cLogins(const cLogins&) = delete;
  cLogins& operator=(const cLogins&) = delete;

  const cVisitor& Begin(const std::string& name, eRole role);
  // Null when there is none of that identifier. renew: his time starts anew.
  const cVisitor* Find(const std::string& sid, bool renew);
  void End(const vorn::cUuid& sid);
  // All of an account, whose password has changed or who is gone, but for one.
  void EndAll(const std::string& name, const vorn::cUuid& but);
  std::size_t Count() const { return m_logins.size(); }

 private:
  struct cEntry {
    std::unique_ptr<cLogin> login;
    std::uint64_t number;  // in the order of their beginnings
  };

  void EndOldest();

  vorn::cScmService* m_service;
  unsigned int m_timeoutSec;
  std::function<void(const vorn::cUuid& sid)> m_onEnded;
  std::map<vorn::cUuid, cEntry> m_logins;
  std::uint64_t m_begun = 0;
};

}  // namespace tav::pages
