// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/ui_server.h>

#include <tav/service/device_protocol.h>
#include <tests/service/device/device_world.h>
#include <tests/service/device/led_folder.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class UiServer : public DeviceWorld {
 protected:
  void Serve(const cUiOptions& options = {}) {
    m_server = std::make_unique<cUiServer>(&m_host, options);
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_client = std::make_unique<cTestClient>(&m_host, "ui");
    ASSERT_TRUE(m_client->AwaitConnection());
  }
  vorn::cMsg SwitchLed(unsigned int led, unsigned int mode) {
    vorn::cRecord record;
    record.AppendUIntPar("led", led);
    record.AppendUIntPar("mode", mode);
    return m_client->Ask(0x53000, record);
  }
  vorn::cMsg SwitchRelay(unsigned int mode, unsigned int timeout) {
    vorn::cRecord record;
    record.AppendUIntPar("mode", mode);
    record.AppendUIntPar("timeout", timeout);
    return m_client->Ask(0x53005, record);
  }
  unsigned int RelayMode() {
    const vorn::cMsg answer = m_client->Ask(0x53007);
    EXPECT_EQ(answer.GetType(), 0x53008u);
    return answer.Record().GetUIntPar("mode");
  }

  std::unique_ptr<cUiServer> m_server;
  std::unique_ptr<cTestClient> m_client;
};

TEST_F(UiServer, ShowsItsStateInRows) {
  Serve();
  const vorn::cMsg answer = m_client->Ask(0x53010);
  EXPECT_EQ(answer.GetType(), 0x53011u);
  EXPECT_THAT(Rows(answer), ElementsAre("led.wan=off, dark", "led.meter-1=off, dark", "led.meter-2=off, dark",
                                        "relay=open", "relay.back-in=0", "hardware=simulated"));
}

TEST_F(UiServer, SwitchesEachLightIntoEachMode) {
  Serve();
  const char* const names[] = {"led.wan", "led.meter-1", "led.meter-2"};
  const char* const states[] = {"on, lit", "off, dark", "blink, lit", "try, lit", "error, lit"};
  for (unsigned int led = 0; led < 3; ++led)
    for (unsigned int mode = 0; mode < 5; ++mode) {
      EXPECT_EQ(SwitchLed(led, mode).GetType(), 0x53001u);
      EXPECT_EQ(Row(*m_server, names[led]), states[mode]);
    }
}

TEST_F(UiServer, FlashesForMeterData) {
  Serve();
  EXPECT_EQ(SwitchLed(1, 5).GetType(), 0x53001u);
  EXPECT_EQ(Row(*m_server, "led.meter-1"), "off, lit");
  Advance(100);
  EXPECT_EQ(Row(*m_server, "led.meter-1"), "off, dark");
}

TEST_F(UiServer, RefusesALightOrAModeThatDoesNotExist) {
  Serve();
  const vorn::cMsg led = SwitchLed(3, 0);
  EXPECT_EQ(led.GetType(), 0x53002u);
  EXPECT_EQ(Reason(led), "parameter \"led\": expected 0 (wan), 1 (meter-1) or 2 (meter-2), found 3");
  const vorn::cMsg mode = SwitchLed(0, 6);
  EXPECT_EQ(mode.GetType(), 0x53002u);
  EXPECT_EQ(Reason(mode),
            "parameter \"mode\": expected 0 (on), 1 (off), 2 (blink), 3 (try), 4 (error) or 5 (flash), found 6");
  EXPECT_EQ(SwitchLed(0xFFFFFFFF, 0xFFFFFFFF).GetType(), 0x53002u);
}

