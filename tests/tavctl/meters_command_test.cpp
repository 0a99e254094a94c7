// SPDX-License-Identifier: Apache-2.0
#include <tavctl/meters_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class MetersCommand : public TavctlWithGateway {};

TEST_F(MetersCommand, IsATableForPeople) {
  Store(Reading("1EMH0001", kNoon, {{"1-0:1.8.0", "5"}, {"1-0:16.7.0", "7", "W"}}));
  Store(Reading("1EMH0001", kNoon + 60, {{"1-0:1.8.0", "6"}}));
  Store(Reading("2", kNoon, {{"1-0:1.8.0", "5"}}));
  const cOutput output = Run({"meters"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out,
            "METER     MEDIUM       MAKER  ADDRESS  DRIVER  INTERFACE  VALUES  FIRST                      LAST\n"
            "1EMH0001  Electricity  EMH    ttyUSB0  ehzif   IR1             3  2023-11-14T23:13:20+01:00  "
            "2023-11-14T23:14:20+01:00\n"
            "2         Electricity  EMH    ttyUSB0  ehzif   IR1             1  2023-11-14T23:13:20+01:00  "
            "2023-11-14T23:13:20+01:00\n");
}

TEST_F(MetersCommand, IsOneArrayForPrograms) {
  Store(Reading("1EMH0001", kNoon, {{"1-0:1.8.0", "5"}}));
  EXPECT_EQ(Run({"meters", "--json"}).Json(), nlohmann::json::parse(R"([{
    "meterID": "1EMH0001", "medium": "E", "manufactor": "EMH", "addr": "ttyUSB0", "driver": "ehzif",
    "interface-name": "IR1", "values": 1, "first-timestamp": "2023-11-14T23:13:20+01:00",
    "timestamp": "2023-11-14T23:13:20+01:00"}])"));
}

TEST_F(MetersCommand, SaysThatThereIsNone) {
  const cOutput output = Run({"meters"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out, "");
  EXPECT_EQ(output.err, "tavctl: no meter is known yet\n");
  EXPECT_EQ(Run({"--json", "meters"}).out, "[]\n");
}

TEST_F(MetersCommand, ListsMoreThanAPage) {
  for (unsigned int i = 0; i < 1200; ++i) Store(Reading("M" + std::to_string(i), kNoon, {{"1-0:1.8.0", "5"}}));
  EXPECT_EQ(Run({"--json", "meters"}).Json().size(), 1200u);
}

}  // namespace
}  // namespace tav::ctl
