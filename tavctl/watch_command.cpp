// SPDX-License-Identifier: Apache-2.0
#include <tavctl/watch_command.h>

#include <gateway/form/value_columns.h>
#include <tav/framework/helper.h>
#include <tavctl/data_query.h>
#include <tavctl/live_view.h>
#include <tavctl/options.h>

namespace tav::ctl {

void cWatchCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "METER", m_meter, "Identifier of the meter", eNeed::Optional);
  AddSeconds(app, "--interval", m_intervalMs, "Seconds between two looks (default 2)");
  AddNumber(app, "--count", m_count, "End after so many looks, 0: never (default 0)");
}

eExit cWatchCommand::Run(cContext& context) {
  cDataQuery data(context);
  cDbCtrlRequest request;
  request.m_meterID = m_meter;
  cLiveView::cPlan plan;
  plan.columns = form::kLastValueColumns;
  plan.count = m_count;
  plan.title = vorn::FormatString("every %g s", m_intervalMs / 1000.0);
  plan.key = [](const vorn::cRecord& row) {
    return row.GetTextPar(db_ctrl::kMeterId) + '\n' + row.GetTextPar(db_ctrl::kObisId);
  };
  plan.wait = [&] { context.Await([] { return false; }, m_intervalMs); };
  plan.ask = [&] {
    cLiveView::Rows rows;
    data.Select(db_ctrl::eGetLastValues, request, 0, [&](const vorn::cRecord& row) { rows.push_back(row); });
    return rows;
  };
  cLiveView(context, plan).Run();
  return eExitDone;
}

}  // namespace tav::ctl
