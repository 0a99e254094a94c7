// SPDX-License-Identifier: Apache-2.0
#include <tavctl/stats_command.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/data_query.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {{db_ctrl::kName, "COUNTER"}, {db_ctrl::kValue, "VALUE", eForm::Number}};

}  // namespace

eExit cStatsCommand::Run(cContext& context) {
  cDataQuery data(context);
  const auto rows = context.Rows(kColumns);
  data.List(db_ctrl::eGetStatistics, {}, 0, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  return eExitDone;
}

}  // namespace tav::ctl
