// SPDX-License-Identifier: Apache-2.0
// tavctl meters: the meters that readings are stored of.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cMetersCommand final : public cCommand {
 public:
  cMetersCommand() : cCommand("meters", "List the meters, and how much is stored of them") {}
  eExit Run(cContext& context) override;
};

}  // namespace tav::ctl