TEST_F(UiServer, SwitchesTheRelayForATime) {
  Serve();
  const vorn::cMsg answer = SwitchRelay(1, 10);
  EXPECT_EQ(answer.GetType(), 0x53006u);
  EXPECT_TRUE(answer.Record().IsEmpty());
  EXPECT_EQ(RelayMode(), 1u);
  EXPECT_EQ(Row(*m_server, "relay"), "closed");
  EXPECT_EQ(Row(*m_server, "relay.back-in"), "10");
  Advance(10'000);
  EXPECT_EQ(RelayMode(), 0u);
}

TEST_F(UiServer, RefusesARelayModeThatDoesNotExistByItsAnswersNumber) {
  Serve();
  const vorn::cMsg answer = SwitchRelay(2, 0);
  EXPECT_EQ(answer.GetType(), 0x53006u);
  EXPECT_EQ(Reason(answer), "parameter \"mode\": expected 0 (open) or 1 (closed), found 2");
  EXPECT_EQ(SwitchRelay(1, cRelaySwitch::kMaxSeconds + 1).GetType(), 0x53006u);
  EXPECT_EQ(RelayMode(), 0u);
}

TEST_F(UiServer, ObeysTheLibrarysClient) {
  Serve();
  cUiCtrlIO client(&m_host);
  ASSERT_TRUE(PollUntil(m_host, [&] { return client.IsConnected(); }));
  client.WAN_Try();
  client.MeterDataRecv(cUiCtrlIO::eMeter2);
  client.SwitchRelay(cUiCtrlIO::eRelayClosed, 0);
  ASSERT_TRUE(PollUntil(m_host, [&] { return Row(*m_server, "relay") == "closed"; }));
  EXPECT_EQ(Row(*m_server, "led.wan"), "try, lit");
  EXPECT_EQ(Row(*m_server, "led.meter-2"), "off, lit");
}

TEST_F(UiServer, TellsItsHostOfChangesAndOfNoFlash) {
  Serve();
  int changes = 0;
  m_server->SetOnStateChanged([&] { ++changes; });
  SwitchLed(0, 2);
  EXPECT_EQ(changes, 1);
  SwitchLed(0, 5);
  SwitchLed(9, 0);
  Advance(500);
  EXPECT_EQ(changes, 1);
  SwitchRelay(1, 1);
  EXPECT_EQ(changes, 2);
  Advance(1'000);
  EXPECT_EQ(changes, 3);
}

// ---- hardware

TEST_F(UiServer, DrivesTheKernelsLights) {
  const cLedFolder leds;
  leds.AddLed("green:wan", "100");
  leds.Write("green:wan/brightness", "100");
  cUiOptions options;
  options.leds = "kernel";
  options.ledWan = "green:wan";
  options.ledRoot = leds.GetPath();
  Serve(options);
  EXPECT_EQ(leds.Read("green:wan/brightness"), "0");
  EXPECT_EQ(SwitchLed(0, 4).GetType(), 0x53001u);
  EXPECT_EQ(leds.Read("green:wan/brightness"), "100");
  Advance(125);
  EXPECT_EQ(leds.Read("green:wan/brightness"), "0");
  EXPECT_EQ(Row(*m_server, "hardware"), "led.wan " + leds.GetPath() + "/green:wan");
}

TEST_F(UiServer, LivesOnWithoutTheLightAndTakesItWhenItComes) {
  const cLedFolder leds;
  cUiOptions options;
  options.leds = "kernel";
  options.ledMeter1 = "red:meter";
  options.ledRoot = leds.GetPath();
  Serve(options);
  const std::string fault = "there is no LED directory " + leds.GetPath() + "/red:meter";
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitGateway 4 light meter-1: " + fault));
  EXPECT_EQ(Reason(SwitchLed(1, 0)), fault);
  EXPECT_EQ(Row(*m_server, "led.meter-1"), "off, out of reach: " + fault);
  EXPECT_EQ(SwitchLed(0, 0).GetType(), 0x53001u);
  leds.AddLed("red:meter");
  EXPECT_EQ(SwitchLed(1, 0).GetType(), 0x53001u);
  EXPECT_EQ(leds.Read("red:meter/brightness"), "255");
}

TEST_F(UiServer, LivesOnWithoutTheRelaysChip) {
  cUiOptions options;
  options.relayChip = "gpiochip-none";
  options.relayLine = 3;
  Serve(options);
  EXPECT_THAT(m_trace.GetLines(), ElementsAre(StartsWith("UnitGateway 4 relay: GPIO chip gpiochip-none cannot be")));
  const vorn::cMsg answer = SwitchRelay(1, 0);
  EXPECT_EQ(answer.GetType(), 0x53006u);
  EXPECT_THAT(Reason(answer), StartsWith("GPIO chip gpiochip-none cannot be opened"));
  EXPECT_EQ(RelayMode(), 0u);
  EXPECT_THAT(Row(*m_server, "relay"), StartsWith("open, out of reach: GPIO chip"));
  EXPECT_EQ(Row(*m_server, "hardware"), "relay GPIO chip gpiochip-none line 3");
}

TEST(UiOptions, NameTheKeyThatIsWrong) {
  cUiOptions options;
  EXPECT_EQ(options.Check(), "");
  options.leds = "kernel";
  EXPECT_EQ(options.Check(), "");
  options.leds = "green";
  EXPECT_EQ(options.Check(), "leds: expected \"simulated\" or \"kernel\", found \"green\"");
}

}  // namespace
}  // namespace tav::gateway
