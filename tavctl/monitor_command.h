// SPDX-License-Identifier: Apache-2.0
// tavctl monitor: the messages between services and their clients, as they travel.
#pragma once

#include <memory>
#include <vector>

#include <tavctl/command.h>
#include <tavctl/monitor_view.h>

namespace tav::ctl {

class cMonitorCommand final : public cCommand {
 public:
  cMonitorCommand() : cCommand("monitor", "Show the messages of services as they travel, until Ctrl-C") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  using Views = std::vector<std::unique_ptr<cMonitorView>>;

  Views Watch(cContext& context, cMonitorOutput& output) const;

  cMonitorOptions m_options;
};

}  // namespace tav::ctl
