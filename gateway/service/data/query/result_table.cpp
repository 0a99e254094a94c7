// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/result_table.h>

#include <algorithm>
#include <utility>

namespace tav::data {

namespace {

// How much later an idle result may go, so that many of them cost one wake-up.
constexpr unsigned int kSlack = 10'000;

}  // namespace

cResultTable::cResultTable(gateway::cServiceHost* host) : m_host(host), m_idle(host, [this] { EndIdle(); }) {}

std::optional<vorn::cUuid> cResultTable::Add(const vorn::cScmChannel* owner, cHeld held, std::string& reason) {
  reason = Refusal(owner, held.result->GetBytes());
  if (!reason.empty()) return std::nullopt;
  vorn::cUuid handle;
  handle.Create();
  m_results[handle] = {owner, std::move(held), m_host->GetClock().Now() + kIdle};
  if (!m_idle.IsStarted()) Watch();
  return handle;
}

std::string cResultTable::Refusal(const vorn::cScmChannel* owner, std::size_t bytes) const {
  std::size_t own = 0;
  for (const auto& [handle, entry] : m_results) {
    own += entry.owner == owner ? 1 : 0;
    bytes += entry.held.result->GetBytes();
  }
  if (own >= kMaxOfChannel)
    return "this client holds " + std::to_string(own) + " results, the most there may be: close one";
  if (m_results.size() >= kMaxOfAll) return "all clients together hold " + std::to_string(kMaxOfAll) + " results";
  if (bytes > kMaxBytes)
    return "the rows of all results together would have more than " + std::to_string(kMaxBytes) +
           " bytes: close a result";
  return {};
}

cResultTable::cHeld* cResultTable::Find(const vorn::cScmChannel* owner, const vorn::cUuid& handle) {
  const auto found = m_results.find(handle);
  if (found == m_results.end() || found->second.owner != owner) return nullptr;
  found->second.until = m_host->GetClock().Now() + kIdle;
  return &found->second.held;
}

bool cResultTable::Release(const vorn::cScmChannel* owner, const vorn::cUuid& handle) {
  if (Find(owner, handle) == nullptr) return false;
  m_results.erase(handle);
  return true;
}

void cResultTable::ReleaseAll(const vorn::cScmChannel* owner) {
  std::erase_if(m_results, [owner](const auto& each) { return each.second.owner == owner; });
}

void cResultTable::EndIdle() {
  const std::int64_t now = m_host->GetClock().Now();
  std::erase_if(m_results, [now](const auto& each) { return each.second.until <= now; });
  Watch();
}

// Results that were asked for meanwhile are looked at again when the first of them can be over.
void cResultTable::Watch() {
  if (m_results.empty()) return;
  std::int64_t first = m_results.begin()->second.until;
  for (const auto& [handle, entry] : m_results) first = std::min(first, entry.until);
  m_idle.Start(static_cast<unsigned int>(std::max<std::int64_t>(first - m_host->GetClock().Now(), 1)), kSlack);
}

}  // namespace tav::data
