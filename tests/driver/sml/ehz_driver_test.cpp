// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_driver.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

#include <tav/framework/helper.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/driver/input/pseudo_line.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>

#include "sml_telegrams.h"

namespace tav::sml {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using vorn::cMsg;

constexpr std::uint32_t kBegin = 1'750'000'000;

// The driver and the service that it stores to, on the driver's loop. Time stands still until it is moved.
class EhzDriver : public testing::Test {
 protected:
  void SetUp() override {
    alarm(100);  // a driver that does not end is not waited for
    m_options.directory = m_folder.GetPath();
    m_options.interfaceName = "RS232";
    m_options.waitSeconds = 5;
  }
  void TearDown() override {
    m_server.reset();
    alarm(0);
  }

  // ---- what it reads
  void TakeFile(const std::string& bytes) {
    std::ofstream(m_folder.File("capture"), std::ios::binary) << bytes;
    TakeInput(m_folder.File("capture"));
  }
  void TakeInput(const std::string& text) {
    std::string error;
    ASSERT_TRUE(cInputSpec::Parse(text, m_options.input, error)) << error;
  }
  void TakeSimulation(std::uint64_t rounds, unsigned int period = 2, unsigned int meters = 1) {
    m_options.simulated = true;
    m_options.simulation.begin = kBegin;
    m_options.simulation.rounds = rounds;
    m_options.simulation.periodSeconds = period;
    m_options.simulation.simulator.meters = meters;
  }
  static std::string Telegrams(unsigned int count) {
    cSmlSimulator simulator({});
    std::string all;
    for (unsigned int i = 0; i < count; ++i) all += simulator.Telegram(kBegin + 10 * i);
    return all;
  }

  // ---- the two
  void Drive() { m_driver = std::make_unique<cEhzDriver>(m_options, m_rules, m_clock); }
  void Serve() {
    m_server = std::make_unique<cRecordingServer>(m_driver.get(), "data");
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_server->onMessage = [this](const cMsg& msg) {
      if (msg.GetType() == db_ctrl::eRegisterDriver) {
        Answer(msg, db_ctrl::eDriverRegistered);
      } else {
        m_arrived.push_back(msg);
        if (m_acknowledge) Answer(msg, msg.GetType() + (m_refused == m_arrived.size() ? 2 : 1));
      }
    };
  }
  // With nobody there: a file is read all the same, after a moment.
  void DriveAlone() {
    Drive();
    Pass(499);
    EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=0"));
    Pass(1);
  }
  // Until the driver is there.
  void Connect() {
    Serve();
    ASSERT_TRUE(PollUntil(*m_driver, [this] {
      if (m_server->messages.empty()) m_clock->Advance(10);
      return !m_server->messages.empty();
    }));
    Pass(0);
  }
  static void Answer(const cMsg& request, unsigned int type) {
    cMsg answer(type);
    answer.SetId(request.GetId());
    EXPECT_EQ(request.GetReplyChannel()->Send(answer), 1);
  }
  void AcknowledgeAllFromNowOn() {
    m_acknowledge = true;
    for (const cMsg& msg : m_arrived) Answer(msg, msg.GetType() + 1);
  }
  bool AwaitArrived(std::size_t count) {
    return PollUntil(*m_driver, [&] { return m_arrived.size() >= count; });
  }
  void Pass(unsigned int milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(*m_driver);
  }
  // Runs to the end with a service that answers; the exit code.
  int RunToEnd() {
    m_clock = nullptr;
    Drive();
    Serve();
    m_acknowledge = true;
    return m_driver->Work();
  }

  // ---- what arrived
  std::vector<cMeterRecord> Readings() const {
    std::vector<cMeterRecord> all;
    for (const cMsg& msg : m_arrived) {
      vorn::cRecord form;
      if (!msg.Record().GetPar("meter-record").GetRecord(form)) continue;
      EXPECT_TRUE(all.emplace_back().FromRecord(form)) << all.back().GetError();
    }
    return all;
  }
  std::vector<unsigned int> Times() const {
    std::vector<unsigned int> times;
    for (const cMeterRecord& reading : Readings()) times.push_back(reading.GetTimestamp() - kBegin);
    return times;
  }
  // "name=value unit" of every entry of a reading.
  static std::vector<std::string> Values(const cMeterRecord& reading) {
    std::vector<std::string> values;
    for (const cMeasurementEntry& entry : reading.GetMeasurementEntries())
      values.push_back(entry.GetName() + "=" + entry.GetValue() + " " + entry.GetUnit());
    return values;
  }
  std::vector<std::string> Events() const {
    std::vector<std::string> events;
    for (const cMsg& msg : m_arrived)
      if (msg.GetType() == db_ctrl::eStoreEvent) events.push_back(msg.Record().GetTextPar("event"));
    return events;
  }

