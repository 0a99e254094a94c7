// SPDX-License-Identifier: Apache-2.0
// tavctl services: which services have a socket in the directory, and who answers there.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cServicesCommand final : public cCommand {
 public:
  cServicesCommand() : cCommand("services", "List the services, and which of them answer") {}
  // eExitUnreachable when none answers.
  eExit Run(cContext& context) override;
};

}  // namespace tav::ctl
