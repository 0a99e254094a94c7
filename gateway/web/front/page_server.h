// SPDX-License-Identifier: Apache-2.0
// cPageServer: the front end's side of channel "web": page processes register here, and their outputs find their
// exchange.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/host/task.h>
#include <gateway/web/front/page_exchange.h>
#include <gateway/web/front/page_registry.h>

namespace tav::gateway::web {

class cPageServer final : public cProtocolServer {
 public:
  explicit cPageServer(cServiceHost* host);

  // Null when no process serves that path.
  const cPageProcess* Find(std::string_view path) const { return m_registry.Find(path); }
  std::size_t CountProcesses() const { return m_registry.CountProcesses(); }
  // Bytes of all answers that no client has taken yet.
  std::size_t GetWaiting() const { return m_waiting; }
  // Requests that a page process did not answer as it should.
  std::uint64_t CountFailures() const { return m_failures; }

  void OnClose(vorn::cScmChannel& channel) override;

  // ---- for exchanges
  void Add(cPageExchange* exchange) { m_exchanges.emplace(exchange->GetId(), exchange); }
  void Remove(cPageExchange* exchange);
  // Once everything that is ready now has been handled: answers that are whole by then are sent as one.
  void WakeLater(cPageExchange* exchange);
  void CountWaiting(std::size_t before, std::size_t now) { m_waiting += now - before; }
  void CountFailure() { ++m_failures; }
  std::int64_t Now() const { return m_host->GetClock().Now(); }

 private:
  void Register(const vorn::cMsg& request);
  void TakeOutput(const vorn::cMsg& output);
  // Null for one that is not known, or another process's.
  cPageExchange* ExchangeOf(const vorn::cMsg& msg) const;
  void WakeAll();

  cServiceHost* m_host;
  cPageRegistry m_registry;
  std::map<vorn::cUuid, cPageExchange*> m_exchanges;
  std::vector<cPageExchange*> m_woken;
  std::size_t m_waiting = 0;
  std::uint64_t m_failures = 0;
  cTask m_wake;
};

}  // namespace tav::gateway::web
