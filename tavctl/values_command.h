// SPDX-License-Identifier: Apache-2.0
// tavctl values: the stored values of one meter, oldest first.
#pragma once

#include <cstdint>

#include <tavctl/command.h>
#include <tavctl/options.h>

namespace tav::ctl {

class cValuesCommand final : public cCommand {
 public:
  static constexpr std::uint64_t kDefaultLimit = 1000;

  cValuesCommand() : cCommand("values", "List the stored values of a meter") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when there is none.
  eExit Run(cContext& context) override;

 private:
  std::string m_meter;
  std::string m_obis;
  std::string m_profile;
  cTimeRange m_range;
  std::uint64_t m_limit = kDefaultLimit;
};

}  // namespace tav::ctl