  cTempFolder m_folder;
  cEhzOptions m_options;
  cObisMap m_rules;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  std::unique_ptr<cEhzDriver> m_driver;
  std::unique_ptr<cRecordingServer> m_server;
  std::vector<cMsg> m_arrived;
  bool m_acknowledge = false;
  std::size_t m_refused = 0;  // which message is refused; 0: none
  cCapturedTrace m_trace;
};

// ---- readings

TEST_F(EhzDriver, HandsOverWhatATelegramSays) {
  TakeFile(Telegram({{PackObis(1, 0, 1, 8, 0), "64000000", "", "621E", "52FF", "6501020304", ""},
                     {PackObis(1, 0, 16, 7, 0), "", "", "621B", "52FE", "53FFFB", ""},
                     {PackObis(1, 0, 32, 7, 0), "", "", "6223", "52FF", "6308FD", ""}}));
  ASSERT_EQ(RunToEnd(), eExitOk);
  ASSERT_THAT(Readings(), SizeIs(1));
  const cMeterRecord reading = Readings()[0];
  EXPECT_THAT(Values(reading), ElementsAre("1-0:1.8.0=1690906.0 Wh", "1-0:16.7.0=-0.05 W", "1-0:32.7.0=230.1 V"));
  EXPECT_EQ(reading.GetDriver(), "ehzif");
  EXPECT_EQ(reading.GetMeterID(), "0A015453540001020304");
  EXPECT_EQ(reading.GetMedium(), "E");
  EXPECT_EQ(reading.GetStatus(), "ok");
  EXPECT_EQ(reading.GetInterfaceName(), "RS232");
  EXPECT_EQ(reading.GetInterfaceProtocol(), "SML");
  EXPECT_TRUE(reading.GetRaw().IsEmpty());
  EXPECT_NEAR(reading.GetTimestamp(), vorn::cTime::Now().GetSeconds(), 60);
  EXPECT_THAT(reading.GetTimesource(), testing::AnyOf(cMeterTav::eTsRtc, cMeterTav::eTsNetworkTime));
}

TEST_F(EhzDriver, TakesTheTimeThatTheMeterTells) {
  TakeFile(Telegram({{PackObis(1, 0, 1, 8, 0), "", "7262026565A0BC00", "621E", "52FF", "6201", ""}}));
  ASSERT_EQ(RunToEnd(), eExitOk);
  ASSERT_THAT(Readings(), SizeIs(1));
  EXPECT_EQ(Readings()[0].GetTimestamp(), 0x65A0BC00u);
  EXPECT_EQ(Readings()[0].GetTimesource(), cMeterTav::eTsMeterUtc);
}

TEST_F(EhzDriver, TakesTheTimeOfTheSimulation) {
  TakeSimulation(3, 900);
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_THAT(Times(), ElementsAre(0, 900, 1800));
  EXPECT_EQ(Readings()[0].GetTimesource(), cMeterTav::eTsMeter);
}

TEST_F(EhzDriver, StoresTheTelegramItselfWhenAskedTo) {
  m_options.raw = true;
  m_options.medium = "G";
  const std::vector<cTestEntry> entries = {{PackObis(1, 0, 1, 8, 0), "", "", "621E", "52FF", "6201", ""}};
  TakeFile(Telegram(entries));
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_EQ(Readings()[0].GetRaw().AsText(), Payload(entries));
  EXPECT_EQ(Readings()[0].GetMedium(), "G");
}

TEST_F(EhzDriver, CountsListsWithoutAValue) {
  TakeFile(Telegram({}) + Telegram({{PackObis(1, 0, 96, 50, 1, 1), "", "", "", "", "04544156", ""}}));
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_THAT(Readings(), IsEmpty());
  EXPECT_THAT(m_driver->Summary(), HasSubstr("valueless=2"));
}

TEST_F(EhzDriver, SumsUpInOneLine) {
  std::string bad = OrdinaryTelegram();
  bad[30] = static_cast<char>(bad[30] ^ 1);
  TakeFile("xyz" + OrdinaryTelegram() + bad + OrdinaryTelegram().substr(0, 100));
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_EQ(m_driver->Summary(),
            "ehzif: frames good=1 bad=1 incomplete=1 skipped-bytes=3 faults=0; readings delivered=1 acknowledged=1 "
            "refused=0 dropped=0 unconfirmed=0 open=0 filtered=0 skipped=0 valueless=0");
  EXPECT_THAT(m_trace.GetLines(), Contains("UnitDriver 4 frame at byte 323, 320 bytes: checksum wrong"));
}

TEST_F(EhzDriver, CountsAMessageWithAWrongChecksum) {
  std::string payload = ListPayload({{PackObis(1, 0, 1, 8, 0), "", "", "621E", "52FF", "6201", ""}});
  payload[10] = static_cast<char>(payload[10] ^ 1);
  TakeFile(WriteSmlFrame(payload));
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_THAT(m_driver->Summary(),
              HasSubstr("good=1 bad=0 incomplete=0 skipped-bytes=0 faults=1; readings delivered=0"));
}

// ---- what is wanted

TEST_F(EhzDriver, StoresOneReadingAMeterAndInterval) {
  m_options.intervalSeconds = 900;
  TakeSimulation(40, 60, 2);
  ASSERT_EQ(RunToEnd(), eExitOk);
  ASSERT_EQ(kBegin % 900, 400u);
  EXPECT_THAT(Times(), ElementsAre(0, 0, 540, 540, 1440, 1440, 2340, 2340));
  EXPECT_THAT(m_driver->Summary(), HasSubstr("skipped=72"));
}

TEST_F(EhzDriver, StoresTheMetersAskedForOnly) {
  m_options.meters = {"0A015441560000000002", "0A015441560000000003"};
  TakeSimulation(2, 2, 4);
  ASSERT_EQ(RunToEnd(), eExitOk);
  std::vector<std::string> meters;
  for (const cMeterRecord& reading : Readings()) meters.push_back(reading.GetMeterID());
  EXPECT_THAT(meters, ElementsAre("0A015441560000000002", "0A015441560000000003", "0A015441560000000002",
                                  "0A015441560000000003"));
  EXPECT_THAT(m_driver->Summary(), HasSubstr("filtered=4"));
}

TEST_F(EhzDriver, PassesValuesThroughTheRulesAndRenamesThem) {
  m_options.rulesFile = "rules";
  m_rules.Add(cObisMapEntry(1, "Import", "1-0:1.8.0", ""));
  m_rules.Add(cObisMapEntry(2, "Voltage", "1-1:32.7.0", ""));
  const std::string telegram = Telegram({{PackObis(1, 1, 1, 8, 0), "", "", "621E", "52FF", "6201", ""},
                                         {PackObis(1, 1, 2, 8, 0), "", "", "621E", "52FF", "6202", ""},
                                         {PackObis(1, 1, 32, 7, 0), "", "", "6223", "52FF", "6203", ""}});
  const std::string unwanted = Telegram({{PackObis(1, 1, 2, 8, 0), "", "", "621E", "52FF", "6202", ""}});
  TakeFile(telegram + unwanted);
  ASSERT_EQ(RunToEnd(), eExitOk);
  ASSERT_THAT(Readings(), SizeIs(1));
  EXPECT_THAT(Values(Readings()[0]), ElementsAre("1-0:1.8.0=0.1 Wh", "1-0:32.7.0=0.3 V"));
  EXPECT_THAT(m_driver->Summary(), HasSubstr("filtered=1"));
  EXPECT_EQ(Readings()[0].GetInterfaceName(), "RS232");

  m_arrived.clear();
  m_server.reset();
  m_options.keepNames = true;
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_THAT(Values(Readings()[0]), ElementsAre("1-1:1.8.0=0.1 Wh", "1-1:32.7.0=0.3 V"));
}

TEST_F(EhzDriver, AReadingWithoutAWantedValueTakesNoSlotOfTheInterval) {
  m_options.rulesFile = "rules";
  m_options.intervalSeconds = 900;
  m_rules.Add(cObisMapEntry(1, "Import", "1-0:1.8.0", ""));
  const auto at = [](std::uint64_t obis) {
    return Telegram({{obis, "", "7262026565A0BC00", "621E", "52FF", "6201", ""}});
  };
  TakeFile(at(PackObis(1, 0, 2, 8, 0)) + at(PackObis(1, 0, 1, 8, 0)) + at(PackObis(1, 0, 1, 8, 0)));
  ASSERT_EQ(RunToEnd(), eExitOk);
  EXPECT_THAT(Readings(), SizeIs(1));
  EXPECT_THAT(m_driver->Summary(), HasSubstr("filtered=1 skipped=1"));
}

// ---- a service that is behind, or away

TEST_F(EhzDriver, HoldsAFileBackWhileTheServiceIsBehind) {
  TakeFile(Telegrams(200));
  Drive();
  Connect();
  ASSERT_TRUE(AwaitArrived(1));
  Pass(60'000);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=40 acknowledged=0 refused=0 dropped=0 unconfirmed=0 open=40"));
  for (std::size_t answered = 0; answered < 10; ++answered) {
    Answer(m_arrived[answered], db_ctrl::eMeterRecStored);
    Pass(0);
  }
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=50 acknowledged=10 refused=0 dropped=0 unconfirmed=0 open=40"));
  m_arrived.erase(m_arrived.begin(), m_arrived.begin() + 10);
  AcknowledgeAllFromNowOn();
  ASSERT_TRUE(AwaitArrived(190));
  EXPECT_EQ(m_driver->Work(), eExitOk);
  EXPECT_THAT(m_driver->Summary(),
              HasSubstr("delivered=200 acknowledged=200 refused=0 dropped=0 unconfirmed=0 open=0"));
}

TEST_F(EhzDriver, HoldsASimulationBackWithItsTime) {
  TakeSimulation(200, 900, 3);
  Drive();
  Connect();
  ASSERT_TRUE(AwaitArrived(1));
  AcknowledgeAllFromNowOn();
  ASSERT_TRUE(AwaitArrived(600));
  EXPECT_EQ(m_driver->Work(), eExitOk);
  const std::vector<unsigned int> times = Times();
  ASSERT_THAT(times, SizeIs(600));
  for (std::size_t i = 0; i < times.size(); ++i) EXPECT_EQ(times[i], i / 3 * 900) << i;
}

TEST_F(EhzDriver, WaitsForAServiceThatStartsLater) {
  TakeFile(Telegrams(100));
  DriveAlone();
  Pass(3'600'000);
  m_acknowledge = true;
  Connect();
  ASSERT_TRUE(AwaitArrived(100));
  EXPECT_EQ(m_driver->Work(), eExitOk);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=100 acknowledged=100"));
}

TEST_F(EhzDriver, GivesUpWhenTheServiceDoesNotAnswerAtTheEnd) {
  TakeFile(Telegrams(3));
  DriveAlone();
  Pass(4999);
  EXPECT_THAT(m_trace.GetLines(), testing::Not(Contains(HasSubstr("gave up"))));
  Pass(1);
  EXPECT_THAT(m_trace.GetLines(), Contains("UnitDriver 2 gave up waiting, 3 readings are not acknowledged"));
  EXPECT_EQ(m_driver->Work(), eExitNotDelivered);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=3 acknowledged=0 refused=0 dropped=0 unconfirmed=0 open=3"));
}

TEST_F(EhzDriver, GivesUpALongFileTooWhenAskedToReadItOnce) {
  m_options.once = true;
  TakeFile(Telegrams(100));
  DriveAlone();
  Pass(5000);
  EXPECT_THAT(m_trace.GetLines(),
              Contains("UnitDriver 2 gave up waiting, 40 readings are not acknowledged and the input "
                       "is not read to its end"));
  EXPECT_EQ(m_driver->Work(), eExitNotDelivered);
}

TEST_F(EhzDriver, GivesUpASimulationThatHasEndedBeforeItsTelegramsWereTaken) {
  TakeSimulation(14, 2, 3);  // two more than the window
  DriveAlone();
  Pass(5000);
  EXPECT_THAT(m_trace.GetLines(),
              Contains("UnitDriver 2 gave up waiting, 40 readings are not acknowledged and the input "
                       "is not read to its end"));
  EXPECT_EQ(m_driver->Work(), eExitNotDelivered);
}

TEST_F(EhzDriver, LosesNoneOfManyListsInOneFrame) {
  std::string payload;
  for (int i = 0; i < 200; ++i)
    payload +=
        ListPayload({{PackObis(1, 0, 1, 8, 0), "", "", "621E", "5200", "62" + vorn::FormatString("%02X", i), ""}});
  for (const std::string& capture : {payload, WriteSmlFrame(payload), WriteSmlFrame(payload) + Telegrams(1)}) {
    m_arrived.clear();
    m_server.reset();
    TakeFile(capture);
    ASSERT_EQ(RunToEnd(), eExitOk) << m_driver->Summary();
    const std::vector<cMeterRecord> readings = Readings();
    ASSERT_GE(readings.size(), 200u);
    for (std::size_t i = 0; i < 200; ++i)
      EXPECT_THAT(Values(readings[i]), ElementsAre("1-0:1.8.0=" + std::to_string(i) + " Wh"));
    EXPECT_THAT(m_driver->Summary(), HasSubstr("dropped=0 unconfirmed=0 open=0"));
  }
}

TEST_F(EhzDriver, DoesNotGiveUpAsLongAsTheServiceAnswers) {
  m_options.once = true;
  TakeFile(Telegrams(60));
  Drive();
  Connect();
  ASSERT_TRUE(AwaitArrived(1));
  for (std::size_t i = 0; i < 60; ++i) {
    Pass(4000);
    ASSERT_GT(m_arrived.size(), i);
    Answer(m_arrived[i], db_ctrl::eMeterRecStored);
    Pass(0);
  }
  EXPECT_EQ(m_driver->Work(), eExitOk);
}

TEST_F(EhzDriver, EndsWithOneWhenAReadingIsRefused) {
  m_refused = 2;
  TakeFile(Telegrams(3));
  EXPECT_EQ(RunToEnd(), eExitNotDelivered);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=3 acknowledged=2 refused=1 dropped=0 unconfirmed=0 open=0"));
}

TEST_F(EhzDriver, DropsTheOldestOfAMeterThatCannotWait) {
  TakeSimulation(60);
  m_options.simulation.begin.reset();
  Drive();
  for (int i = 0; i < 60; ++i) Pass(2000);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=60 acknowledged=0 refused=0 dropped=10 unconfirmed=0 open=50"));
  m_acknowledge = true;
  Connect();
  ASSERT_TRUE(AwaitArrived(50));
  EXPECT_EQ(m_driver->Work(), eExitNotDelivered);
}

// ---- the input's end

TEST_F(EhzDriver, EndsWithThreeWhenTheFileCannotBeRead) {
  TakeInput(m_folder.File("missing"));
  EXPECT_EQ(RunToEnd(), eExitInput);
  EXPECT_THAT(m_trace.GetLines(),
              Contains("UnitDriver 2 cannot open " + m_folder.File("missing") + ": No such file or directory"));
}

TEST_F(EhzDriver, EndsWithThreeBehindTextThatIsNoDigits) {
  cSmlSimulator simulator({});
  vorn::cData data(Telegrams(1).data(), Telegrams(1).size());
  for (const std::string tail : {"?", "0"}) {
    TakeFile(data.ToString(0) + tail + Telegrams(100));
    EXPECT_EQ(RunToEnd(), eExitInput);
    EXPECT_THAT(m_driver->Summary(), HasSubstr("acknowledged=1"));
    EXPECT_THAT(m_trace.GetLines(), Contains(HasSubstr("UnitDriver 2 " + m_folder.File("capture") + ": character ")));
    m_server.reset();
  }
}

TEST_F(EhzDriver, EndsWithThreeWhenAskedOnceForADeviceThatIsNotThere) {
  m_options.once = true;
  TakeInput("/dev/ttyOfNobody");
  EXPECT_EQ(RunToEnd(), eExitInput);
  EXPECT_THAT(m_trace.GetLines(), Contains(HasSubstr("cannot open /dev/ttyOfNobody")));
}

TEST_F(EhzDriver, EndsWithTheFirstLossOfADeviceWhenAskedOnce) {
  m_options.once = true;
  cPseudoLine line(m_folder.File("line"));
  TakeInput(m_folder.File("line"));
  Drive();
  m_acknowledge = true;
  Connect();
  ASSERT_TRUE(line.Write(Telegrams(2)));
  ASSERT_TRUE(AwaitArrived(2));
  line.Vanish();
  EXPECT_EQ(m_driver->Work(), eExitOk);
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(EhzDriver, ReportsTheLossAndTheReturnOfADevice) {
  auto line = std::make_unique<cPseudoLine>(m_folder.File("line"));
  TakeInput(m_folder.File("line"));
  Drive();
  m_acknowledge = true;
  Connect();
  const std::string telegram = Telegrams(1);
  ASSERT_TRUE(line->Write(telegram + telegram.substr(0, 100)));
  ASSERT_TRUE(AwaitArrived(1));
  line->Vanish();
  ASSERT_TRUE(AwaitArrived(2));
  EXPECT_THAT(Events(), ElementsAre("input lost"));
  const vorn::cRecord event = m_arrived[1].Record();
  EXPECT_EQ(event.GetTextPar("driver"), "ehzif");
  EXPECT_EQ(event.GetTextPar("interface-name"), "RS232");
  EXPECT_THAT(event.GetTextPar("reason"), HasSubstr(m_folder.File("line") + " (9600 8N1)"));
  EXPECT_NEAR(event.GetUIntPar("timestamp"), vorn::cTime::Now().GetSeconds(), 60);
  line = std::make_unique<cPseudoLine>(m_folder.File("line"));
  Pass(10'000);
  PollUntilIdle(*m_driver);
  EXPECT_THAT(Events(), ElementsAre("input lost"));  // the device is there; whether it works is not known yet
  ASSERT_TRUE(line->Write(telegram));
  ASSERT_TRUE(AwaitArrived(4));
  EXPECT_THAT(Events(), ElementsAre("input lost", "input back"));
  EXPECT_THAT(Readings(), SizeIs(2));
  EXPECT_THAT(m_driver->Summary(), HasSubstr("good=2 bad=0 incomplete=1"));  // what was cut is not joined
}

// ---- a signal

TEST_F(EhzDriver, EndsAtOnceOnASignalWhenNothingIsOpen) {
  for (const int signal : {SIGTERM, SIGINT}) {
    TakeSimulation(0);
    m_options.simulation.begin.reset();
    m_clock = std::make_shared<vorn::cManualClock>();
    Drive();
    m_acknowledge = true;
    Connect();
    ASSERT_TRUE(AwaitArrived(1));
    Pass(0);
    raise(signal);
    EXPECT_EQ(m_driver->Work(), eExitOk);
    m_server.reset();
    m_arrived.clear();
  }
}

TEST_F(EhzDriver, DeliversWhatIsOpenAfterASignalAndReadsNoMore) {
  TakeFile(Telegrams(200));
  Drive();
  Connect();
  ASSERT_TRUE(AwaitArrived(1));
  raise(SIGTERM);
  Pass(0);
  AcknowledgeAllFromNowOn();
  EXPECT_EQ(m_driver->Work(), eExitOk);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=40 acknowledged=40 refused=0 dropped=0 unconfirmed=0 open=0"));
}

TEST_F(EhzDriver, WaitsTwoSecondsAfterASignalAndSaysWhatIsOpen) {
  TakeFile(Telegrams(200));
  m_options.waitSeconds = 100;
  Drive();
  Connect();
  ASSERT_TRUE(AwaitArrived(1));
  raise(SIGTERM);
  Pass(0);
  Answer(m_arrived[0], db_ctrl::eMeterRecStored);
  Pass(1999);
  EXPECT_THAT(m_trace.GetLines(), testing::Not(Contains(HasSubstr("gave up"))));
  Pass(1);
  EXPECT_THAT(m_trace.GetLines(), Contains(HasSubstr("gave up waiting, 39 readings")));
  EXPECT_EQ(m_driver->Work(), eExitNotDelivered);
}

TEST_F(EhzDriver, EndsAtOnceOnASecondSignal) {
  TakeFile(Telegrams(3));
  DriveAlone();
  raise(SIGTERM);
  Pass(0);
  raise(SIGTERM);
  EXPECT_EQ(m_driver->Work(), eExitNotDelivered);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("open=3"));
}

}  // namespace
}  // namespace tav::sml
