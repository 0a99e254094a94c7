// SPDX-License-Identifier: Apache-2.0
// tavctl protocol: the page of a service's protocol, as docs/protocol/ holds it. Needs no service.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cProtocolCommand final : public cCommand {
 public:
  cProtocolCommand() : cCommand("protocol", "Print the messages of a service's protocol as a page") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative for a service whose protocol is not known.
  eExit Run(cContext& context) override;

 private:
  std::string m_service;
};

}  // namespace tav::ctl
