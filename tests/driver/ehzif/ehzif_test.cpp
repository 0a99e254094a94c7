// SPDX-License-Identifier: Apache-2.0
// The driver's process against the gateway's: what goes in at one end, and what is stored at the other.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <random>

#include <gateway/driver/sml/sml_reader.h>
#include <tav/framework/time.h>
#include <tests/driver/input/pseudo_line.h>

#include "ehzif_fixture.h"

namespace tav::sml {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

// ---- inputs

TEST_F(EhzifProcess, StoresTheValuesOfACapture) {
  StartGateway();
  const unsigned int before = vorn::cTime::Now().GetSeconds();
  const std::string capture = Write("capture", Telegram({{PackObis(1, 0, 1, 8, 0), 30, -1, 123456},
                                                         {PackObis(1, 0, 16, 7, 0), 27, -2, -5},
                                                         {PackObis(1, 0, 32, 7, 0), 35, -1, 2301},
                                                         {PackObis(1, 0, 31, 7, 0), 33, -2, 69},
                                                         {PackObis(1, 0, 14, 7, 0), 44, -1, 500},
                                                         {PackObis(1, 0, 2, 8, 0), 30, 2, 7}}));
  ASSERT_EQ(Run({"--interface", "RS232", "--input", capture, "--once"}), 0) << Said();
  EXPECT_THAT(
      Said(),
      testing::EndsWith(
          "ehzif: frames good=1 bad=0 incomplete=0 skipped-bytes=0 faults=0; readings delivered=1 acknowledged=1 "
          "refused=0 dropped=0 unconfirmed=0 open=0 filtered=0 skipped=0 valueless=0\n"));
  EXPECT_THAT(Meters(), ElementsAre(kMeter));
  EXPECT_THAT(StoredTexts(), UnorderedElementsAre("1-0:1.8.0=12345.6 Wh", "1-0:16.7.0=-0.05 W", "1-0:32.7.0=230.1 V",
                                                  "1-0:31.7.0=0.69 A", "1-0:14.7.0=50.0 Hz", "1-0:2.8.0=700 Wh"));
  for (const cStored& stored : Stored()) {
    EXPECT_GE(stored.time, before);
    EXPECT_LE(stored.time, vorn::cTime::Now().GetSeconds());
    EXPECT_THAT(stored.timeSource, AnyOf("RTC", "Network Time"));
  }
  const vorn::cRecord meter = Rows(db_ctrl::eListMeters, {})[0];
  EXPECT_EQ(meter.GetTextPar("driver"), "ehzif");
  EXPECT_EQ(meter.GetTextPar("interface-name"), "RS232");
  EXPECT_EQ(meter.GetTextPar("medium"), "E");
}

TEST_F(EhzifProcess, ReadsStandardInput) {
  StartGateway();
  const std::string capture = Write("capture", Telegrams(100));
  const std::string command = std::string(EHZIF) + " --dir " + Directory() + " --input - --once";
  for (const std::string& shell : {"cat " + capture + " | " + command, command + " < " + capture}) {
    m_driver = std::make_unique<cChildProcess>(std::vector<std::string>{"/bin/sh", "-c", shell},
                                               std::vector<std::string>{}, m_folder.File("said"));
    EXPECT_EQ(End(), 0) << Said();
    EXPECT_EQ(Count("acknowledged"), 100u) << Said();
  }
}

TEST_F(EhzifProcess, ReadsAConnection) {
  StartGateway();
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(listener, 1), 0);
  ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
  Start({"--once", "--input", "tcp://127.0.0.1:" + std::to_string(ntohs(address.sin_port))});
  pollfd ready{listener, POLLIN, 0};
  ASSERT_EQ(poll(&ready, 1, 20'000), 1) << Said();
  const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
  const std::string bytes = Telegrams(20);
  EXPECT_EQ(send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  close(connection);
  EXPECT_EQ(End(), 0) << Said();
  EXPECT_EQ(Count("acknowledged"), 20u);
  close(listener);
}

TEST_F(EhzifProcess, ReadsASerialDeviceThatVanishesAndComesBack) {
  StartGateway();
  auto line = std::make_unique<cPseudoLine>(m_folder.File("ttyUSB0"));
  Start({"--input", m_folder.File("ttyUSB0")});
  const auto stored = [&](std::int64_t value) {
    // What comes before the line is set up is thrown away, as a meter's would be; it sends again.
    for (int tries = 0; tries < 2000 && !m_driver->Wait(10); ++tries) {
      line->Write(Energy(10 * value));
      const std::vector<std::string> texts = StoredTexts();
      if (std::find(texts.begin(), texts.end(), "1-0:1.8.0=" + std::to_string(value) + ".0 Wh") != texts.end())
        return true;
    }
    return false;
  };
  EXPECT_TRUE(stored(10)) << Said();
  line->Vanish();
  ASSERT_TRUE(AwaitSaid("input lost: ")) << Said();
  line = std::make_unique<cPseudoLine>(m_folder.File("ttyUSB0"));
  EXPECT_TRUE(stored(20)) << Said();
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
  EXPECT_EQ(Count("delivered"), Count("acknowledged"));
  std::vector<std::string> events;
  for (const vorn::cRecord& row : Rows(db_ctrl::eListEvents, {}))
    events.push_back(row.GetRecordPar("event").GetTextPar("event"));
  EXPECT_THAT(events, ElementsAre("input lost", "input back"));
}

TEST_F(EhzifProcess, EndsWithThreeWhenTheInputCannotBeRead) {
  StartGateway();
  EXPECT_EQ(Run({"--input", m_folder.File("missing"), "--once"}), 3);
  EXPECT_THAT(Said(), HasSubstr("cannot open " + m_folder.File("missing") + ": No such file or directory"));
  EXPECT_EQ(Run({"--input", m_folder.GetPath(), "--once"}), 3);
  EXPECT_THAT(Said(), HasSubstr("Is a directory"));
  EXPECT_EQ(Run({"--input", "tcp://127.0.0.1:1", "--once"}), 3);
  EXPECT_THAT(Said(), HasSubstr("cannot connect to tcp://127.0.0.1:1"));
}

TEST_F(EhzifProcess, EndsWithTwoForAWrongOption) {
  EXPECT_EQ(Run({"--input", "-", "--medium", "x"}), 2);
  EXPECT_THAT(Said(), HasSubstr("--medium"));
  EXPECT_EQ(Run({"--input", "-", "--rules", m_folder.File("missing.toml")}), 2);
  EXPECT_EQ(Said(), "ehzif: --rules: " + m_folder.File("missing.toml") + ": No such file or directory\n");
  const std::string rules = Write("rules.toml", "[[rule]]\nname='A'\nobis='1.8.0'\n");
  EXPECT_EQ(Run({"--input", "-", "--rules", rules}), 2);
  EXPECT_EQ(Said(), "ehzif: --rules: " + rules + ":1: rule for '1.8.0': obis-id invalid\n");
}

// ---- options

TEST_F(EhzifProcess, StoresOneReadingAnInterval) {
  StartGateway();
  ASSERT_EQ(Run({"--input", "sim", "--begin", std::to_string(kBegin), "--period", "60", "--rounds", "100", "--interval",
                 "900"}),
            0)
      << Said();
  std::vector<unsigned int> times;
  for (const cStored& stored : Stored(kMeter, "1-0:16.7.0")) times.push_back(stored.time - kBegin);
  EXPECT_THAT(times, ElementsAre(0, 540, 1440, 2340, 3240, 4140, 5040, 5940));
  EXPECT_EQ(Count("skipped"), 92u);
  EXPECT_EQ(Stored()[0].timeSource, "Meter");
}

TEST_F(EhzifProcess, FiltersAndRenamesByTheRules) {
  const std::string rules = Write("rules.toml",
                                  "[[rule]]\nname = 'Import'\nobis = '1-0:1.8.0'\n"
                                  "[[rule]]\nname = 'Voltage'\nobis = '1-1:32.7.0'\n");
  const std::string capture = Write("capture", Telegram({{PackObis(1, 1, 1, 8, 0), 30, -1, 1},
                                                         {PackObis(1, 1, 2, 8, 0), 30, -1, 2},
                                                         {PackObis(1, 1, 32, 7, 0), 35, -1, 3}}));
  StartGateway();
  ASSERT_EQ(Run({"--input", capture, "--rules", rules}), 0) << Said();
  EXPECT_THAT(StoredTexts(), UnorderedElementsAre("1-0:1.8.0=0.1 Wh", "1-0:32.7.0=0.3 V"));
  ASSERT_EQ(Run({"--input", capture, "--rules", rules, "--keep-names"}), 0) << Said();
  EXPECT_THAT(StoredTexts(), testing::IsSupersetOf({"1-1:1.8.0=0.1 Wh", "1-1:32.7.0=0.3 V"}));
  EXPECT_THAT(StoredTexts(), testing::Not(Contains(HasSubstr("2.8.0"))));
}

TEST_F(EhzifProcess, StoresTheMetersAskedForOnly) {
  StartGateway();
  ASSERT_EQ(Run({"--input", "sim", "--begin", std::to_string(kBegin), "--rounds", "5", "--meters", "3", "--meter",
                 "0A015441560000000002"}),
            0)
      << Said();
  EXPECT_THAT(Meters(), ElementsAre("0A015441560000000002"));
  EXPECT_EQ(Count("acknowledged"), 5u);
  EXPECT_EQ(Count("filtered"), 10u);
}

TEST_F(EhzifProcess, StoresTheTelegramItself) {
  StartGateway();
  // No list shows them, but the bytes are there.
  const auto isStored = [this](const std::string& bytes) {
    return (Load("gateway/tav.db") + Load("gateway/tav.db-wal")).find(bytes) != std::string::npos;
  };
  const std::string serverIdEntry("\x77\x07\x01\x00\x00\x00\x09\xFF", 8);
  ASSERT_EQ(Run({"--input", Write("capture", Telegrams(1))}), 0) << Said();
  EXPECT_FALSE(isStored(serverIdEntry));
  ASSERT_EQ(Run({"--input", Write("capture", Telegrams(2)), "--raw"}), 0) << Said();
  EXPECT_TRUE(isStored(serverIdEntry));
}

// ---- the service comes and goes

TEST_F(EhzifProcess, WaitsForAServiceThatStartsAfterIt) {
  Start({"--input", Write("capture", Telegrams(200)), "--once"});
  ASSERT_TRUE(AwaitSaid("not connectetd")) << Said();
  StartGateway();
  EXPECT_EQ(End(), 0) << Said();
  EXPECT_EQ(Count("acknowledged"), 200u);
  EXPECT_EQ(Count("dropped"), 0u);
}

TEST_F(EhzifProcess, SaysWhatAServiceThatNeverComesHasNotGot) {
  EXPECT_EQ(Run({"--input", Write("capture", Telegrams(7)), "--once", "--wait", "1"}), 1);
  EXPECT_THAT(Said(), HasSubstr("gave up waiting, 7 readings are not acknowledged"));
  EXPECT_EQ(Count("open"), 7u);
  EXPECT_EQ(Count("acknowledged"), 0u);
  EXPECT_EQ(Run({"--input", Write("capture", Telegrams(100)), "--once", "--wait", "1"}), 1);
  EXPECT_THAT(Said(), HasSubstr("the input is not read to its end"));
  EXPECT_EQ(Count("open"), 40u);
}

TEST_F(EhzifProcess, LosesNothingOfAWaitingInputHoweverOftenTheServiceIsKilled) {
  constexpr std::size_t kRounds = kSlow ? 600 : 4000;
  StartGateway();
  Start({"--input", "sim", "--begin", std::to_string(kBegin), "--rounds", std::to_string(kRounds), "--period", "10",
         "--once", "--wait", "60"});
  for (int kill = 1; kill <= 4; ++kill) {
    ASSERT_TRUE(AwaitStored(static_cast<std::size_t>(kill) * kRounds / 8)) << Said();
    KillGateway();
    StartGateway();
  }
  EXPECT_EQ(End(), 0) << Said();
  EXPECT_EQ(Count("delivered"), kRounds) << Said();
  EXPECT_EQ(Count("acknowledged"), kRounds);
  EXPECT_EQ(Count("dropped"), 0u);
  ExpectRounds(kRounds, 10);
}

TEST_F(EhzifProcess, LosesNothingOfALiveMeterThatTheQueueHolds) {
  constexpr unsigned int kMeters = 10;
  constexpr unsigned int kRounds = 3;  // together fewer than the queue holds
  StartGateway();
  Start({"--input", "sim", "--meters", std::to_string(kMeters), "--period", "2", "--rounds", std::to_string(kRounds)});
  for (int kill = 0; kill < 2; ++kill) {
    ASSERT_TRUE(AwaitStored(static_cast<std::size_t>(kill) + 1)) << Said();
    KillGateway();
    StartGateway();
  }
  EXPECT_EQ(End(), 0) << Said();
  EXPECT_EQ(Count("acknowledged"), kMeters * kRounds) << Said();
  EXPECT_EQ(Count("dropped"), 0u);
  EXPECT_EQ(Meters().size(), kMeters);
  for (const std::string& meter : Meters()) EXPECT_EQ(Stored(meter).size(), kRounds * 10u) << meter;
}

TEST_F(EhzifProcess, DeliversWhatIsOpenWhenItIsTerminated) {
  StartGateway();
  Start({"--input", "sim", "--begin", std::to_string(kBegin), "--period", "10"});
  ASSERT_TRUE(AwaitStored(20)) << Said();
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
  const std::uint64_t delivered = Count("delivered");
  EXPECT_GE(delivered, 20u);
  EXPECT_EQ(Count("acknowledged"), delivered);
  EXPECT_EQ(Count("open"), 0u);
  ExpectRounds(static_cast<std::size_t>(delivered), 10);
}

// ---- damage

TEST_F(EhzifProcess, SurvivesDamageAndCountsIt) {
  StartGateway();
  std::mt19937 random(7);
  std::string bytes = Telegrams(300);
  for (int i = 0; i < 200; ++i) {
    const std::size_t at = random() % bytes.size();
    if (i % 3 == 0)
      bytes.erase(at, random() % 50);
    else if (i % 3 == 1)
      bytes[at] = static_cast<char>(random());
    else
      bytes.insert(at, std::string(random() % 20, static_cast<char>(random())));
  }
  bytes.erase(bytes.size() - 20);
  struct cNothing : cSmlSink {
    void OnList(const cSmlFrame&, const cSmlList&) override {}
  } sink;
  const auto reader = std::make_unique<cSmlReader>(sink);
  reader->Feed(bytes.data(), bytes.size());
  reader->Finish();
  ASSERT_GT(reader->GetFrameCounts().bad, 10u);
  ASSERT_EQ(Run({"--input", Write("capture", bytes), "--once", "--trace", "0"}), 0) << Said();
  EXPECT_EQ(Count("good"), reader->GetFrameCounts().good);
  EXPECT_EQ(Count("bad"), reader->GetFrameCounts().bad);
  EXPECT_EQ(Count("incomplete"), reader->GetFrameCounts().incomplete);
  EXPECT_EQ(Count("acknowledged"), reader->GetMessageCounts().lists);
}

TEST_F(EhzifProcess, SurvivesAnythingAtAll) {
  StartGateway();
  std::string noise;
  std::mt19937 random(11);
  for (int i = 0; i < 300'000; ++i) noise += static_cast<char>(random());
  for (const std::string& bytes : {std::string(), noise, std::string(200'000, '\x1B'), std::string(200'000, '\x76'),
                                   std::string(200'000, '7'), noise + Energy(1)}) {
    EXPECT_EQ(Run({"--input", Write("capture", bytes), "--once"}), 0) << Said();
    EXPECT_EQ(Count("refused"), 0u);
  }
  EXPECT_THAT(StoredTexts(), ElementsAre("1-0:1.8.0=0.1 Wh"));
}

}  // namespace
}  // namespace tav::sml
