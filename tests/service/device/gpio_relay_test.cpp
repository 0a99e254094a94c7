// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/gpio_relay.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::gateway {
namespace {

using testing::StartsWith;

TEST(GpioRelay, NamesTheChipThatIsNotThere) {
  cGpioRelay relay("gpiochip-none", 4);
  EXPECT_EQ(relay.GetPlace(), "GPIO chip gpiochip-none line 4");
  EXPECT_THAT(relay.Switch(true), StartsWith("GPIO chip gpiochip-none cannot be opened: "));
  EXPECT_THAT(relay.Switch(false), StartsWith("GPIO chip gpiochip-none cannot be opened: "));
}

TEST(GpioRelay, RefusesADeviceThatIsNoChip) {
  cGpioRelay relay("/dev/null", 0);
  EXPECT_THAT(relay.Switch(true), StartsWith("GPIO chip /dev/null cannot be opened: "));
}

}  // namespace
}  // namespace tav::gateway
