// SPDX-License-Identifier: Apache-2.0
// tavctl last: the last value of each OBIS identifier of one meter, or of all.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cLastCommand final : public cCommand {
 public:
  cLastCommand() : cCommand("last", "Show the last values of one meter, or of all") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when the meter that was named has none.
  eExit Run(cContext& context) override;

 private:
  std::string m_meter;
};

}  // namespace tav::ctl
