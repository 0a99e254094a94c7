// SPDX-License-Identifier: Apache-2.0
// tavctl stats: the counters of the database control service.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cStatsCommand final : public cCommand {
 public:
  cStatsCommand() : cCommand("stats", "Show the counters of the database control service") {}
  eExit Run(cContext& context) override;
};

}  // namespace tav::ctl
