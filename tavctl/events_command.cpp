// SPDX-License-Identifier: Apache-2.0
#include <tavctl/events_command.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/data_query.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {
    {db_ctrl::kTimestamp, "TIME", eForm::Time},
    {"event", "EVENT", eForm::Record},
};

}  // namespace

void cEventsCommand::AddOptions(CLI::App& app) {
  AddTimeRange(app, m_range);
  AddNumber(app, "--limit", m_limit, "At most so many events, 0: all (default 1000)");
}

eExit cEventsCommand::Run(cContext& context) {
  cDataQuery data(context);
  vorn::cRecord request;
  if (m_range.from) request.AppendUIntPar(db_ctrl::kFromUtc, *m_range.from);
  if (m_range.to) request.AppendUIntPar(db_ctrl::kToUtc, *m_range.to);
  const auto rows = context.Rows(kColumns);
  const auto outcome =
      data.List(db_ctrl::eListEvents, request, m_limit, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.more) context.Note("there are more events; --limit 0 lists all, --from and --to choose");
  if (outcome.rows == 0) context.Note("no event is stored in that time");
  return eExitDone;
}

}  // namespace tav::ctl
