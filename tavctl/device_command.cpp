// SPDX-License-Identifier: Apache-2.0
#include <tavctl/device_command.h>

#include <tav/config/hardware_id.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

constexpr cColumn kColumns[] = {{"id", "ID"}, {"hardware", "HARDWARE"}};

}  // namespace

void cDeviceCommand::AddOptions(CLI::App& app) {
  CLI::App& identify = AddAction(app, "identify", "Name the hardware that an identifier stands for");
  AddArgument(identify, "ID", m_id, "Identifier, such as MUC-014", eNeed::Required);
}

eExit cDeviceCommand::Run(cContext& context) {
  const std::string hardware = GetHWNameFromID(m_id);
  vorn::cRecord row;
  row.AppendTextPar("id", m_id);
  row.AppendTextPar("hardware", hardware);
  const auto rows = context.Rows(kColumns);
  rows->Write(row);
  rows->End();
  return hardware == GetHWNameFromID({}) ? eExitNegative : eExitDone;
}

}  // namespace tav::ctl
