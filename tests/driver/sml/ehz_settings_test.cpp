// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_settings.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/driver/option_reader.h>
#include <gateway/driver/sml/ehz_options.h>

namespace tav::sml {
namespace {

using testing::ElementsAre;
using testing::Pair;

cMeterConfig Meter(const std::string& id, const std::string& interface, const std::string& protocol,
                   const std::string& options = {}) {
  cMeterConfig meter;
  meter.SetIdentification(id, "", "", "");
  meter.SetInterfaceOptions(interface, protocol, options);
  return meter;
}

cInterfaceRecord Interface(const std::string& name, const std::string& options,
                           const std::vector<cMeterConfig>& meters = {}) {
  cInterfaceRecord interface(name, options, true);
  interface.meters = meters;
  return interface;
}

}  // namespace

TEST(EhzSettings, ReadASerialLine) {
  cEhzSettings settings;
  std::string error;
  ASSERT_TRUE(ReadSettings(Interface("RS232", "input=/dev/ttyOfNobody,baud=19200,framing=7E1"), settings, error))
      << error;
  EXPECT_EQ(settings.name, "RS232");
  EXPECT_FALSE(settings.simulated);
  EXPECT_EQ(settings.input.kind, eInputKind::Serial);
  EXPECT_EQ(settings.DescribeInput(), "/dev/ttyOfNobody (19200 7E1)");
}

TEST(EhzSettings, SimulateTheInterfaceSimUnlessItHasAnInput) {
  cEhzSettings settings;
  std::string error;
  ASSERT_TRUE(ReadSettings(Interface("SIM", "meters=3,seed=7,period=5,solar=1"), settings, error)) << error;
  EXPECT_TRUE(settings.simulated);
  EXPECT_EQ(settings.simulation.simulator.meters, 3u);
  EXPECT_EQ(settings.simulation.simulator.seed, 7u);
  EXPECT_EQ(settings.simulation.periodSeconds, 5u);
  EXPECT_TRUE(settings.simulation.simulator.solar);
  ASSERT_TRUE(ReadSettings(Interface("SIM", "input=tcp://meter:4000"), settings, error)) << error;
  EXPECT_FALSE(settings.simulated);
  ASSERT_TRUE(ReadSettings(Interface("RS232", "input=sim"), settings, error)) << error;
  EXPECT_TRUE(settings.simulated);
}

TEST(EhzSettings, ChooseTheLightThatFlashes) {
  const auto light = [](const std::string& options) {
    cEhzSettings settings;
    std::string error;
    EXPECT_TRUE(ReadSettings(Interface("SIM", options), settings, error)) << error;
    return settings.light;
  };
  EXPECT_EQ(light(""), 1u);
  EXPECT_EQ(light("light=0"), 0u);
  EXPECT_EQ(light("light=1"), 1u);
  EXPECT_EQ(light("light=2"), 2u);
  EXPECT_EQ(SettingsOf(cEhzOptions()).light, 1u) << "of the command line";
}

TEST(EhzSettings, NameTheOptionThatIsWrong) {
  const struct {
    const char* interface;
    const char* options;
    const char* error;
  } kCases[] = {
      {"RS232", "",
       "interface 'RS232': option 'input': the input is empty; expected a device, a file, '-' or tcp://host:port"},
      {"RS232", "input=-", "interface 'RS232': option 'input': '-' is for the command line only"},
      {"RS232", "input=tcp://meter",
       "interface 'RS232': option 'input': 'tcp://meter' is no address of the form tcp://host:port"},
      {"RS232", "input=/dev/ttyOfNobody,baud=fast",
       "interface 'RS232': option 'baud': 'fast' is no number from 1 to 4294967295"},
      {"SIM", "meters=0", "interface 'SIM': option 'meters': '0' is no number from 1 to 1000"},
      {"SIM", "period=86401", "interface 'SIM': option 'period': '86401' is no number from 1 to 86400"},
      {"SIM", "interval=1x", "interface 'SIM': option 'interval': '1x' is no number from 0 to 86400"},
      {"SIM", "light=3", "interface 'SIM': option 'light': '3' is no number from 0 to 2"},
      {"SIM", "light=-1", "interface 'SIM': option 'light': '-1' is no number from 0 to 2"},
      {"SIM", "light=", "interface 'SIM': option 'light': '' is no number from 0 to 2"},
      {"SIM", "meters", "interface 'SIM': option 'meters': '' is no number from 1 to 1000"},
  };
  for (const auto& [interface, options, expected] : kCases) {
    cEhzSettings settings;
    std::string error;
    EXPECT_FALSE(ReadSettings(Interface(interface, options), settings, error)) << options;
    EXPECT_EQ(error, expected);
  }
  cEhzSettings settings;
  std::string error;
  EXPECT_FALSE(ReadSettings(Interface("SIM", "", {Meter("M", "SIM", "SML", "interval=x")}), settings, error));
  EXPECT_EQ(error, "meter 'M': option 'interval': 'x' is no number from 0 to 86400");
}

TEST(EhzSettings, TakeTheMetersOfThisDriverWithTheirOwnSettings) {
  cMeterConfig gas = Meter("G", "SIM", "SML", "interval=60");
  gas.medium = "G";
  gas.storeRawEnabled = false;
  const cInterfaceRecord interface =
      Interface("SIM", "interval=900", {Meter("E", "SIM", "SML"), gas, Meter("other", "SIM", "DLMS")});
  cEhzSettings settings;
  std::string error;
  ASSERT_TRUE(ReadSettings(interface, settings, error)) << error;
  EXPECT_THAT(settings.meters, ElementsAre(Pair("E", cEhzMeter{"E", true, 900}), Pair("G", cEhzMeter{"G", false, 60})));
  EXPECT_EQ(settings.Find("other"), nullptr);
  EXPECT_TRUE(HasMeterOf(interface, kEhzDriver));
  EXPECT_FALSE(HasMeterOf(Interface("SIM", "", {Meter("other", "SIM", "DLMS")}), kEhzDriver));
}

TEST(EhzSettings, TellWhetherTheInputIsTheSame) {
  cEhzSettings one, other;
  std::string error;
  ASSERT_TRUE(ReadSettings(Interface("SIM", "seed=1"), one, error));
  ASSERT_TRUE(ReadSettings(Interface("SIM", "interval=5,seed=1", {Meter("E", "SIM", "SML")}), other, error));
  EXPECT_TRUE(one.HasSameInput(other));
  ASSERT_TRUE(ReadSettings(Interface("SIM", "seed=2"), other, error));
  EXPECT_FALSE(one.HasSameInput(other));
  ASSERT_TRUE(ReadSettings(Interface("SIM", "input=tcp://meter:1"), other, error));
  EXPECT_FALSE(one.HasSameInput(other));
}

TEST(EhzSettings, OfTheCommandLineHoldForAllMetersOrForThoseNamed) {
  cEhzOptions options;
  options.interfaceName = "RS232";
  options.medium = "G";
  options.intervalSeconds = 60;
  EXPECT_EQ(*SettingsOf(options).Find("any"), (cEhzMeter{"G", false, 60}));
  options.meters = {"M"};
  EXPECT_EQ(*SettingsOf(options).Find("M"), (cEhzMeter{"G", false, 60}));
  EXPECT_EQ(SettingsOf(options).Find("any"), nullptr);
}

}  // namespace tav::sml
