// SPDX-License-Identifier: Apache-2.0
#include <tavctl/events_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class EventsCommand : public TavctlWithGateway {
 protected:
  void SetUp() override {
    TavctlWithGateway::SetUp();
    for (unsigned int i = 0; i < 3; ++i) {
      vorn::cRecord event;
      event.AppendTextPar("source", "ehzif");
      event.AppendUIntPar("code", i);
      StoreEvent(event, kNoon + i);
    }
  }
};

TEST_F(EventsCommand, IsATableForPeople) {
  const cOutput output = Run({"events"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out,
            "TIME                       EVENT\n"
            "2023-11-14T23:13:20+01:00  source=\"ehzif\" code=0\n"
            "2023-11-14T23:13:21+01:00  source=\"ehzif\" code=1\n"
            "2023-11-14T23:13:22+01:00  source=\"ehzif\" code=2\n");
}

TEST_F(EventsCommand, HasTheWholeEventInJson) {
  EXPECT_EQ(Run({"--json", "events", "--limit", "1"}).Json(),
            nlohmann::json::parse(
                R"([{"timestamp": "2023-11-14T23:13:20+01:00", "event": {"source": "ehzif", "code": 0}}])"));
}

TEST_F(EventsCommand, ChoosesByTime) {
  EXPECT_EQ(Run({"--json", "events", "--from", "1700000001"}).Json().size(), 2u);
  EXPECT_EQ(Run({"--json", "events", "--to", "1700000001"}).Json().size(), 2u);
  const cOutput none = Run({"events", "--from", "now"});
  EXPECT_EQ(none.exit, eExitDone);
  EXPECT_EQ(none.err, "tavctl: no event is stored in that time\n");
}

}  // namespace
}  // namespace tav::ctl
