// SPDX-License-Identifier: Apache-2.0
// tavctl mbus at a bus of simulated meters in a process of its own.
#include <tavctl/mbus_command.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include <tests/support/child_process.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

using Words = std::vector<std::string>;

// At the highest rate, where meters that are not there are waited for the shortest.
class MBusCommand : public TavctlWorld {
 protected:
  // Meters of each kind from address 1 on, behind the link "bus".
  void StartBus(unsigned int meters, Words options = {}) {
    const Words own{MBUSSIM,     "--link",  Line(), "--baud", "38400", "--meters", std::to_string(meters),
                    "--instant", "--trace", "16"};
    options.insert(options.begin(), own.begin(), own.end());
    m_bus = std::make_unique<cChildProcess>(options, Words{}, m_folder.File("bus.said"));
    ASSERT_TRUE(AwaitHeard("\n" + std::string(meters < 10 ? "  " : " ") + std::to_string(meters) + "  ")) << Heard();
  }
  std::string Line() const { return m_folder.File("bus"); }
  // What the bus has told: its meters first, then every request.
  std::string Heard() const {
    std::ifstream file(m_folder.File("bus.said"), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool AwaitHeard(const std::string& text) {
    return PollUntil(
        m_host, [&] { return Heard().find(text) != std::string::npos; }, std::chrono::seconds(30));
  }
  std::string IdOf(unsigned int address) const {
    std::istringstream lines(Heard());
    std::string first, second;
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      if (words >> first >> second && first == std::to_string(address)) return second;
    }
    return "none";
  }

  // "mbus ACTION LINE", and what is behind it.
  cOutput OnBus(const std::string& action, Words more, bool json = false, bool terminal = false) {
    return Run(Arguments(action, std::move(more), json), "", terminal);
  }
  Words Arguments(const std::string& action, Words more, bool json = false) const {
    Words arguments = json ? Words{"--json"} : Words{};
    for (const std::string& word : {std::string("mbus"), action, Line()}) arguments.push_back(word);
    if (std::ranges::find(more, "--baud") == more.end()) more.insert(more.end(), {"--baud", "38400"});
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
  cOutput Scan(Words more, bool json = true, bool terminal = false) {
    return OnBus("scan", std::move(more), json, terminal);
  }
  bool Answers(const std::string& address, const std::string& baud = "38400") {
    const cOutput output = OnBus("read", {address, "--baud", baud});
    EXPECT_EQ(output.out.empty(), output.exit != eExitDone) << output.err;
    return output.exit == eExitDone;
  }
  void ExpectDone(const cOutput& output) {
    EXPECT_EQ(output.exit, eExitDone) << output.err;
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "");
  }
  void ExpectFailure(const cOutput& output, eExit exit, const std::string& text) {
    EXPECT_EQ(output.exit, exit);
    EXPECT_EQ(output.err, "tavctl: " + text + "\n");
  }
  static nlohmann::json Found(const std::string& address, const std::string& meter, unsigned int version,
                              const char* medium) {
    return {{"address", address}, {"meter", meter},   {"manufacturer", "TAV"},
            {"version", version}, {"medium", medium}, {"note", nullptr}};
  }
  static Words Column(const cOutput& output, const char* key) {
    Words texts;
    for (const auto& row : output.Json()) texts.push_back(row.value(key, "none"));
    return texts;
  }

  std::unique_ptr<cChildProcess> m_bus;
};

// ---- scan

TEST_F(MBusCommand, FindsTheMetersAtTheirPrimaryAddresses) {
  StartBus(3);
  const cOutput output = Scan({"--first", "0", "--last", "4"});
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  EXPECT_EQ(output.err, "");
  EXPECT_EQ(output.Json(), nlohmann::json({Found("1", IdOf(1), 11, "Heat return"), Found("2", IdOf(2), 2, "Warm Water"),
                                           Found("3", IdOf(3), 2, "Water")}));
}

TEST_F(MBusCommand, ShowsTheMetersAsATable) {
  StartBus(2);
  const cOutput output = Scan({"--last", "3"}, false);
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  std::istringstream lines(output.out);
  Words words;
  for (std::string word; lines >> word && words.size() < 10;) words.push_back(word);
  EXPECT_THAT(words, ElementsAre("ADDRESS", "METER", "MAKER", "VERSION", "MEDIUM", "NOTE", "1", IdOf(1), "TAV", "11"));
  EXPECT_EQ(std::ranges::count(output.out, '\n'), 3);
}

TEST_F(MBusCommand, LeavesOutWhatTheFixedStructureDoesNotTell) {
  StartBus(8);
  for (const Words& where : {Words{"--first", "8", "--last", "8"}, Words{"--mask", IdOf(8)}}) {
    const auto meters = Scan(where).Json();
    ASSERT_EQ(meters.size(), 1u);
    EXPECT_EQ(meters[0]["meter"], IdOf(8));
    EXPECT_EQ(meters[0]["medium"], "Water");
    EXPECT_TRUE(meters[0]["manufacturer"].is_null());
    EXPECT_TRUE(meters[0]["version"].is_null());
  }
}

TEST_F(MBusCommand, KeepsToTheRangeOfPrimaryAddresses) {
  StartBus(4);
  EXPECT_THAT(Column(Scan({"--first", "2", "--last", "3"}), "address"), ElementsAre("2", "3"));
  EXPECT_THAT(Column(Scan({"--first", "3", "--last", "3"}), "address"), ElementsAre("3"));
}

TEST_F(MBusCommand, FindsNobody) {
  StartBus(1);
  for (const Words& where : {Words{"--first", "249"}, Words{"--mask", "FFFFFFFFFFFFFFEE"}}) {
    const cOutput output = Scan(where);
    EXPECT_EQ(output.exit, eExitNegative);
    EXPECT_EQ(output.out, "[]\n");
    EXPECT_EQ(output.err, "");
  }
  EXPECT_EQ(Scan({"--first", "249"}, false).out, "");
}

TEST_F(MBusCommand, ShowsHowFarItIsOnATerminalOnly) {
  StartBus(1);
  // Long enough for a bar: half a second is passed with those who are not there.
  const Words kWhere{"--last", "9"};
  const cOutput shown = Scan(kWhere, false, true);
  EXPECT_THAT(shown.err, AllOf(HasSubstr("scanning 9, 1 found ["), HasSubstr("] 90/100"), HasSubstr("\r\x1b[K")));
  EXPECT_THAT(shown.out, Not(HasSubstr("scanning")));
  EXPECT_EQ(Scan(kWhere, false, false).err, "");
}

TEST_F(MBusCommand, NotesWhatIsNotAsItShouldBe) {
  StartBus(1, {"--checksum", "1"});
  const auto meters = Scan({"--first", "1", "--last", "1"}).Json();
  ASSERT_EQ(meters.size(), 1u);
  EXPECT_TRUE(meters[0]["meter"].is_null());
  EXPECT_THAT(meters[0]["note"].get<std::string>(), HasSubstr("the checksum is wrong"));
}

TEST_F(MBusCommand, FindsTheMetersBySecondaryAddress) {
  StartBus(4);
  const cOutput output = Scan({"--secondary"});
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  EXPECT_THAT(Column(output, "meter"), UnorderedElementsAre(IdOf(1), IdOf(2), IdOf(3), IdOf(4)));
  for (const auto& meter : output.Json())
    EXPECT_THAT(meter["address"].get<std::string>(), StartsWith(meter["meter"].get<std::string>() + "5036"));
}

TEST_F(MBusCommand, FindsThoseThatMatchAMask) {
  StartBus(4);
  EXPECT_THAT(Column(Scan({"--mask", IdOf(2)}), "meter"), ElementsAre(IdOf(2)));
  EXPECT_THAT(Column(Scan({"--secondary", "--mask", "FFFFFFFFFFFFFF03"}), "meter"), ElementsAre(IdOf(4)));
  EXPECT_THAT(Column(Scan({"--mask", "ffffffff50360bff"}), "meter"), ElementsAre(IdOf(1)));
}

// ---- read

TEST_F(MBusCommand, ExplainsTheTelegramsOfAMeter) {
  StartBus(3);
  for (const std::string& address : {std::string("3"), IdOf(3), IdOf(3) + "FFFFFFFF"}) {
    const cOutput output = OnBus("read", {address});
    EXPECT_EQ(output.exit, eExitDone) << output.err;
    EXPECT_EQ(output.err, "");
    EXPECT_THAT(output.out, AllOf(HasSubstr(IdOf(3)), HasSubstr("record 0: Volume = "))) << address;
  }
}

TEST_F(MBusCommand, IsOneDocumentForPrograms) {
  StartBus(7);
  const auto document = OnBus("read", {"7"}, true).Json();
  EXPECT_EQ(document["kind"], "mbus");
  EXPECT_EQ(document["good"], 3) << "all that it has to say";
  EXPECT_EQ(document["bad"], 0);
  EXPECT_EQ(document["telegrams"].size(), 3u);
}

TEST_F(MBusCommand, SaysWhyAMeterIsNotRead) {
  StartBus(1);
  ExpectFailure(OnBus("read", {"9"}), eExitNegative, "9: no answer");
  ExpectFailure(OnBus("read", {"99999999", "--retries", "0"}), eExitNegative, "99999999: the selection: no answer");
  EXPECT_EQ(OnBus("read", {"9"}, true).out, "");
}

TEST_F(MBusCommand, SaysWhatIsWrongWithAnAnswer) {
  StartBus(1, {"--truncation", "1"});
  const cOutput output = OnBus("read", {"1", "--retries", "0"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_THAT(output.err, AllOf(StartsWith("tavctl: 1: "), HasSubstr("the frame ends too early")));
}

TEST_F(MBusCommand, TakesAwayWhatALevelConverterGivesBack) {
  StartBus(1, {"--echo"});
  const cOutput output = OnBus("read", {"1", "--echo"});
  EXPECT_EQ(output.exit, eExitDone) << output.err;
}

TEST_F(MBusCommand, AsksAsOftenAsItIsTold) {
  StartBus(1);
  EXPECT_EQ(OnBus("read", {"9", "--retries", "1", "--answer", "5"}).exit, eExitNegative);
  ASSERT_TRUE(AwaitHeard("10 40 09 49 16"));
  EXPECT_EQ(OnBus("read", {"8", "--retries", "0", "--answer", "5"}).exit, eExitNegative);
  ASSERT_TRUE(AwaitHeard("10 40 08 48 16"));
  const std::string heard = Heard();
  const auto count = [&heard](const std::string& request) {
    std::size_t found = 0;
    for (std::size_t at = 0; (at = heard.find(request, at)) != std::string::npos; ++at) ++found;
    return found;
  };
  EXPECT_EQ(count("10 40 09 49 16"), 2u);
  EXPECT_EQ(count("10 40 08 48 16"), 1u);
}

// ---- set up

TEST_F(MBusCommand, GivesAMeterAnotherPrimaryAddress) {
  StartBus(2);
  ExpectDone(OnBus("set-address", {"1", "17"}));
  EXPECT_TRUE(Answers("17"));
  EXPECT_FALSE(Answers("1"));
  ExpectDone(OnBus("set-address", {IdOf(2), "250"}));
  EXPECT_TRUE(Answers("250"));
  EXPECT_FALSE(Answers("2"));
  EXPECT_TRUE(Answers("17"));
  ExpectDone(OnBus("set-address", {"250", "0"}));
  EXPECT_TRUE(Answers("0"));
  ExpectFailure(OnBus("set-address", {"9", "1"}), eExitNegative,
                "9: the meter did not acknowledge its new address: no answer");
  ExpectFailure(OnBus("set-address", {"99999999", "1"}), eExitNegative,
                "99999999: no meter acknowledged its selection: no answer");
}

TEST_F(MBusCommand, LetsAMeterTalkAtAnotherRate) {
  StartBus(2);
  ExpectDone(OnBus("set-baud", {"1", "9600"}));
  EXPECT_TRUE(Answers("1", "9600"));
  EXPECT_FALSE(Answers("1"));
  EXPECT_TRUE(Answers("2")) << "it alone";
  ExpectDone(OnBus("set-baud", {IdOf(2), "19200"}));
  EXPECT_TRUE(Answers("2", "19200"));
  EXPECT_FALSE(Answers("2"));
  ExpectDone(OnBus("set-baud", {"2", "38400", "--baud", "19200"}));
  EXPECT_TRUE(Answers("2"));
  ExpectFailure(OnBus("set-baud", {"9", "9600"}), eExitNegative,
                "9: the meter did not acknowledge its new rate: no answer");
  ExpectFailure(OnBus("set-baud", {"99999999", "9600"}), eExitNegative,
                "99999999: no meter acknowledged its selection: no answer");
}

TEST_F(MBusCommand, ResetsTheApplicationOfAMeter) {
  StartBus(2);
  ExpectDone(OnBus("reset", {"1"}));
  EXPECT_TRUE(AwaitHeard("68 03 03 68 53 01 50 A4 16 -> E5")) << Heard();
  ExpectDone(OnBus("reset", {"1", "--code", "0"}));
  EXPECT_TRUE(AwaitHeard("68 04 04 68 53 01 50 00 A4 16 -> E5")) << Heard();
  ExpectDone(OnBus("reset", {IdOf(2), "--code", "255"}));
  EXPECT_TRUE(AwaitHeard("68 04 04 68 53 FD 50 FF 9F 16 -> E5")) << Heard();
  EXPECT_TRUE(Answers("1"));
  ExpectFailure(OnBus("reset", {"9"}), eExitNegative,
                "9: the meter did not acknowledge the reset of its application: no answer");
}

// ---- the command line

// A line that is not there tells whether it was opened: then the exit code would be another.
TEST_F(MBusCommand, RefusesAWrongCommandLineBeforeTheLineIsOpened) {
  const std::string line = "/dev/ttyOfNobody";
  const std::string file = m_folder.File("file");
  std::ofstream(file) << "no bus";
  const std::string expected =
      "' is no address; expected a number from 0 to 250, the eight digits of an identification, or sixteen with "
      "manufacturer, version and medium behind them";
  const struct {
    Words words;
    std::string text;
  } cases[] = {
      {{"scan", ""}, "mbus: LINE: the input is empty; expected a device, a file, '-' or tcp://host:port"},
      {{"scan", "tcp://host"}, "mbus: LINE: 'tcp://host' is no address of the form tcp://host:port"},
      {{"scan", "tcp://host:0"}, "mbus: LINE: 'tcp://host:0' is no address of the form tcp://host:port"},
      {{"scan", file}, "mbus: LINE: '" + file + "' is no device and no tcp://host:port"},
      {{"scan", "-"}, "mbus: LINE: '-' is no device and no tcp://host:port"},
      {{"scan", line, "--baud", "1234"},
       "mbus: baud rate 1234 is not supported; possible are 300 to 230400 in the usual steps"},
      {{"scan", line, "--baud", "4294967296"}, "mbus: --baud: expected at most 4294967295, found 4294967296"},
      {{"scan", line, "--framing", "9X3"},
       "mbus: '9X3' is no serial framing; expected data bits 7 or 8, parity N, E or O, stop bits 1 or 2, as 8N1"},
      {{"scan", line, "--retries", "11"}, "mbus: --retries: expected at most 10, found 11"},
      {{"scan", line, "--answer", "60001"}, "mbus: --answer: expected at most 60000, found 60001"},
      {{"scan", line, "--last", "251"}, "mbus: --last: expected at most 250, found 251"},
      {{"scan", line, "--first", "5", "--last", "4"}, "mbus: --first: expected at most 4, found 5"},
      {{"scan", line, "--mask", "5"}, "mbus scan: --mask: expected a secondary address"},
      {{"scan", line, "--mask", "5G"}, "mbus: '5G" + expected},
      {{"read", line, "251"},
       "mbus: '251' is no primary address; they go from 0 to 250, and 254 is for a meter alone on its line"},
      {{"read", line, "x"}, "mbus: 'x" + expected},
      {{"set-address", line, "4495014", "1"}, "mbus: '4495014" + expected},
      {{"set-address", line, "1", "251"}, "mbus: NEW: expected a number from 0 to 250, found \"251\""},
      {{"set-address", line, "1", "44950146"}, "mbus: NEW: expected a number from 0 to 250, found \"44950146\""},
      {{"set-address", line, "1", "7x"}, "mbus: NEW: expected a number from 0 to 250, found \"7x\""},
      {{"set-baud", line, "1", "200"}, "mbus: NEW: expected a number from 300 to 38400, found \"200\""},
      {{"set-baud", line, "1", "1234"},
       "mbus: NEW: there is no code for 1234 baud; expected 300, 600, 1200, 2400, 4800, 9600, 19200 or 38400"},
      {{"reset", line, "1", "--code", "256"}, "mbus: --code: expected a number from 0 to 255, found \"256\""},
      {{"reset", line, "1", "--code", "-1"}, "mbus: --code: expected a number from 0 to 255, found \"-1\""},
  };
  for (const auto& [words, text] : cases) {
    Words arguments = words;
    arguments.insert(arguments.begin(), "mbus");
    const cOutput output = Run(arguments);
    EXPECT_EQ(output.exit, eExitUsage) << text;
    EXPECT_EQ(output.err, "tavctl: " + text + "\n");
    EXPECT_EQ(output.out, "");
  }
}

TEST_F(MBusCommand, WantsItsArguments) {
  const Words kCases[] = {{"mbus"},
                          {"mbus", "scan"},
                          {"mbus", "read", "/dev/null"},
                          {"mbus", "set-address", "x", "1"},
                          {"mbus", "listen", "x"},
                          {"mbus", "scan", "x", "--retries", "-1"}};
  for (const Words& words : kCases) EXPECT_EQ(Run(words).exit, eExitUsage) << words.back();
}

// ---- the line

TEST_F(MBusCommand, SaysThatALineIsNotThere) {
  for (const char* action : {"scan", "read", "reset"}) {
    Words words{"mbus", action, "/dev/ttyOfNobody"};
    if (words[1] != "scan") words.emplace_back("1");
    ExpectFailure(Run(words), eExitUnreachable, "cannot open /dev/ttyOfNobody: No such file or directory");
  }
}

TEST_F(MBusCommand, LeavesALineToWhoHasItOpenAndEndsWhenItIsInterrupted) {
  StartBus(1);
  // Asks nobody, for as long as that may take.
  Words words{TAVCTL};
  for (const std::string& word : Arguments("read", {"9", "--answer", "60000"})) words.push_back(word);
  cChildProcess other(words, {}, m_folder.File("other.said"));
  ASSERT_TRUE(AwaitHeard("10 40 09 49 16")) << Heard();
  ExpectFailure(OnBus("read", {"1"}), eExitUnreachable, Line() + " is in use by another process");
  other.Signal(SIGINT);
  EXPECT_EQ(other.Wait(), eExitNegative);
  std::ifstream said(m_folder.File("other.said"));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(said), {}), "tavctl: 9: interrupted\n");
  EXPECT_TRUE(Answers("1")) << "the line is free again";
}

TEST_F(MBusCommand, EndsAScanThatIsInterrupted) {
  StartBus(1);
  Words words{TAVCTL};
  for (const std::string& word : Arguments("scan", {"--first", "1", "--last", "9", "--answer", "60000"}, true))
    words.push_back(word);
  cChildProcess other(words, {}, m_folder.File("other.said"));
  ASSERT_TRUE(AwaitHeard("10 40 02 42 16")) << Heard();
  other.Signal(SIGTERM);
  EXPECT_EQ(other.Wait(), eExitNegative);
  std::ifstream said(m_folder.File("other.said"));
  const std::string text(std::istreambuf_iterator<char>(said), {});
  EXPECT_THAT(text, AllOf(HasSubstr(IdOf(1)), HasSubstr("tavctl: interrupted\n")));
}

TEST_F(MBusCommand, SetsUpOneMeterOnly) {
  const struct {
    Words words;
    const char* error;
  } kCases[] = {
      {{"mbus", "set-address", "/dev/ttyOfNobody", "4495FFFF", "7"},
       "tavctl: mbus set-address: ADDRESS: '4495FFFF' may be several meters, expected one\n"},
      {{"mbus", "set-baud", "/dev/ttyOfNobody", "254", "9600"},
       "tavctl: mbus set-baud: ADDRESS: '254' may be several meters, expected one\n"},
      {{"mbus", "reset", "/dev/ttyOfNobody", "FFFFFFFF"},
       "tavctl: mbus reset: ADDRESS: 'FFFFFFFF' may be several meters, expected one\n"},
      {{"mbus", "set-baud", "tcp://127.0.0.1:1", "7", "9600"},
       "tavctl: mbus set-baud: LINE: the rate behind tcp:// is the converter's, the meter would be lost\n"},
  };
  for (const auto& c : kCases) {
    const cOutput output = Run(c.words);
    EXPECT_EQ(output.exit, eExitUsage) << c.error;
    EXPECT_EQ(output.err, c.error);
  }
}

}  // namespace
}  // namespace tav::ctl
