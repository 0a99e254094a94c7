// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/sql_requests.h>

#include <SQLiteCpp/Database.h>
#include <unistd.h>

#include <gateway/service/data/query/sql_rows.h>
#include <tav/framework/helper.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

constexpr const char* kDatabase = "tav";

}  // namespace

cSqlRequests::cSqlRequests(gateway::cProtocolServer* server, cDataStore* store, cResultTable* results,
                           std::function<void()> commit, std::function<void()> changed)
    : m_server(server),
      m_store(store),
      m_results(results),
      m_commit(std::move(commit)),
      m_changed(std::move(changed)) {}

cSqlRequests::Handlers cSqlRequests::GetHandlers() {
  return {{db_ctrl::eSqlExec, [this](const vorn::cMsg& request) { Execute(request); }}};
}

bool cSqlRequests::MayWrite(const vorn::cScmPeer& peer) { return peer.uid == 0 || peer.uid == geteuid(); }

void cSqlRequests::Execute(const vorn::cMsg& request) {
  const std::string database = request.Record().GetTextPar(db_ctrl::kDb);
  const std::string sql = request.Record().GetTextPar(db_ctrl::kSql);
  const unsigned int options = request.Record().GetUIntPar(db_ctrl::kOptions);
  const bool trusted = m_mayWrite(request.GetReplyChannel()->GetPeer());
  if (!database.empty() && database != kDatabase)
    return m_server->Refuse(request, "unknown database '" + database + "': there is '" + kDatabase + "' only");
  if ((options & ~kWrite) != 0)
    return m_server->Refuse(request, vorn::FormatString("options 0x%x: only 1 (write) is known", options));
  if (options == kWrite && !trusted)
    return m_server->Refuse(request, "writing is for root and the user of the service only");
  m_commit();
  AnswerOutcome(request, options == kWrite
                             ? Write(sql)
                             : RunSqlReadOnly(m_store->GetOptions().file, sql,
                                              trusted ? eSqlRight::ReadSecrets : eSqlRight::Read, m_bounds));
}

cSqlOutcome cSqlRequests::Write(const std::string& sql) {
  cSqlOutcome outcome;
  const cFault fault = m_store->Change([&](cTables& tables) {
    outcome = RunSql(tables.database.getHandle(), sql, eSqlRight::Write, m_bounds);
    return outcome.error.empty();
  });
  if (fault) {
    outcome = cSqlOutcome();
    outcome.error = fault.text;
  }
  m_store->Forget();
  m_changed();
  return outcome;
}

void cSqlRequests::AnswerOutcome(const vorn::cMsg& request, const cSqlOutcome& outcome) {
  if (!outcome.error.empty()) return m_server->Refuse(request, outcome.error);
  vorn::cRecord answer;
  if (!outcome.columns.empty()) {
    cResultTable::cHeld held;
    held.kind = cResultTable::eKind::Sql;
    held.result = std::make_unique<cSqlRows>(outcome.rows);
    held.left = m_bounds.rows;
    std::string reason;
    const auto handle = m_results->Add(request.GetReplyChannel().get(), std::move(held), reason);
    if (!handle) return m_server->Refuse(request, reason);
    answer.AppendUuidPar(db_ctrl::kHandle, *handle);
  }
  for (const std::string& column : outcome.columns) answer.AppendTextPar(db_ctrl::kColumn, column);
  answer.AppendUInt64Par(db_ctrl::kChanges, outcome.changes);
  m_server->Answer(request, answer);
}

}  // namespace tav::data
