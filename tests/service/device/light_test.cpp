// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/light.h>

#include <tests/service/device/device_world.h>

namespace tav::gateway {
namespace {

// What happened to a light, shared with the test.
struct cLedLog {
  bool lit = false;
  int switches = 0;
  std::string fault;
};

class cLoggedLed final : public cLed {
 public:
  explicit cLoggedLed(cLedLog* log) : m_log(log) {}
  std::string Switch(bool lit) override {
    if (m_log->fault.empty()) m_log->lit = lit;
    ++m_log->switches;
    return m_log->fault;
  }
  std::string GetPlace() const override { return "here"; }

 private:
  cLedLog* m_log;
};

class Light : public DeviceWorld {
 protected:
  // After each step of so many milliseconds: "#" lit, "." dark.
  std::string Watch(int steps, std::int64_t milliseconds) {
    std::string seen(1, m_led.lit ? '#' : '.');
    for (int i = 0; i < steps; ++i) {
      Advance(milliseconds);
      seen += m_led.lit ? '#' : '.';
    }
    return seen;
  }

  cLedLog m_led;
  cLight m_light{&m_host, "wan", std::make_unique<cLoggedLed>(&m_led)};
};

TEST_F(Light, IsDarkAtFirst) {
  EXPECT_EQ(m_led.switches, 1);
  EXPECT_EQ(m_light.GetState(), "off, dark");
  EXPECT_EQ(m_light.GetPlace(), "here");
}

TEST_F(Light, StaysOnAndOff) {
  EXPECT_EQ(m_light.Switch(cUiCtrlIO::eLedOn), "");
  EXPECT_EQ(m_light.GetState(), "on, lit");
  EXPECT_EQ(Watch(3, 5000), "####");
  EXPECT_EQ(m_light.Switch(cUiCtrlIO::eLedOff), "");
  EXPECT_EQ(m_light.GetState(), "off, dark");
  EXPECT_EQ(Watch(3, 5000), "....");
}

TEST_F(Light, BlinksInThreeSpeeds) {
  m_light.Switch(cUiCtrlIO::eLedBlink);
  EXPECT_EQ(Watch(8, 250), "##..##..#");
  m_light.Switch(cUiCtrlIO::eLedTry);
  EXPECT_EQ(Watch(8, 250), "####....#");
  m_light.Switch(cUiCtrlIO::eLedError);
  EXPECT_EQ(Watch(4, 125), "#.#.#");
  EXPECT_EQ(m_light.GetState(), "error, lit");
}

TEST_F(Light, DoesNotBlinkAnyMoreWhenItIsOn) {
  m_light.Switch(cUiCtrlIO::eLedBlink);
  m_light.Switch(cUiCtrlIO::eLedOn);
  EXPECT_EQ(Watch(4, 500), "#####");
}

TEST_F(Light, FlashesOnceAndIsAsBefore) {
  m_light.Switch(cUiCtrlIO::eLedMeterData);
  EXPECT_EQ(m_light.GetState(), "off, lit");
  EXPECT_EQ(Watch(1, 99), "##");
  EXPECT_EQ(Watch(3, 1), "#...");
  EXPECT_EQ(m_light.GetState(), "off, dark");
}

TEST_F(Light, FlashesDarkWhileItIsOn) {
  m_light.Switch(cUiCtrlIO::eLedOn);
  m_light.Switch(cUiCtrlIO::eLedMeterData);
  EXPECT_EQ(Watch(2, 100), ".##");
  EXPECT_EQ(m_light.GetState(), "on, lit");
}

TEST_F(Light, GoesOnBlinkingAfterAFlash) {
  m_light.Switch(cUiCtrlIO::eLedBlink);
  m_light.Switch(cUiCtrlIO::eLedMeterData);
  EXPECT_EQ(Watch(1, 100), ".#");
  EXPECT_EQ(Watch(2, 500), "#.#");
}

TEST_F(Light, TakesNoFlashDuringAFlash) {
  m_light.Switch(cUiCtrlIO::eLedMeterData);
  Advance(60);
  m_light.Switch(cUiCtrlIO::eLedMeterData);
  EXPECT_EQ(Watch(1, 40), "#.");
  EXPECT_EQ(Watch(2, 100), "...");
}

TEST_F(Light, ShowsANewModeAtOnceDuringAFlash) {
  m_light.Switch(cUiCtrlIO::eLedMeterData);
  m_light.Switch(cUiCtrlIO::eLedOn);
  EXPECT_EQ(Watch(2, 100), "###");
}

TEST_F(Light, StaysAsItWasWhenTheHardwareDoesNotObey) {
  m_light.Switch(cUiCtrlIO::eLedOn);
  m_led.fault = "no such light";
  EXPECT_EQ(m_light.Switch(cUiCtrlIO::eLedError), "no such light");
  EXPECT_EQ(m_light.Switch(cUiCtrlIO::eLedMeterData), "no such light");
  EXPECT_EQ(m_light.GetState(), "on, out of reach: no such light");
  m_led.fault.clear();
  EXPECT_EQ(m_light.Switch(cUiCtrlIO::eLedOff), "");
  EXPECT_EQ(m_light.GetState(), "off, dark");
}

TEST_F(Light, TracesAFaultOnceAndBlinksOnWhenItHasGone) {
  m_light.Switch(cUiCtrlIO::eLedBlink);
  m_led.fault = "pulled out";
  Watch(6, 500);
  EXPECT_THAT(m_trace.GetLines(), testing::ElementsAre("UnitGateway 4 light wan: pulled out"));
  m_led.fault.clear();
  EXPECT_EQ(Watch(4, 500).substr(1), ".#.#");
}

}  // namespace
}  // namespace tav::gateway
