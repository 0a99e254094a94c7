// SPDX-License-Identifier: Apache-2.0
#include <tavctl/meters_command.h>

#include <gateway/form/value_columns.h>
#include <tavctl/data_query.h>

namespace tav::ctl {

eExit cMetersCommand::Run(cContext& context) {
  cDataQuery data(context);
  const auto rows = context.Rows(form::kReadMeterColumns);
  const auto outcome = data.List(db_ctrl::eListMeters, {}, 0, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.rows == 0) context.Note("no meter is known yet");
  return eExitDone;
}

}  // namespace tav::ctl
