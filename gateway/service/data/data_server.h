// SPDX-License-Identifier: Apache-2.0
// cDataServer: the database control service, channel "data". Turns the requests of its protocol
// (tav/service/db_ctrl_protocol.h) into calls of the storage, and what the storage says into answers.
//
// Stores are gathered (store_group.h); a question is answered from what is committed, those stores included that came
// before it.
#pragma once

#include <functional>
#include <map>
#include <string>

#include <gateway/host/protocol_server.h>
#include <gateway/service/data/config/config_requests.h>
#include <gateway/service/data/data_store.h>
#include <gateway/service/data/driver/driver_commands.h>
#include <gateway/service/data/driver/driver_registry.h>
#include <gateway/service/data/profile/profile_logger.h>
#include <gateway/service/data/query/result_requests.h>
#include <gateway/service/data/query/result_table.h>
#include <gateway/service/data/query/sql_requests.h>
#include <gateway/service/data/store_group.h>

namespace tav::data {

class cDataServer final : public gateway::cProtocolServer {
 public:
  // Rows of one answer: when the request does not say, and at most. An answer ends before that, with a cursor to go on,
  // when it reaches so many bytes.
  static constexpr unsigned int kDefaultRows = cResultPage::kDefaultRows;
  static constexpr unsigned int kMaxRows = cResultPage::kMaxRows;
  static constexpr std::size_t kMaxAnswer = cResultPage::kMaxBytes;

  // The store is open; both outlive the server. Ask IsListening for the outcome. Collectors go by the wall clock; the
  // machine's when none is given.
  cDataServer(gateway::cServiceHost* host, cDataStore* store, cProfileLogger::WallClock wallClock = {});
  // Commits or refuses what still waits.
  ~cDataServer() override;

  void OnClose(vorn::cScmChannel& channel) override;

  const cStoreGroup::cCounters& GetCounters() const { return m_group.GetCounters(); }
  // Who may write by SQL, and what a statement may cost, in place of what holds otherwise.
  void SetSqlPolicy(cSqlRequests::Policy policy) { m_sql.SetPolicy(std::move(policy)); }
  void SetSqlBounds(const cSqlBounds& bounds) { m_sql.SetBounds(bounds); }
  std::size_t CountDrivers() const { return m_drivers.GetCount(); }
  // Results that clients hold.
  std::size_t CountResults() const { return m_results.GetCount(); }
  // Stores that are neither committed nor refused yet.
  std::size_t CountWaiting() const { return m_group.CountWaiting(); }
  // Commands that a driver has not answered yet.
  std::size_t CountCommands() const { return m_commands.CountWaiting(); }

 private:
  using Ask = std::function<void(cTables& tables, vorn::cRecord& answer)>;

  cFault Read(const std::function<void(cTables&)>& ask);
  void Question(const vorn::cMsg& request, const Ask& ask);
  void RegisterDriver(const vorn::cMsg& request);
  void AttachStore(const vorn::cMsg& request);
  void ListMeters(const vorn::cMsg& request);
  void ListLastValues(const vorn::cMsg& request);
  void ListValues(const vorn::cMsg& request);
  void ListEvents(const vorn::cMsg& request);
  void ListStores(const vorn::cMsg& request);
  void GetStatistics(const vorn::cMsg& request);

  cDataStore* m_store;
  cStoreGroup m_group;
  cDriverRegistry m_drivers;
  cConfigRequests m_config;
  cDriverCommands m_commands;
  cResultTable m_results;
  cResultRequests m_queries;
  cProfileLogger m_profiles;
  cSqlRequests m_sql;
};

}  // namespace tav::data
