// SPDX-License-Identifier: Apache-2.0
// tavctl watch: the last values, again and again (live_view.h).
#pragma once

#include <cstdint>
#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cWatchCommand final : public cCommand {
 public:
  static constexpr unsigned int kDefaultIntervalMs = 2'000;

  cWatchCommand() : cCommand("watch", "Show the last values as they change, until Ctrl-C") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  std::string m_meter;
  unsigned int m_intervalMs = kDefaultIntervalMs;
  std::uint64_t m_count = 0;
};

}  // namespace tav::ctl
