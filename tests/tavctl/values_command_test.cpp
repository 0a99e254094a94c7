// SPDX-License-Identifier: Apache-2.0
#include <tavctl/values_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ValuesCommand : public TavctlWithGateway {
 protected:
  void SetUp() override {
    TavctlWithGateway::SetUp();
    for (unsigned int i = 0; i < 5; ++i)
      Store(Reading("M", kNoon + i * 3600, {{"1-0:1.8.0", std::to_string(i)}, {"1-0:16.7.0", "7", "W"}}));
  }
  std::vector<std::string> Values(std::vector<std::string> options) {
    options.insert(options.begin(), {"--json", "values", "M", "--obis", "1-0:1.8.0"});
    std::vector<std::string> values;
    for (const auto& row : Run(options).Json()) values.push_back(row["value"]);
    return values;
  }
};

TEST_F(ValuesCommand, IsATableForPeople) {
  const cOutput output = Run({"values", "M", "--limit", "3"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out,
            "TIME                       TIME FROM  OBIS        VALUE\n"
            "2023-11-14T23:13:20+01:00  Meter UTC  1-0:1.8.0       0 Wh\n"
            "2023-11-14T23:13:20+01:00  Meter UTC  1-0:16.7.0      7 W\n"
            "2023-11-15T00:13:20+01:00  Meter UTC  1-0:1.8.0       1 Wh\n");
  EXPECT_THAT(output.err, HasSubstr("there are more values; --limit 0 lists all"));
}

TEST_F(ValuesCommand, ChoosesByIdentifierAndTime) {
  EXPECT_THAT(Values({}), ElementsAre("0", "1", "2", "3", "4"));
  EXPECT_THAT(Values({"--from", "2023-11-15T00:13:20"}), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(Values({"--to", "2023-11-14T23:13:20Z"}), ElementsAre("0", "1")) << "the end is part of it";
  EXPECT_THAT(Values({"--from", "2023-11-15", "--to", "2023-11-15T02:00"}), ElementsAre("1", "2"));
  EXPECT_THAT(Values({"--from", "1700000001", "--limit", "2"}), ElementsAre("1", "2"));
  EXPECT_THAT(Values({"--to", "-7d"}), ElementsAre("0", "1", "2", "3", "4")) << "seven days before now";
  EXPECT_THAT(Values({"--from", "yesterday"}), ElementsAre());
}

TEST_F(ValuesCommand, FailsWhenThereIsNone) {
  const cOutput output = Run({"values", "M", "--from", "now"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(output.err, "tavctl: meter 'M' has no such values; see tavctl meters\n");
  EXPECT_EQ(Run({"values", "X"}).exit, eExitNegative);
}

}  // namespace
}  // namespace tav::ctl
