// SPDX-License-Identifier: Apache-2.0
// tavctl meter-status: how the meters are: when each answered last and by which clock, its status, and where it is
// read.
#pragma once

#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cMeterStatusCommand final : public cCommand {
 public:
  cMeterStatusCommand() : cCommand("meter-status", "Show the status of each meter, or of one") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when the named meter has none.
  eExit Run(cContext& context) override;

 private:
  std::string m_meter;
};

}  // namespace tav::ctl
