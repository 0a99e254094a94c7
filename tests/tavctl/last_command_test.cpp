// SPDX-License-Identifier: Apache-2.0
#include <tavctl/last_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class LastCommand : public TavctlWithGateway {
 protected:
  void SetUp() override {
    TavctlWithGateway::SetUp();
    Store(Reading("M1", kNoon, {{"1-0:1.8.0", "1234.5"}, {"1-0:16.7.0", "7", "W"}}));
    Store(Reading("M1", kNoon + 60, {{"1-0:16.7.0", "8", "W"}}));
    Store(Reading("M2", kNoon, {{"7-0:3.0.0", "5", "m\xB3"}}));
  }
};

TEST_F(LastCommand, IsATableForPeople) {
  const cOutput output = Run({"last"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out,
            "METER  OBIS         VALUE     TIME                       TIME FROM\n"
            "M1     1-0:1.8.0   1234.5 Wh  2023-11-14T23:13:20+01:00  Meter UTC\n"
            "M1     1-0:16.7.0       8 W   2023-11-14T23:14:20+01:00  Meter UTC\n"
            "M2     7-0:3.0.0        5 m\xC2\xB3  2023-11-14T23:13:20+01:00  Meter UTC\n");
}

TEST_F(LastCommand, ShowsOneMeter) {
  const auto rows = Run({"--json", "last", "M2"}).Json();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0]["meterID"], "M2");
  EXPECT_EQ(rows[0]["unit"], "m\xC2\xB3") << "converted, as JSON is UTF-8";
  EXPECT_EQ(rows[0]["value"], "5") << "a text: exact whatever its digits";
}

TEST_F(LastCommand, FailsForAMeterThatIsNotThere) {
  const cOutput output = Run({"last", "M3"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err, "tavctl: meter 'M3' has no values; see tavctl meters\n");
  EXPECT_EQ(Run({"--json", "last", "M3"}).out, "[]\n");
}

}  // namespace
}  // namespace tav::ctl
