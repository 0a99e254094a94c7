// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/kernel_led.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/service/device/led_folder.h>

namespace tav::gateway {
namespace {

class KernelLed : public testing::Test {
 protected:
  cLedFolder m_leds;
  std::string m_directory = m_leds.GetPath() + "/wan";
  cKernelLed m_led{m_directory};
};

TEST_F(KernelLed, TakesTheTriggerAwayAndShinesAsBrightAsItCan) {
  m_leds.AddLed("wan", "31");
  EXPECT_EQ(m_led.Switch(true), "");
  EXPECT_EQ(m_leds.Read("wan/trigger"), "none");
  EXPECT_EQ(m_leds.Read("wan/brightness"), "31");
  EXPECT_EQ(m_led.Switch(false), "");
  EXPECT_EQ(m_leds.Read("wan/brightness"), "0");
  EXPECT_EQ(m_led.GetPlace(), m_directory);
}

TEST_F(KernelLed, NeedsNoTrigger) {
  m_leds.AddLed("wan");
  std::filesystem::remove(m_directory + "/trigger");
  EXPECT_EQ(m_led.Switch(true), "");
  EXPECT_EQ(m_leds.Read("wan/brightness"), "255");
  EXPECT_FALSE(std::filesystem::exists(m_directory + "/trigger"));
}

TEST_F(KernelLed, NamesTheDirectoryThatIsNotThere) {
  EXPECT_EQ(m_led.Switch(true), "there is no LED directory " + m_directory);
  m_leds.AddLed("wan");
  EXPECT_EQ(m_led.Switch(true), "");
}

TEST_F(KernelLed, TakesTheTriggerAwayAgainWhenItWasGone) {
  m_leds.AddLed("wan", "1");
  EXPECT_EQ(m_led.Switch(true), "");
  m_leds.RemoveLed("wan");
  EXPECT_EQ(m_led.Switch(true), m_directory + "/brightness: cannot be written: No such file or directory");
  m_leds.AddLed("wan", "7");
  EXPECT_EQ(m_led.Switch(true), "");
  EXPECT_EQ(m_leds.Read("wan/trigger"), "none");
  EXPECT_EQ(m_leds.Read("wan/brightness"), "7");
}

TEST_F(KernelLed, RefusesABrightnessThatIsNone) {
  for (const char* const wrong : {"", "0", "bright", "-1"}) {
    m_leds.AddLed("wan", wrong);
    EXPECT_EQ(m_led.Switch(true), m_directory + "/max_brightness: expected a number from 1 on") << wrong;
  }
}

}  // namespace
}  // namespace tav::gateway
