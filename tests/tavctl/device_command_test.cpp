// SPDX-License-Identifier: Apache-2.0
#include <tavctl/device_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class DeviceCommand : public TavctlWorld {};

TEST_F(DeviceCommand, NamesTheHardwareWithoutAGateway) {
  EXPECT_EQ(Run({"device", "identify", "X-013"}).out, "ID     HARDWARE\nX-013  RS232/LAN/WAN/GPRS\n");
  EXPECT_EQ(Run({"--json", "device", "identify", "X-001"}).Json()[0]["hardware"], "RS485 / LAN / GPRS");
}

TEST_F(DeviceCommand, FailsForHardwareThatIsNotKnown) {
  const cOutput output = Run({"device", "identify", "X-099"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.out, "ID     HARDWARE\nX-099  Hardware ID unknown\n");
  EXPECT_EQ(Run({"device"}).exit, eExitUsage);
}

}  // namespace
}  // namespace tav::ctl
