// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_options.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tav::sml {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct cParsed {
  bool runs = false;
  int exitCode = -1;
  cEhzOptions options;
  std::string said;        // on standard output
  std::string complained;  // on standard error
};

cParsed Parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "ehzif");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  cParsed parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.runs = cEhzOptions::Parse(static_cast<int>(argv.size()), argv.data(), parsed.options, parsed.exitCode);
  parsed.said = testing::internal::GetCapturedStdout();
  parsed.complained = testing::internal::GetCapturedStderr();
  return parsed;
}

cEhzOptions Options(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--input", "capture.bin"});
  const cParsed parsed = Parse(arguments);
  EXPECT_TRUE(parsed.runs) << parsed.complained;
  return parsed.options;
}

}  // namespace

TEST(EhzOptions, HaveWorkingDefaults) {
  const cEhzOptions options = Options({});
  EXPECT_EQ(options.directory, "");
  EXPECT_EQ(options.interfaceName, "RS232");
  EXPECT_FALSE(options.simulated);
  EXPECT_EQ(options.input.kind, eInputKind::File);
  EXPECT_EQ(options.input.path, "capture.bin");
  EXPECT_EQ(options.input.baud, 9600u);
  EXPECT_EQ(options.input.framing, "8N1");
  EXPECT_EQ(options.medium, "E");
  EXPECT_EQ(options.intervalSeconds, 0u);
  EXPECT_EQ(options.rulesFile, "");
  EXPECT_FALSE(options.noRules);
  EXPECT_FALSE(options.keepNames);
  EXPECT_TRUE(options.meters.empty());
  EXPECT_FALSE(options.raw);
  EXPECT_FALSE(options.once);
  EXPECT_EQ(options.waitSeconds, 30u);
  EXPECT_EQ(options.traceLevel, 4);
}

TEST(EhzOptions, TakeEachOption) {
  EXPECT_EQ(Options({"--dir", "/run/x"}).directory, "/run/x");
  EXPECT_EQ(Options({"--interface", "RS485"}).interfaceName, "RS485");
  EXPECT_EQ(Options({"--medium", "G"}).medium, "G");
  EXPECT_EQ(Options({"--interval", "900"}).intervalSeconds, 900u);
  EXPECT_EQ(Options({"--rules", "rules.toml"}).rulesFile, "rules.toml");
  EXPECT_TRUE(Options({"--no-rules"}).noRules);
  EXPECT_TRUE(Options({"--keep-names"}).keepNames);
  EXPECT_THAT(Options({"--meter", "A", "--meter", "B"}).meters, ElementsAre("A", "B"));
  EXPECT_TRUE(Options({"--raw"}).raw);
  EXPECT_TRUE(Options({"--once"}).once);
  EXPECT_EQ(Options({"--wait", "0"}).waitSeconds, 0u);
  EXPECT_EQ(Options({"--wait", "86400"}).waitSeconds, 86400u);
  EXPECT_EQ(Options({"--trace", "16"}).traceLevel, 16);
}

TEST(EhzOptions, TakeASerialDeviceWithItsSettings) {
  const cParsed parsed = Parse({"--input", "/dev/ttyOfNobody", "--baud", "300", "--framing", "7E1"});
  ASSERT_TRUE(parsed.runs) << parsed.complained;
  EXPECT_EQ(parsed.options.input.kind, eInputKind::Serial);
  EXPECT_EQ(parsed.options.input.baud, 300u);
  EXPECT_EQ(parsed.options.input.framing, "7E1");
}

TEST(EhzOptions, TakeASimulation) {
  const cParsed plain = Parse({"--input", "sim"});
  ASSERT_TRUE(plain.runs);
  EXPECT_TRUE(plain.options.simulated);
  EXPECT_EQ(plain.options.interfaceName, "SIM");
  EXPECT_EQ(plain.options.simulation.simulator.meters, 1u);
  EXPECT_EQ(plain.options.simulation.periodSeconds, 2u);
  EXPECT_EQ(plain.options.simulation.rounds, 0u);
  EXPECT_FALSE(plain.options.simulation.begin.has_value());
  const cParsed full = Parse({"--input", "sim", "--seed", "7", "--meters", "3", "--period", "900", "--rounds", "96",
                              "--begin", "0", "--solar", "--interface", "ROOF"});
  ASSERT_TRUE(full.runs);
  EXPECT_EQ(full.options.interfaceName, "ROOF");
  EXPECT_EQ(full.options.simulation.simulator.seed, 7u);
  EXPECT_EQ(full.options.simulation.simulator.meters, 3u);
  EXPECT_TRUE(full.options.simulation.simulator.solar);
  EXPECT_EQ(full.options.simulation.periodSeconds, 900u);
  EXPECT_EQ(full.options.simulation.rounds, 96u);
  EXPECT_EQ(full.options.simulation.begin, 0u);
}

