// SPDX-License-Identifier: Apache-2.0
#include <tavctl/meters_command.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/data_query.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {
    {db_ctrl::kMeterId, "METER"},
    {db_ctrl::kMedium, "MEDIUM", eForm::Medium},
    {db_ctrl::kManufactor, "MAKER"},
    {db_ctrl::kAddr, "ADDRESS"},
    {db_ctrl::kDriver, "DRIVER"},
    {"interface-name", "INTERFACE"},
    {"values", "VALUES", eForm::Number},
    {"first-timestamp", "FIRST", eForm::Time},
    {db_ctrl::kTimestamp, "LAST", eForm::Time},
};

}  // namespace

eExit cMetersCommand::Run(cContext& context) {
  cDataQuery data(context);
  const auto rows = context.Rows(kColumns);
  const auto outcome = data.List(db_ctrl::eListMeters, {}, 0, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.rows == 0) context.Note("no meter is known yet");
  return eExitDone;
}

}  // namespace tav::ctl
