// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/simulated_bus.h>

#include <filesystem>
#include <fstream>

#include <gateway/driver/mbus/master/mbus_readout.h>
#include <gateway/driver/mbus/simulator/mbussim_options.h>
#include <tests/support/child_process.h>

#include <tests/driver/mbus/mbus_world.h>

namespace tav::mbus {
namespace {

using testing::HasSubstr;

class SimulatedBus : public MBusWorld {
 protected:
  cMBusAnswer Ask(const std::string& bytes, eExpected expected) {
    bool isDone = false;
    cMBusAnswer heard;
    m_master->Exchange({bytes, expected}, [&](const cMBusAnswer& answer) {
      heard = answer;
      heard.frame = {};
      isDone = true;
    });
    EXPECT_TRUE(Await([&] { return isDone; }));
    return heard;
  }
};

TEST_F(SimulatedBus, StandsAtItsLinkWhileItLives) {
  PlugIn();
  EXPECT_TRUE(std::filesystem::is_symlink(m_options.link));
  EXPECT_EQ(std::filesystem::read_symlink(m_options.link), m_line->GetDevice());
  PullOut();
  EXPECT_FALSE(std::filesystem::is_symlink(m_options.link));
}

TEST_F(SimulatedBus, TakesTheLinkOfOneThatWasKilled) {
  std::filesystem::create_symlink("/dev/pts/999999", m_options.link);
  PlugIn();
  EXPECT_EQ(std::filesystem::read_symlink(m_options.link), m_line->GetDevice());
}

TEST_F(SimulatedBus, LeavesAFileAlone) {
  std::ofstream(m_options.link) << "precious";
  cSimulatedBus line(&m_host, m_bus, m_options);
  EXPECT_EQ(line.GetError(), "no link " + m_options.link + ": File exists");
}

TEST_F(SimulatedBus, OutlivesItsDrivers) {
  AddMeter(eMeterKind::Heat, 5);
  for (int round = 0; round < 3; ++round) {
    Connect();
    EXPECT_EQ(Ask(MakeInitialise(5), eExpected::Ack).outcome, eOutcome::Answered);
    m_master.reset();
  }
}

TEST_F(SimulatedBus, HearsTheRateOfTheLine) {
  AddMeter(eMeterKind::Heat, 5);
  m_settings.input.baud = 9600;
  m_settings.retries = 0;
  Connect();
  EXPECT_EQ(Ask(MakeInitialise(5), eExpected::Ack).outcome, eOutcome::Silent);
  m_master->SetBaud(2400);
  EXPECT_EQ(Ask(MakeInitialise(5), eExpected::Ack).outcome, eOutcome::Answered);
}

TEST_F(SimulatedBus, TakesTheTimeThatTheLineTakes) {
  AddMeter(eMeterKind::Electricity, 5);
  m_options.instant = false;
  Connect();
  Pass(100);
  const std::int64_t begin = m_clock->Now();
  EXPECT_EQ(Ask(MakeReadoutRequest(5, true), eExpected::Data).outcome, eOutcome::Answered);
  const std::size_t bytes = m_bus.GetSlave(0).GetMeter().Telegram(0, 5, 1, kNow).size();
  const auto least = static_cast<std::int64_t>((bytes + 5) * 11 * 1000 / 2400) + cMBusBus::kAnswerMs;
  EXPECT_GE(m_clock->Now() - begin, least);
  EXPECT_LE(m_clock->Now() - begin, least + least / 4);
}

TEST_F(SimulatedBus, SpoilsAnswersByProbability) {
  AddMeter(eMeterKind::Heat, 5);
  m_bus.SetProbability(eBusFault::Silence, 0.3);
  m_settings.retries = 0;
  m_tickMs = 50;
  Connect();
  int answered = 0;
  for (int i = 0; i < 200; ++i)
    if (Ask(MakeInitialise(5), eExpected::Ack).outcome == eOutcome::Answered) ++answered;
  EXPECT_GT(answered, 115);
  EXPECT_LT(answered, 165);
}

// ---- the program

struct cParsed {
  bool goesOn = false;
  int exitCode = -1;
  cMBusSimOptions options;
};

cParsed Parse(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "mbussim");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  cParsed parsed;
  parsed.goesOn = cMBusSimOptions::Parse(static_cast<int>(argv.size()), argv.data(), parsed.options, parsed.exitCode);
  return parsed;
}

TEST(MBusSimOptions, DescribeTheBus) {
  const cParsed parsed = Parse({"--link", "bus", "--meters", "10", "--seed", "7", "--baud", "9600", "--noise", "0.5",
                                "--echo", "--instant", "--trace", "16"});
  ASSERT_TRUE(parsed.goesOn);
  EXPECT_EQ(parsed.options.bus.link, "bus");
  EXPECT_TRUE(parsed.options.bus.echo);
  EXPECT_TRUE(parsed.options.bus.instant);
  EXPECT_EQ(parsed.options.traceLevel, 16);
  const cMBusBus bus = MakeBus(parsed.options);
  ASSERT_EQ(bus.CountMeters(), 10u);
  EXPECT_EQ(bus.GetSlave(9).GetPrimary(), 10);
  EXPECT_EQ(bus.GetSlave(9).GetBaud(), 9600u);
  EXPECT_THAT(ListMeters(bus), HasSubstr("TAV  warm water\n"));
}

TEST(MBusSimOptions, RefuseWhatCannotBe) {
  for (const std::vector<std::string>& wrong : std::vector<std::vector<std::string>>{{"--meters", "0"},
                                                                                     {"--meters", "251"},
                                                                                     {"--baud", "2401"},
                                                                                     {"--noise", "1.5"},
                                                                                     {"--silence", "-1"},
                                                                                     {"--nonsense"},
                                                                                     {"more"}}) {
    const cParsed parsed = Parse(wrong);
    EXPECT_FALSE(parsed.goesOn) << wrong[0];
    EXPECT_EQ(parsed.exitCode, 2) << wrong[0];
  }
  EXPECT_EQ(Parse({"--help"}).exitCode, 0);
}

TEST_F(SimulatedBus, IsAProgramThatADriverMayAsk) {
  cChildProcess program({MBUSSIM, "--link", m_options.link, "--meters", "3", "--instant"}, {}, m_folder.File("said"));
  ASSERT_TRUE(PollUntil(m_host, [this] { return std::filesystem::is_symlink(m_options.link); }));
  gateway::cServiceHost host("mbus-test", m_folder.GetPath());
  cMBusMaster master(&host, m_settings);
  cMBusLink link;
  std::optional<cMBusReadoutResult> result;
  cMBusReadout readout(master, link, cMBusAddress::Primary(2), [&](const cMBusReadoutResult& read) { result = read; });
  readout.Start();
  ASSERT_TRUE(PollUntil(host, [&] { return result.has_value(); }));
  EXPECT_EQ(result->outcome, eOutcome::Answered) << result->cause;
  program.Signal(SIGTERM);
  EXPECT_EQ(program.Wait(), 0);
  EXPECT_FALSE(std::filesystem::is_symlink(m_options.link));
}

}  // namespace
}  // namespace tav::mbus
