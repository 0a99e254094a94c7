// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_options.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::mbus {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

struct cParsed {
  bool runs = false;
  int exitCode = -1;
  cMBusOptions options;
  std::string said;        // on standard output
  std::string complained;  // on standard error
};

cParsed Parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "mbif");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  cParsed parsed;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsed.runs = cMBusOptions::Parse(static_cast<int>(argv.size()), argv.data(), parsed.options, parsed.exitCode);
  parsed.said = testing::internal::GetCapturedStdout();
  parsed.complained = testing::internal::GetCapturedStderr();
  return parsed;
}

TEST(MBusOptions, HaveWorkingDefaults) {
  const cParsed parsed = Parse({"--input", "/dev/ttyOfNobody", "--meter", "5"});
  ASSERT_TRUE(parsed.runs) << parsed.complained;
  const cMBusSettings settings = SettingsOf(parsed.options);
  EXPECT_EQ(settings.name, "MBUS");
  EXPECT_EQ(settings.DescribeLine(), "/dev/ttyOfNobody (2400 8E1)");
  EXPECT_FALSE(settings.line.echo);
  EXPECT_EQ(settings.line.retries, 2u);
  EXPECT_EQ(settings.line.longestAnswerMs, 0u);
  EXPECT_FALSE(settings.keepUnmapped);
  ASSERT_THAT(settings.meters, SizeIs(1));
  EXPECT_EQ(settings.meters[0].address, cMBusAddress::Primary(5));
  EXPECT_EQ(settings.meters[0].intervalSeconds, 900u);
  EXPECT_EQ(settings.meters[0].medium, "");
  EXPECT_FALSE(settings.meters[0].raw);
}

TEST(MBusOptions, TakeEverything) {
  const cParsed parsed = Parse({"--input",
                                "tcp://converter:10001",
                                "--interface",
                                "CELLAR",
                                "--echo",
                                "--retries",
                                "5",
                                "--answer",
                                "900",
                                "--meter",
                                "44950146",
                                "--meter",
                                "7",
                                "--medium",
                                "w",
                                "--interval",
                                "60",
                                "--unmapped",
                                "keep",
                                "--raw",
                                "--once",
                                "--dir",
                                "somewhere",
                                "--no-rules",
                                "--keep-names",
                                "--wait",
                                "3",
                                "--trace",
                                "16"});
  ASSERT_TRUE(parsed.runs) << parsed.complained;
  const cMBusSettings settings = SettingsOf(parsed.options);
  EXPECT_EQ(settings.name, "CELLAR");
  EXPECT_TRUE(settings.line.echo);
  EXPECT_EQ(settings.line.retries, 5u);
  EXPECT_EQ(settings.line.longestAnswerMs, 900u);
  EXPECT_TRUE(settings.keepUnmapped);
  ASSERT_THAT(settings.meters, SizeIs(2));
  EXPECT_EQ(settings.meters[0].address.ToString(), "44950146");
  EXPECT_EQ(settings.meters[1].medium, "w");
  EXPECT_EQ(settings.meters[1].intervalSeconds, 60u);
  EXPECT_TRUE(settings.meters[1].raw);
  EXPECT_TRUE(parsed.options.once && parsed.options.noRules && parsed.options.keepNames);
  EXPECT_EQ(parsed.options.waitSeconds, 3u);
}

TEST(MBusOptions, ReadEveryMeterOfASimulatedBus) {
  const cParsed parsed = Parse({"--input", "sim", "--meters", "4", "--seed", "9"});
  ASSERT_TRUE(parsed.runs) << parsed.complained;
  const cMBusSettings settings = SettingsOf(parsed.options);
  EXPECT_TRUE(settings.simulated);
  EXPECT_EQ(settings.simulation.seed, 9u);
  ASSERT_THAT(settings.meters, SizeIs(4));
  EXPECT_EQ(settings.meters[3].address, cMBusAddress::Primary(4));
}

TEST(MBusOptions, ObeyTheConfigurationWithoutAnInput) {
  const cParsed parsed = Parse({"--dir", "somewhere", "--interface", "MBUS"});
  ASSERT_TRUE(parsed.runs) << parsed.complained;
  EXPECT_TRUE(parsed.options.configured);
  EXPECT_THAT(parsed.options.meters, IsEmpty());
}

TEST(MBusOptions, NameWhatIsWrong) {
  const struct {
    std::vector<std::string> arguments;
    const char* complaint;
  } kCases[] = {
      {{"--input", "/dev/ttyOfNobody"}, "mbif: --input needs --meter: name the meters of the bus"},
      {{"--input", "capture.bin", "--meter", "5"}, "mbif: --input: 'capture.bin' is no device and no tcp://host:port"},
      {{"--input", "-", "--meter", "5"}, "mbif: --input: '-' is no device"},
      {{"--input", "tcp://x", "--meter", "5"}, "mbif: --input: 'tcp://x' is no address"},
      {{"--input", "/dev/ttyOfNobody", "--meter", "5", "--baud", "1"}, "mbif: baud rate 1 is not supported"},
      {{"--input", "/dev/ttyOfNobody", "--meter", "251"}, "mbif: --meter: '251'"},
      {{"--input", "sim", "--medium", "Q"}, "'Q' is no medium letter"},
      {{"--input", "sim", "--unmapped", "lose"}, "--unmapped"},
      {{"--input", "sim", "--interval", "0"}, "--interval"},
      {{"--input", "sim", "--retries", "11"}, "--retries"},
      {{"--meter", "5"}, "mbif: --meter needs --input; without it the configuration is obeyed"},
      {{"--unmapped", "keep"}, "mbif: --unmapped needs --input"},
      {{"--rules", "a", "--no-rules"}, "--no-rules"},
  };
  for (const auto& c : kCases) {
    const cParsed parsed = Parse(c.arguments);
    EXPECT_FALSE(parsed.runs) << c.complaint;
    EXPECT_EQ(parsed.exitCode, eExitUsage) << c.complaint;
    EXPECT_THAT(parsed.complained, HasSubstr(c.complaint));
  }
}

TEST(MBusOptions, ExplainThemselves) {
  const cParsed parsed = Parse({"--help"});
  EXPECT_FALSE(parsed.runs);
  EXPECT_EQ(parsed.exitCode, 0);
  EXPECT_THAT(parsed.said, HasSubstr("wired M-Bus"));
  EXPECT_THAT(parsed.said, HasSubstr("Exit codes: 0 all is well"));
}

}  // namespace
}  // namespace tav::mbus
