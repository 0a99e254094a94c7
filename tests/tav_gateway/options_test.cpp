// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/options.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include <gateway/tav_gateway/exit_code.h>
#include <gateway/tav_gateway/services.h>
#include <tests/support/temp_folder.h>

namespace tav::gateway {
namespace {

using testing::HasSubstr;

class Options : public testing::Test {
 protected:
  static cParsedOptions Parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "tav-gateway");
    return ParseOptions(static_cast<int>(arguments.size()), arguments.data());
  }
  std::string Write(const std::string& text, const std::string& name = "my.toml") {
    std::ofstream(m_folder.File(name)) << text;
    return m_folder.File(name);
  }
  // What the file says is wrong with it.
  std::string ErrorOf(const std::string& text) {
    const std::string file = Write(text);
    const cParsedOptions parsed = Parse({"run", "--config", file.c_str()});
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.exitCode, eExitUsage);
    EXPECT_EQ(parsed.text.substr(0, file.size()), file);
    return parsed.text.substr(std::min(file.size(), parsed.text.size()));
  }

  cTempFolder m_folder;
};

TEST_F(Options, WorkWithoutAnyWord) {
  const cParsedOptions parsed = Parse({"run"});
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->service, "");
  EXPECT_EQ(parsed.options->durability, data::eDurability::Full);
  EXPECT_EQ(parsed.options->GetSocketDirectory(), "");
  EXPECT_THAT(parsed.options->GetDataFile(), HasSubstr("/tav/tav.db"));
}

TEST_F(Options, KeepSocketsAndDatabaseUnderOneDirectory) {
  const cParsedOptions parsed = Parse({"data", "--dir", "/somewhere"});
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->service, "data");
  EXPECT_EQ(parsed.options->GetSocketDirectory(), "/somewhere");
  EXPECT_EQ(parsed.options->GetDataFile(), "/somewhere/tav.db");
}

TEST_F(Options, TakeTheStateDirectoryOfTheServiceManager) {
  setenv("STATE_DIRECTORY", "/var/lib/meters", 1);
  const cParsedOptions parsed = Parse({"run"});
  EXPECT_EQ(parsed.options->GetDataFile(), "/var/lib/meters/tav.db");
  unsetenv("STATE_DIRECTORY");
}

TEST_F(Options, ComeFromTheFile) {
  const std::string file = Write(
      "[gateway]\ndir = \"/somewhere\"\ntrace = 16\n[data]\nfile = \"/disk/meters.db\"\ndurability = \"normal\"\n"
      "max-megabytes = 500\n");
  const cParsedOptions parsed = Parse({"run", "--config", file.c_str()});
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->dir, "/somewhere");
  EXPECT_EQ(parsed.options->trace, 16);
  EXPECT_EQ(parsed.options->GetDataFile(), "/disk/meters.db");
  EXPECT_EQ(parsed.options->durability, data::eDurability::Normal);
  EXPECT_EQ(parsed.options->maxMegabytes, 500u);
}

TEST_F(Options, OfTheDevicesComeFromTheFile) {
  const std::string file = Write(
      "[ui]\nleds = \"kernel\"\nled-wan = \"green:wan\"\nled-meter-1 = \"yellow:1\"\nled-meter-2 = \"yellow:2\"\n"
      "relay-chip = \"gpiochip0\"\nrelay-line = 65535\n[time]\nclock = \"kernel\"\n[gsm]\nmodem = \"modemmanager\"\n");
  const cParsedOptions parsed = Parse({"run", "--config", file.c_str()});
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->ui.leds, "kernel");
  EXPECT_EQ(parsed.options->ui.ledWan, "green:wan");
  EXPECT_EQ(parsed.options->ui.ledMeter1, "yellow:1");
  EXPECT_EQ(parsed.options->ui.ledMeter2, "yellow:2");
  EXPECT_EQ(parsed.options->ui.relayChip, "gpiochip0");
  EXPECT_EQ(parsed.options->ui.relayLine, 65535u);
  EXPECT_EQ(parsed.options->time.clock, "kernel");
  EXPECT_EQ(parsed.options->gsm.modem, "modemmanager");
}

TEST_F(Options, SimulateTheDevicesUnlessTheFileSaysOtherwise) {
  const std::string file = Write("[ui]\nleds = \"simulated\"\nrelay-line = 0\n");
  for (const cParsedOptions& parsed : {Parse({"run"}), Parse({"run", "--config", file.c_str()})}) {
    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->ui.leds, "simulated");
    EXPECT_EQ(parsed.options->ui.relayChip, "");
    EXPECT_EQ(parsed.options->ui.relayLine, 0u);
    EXPECT_EQ(parsed.options->time.clock, "simulated");
    EXPECT_EQ(parsed.options->gsm.modem, "simulated");
  }
}

