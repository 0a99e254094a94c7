// SPDX-License-Identifier: Apache-2.0
// cResultRequests: the requests for stored data: values, last values, status, and the pages of a result. Turns a
// request into a result (result.h), and its rows into answers.
//
// docs/queries.md tells about modes, profiles and limits.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/result_table.h>
#include <gateway/service/data/query/stored_selection.h>

namespace tav {
class cDbCtrlRequest;
}

namespace tav::data {

class cResultRequests {
 public:
  using Handlers = std::vector<std::pair<unsigned int, gateway::cProtocolServer::Handler>>;
  // Reads what is committed, everything that came before the request included.
  using Read = std::function<cFault(const std::function<void(cTables&)>& ask)>;

  // Rows of a whole result when the request asks for 0, and at most.
  static constexpr unsigned int kMaxResultRows = 1'000'000;

  // All of them outlive it.
  cResultRequests(gateway::cProtocolServer* server, cResultTable* results, Read read);

  // The requests that it handles, and how.
  Handlers GetHandlers();

 private:
  // Makes the result of a selection, or says in reason why not.
  using Make = std::unique_ptr<cResult> (cResultRequests::*)(cTables& tables, const cDbCtrlRequest& asked,
                                                             cStoredSelection selection, std::string& reason);

  void GetStoredValues(const vorn::cMsg& request);
  void GetAtOnce(const vorn::cMsg& request, Make make, std::string_view name);
  void Fetch(const vorn::cMsg& request, cResultTable::eKind kind);
  void Close(const vorn::cMsg& request);

  bool Select(const vorn::cMsg& request, Make make, cResultTable::cHeld& held);
  std::unique_ptr<cResult> MakeStored(cTables& tables, const cDbCtrlRequest& asked, cStoredSelection selection,
                                      std::string& reason);
  std::unique_ptr<cResult> MakeProfile(cTables& tables, const cDbCtrlRequest& asked, const cStoredSelection& selection,
                                       std::string& reason);
  std::unique_ptr<cResult> MakeLast(cTables& tables, const cDbCtrlRequest& asked, cStoredSelection selection,
                                    std::string& reason);
  std::unique_ptr<cResult> MakeStatus(cTables& tables, const cDbCtrlRequest& asked, cStoredSelection selection,
                                      std::string& reason);
  // Takes the next rows into an answer; end: nothing is behind them.
  cFault TakePage(cResultTable::cHeld& held, std::string_view name, unsigned int rows, vorn::cRecord& answer,
                  bool& end);

  gateway::cProtocolServer* m_server;
  cResultTable* m_results;
  Read m_read;
};

}  // namespace tav::data
