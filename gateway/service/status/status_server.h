// SPDX-License-Identifier: Apache-2.0
// cStatusServer: the status service, channel "status". Merges the values of all clients (status_set.h) and tells each
// what it does not know, once a turn of the loop. A client that does not read what it is told is disconnected: when it
// comes back it brings its copy and gets what it lacks.
//
// docs/status.md tells what becomes of the values of a client that is gone.
#pragma once

#include <cstdint>
#include <map>

#include <gateway/host/protocol_server.h>
#include <gateway/host/task.h>
#include <gateway/service/status/status_keeper.h>

namespace tav::gateway {

struct cStatusCounters {
  std::uint64_t changes = 0;  // messages of clients with changes, since the start
  std::uint64_t refused = 0;  // of them
  std::uint64_t told = 0;     // messages to clients with values of others
};

class cStatusServer final : public cProtocolServer {
 public:
  // How often it is looked whether the values of a client that is gone were kept long enough.
  static constexpr unsigned int kExpiryMs = 600'000;

  // The store is open and outlives the server.
  cStatusServer(cServiceHost* host, cStatusStore* store);
  ~cStatusServer() override;

  const cStatusSet& GetSet() const { return m_set; }
  const cStatusCounters& GetCounters() const { return m_counters; }

  void OnConnect(vorn::cScmChannel& channel) override;
  void OnClose(vorn::cScmChannel& channel) override;

 private:
  // 0 for a channel that is no client's.
  std::uint64_t ClientOf(const vorn::cScmChannel* channel) const;
  cStatusMoment Now() const;
  void Change(const vorn::cMsg& request);
  void TakeFullSet(const vorn::cMsg& request);
  void TakeAnswer(const vorn::cMsg& answer);
  void List(const vorn::cMsg& request);
  void Refuse(const vorn::cMsg& request, const std::string& reason);
  // Something may have changed: tells it at the end of the turn.
  void Wake();
  void TellAll();
  void AskRefused();
  void Expire();

  cServiceHost* m_host;
  cStatusSet m_set;
  cStatusKeeper m_keeper;
  std::map<const vorn::cScmChannel*, std::uint64_t> m_clients;
  cStatusCounters m_counters;
  cTask m_tell;
  cTask m_expiry;
};

}  // namespace tav::gateway
