// SPDX-License-Identifier: Apache-2.0
#include <tavctl/meter_status_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

class MeterStatusCommand : public TavctlWithGateway {};

TEST_F(MeterStatusCommand, ShowsHowEachMeterIs) {
  Store(Reading("M1", kNoon, {{"1-0:1.8.0", "1"}}));
  Store(Reading("M1", kNoon + 60, {{"1-0:1.8.0", "2"}}));
  Store(Reading("M2", kNoon, {{"1-0:1.8.0", "1"}}));
  const auto rows = Run({"--json", "meter-status"}).Json();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0]["meterID"], "M1");
  EXPECT_EQ(rows[0]["last-reply-received"], "2023-11-14T23:14:20+01:00") << "the newest reading";
  EXPECT_FALSE(rows[0].contains("key"));
  EXPECT_THAT(Run({"meter-status"}).out, HasSubstr("METER  STATUS"));
  EXPECT_EQ(Run({"--json", "meter-status", "M2"}).Json().size(), 1u);
}

TEST_F(MeterStatusCommand, FailsForAMeterThatHasNotAnswered) {
  EXPECT_EQ(Run({"meter-status"}).err, "tavctl: no meter has answered yet\n");
  EXPECT_EQ(Run({"meter-status"}).exit, eExitDone);
  EXPECT_EQ(Run({"meter-status", "X"}).err, "tavctl: meter 'X' has not answered yet\n");
  EXPECT_EQ(Run({"meter-status", "X"}).exit, eExitNegative);
}

}  // namespace
}  // namespace tav::ctl
