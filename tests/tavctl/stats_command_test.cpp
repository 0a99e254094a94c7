// SPDX-License-Identifier: Apache-2.0
#include <tavctl/stats_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class StatsCommand : public TavctlWithGateway {};

TEST_F(StatsCommand, ShowsTheCountersOfTheService) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "5"}, {"1-0:16.7.0", "7", "W"}}));
  std::map<std::string, std::uint64_t> counters;
  for (const auto& row : Run({"--json", "stats"}).Json()) counters[row["name"]] = row["value"];
  EXPECT_EQ(counters["meters"], 1u);
  EXPECT_EQ(counters["values"], 2u);
  const cOutput output = Run({"stats"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_THAT(output.out, testing::ContainsRegex("meters +1\n"));
}

}  // namespace
}  // namespace tav::ctl
