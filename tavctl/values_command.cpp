// SPDX-License-Identifier: Apache-2.0
#include <tavctl/values_command.h>

#include <gateway/form/value_columns.h>
#include <tav/framework/helper.h>
#include <tav/service/db_ctrl_request.h>
#include <tavctl/data_query.h>

namespace tav::ctl {

void cValuesCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "METER", m_meter, "Identifier of the meter", eNeed::Required);
  AddText(app, "--obis", m_obis, "Only the values of these OBIS identifiers, with commas between them");
  AddText(app, "--profile", m_profile,
          "What a collector of the meter has logged: its name, or its event such as 15min");
  AddTimeRange(app, m_range);
  AddNumber(app, "--limit", m_limit, "At most so many values, 0: all (default 1000)");
}

eExit cValuesCommand::Run(cContext& context) {
  cDataQuery data(context);
  cDbCtrlRequest request;
  request.m_meterID = m_meter;
  request.m_profile = m_profile;
  for (const std::string& obis : vorn::cHelper::GetStringTokens(m_obis, ",")) request.AddObisID(obis);
  if (m_range.from) request.m_fromUTC = *m_range.from;
  if (m_range.to) request.m_toUTC = *m_range.to;
  const auto rows =
      context.Rows(m_profile.empty() ? Columns(form::kStoredValueColumns) : Columns(form::kProfileColumns));
  const auto outcome =
      data.Select(db_ctrl::eGetStoredValues, request, m_limit, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.more) context.Note("there are more values; --limit 0 lists all, --from and --to choose");
  if (outcome.rows != 0) return eExitDone;
  context.Note("meter '" + m_meter + "' has no such values; see tavctl meters");
  return eExitNegative;
}

}  // namespace tav::ctl
