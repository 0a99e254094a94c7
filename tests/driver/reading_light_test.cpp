// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/reading_light.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/service/device_protocol.h>
#include <tests/support/scm_world.h>

namespace tav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The light of a driver, and a service of lights that writes down which was to flash.
class ReadingLight : public testing::Test {
 protected:
  void SetUp() override {
    m_server.onMessage = [this](const vorn::cMsg& msg) {
      EXPECT_EQ(msg.GetType(), ui::eSwitchLed);
      EXPECT_EQ(msg.Record().GetUIntPar(device::kLedMode), unsigned{cUiCtrlIO::eLedMeterData});
      m_flashes.push_back(msg.Record().GetUIntPar(device::kLed));
    };
    ASSERT_TRUE(PollUntil(m_service, [this] { return m_server.connects == 1; }));
    PollUntilIdle(m_service);
  }
  // The lights that flash for these readings.
  std::vector<unsigned int> Flash(const std::vector<unsigned int>& lights) {
    m_flashes.clear();
    for (const unsigned int light : lights) m_light.Flash(light);
    PollUntilIdle(m_service);
    return m_flashes;
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  vorn::cScmService m_service{"driver", m_folder.GetPath(), m_clock};
  cRecordingServer m_server{&m_service, "ui"};
  cReadingLight m_light{&m_service};
  std::vector<unsigned int> m_flashes;
};

TEST_F(ReadingLight, FlashesTheLightOfTheInterface) {
  EXPECT_THAT(Flash({1}), ElementsAre(unsigned{cUiCtrlIO::eLedMeter1}));
  EXPECT_THAT(Flash({2}), ElementsAre(unsigned{cUiCtrlIO::eLedMeter2})) << "each has a pause of its own";
}

TEST_F(ReadingLight, SendsNothingForAnyOtherNumber) {
  EXPECT_THAT(Flash({0, 3, ~0u}), IsEmpty());
  EXPECT_THAT(Flash({1}), ElementsAre(1u)) << "they took no turn";
}

TEST_F(ReadingLight, FlashesForSomeOfTheReadingsThatComeFasterThanALightCanFlash) {
  EXPECT_THAT(Flash({1, 1, 1, 2, 2}), ElementsAre(1u, 2u));
  m_clock->Advance(cReadingLight::kPauseMs - 1);
  EXPECT_THAT(Flash({1, 2}), IsEmpty());
  m_clock->Advance(1);
  EXPECT_THAT(Flash({1, 1}), ElementsAre(1u));
  m_clock->Advance(cReadingLight::kPauseMs + 1);
  EXPECT_THAT(Flash({1, 2}), ElementsAre(1u, 2u));
}

TEST(ReadingLightAlone, DoesWithoutTheService) {
  const cTempFolder folder;
  vorn::cScmService service("driver", folder.GetPath());
  cReadingLight light(&service);
  light.Flash(1);
  light.Flash(2);
  PollUntilIdle(service);
}

}  // namespace
}  // namespace tav
