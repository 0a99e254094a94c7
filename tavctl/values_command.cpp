// SPDX-License-Identifier: Apache-2.0
#include <tavctl/values_command.h>

#include <tavctl/data_query.h>
#include <tavctl/value_columns.h>

namespace tav::ctl {

void cValuesCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "METER", m_meter, "Identifier of the meter", eNeed::Required);
  AddText(app, "--obis", m_obis, "Only the values of this OBIS identifier");
  AddTimeRange(app, m_range);
  AddNumber(app, "--limit", m_limit, "At most so many values, 0: all (default 1000)");
}

vorn::cRecord cValuesCommand::Request() const {
  vorn::cRecord request;
  request.AppendTextPar(db_ctrl::kMeterId, m_meter);
  if (!m_obis.empty()) request.AppendTextPar(db_ctrl::kObisId, m_obis);
  if (m_range.from) request.AppendUIntPar(db_ctrl::kFromUtc, *m_range.from);
  if (m_range.to) request.AppendUIntPar(db_ctrl::kToUtc, *m_range.to);
  return request;
}

eExit cValuesCommand::Run(cContext& context) {
  cDataQuery data(context);
  const auto rows = context.Rows(kStoredValueColumns);
  const auto outcome =
      data.List(db_ctrl::eListValues, Request(), m_limit, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.more) context.Note("there are more values; --limit 0 lists all, --from and --to choose");
  if (outcome.rows != 0) return eExitDone;
  context.Note("meter '" + m_meter + "' has no such values; see tavctl meters");
  return eExitNegative;
}

}  // namespace tav::ctl
