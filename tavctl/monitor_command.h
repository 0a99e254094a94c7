// SPDX-License-Identifier: Apache-2.0
// tavctl monitor: the messages between a service and its clients, as they travel.
#pragma once

#include <cstdint>

#include <tavctl/command.h>

namespace tav::ctl {

class cMonitorCommand final : public cCommand {
 public:
  cMonitorCommand() : cCommand("monitor", "Show the messages of a service as they travel, until Ctrl-C") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  std::string m_service;
  std::string m_filter;
  std::uint64_t m_count = 0;
  bool m_secrets = false;
};

}  // namespace tav::ctl
