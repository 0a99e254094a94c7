// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/logins.h>

#include <algorithm>
#include <vector>

#include <gateway/web/pages/access/password_hash.h>

namespace tav::pages {

cLogin::cLogin(vorn::cUuid& sid, vorn::cScmService* service, unsigned int timeoutSec, const std::string& name,
               eRole role)
    : cHttpSession(sid, service, timeoutSec), m_visitor{role, name, MakeSecret(), sid} {}

cLogins::cLogins(vorn::cScmService* service, unsigned int timeoutSec,
                 std::function<void(const vorn::cUuid& sid)> onEnded)
    : m_service(service), m_timeoutSec(timeoutSec), m_onEnded(std::move(onEnded)) {}

cLogins::~cLogins() {
  for (const auto& [sid, entry] : m_logins) HttpSessions.Remove(sid);
}

const cVisitor& cLogins::Begin(const std::string& name, eRole role) {
  if (m_logins.size() >= kMaxLogins) EndOldest();
  vorn::cUuid sid;
  sid.Create();
  auto login = std::make_unique<cLogin>(sid, m_service, m_timeoutSec, name, role);
  HttpSessions.Set(sid, login.get());
  return (m_logins[sid] = {std::move(login), m_begun++}).login->GetVisitor();
}

const cVisitor* cLogins::Find(const std::string& sid, bool renew) {
  vorn::cUuid id;
  if (!id.FromString(sid)) return nullptr;
  const auto at = m_logins.find(id);
  if (at == m_logins.end()) return nullptr;
  if (renew) at->second.login->SetTimeout(m_timeoutSec);
  return &at->second.login->GetVisitor();
}

void cLogins::End(const vorn::cUuid& sid) {
  const vorn::cUuid ended = sid;  // it may stand in what goes now
  if (m_logins.erase(ended) == 0) return;
  HttpSessions.Remove(ended);
  m_onEnded(ended);
}

void cLogins::EndAll(const std::string& name, const vorn::cUuid& but) {
  std::vector<vorn::cUuid> ending;
  for (const auto& [sid, entry] : m_logins)
    if (entry.login->GetVisitor().name == name && sid != but) ending.push_back(sid);
  for (const vorn::cUuid& sid : ending) End(sid);
}

void cLogins::EndOldest() {
  End(std::min_element(m_logins.begin(), m_logins.end(), [](const auto& a, const auto& b) {
        return a.second.number < b.second.number;
      })->first);
}

}  // namespace tav::pages