TEST_F(Options, OfTheWebFrontEndComeFromTheFileAndTheCommandLine) {
  const cParsedOptions none = Parse({"run"});
  ASSERT_TRUE(none.options) << none.text;
  EXPECT_EQ(none.options->web.listen, "127.0.0.1:8080");
  EXPECT_FALSE(none.options->isWebLeft);
  const std::string file = Write(
      "[web]\nlisten = \"[::1]:81\"\ncertificate = \"c.pem\"\nkey = \"k.pem\"\nstatic = \"/files\"\n"
      "max-body-megabytes = 2\nenabled = false\n");
  const cParsedOptions fromFile = Parse({"run", "--config", file.c_str()});
  ASSERT_TRUE(fromFile.options) << fromFile.text;
  EXPECT_EQ(fromFile.options->web.listen, "[::1]:81");
  EXPECT_EQ(fromFile.options->web.certificate, "c.pem");
  EXPECT_EQ(fromFile.options->web.key, "k.pem");
  EXPECT_EQ(fromFile.options->web.staticDirectory, "/files");
  EXPECT_EQ(fromFile.options->web.maxBodyBytes, std::uint64_t{2} << 20);
  EXPECT_TRUE(fromFile.options->isWebLeft);
  const cParsedOptions both =
      Parse({"web", "--config", file.c_str(), "--web-listen", "0.0.0.0:0", "--web-key", "l.pem"});
  ASSERT_TRUE(both.options) << both.text;
  EXPECT_EQ(both.options->web.listen, "0.0.0.0:0");
  EXPECT_EQ(both.options->web.certificate, "c.pem");
  EXPECT_EQ(both.options->web.key, "l.pem");
}

TEST_F(Options, OfTheWebFrontEndAreRefusedWithWhatIsExpected) {
  EXPECT_THAT(ErrorOf("[web]\nlisten = \"8080\"\n"), HasSubstr(":2: key \"web.listen\": expected ADDRESS:PORT"));
  EXPECT_THAT(ErrorOf("[web]\nenabled = 1\n"), HasSubstr("expected true or false"));
  for (const char* megabytes : {"0", "1025", "\"1\""})
    EXPECT_THAT(ErrorOf(std::string("[web]\nmax-body-megabytes = ") + megabytes), HasSubstr("1 to 1024 megabytes"));
  const cParsedOptions address = Parse({"run", "--web-listen", "localhost:80"});
  EXPECT_EQ(address.exitCode, eExitUsage);
  EXPECT_THAT(address.text, HasSubstr("found 'localhost:80'"));
  const cParsedOptions half = Parse({"run", "--web-cert", "c.pem"});
  EXPECT_EQ(half.exitCode, eExitUsage);
  EXPECT_THAT(half.text, HasSubstr("a certificate needs a key"));
}

TEST_F(Options, ChooseOneService) {
  for (const cServiceKind& kind : GetServiceKinds()) {
    const cParsedOptions parsed = Parse({kind.name, "--dir", "/somewhere"});
    ASSERT_TRUE(parsed.options) << parsed.text;
    EXPECT_EQ(parsed.options->service, kind.name);
  }
}

TEST_F(Options, OfTheCommandLineHoldAgainstTheFile) {
  const std::string file = Write("[gateway]\ndir = \"/a\"\ntrace = 16\n[data]\ndurability = \"normal\"\n");
  const cParsedOptions parsed =
      Parse({"run", "--config", file.c_str(), "--dir", "/b", "--trace", "0", "--durability", "full"});
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->dir, "/b");
  EXPECT_EQ(parsed.options->trace, 0);
  EXPECT_EQ(parsed.options->durability, data::eDurability::Full);
}

TEST_F(Options, FindTheFileInTheDirectory) {
  Write("[gateway]\ntrace = 8\n", "tav-gateway.toml");
  const cParsedOptions parsed = Parse({"run", "--dir", m_folder.GetPath().c_str()});
  ASSERT_TRUE(parsed.options) << parsed.text;
  EXPECT_EQ(parsed.options->trace, 8);
  EXPECT_EQ(parsed.options->configFile, m_folder.File("tav-gateway.toml"));
}

