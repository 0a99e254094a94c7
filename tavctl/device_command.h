// SPDX-License-Identifier: Apache-2.0
// tavctl device: about the gateway's own hardware. "identify ID" names the hardware that an identifier stands for.
#pragma once

#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cDeviceCommand final : public cCommand {
 public:
  cDeviceCommand() : cCommand("device", "Tell about the gateway's hardware") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when the identifier is not known.
  eExit Run(cContext& context) override;

 private:
  std::string m_id;
};

}  // namespace tav::ctl
