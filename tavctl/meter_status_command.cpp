// SPDX-License-Identifier: Apache-2.0
#include <tavctl/meter_status_command.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/data_query.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {
    {db_ctrl::kMeterId, "METER"},
    {"status", "STATUS"},
    {"last-reply-received", "LAST REPLY", eForm::Time},
    {"last-reply-received-timesource", "TIME FROM"},
    {db_ctrl::kMedium, "MEDIUM", eForm::Medium},
    {db_ctrl::kManufactor, "MAKER"},
    {db_ctrl::kAddr, "ADDRESS"},
    {"rssi", "RSSI", eForm::Number},
    {"interface-name", "INTERFACE"},
    {"interface-protocol", "PROTOCOL"},
};

}  // namespace

void cMeterStatusCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "METER", m_meter, "Identifier of the meter", eNeed::Optional);
}

eExit cMeterStatusCommand::Run(cContext& context) {
  cDataQuery data(context);
  cDbCtrlRequest request;
  request.m_meterID = m_meter;
  const auto rows = context.Rows(kColumns);
  const auto outcome =
      data.Select(db_ctrl::eGetMeterStatus, request, 0, [&](const vorn::cRecord& row) { rows->Write(row); });
  rows->End();
  if (outcome.rows != 0) return eExitDone;
  context.Note(m_meter.empty() ? "no meter has answered yet" : "meter '" + m_meter + "' has not answered yet");
  return m_meter.empty() ? eExitDone : eExitNegative;
}

}  // namespace tav::ctl
