// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/connection_table.h>

#include <sys/epoll.h>

#include <algorithm>

#include <gateway/web/front/web_limits.h>

namespace tav::gateway::web {

namespace {

constexpr int kMaxEvents = 64;

}  // namespace

cConnectionTable::cConnectionTable(cServiceHost* host, const cWebParts& parts)
    : m_host(host),
      m_parts(parts),
      m_gone(epoll_create1(EPOLL_CLOEXEC)),
      m_goneWatch(host, m_gone.Get(), vorn::cWatch::eEvent::Read, [this] { TakeGone(); }),
      m_check(host, [this] { Check(); }) {}

cConnection* cConnectionTable::Add(MHD_Connection* handle) {
  if (IsNearlyFull()) MakeRoom();
  cConnection* const connection = &m_connections.emplace_back(m_parts, handle);
  epoll_event event{};
  event.events = EPOLLRDHUP | EPOLLET;
  event.data.ptr = connection;
  epoll_ctl(m_gone.Get(), EPOLL_CTL_ADD, connection->GetSocket(), &event);
  ++m_parts.counters->connections;
  if (!m_check.IsStarted()) m_check.Start(kCheckMs, kCheckMs / 4);
  return connection;
}

void cConnectionTable::Remove(cConnection* connection) {
  epoll_ctl(m_gone.Get(), EPOLL_CTL_DEL, connection->GetSocket(), nullptr);
  std::erase_if(m_connections, [&](const cConnection& each) { return &each == connection; });
  // At its limit the library does not listen; it looks again only when it runs.
  if (IsNearlyFull()) m_parts.runLater();
}

void cConnectionTable::MoveToEnd(cConnection* connection) {
  const auto found = std::find_if(m_connections.begin(), m_connections.end(),
                                  [&](const cConnection& each) { return &each == connection; });
  m_connections.splice(m_connections.end(), m_connections, found);
}

void cConnectionTable::AbortAll() {
  for (cConnection& connection : m_connections) connection.Abort();
}

void cConnectionTable::MakeRoom() {
  auto victim = std::find_if(m_connections.begin(), m_connections.end(),
                             [](const cConnection& each) { return each.IsWaitingForRequest(); });
  if (victim == m_connections.end())
    victim =
        std::find_if(m_connections.begin(), m_connections.end(), [](const cConnection& each) { return each.IsIdle(); });
  if (victim == m_connections.end()) return;
  ++m_parts.counters->evicted;
  victim->Abort();
}

void cConnectionTable::TakeGone() {
  epoll_event events[kMaxEvents];
  const int count = epoll_wait(m_gone.Get(), events, kMaxEvents, 0);
  for (int i = 0; i < count; ++i) static_cast<cConnection*>(events[i].data.ptr)->OnClientGone();
}

void cConnectionTable::Check() {
  const std::int64_t now = m_host->GetClock().Now();
  for (cConnection& connection : m_connections) connection.Check(now);
  if (!m_connections.empty()) m_check.Start(kCheckMs, kCheckMs / 4);
}

}  // namespace tav::gateway::web
