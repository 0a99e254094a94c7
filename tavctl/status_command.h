// SPDX-License-Identifier: Apache-2.0
// tavctl status: the values that services and drivers publish about themselves, with the process that each is from;
// with --watch as they change.
#pragma once

#include <cstdint>
#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cStatusCommand final : public cCommand {
 public:
  // Between two looks of --watch: at least, since many changes may come at once, and at most.
  static constexpr unsigned int kPauseMs = 200;
  static constexpr unsigned int kPatienceMs = 2'000;

  cStatusCommand() : cCommand("status", "Show what services and drivers tell about themselves") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when no value begins with the prefix.
  eExit Run(cContext& context) override;

 private:
  eExit List(cContext& context) const;
  eExit Watch(cContext& context) const;

  std::string m_prefix;
  bool m_watch = false;
  std::uint64_t m_count = 0;
};

}  // namespace tav::ctl
