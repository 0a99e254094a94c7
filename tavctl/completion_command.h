// SPDX-License-Identifier: Apache-2.0
// tavctl completion: a script that teaches a shell the commands and options of tavctl, made from the commands
// themselves.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cCompletionCommand final : public cCommand {
 public:
  cCompletionCommand() : cCommand("completion", "Print a script that completes tavctl's commands in a shell") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  std::string m_shell;
  const CLI::App* m_tavctl = nullptr;
};

}  // namespace tav::ctl
