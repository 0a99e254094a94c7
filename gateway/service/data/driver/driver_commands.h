// SPDX-License-Identifier: Apache-2.0
// cDriverCommands: what somebody wants done at a meter goes to the driver that serves it, and the driver's answer goes
// back. A driver that is not there, goes away or does not answer in time is a refusal that says so.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/host/task.h>
#include <gateway/service/data/data_store.h>
#include <gateway/service/data/driver/driver_registry.h>

namespace tav::data {

class cDriverCommands {
 public:
  // How long a driver may take, in milliseconds.
  static constexpr unsigned int kPatience = 30'000;
  // Commands that wait for drivers; further ones are refused.
  static constexpr std::size_t kMaxWaiting = 256;

  using Handlers = std::vector<std::pair<unsigned int, gateway::cProtocolServer::Handler>>;

  cDriverCommands(gateway::cServiceHost* host, gateway::cProtocolServer* server, cDataStore* store,
                  const cDriverRegistry* drivers);

  // The messages that it handles, and how.
  Handlers GetHandlers();
  // A driver is gone: what it has not answered is refused.
  void OnClose(const vorn::cScmChannel& channel);
  std::size_t CountWaiting() const { return m_waiting.size(); }

 private:
  struct cWaiting {
    vorn::cMsg request;
    vorn::cUuid id;  // of the message to the driver
    cDriverRegistry::Channel channel;
    std::string driver;
    std::int64_t deadline;  // of the host's clock
  };

  void Command(const vorn::cMsg& request, const char* command);
  void Send(const vorn::cMsg& request, const cMeterConfig& meter, const char* command);
  void OnDone(const vorn::cMsg& answer);
  void OnFailed(const vorn::cMsg& answer);
  bool Take(const vorn::cMsg& answer, cWaiting& waiting);
  void OnTime();
  void StartTimer();

  gateway::cServiceHost* m_host;
  gateway::cProtocolServer* m_server;
  cDataStore* m_store;
  const cDriverRegistry* m_drivers;
  gateway::cTask m_timer;
  std::deque<cWaiting> m_waiting;  // in the order of their deadlines
};

}  // namespace tav::data
