// SPDX-License-Identifier: Apache-2.0
// tavctl monitor: the messages between a service and its clients, as they travel.
#pragma once

#include <tavctl/command.h>
#include <tavctl/monitor_view.h>

namespace tav::ctl {

class cMonitorCommand final : public cCommand {
 public:
  cMonitorCommand() : cCommand("monitor", "Show the messages of a service as they travel, until Ctrl-C") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  cMonitorOptions m_options;
};

}  // namespace tav::ctl
