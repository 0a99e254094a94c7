// SPDX-License-Identifier: Apache-2.0
#include <tavctl/last_command.h>

#include <gateway/form/value_columns.h>
#include <tavctl/data_query.h>
#include <tavctl/options.h>

namespace tav::ctl {

void cLastCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "METER", m_meter, "Identifier of the meter", eNeed::Optional);
}

eExit cLastCommand::Run(cContext& context) {
  cDataQuery data(context);
  cDbCtrlRequest request;
  request.m_meterID = m_meter;
  const auto rows = context.Rows(form::kLastValueColumns);
  const auto outcome =
      data.Select(db_ctrl::eGetLastValues, request, 0, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.rows != 0) return eExitDone;
  context.Note(m_meter.empty() ? "no value is stored yet" : "meter '" + m_meter + "' has no values; see tavctl meters");
  return m_meter.empty() ? eExitDone : eExitNegative;
}

}  // namespace tav::ctl