TEST_F(Options, OfTheFileThatAreWrongAreNamedWithLineAndKey) {
  struct {
    const char* text;
    const char* error;
  } const cases[] = {
      {"[data]\n\ndurability = \"ful\"\n", ":3: key \"data.durability\": expected \"full\" or \"normal\""},
      {"[data]\ndurability = 1\n", ":2: key \"data.durability\": expected \"full\" or \"normal\""},
      {"[data]\nfile = \"\"\n", ":2: key \"data.file\": expected a path as text"},
      {"[data]\nmax-megabytes = -1\n", ":2: key \"data.max-megabytes\": expected 0 (no limit) to 1000000 megabytes"},
      {"[data]\ndurabilty = \"full\"\n", ":2: key \"data.durabilty\": there is no such key"},
      {"[gateway]\ntrace = 33\n", ":2: key \"gateway.trace\": expected a level from 0 to 32"},
      {"[gateway]\ntrace = \"16\"\n", ":2: key \"gateway.trace\": expected a level from 0 to 32"},
      {"[gateway]\ndir = []\n", ":2: key \"gateway.dir\": expected a path as text"},
      {"[ui]\n\nleds = \"kernal\"\n", ":3: key \"ui.leds\": expected \"simulated\" or \"kernel\", found \"kernal\""},
      {"[ui]\nleds = 1\n", ":2: key \"ui.leds\": expected a text"},
      {"[ui]\nled-wan = 1\n", ":2: key \"ui.led-wan\": expected a text"},
      {"[ui]\nled-meter-1 = true\n", ":2: key \"ui.led-meter-1\": expected a text"},
      {"[ui]\nled-meter-2 = []\n", ":2: key \"ui.led-meter-2\": expected a text"},
      {"[ui]\nled-meter-3 = \"a\"\n", ":2: key \"ui.led-meter-3\": there is no such key"},
      {"[ui]\nrelay-chip = 0\n", ":2: key \"ui.relay-chip\": expected a text"},
      {"[ui]\nrelay-line = -1\n", ":2: key \"ui.relay-line\": expected the number of a line from 0 to 65535"},
      {"[ui]\nrelay-line = 65536\n", ":2: key \"ui.relay-line\": expected the number of a line from 0 to 65535"},
      {"[ui]\nrelay-line = \"1\"\n", ":2: key \"ui.relay-line\": expected the number of a line from 0 to 65535"},
      {"[time]\nclock = \"atomic\"\n",
       ":2: key \"time.clock\": expected \"simulated\" or \"kernel\", found \"atomic\""},
      {"[time]\nclock = 12\n", ":2: key \"time.clock\": expected a text"},
      {"[time]\nzone = \"UTC\"\n", ":2: key \"time.zone\": there is no such key"},
      {"[gsm]\nmodem = \"\"\n", ":2: key \"gsm.modem\": expected \"simulated\" or \"modemmanager\", found \"\""},
      {"[gsm]\nmodem = {}\n", ":2: key \"gsm.modem\": expected a text"},
      {"[gsm]\npin = \"1234\"\n", ":2: key \"gsm.pin\": there is no such key"},
      {"\n[dta]\nx = 1\n", ":2: \"dta\": there is no such section"},
      {"trace = 1\n", ":1: \"trace\": there is no such section"},
      {"data = 1\n", ":1: \"data\": there is no such section"},
  };
  for (const auto& [text, error] : cases) EXPECT_EQ(ErrorOf(text), error);
}

TEST_F(Options, AFileThatIsNoTomlIsNamedWithItsLine) {
  EXPECT_THAT(ErrorOf("[gateway]\ntrace = \n"), testing::StartsWith(":2: "));
  EXPECT_THAT(ErrorOf("[gateway\n"), testing::StartsWith(":1: "));
}

TEST_F(Options, AFileThatIsNotThereIsNamed) {
  const cParsedOptions parsed = Parse({"run", "--config", "/nowhere/my.toml"});
  EXPECT_EQ(parsed.exitCode, eExitUsage);
  EXPECT_EQ(parsed.text, "/nowhere/my.toml: cannot be read");
}

TEST_F(Options, AWrongWordIsAnErrorThatNamesIt) {
  for (const auto& [word, value] : {std::pair("--durability", "x"),
                                    {"--trace", "33"},
                                    {"--trace", "-1"},
                                    {"--trace", "much"},
                                    {"--dri", "/a"},
                                    {"walk", "away"}}) {
    const cParsedOptions parsed = Parse({"run", word, value});
    EXPECT_FALSE(parsed.options) << word;
    EXPECT_EQ(parsed.exitCode, eExitUsage);
    EXPECT_THAT(parsed.text, HasSubstr(word));
  }
  EXPECT_EQ(Parse({}).exitCode, eExitUsage);
}

TEST_F(Options, HelpListsEveryService) {
  const cParsedOptions parsed = Parse({"--help"});
  EXPECT_EQ(parsed.exitCode, eExitDone);
  EXPECT_THAT(parsed.text, HasSubstr("run "));
  for (const cServiceKind& kind : GetServiceKinds()) {
    EXPECT_THAT(parsed.text, HasSubstr(std::string(kind.name) + " "));
    EXPECT_THAT(parsed.text, HasSubstr(kind.help));
  }
}

TEST_F(Options, HelpIsNoError) {
  const cParsedOptions parsed = Parse({"run", "--help"});
  EXPECT_FALSE(parsed.options);
  EXPECT_EQ(parsed.exitCode, eExitDone);
  EXPECT_THAT(parsed.text, HasSubstr("--durability"));
}

}  // namespace
}  // namespace tav::gateway
