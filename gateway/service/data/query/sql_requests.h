// SPDX-License-Identifier: Apache-2.0
// cSqlRequests: SQL statements of clients. Reading is free, secrets and writing are for those whom the policy lets:
// root and the service's own user, unless another one is set.
//
// docs/queries.md tells about options and limits.
#pragma once

#include <functional>
#include <utility>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/result_table.h>
#include <gateway/service/data/query/sql_statement.h>

namespace tav::data {

class cSqlRequests {
 public:
  using Handlers = std::vector<std::pair<unsigned int, gateway::cProtocolServer::Handler>>;
  using Policy = std::function<bool(const vorn::cScmPeer& peer)>;

  // Bits of "options".
  static constexpr unsigned int kWrite = 1;

  // commit: what waits to be stored, so that the statement sees it. changed: rows may have been written. All outlive
  // it.
  cSqlRequests(gateway::cProtocolServer* server, cDataStore* store, cResultTable* results, std::function<void()> commit,
               std::function<void()> changed);

  // The requests that it handles, and how.
  Handlers GetHandlers();
  void SetPolicy(Policy policy) { m_mayWrite = std::move(policy); }
  void SetBounds(const cSqlBounds& bounds) { m_bounds = bounds; }

  // The policy that holds when none is set.
  static bool MayWrite(const vorn::cScmPeer& peer);

 private:
  void Execute(const vorn::cMsg& request);
  cSqlOutcome Write(const std::string& sql);
  void AnswerOutcome(const vorn::cMsg& request, const cSqlOutcome& outcome);

  gateway::cProtocolServer* m_server;
  cDataStore* m_store;
  cResultTable* m_results;
  std::function<void()> m_commit;
  std::function<void()> m_changed;
  Policy m_mayWrite = MayWrite;
  cSqlBounds m_bounds;
};

}  // namespace tav::data