TEST(EhzOptions, RefuseAWrongOneAndSayWhich) {
  const struct {
    std::vector<std::string> arguments;
    const char* complaint;
  } kCases[] = {
      {{"--once"}, "ehzif: --once needs --input; without it the configuration is obeyed"},
      {{"--meter", "X"}, "ehzif: --meter needs --input"},
      {{"--seed", "2"}, "ehzif: --seed needs --input"},
      {{"--input"}, "--input"},
      {{"--input", ""}, "ehzif: --input: the input is empty"},
      {{"--input", "tcp://meter"}, "ehzif: --input: 'tcp://meter' is no address of the form tcp://host:port"},
      {{"--input", "/dev/ttyOfNobody", "--baud", "9601"}, "ehzif: baud rate 9601 is not supported"},
      {{"--input", "/dev/ttyOfNobody", "--framing", "9N1"}, "ehzif: '9N1' is no serial framing"},
      {{"--input", "-", "--baud", "fast"}, "--baud"},
      {{"--input", "-", "--medium", "x"}, "--medium: 'x' is no medium letter"},
      {{"--input", "-", "--medium", ""}, "--medium: '' is no medium letter"},
      {{"--input", "-", "--interval", "-1"}, "--interval"},
      {{"--input", "-", "--interval", "hourly"}, "--interval"},
      {{"--input", "-", "--wait", "86401"}, "--wait"},
      {{"--input", "-", "--wait", "-1"}, "--wait"},
      {{"--input", "-", "--trace", "loud"}, "--trace"},
      {{"--input", "sim", "--meters", "0"}, "--meters"},
      {{"--input", "sim", "--meters", "1001"}, "--meters"},
      {{"--input", "sim", "--period", "0"}, "--period"},
      {{"--input", "sim", "--period", "86401"}, "--period"},
      {{"--input", "sim", "--rounds", "-1"}, "--rounds"},
      {{"--input", "sim", "--begin", "4294967296"}, "--begin"},
      {{"--input", "-", "--rules"}, "--rules"},
      {{"--input", "-", "--no-rules", "--rules", "rules.toml"}, "--rules"},
      {{"--input", "-", "--nonsense"}, "--nonsense"},
      {{"--input", "-", "extra"}, "extra"},
  };
  for (const auto& [arguments, complaint] : kCases) {
    const cParsed parsed = Parse(arguments);
    EXPECT_FALSE(parsed.runs) << complaint;
    EXPECT_EQ(parsed.exitCode, eExitUsage) << complaint;
    EXPECT_THAT(parsed.complained, HasSubstr(complaint));
  }
}

TEST(EhzOptions, WithoutAnInputTheConfigurationIsObeyed) {
  const cParsed parsed = Parse({"--dir", "/tmp/x", "--interface", "SIM"});
  EXPECT_TRUE(parsed.runs);
  EXPECT_TRUE(parsed.options.configured);
  EXPECT_EQ(parsed.options.interfaceName, "SIM");
  EXPECT_EQ(Parse({}).options.interfaceName, "") << "all interfaces";
  EXPECT_TRUE(Parse({"--no-rules"}).options.configured);
  EXPECT_FALSE(Parse({"--input", "sim"}).options.configured);
}

TEST(EhzOptions, ExplainThemselves) {
  const cParsed parsed = Parse({"--help"});
  EXPECT_FALSE(parsed.runs);
  EXPECT_EQ(parsed.exitCode, eExitOk);
  for (const char* option :
       {"--dir",      "--interface",  "--input",  "--baud",  "--framing", "--medium",  "--interval", "--rules",
        "--no-rules", "--keep-names", "--meter",  "--raw",   "--once",    "--wait",    "--trace",    "--seed",
        "--meters",   "--period",     "--rounds", "--begin", "--solar",   "Exit codes"})
    EXPECT_THAT(parsed.said, HasSubstr(option));
}

}  // namespace tav::sml
