// SPDX-License-Identifier: Apache-2.0
// tavctl watch: the last values, again and again: on a terminal the whole picture in place, elsewhere, and as JSON, a
// row whenever a value is new.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <tavctl/command.h>
#include <tavctl/data_query.h>

namespace tav::ctl {

class cWatchCommand final : public cCommand {
 public:
  static constexpr unsigned int kDefaultIntervalMs = 2'000;

  cWatchCommand() : cCommand("watch", "Show the last values as they change, until Ctrl-C") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  using Rows = std::vector<vorn::cRecord>;

  void Repeat(cContext& context, const std::function<void(const Rows&)>& show);
  Rows Ask(cDataQuery& data) const;
  // Those that are not as they were when it was asked before.
  Rows NewOnes(const Rows& rows);
  void RunOnScreen(cContext& context);
  void RunInLines(cContext& context);

  std::string m_meter;
  unsigned int m_intervalMs = kDefaultIntervalMs;
  std::uint64_t m_count = 0;
  std::map<std::string, vorn::cRecord> m_seen;  // by meter and OBIS identifier
};

}  // namespace tav::ctl
