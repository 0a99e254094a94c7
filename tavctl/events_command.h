// SPDX-License-Identifier: Apache-2.0
// tavctl events: the stored events, oldest first.
#pragma once

#include <cstdint>

#include <tavctl/command.h>
#include <tavctl/options.h>

namespace tav::ctl {

class cEventsCommand final : public cCommand {
 public:
  static constexpr std::uint64_t kDefaultLimit = 1000;

  cEventsCommand() : cCommand("events", "List the stored events") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  cTimeRange m_range;
  std::uint64_t m_limit = kDefaultLimit;
};

}  // namespace tav::ctl
