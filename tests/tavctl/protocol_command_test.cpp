// SPDX-License-Identifier: Apache-2.0
#include <tavctl/protocol_command.h>

#include <tav/service/device_protocol.h>
#include <tavctl/protocol_page.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class ProtocolCommand : public TavctlWorld {};

TEST_F(ProtocolCommand, PrintsThePageOfAService) {
  const cOutput output = Run({"protocol", "data"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out, ProtocolPage(db_ctrl::kProtocol));
  EXPECT_EQ(Run({"protocol", "ui"}).out, ProtocolPage(ui::kProtocol));
}

TEST_F(ProtocolCommand, SaysWhichItKnows) {
  const cOutput output = Run({"protocol", "weather"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err,
            "tavctl: there is no protocol of service 'weather'; known are: data gsm obis status time-service ui web\n");
  EXPECT_EQ(Run({"--json", "protocol", "data"}).exit, eExitUsage);
}

}  // namespace
}  // namespace tav::ctl
