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
                                      const std::function<void(const vorn::cRecord& row)>& onRow) {
  cOutcome outcome;
  vorn::cData after;
  for (;;) {
    const std::uint64_t left = limit == 0 ? kPageRows : std::min<std::uint64_t>(limit - outcome.rows, kPageRows);
    const vorn::cRecord page = m_link.Ask(type, PageRequest(request, left, after));
    vorn::cRecord row;
    for (vorn::cRecordPar at = page.GetPar(db_ctrl::kRow); at.GetRecord(row); at = at.NextSame()) {
      if (limit != 0 && outcome.rows == limit) return {outcome.rows, true};
      onRow(row);
      ++outcome.rows;
    }
    const vorn::cData next = page.GetDataPar(db_ctrl::kNext);
    outcome.more = limit != 0 && outcome.rows == limit && !next.IsEmpty();
    if (next.IsEmpty() || outcome.more) return outcome;
    if (next == after) throw cFailure(eExitRefused, "service 'data' answers with the cursor it was asked with");
    after = next;
  }
}

}  // namespace tav::ctl
