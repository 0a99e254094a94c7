// SPDX-License-Identifier: Apache-2.0
#include <tavctl/data_query.h>

#include <algorithm>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/failure.h>

namespace tav::ctl {

namespace {

vorn::cRecord PageRequest(const vorn::cRecord& request, std::uint64_t rows, const vorn::cData& after) {
  vorn::cRecord page = request;
  page.SetUIntPar(db_ctrl::kMaxLen, static_cast<unsigned int>(rows));
  if (!after.IsEmpty()) page.SetDataPar(db_ctrl::kAfter, after);
  return page;
}

}  // namespace

cDataQuery::cDataQuery(cContext& context) : m_link(context, db_ctrl::kProtocol) {}

cDataQuery::cOutcome cDataQuery::List(unsigned int type, const vorn::cRecord& request, std::uint64_t limit,
                                      const OnRow& onRow) {
  cOutcome outcome;
  vorn::cData after;
  for (;;) {
    const std::uint64_t left = limit == 0 ? kPageRows : std::min<std::uint64_t>(limit - outcome.rows, kPageRows);
    const vorn::cRecord page = m_link.Ask(type, PageRequest(request, left, after));
    if (!TakeRows(page, db_ctrl::kRow, limit, outcome, onRow)) return outcome;
    const vorn::cData next = page.GetDataPar(db_ctrl::kNext);
    outcome.more = limit != 0 && outcome.rows == limit && !next.IsEmpty();
    if (next.IsEmpty() || outcome.more) return outcome;
    if (next == after) throw cFailure(eExitRefused, "service 'data' answers with the cursor it was asked with");
    after = next;
  }
}

// False when the limit has ended them.
bool cDataQuery::TakeRows(const vorn::cRecord& answer, std::string_view key, std::uint64_t limit, cOutcome& outcome,
                          const OnRow& onRow) {
  vorn::cRecord row;
  for (vorn::cRecordPar at = answer.GetPar(key); at.GetRecord(row); at = at.NextSame()) {
    outcome.more = limit != 0 && outcome.rows == limit;
    if (outcome.more) return false;
    onRow(row);
    ++outcome.rows;
  }
  return true;
}

void cDataQuery::FetchAll(unsigned int type, const vorn::cUuid& handle, std::uint64_t limit, cOutcome& outcome,
                          const OnRow& onRow) {
  vorn::cRecord request;
  request.AppendUuidPar(db_ctrl::kHandle, handle);
  request.AppendUIntPar(db_ctrl::kCount, kPageRows);
  for (;;) {
    const vorn::cRecord page = m_link.Ask(type, request);
    const bool all = TakeRows(page, db_ctrl::kRow, limit, outcome, onRow);
    if (all && page.GetBoolPar(db_ctrl::kEnd)) return;
    if (all) continue;
    vorn::cRecord close;
    close.AppendUuidPar(db_ctrl::kHandle, handle);
    if (!page.GetBoolPar(db_ctrl::kEnd)) m_link.Ask(db_ctrl::eCloseResult, close);
    return;
  }
}

cDataQuery::cOutcome cDataQuery::Select(unsigned int type, cDbCtrlRequest selection, std::uint64_t limit,
                                        const OnRow& onRow) {
  cOutcome outcome;
  // One more than asked for tells whether there are more; 0 is as many as the service gives.
  selection.m_maxLen = limit != 0 && limit < cDbCtrlRequest::kOpenEnd ? static_cast<unsigned int>(limit + 1) : 0;
  vorn::cRecord request;
  request.AppendRecordPar(db_ctrl::kMeterRequest, selection.ToRecord());
  const vorn::cRecord answer = m_link.Ask(type, request);
  const bool status = type == db_ctrl::eGetMeterStatus;
  if (!TakeRows(answer, status ? db_ctrl::kMeterStatus : db_ctrl::kRow, limit, outcome, onRow)) return outcome;
  const vorn::cUuid handle = answer.GetUuidPar(db_ctrl::kHandle);
  if (handle.IsValid()) FetchAll(db_ctrl::eFetchStoredValues, handle, limit, outcome, onRow);
  return outcome;
}

cDataQuery::cOutcome cDataQuery::Execute(const std::string& statement, unsigned int options, std::uint64_t limit,
                                         const OnRow& onResult, const OnRow& onRow) {
  cOutcome outcome;
  vorn::cRecord request;
  request.AppendTextPar(db_ctrl::kDb, "");
  request.AppendTextPar(db_ctrl::kSql, statement);
  request.AppendUIntPar(db_ctrl::kOptions, options);
  const vorn::cRecord answer = m_link.Ask(db_ctrl::eSqlExec, request);
  onResult(answer);
  const vorn::cUuid handle = answer.GetUuidPar(db_ctrl::kHandle);
  if (handle.IsValid()) FetchAll(db_ctrl::eSqlFetch, handle, limit, outcome, onRow);
  return outcome;
}

}  // namespace tav::ctl
