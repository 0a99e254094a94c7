// SPDX-License-Identifier: Apache-2.0
// cConfigRequests: the requests about the configuration. Turns messages into calls of cConfigStore, and what has become
// of them into answers; what has changed is told to the drivers concerned.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/service/data/data_store.h>
#include <gateway/service/data/driver/driver_registry.h>
#include <gateway/service/data/driver/driver_views.h>

namespace tav::data {

class cConfigRequests {
 public:
  using Handlers = std::vector<std::pair<unsigned int, gateway::cProtocolServer::Handler>>;

  cConfigRequests(gateway::cProtocolServer* server, cDataStore* store, const cDriverRegistry* drivers);

  // The requests that it handles, and how.
  Handlers GetHandlers();

 private:
  using Work = std::function<void(cConfigStore& config, const cPlace& at, vorn::cRecord& answer)>;

  // A question; one that finds nothing under the name it asks for is refused.
  void Question(const vorn::cMsg& request, const Work& ask);
  // A change: one transaction, answered when it is committed.
  void Change(const vorn::cMsg& request, const Work& change);
  void Notify(const cDriverViews& before, const cDriverViews& after);

  void GetInterface(const vorn::cMsg& request);
  void SetInterface(const vorn::cMsg& request);
  void DeleteInterface(const vorn::cMsg& request);
  void GetMeter(const vorn::cMsg& request);
  void SetMeter(const vorn::cMsg& request);
  void DeleteMeter(const vorn::cMsg& request);
  void GetPushTarget(const vorn::cMsg& request);
  void SetPushTarget(const vorn::cMsg& request);
  void DeletePushTarget(const vorn::cMsg& request);
  void GetTemplate(const vorn::cMsg& request);
  void SetTemplate(const vorn::cMsg& request);
  void DeleteTemplate(const vorn::cMsg& request);
  void Apply(const vorn::cMsg& request);

  gateway::cProtocolServer* m_server;
  cDataStore* m_store;
  const cDriverRegistry* m_drivers;
};

}  // namespace tav::data
