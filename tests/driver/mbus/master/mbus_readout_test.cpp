// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_readout.h>

#include <tests/driver/input/pseudo_line.h>

#include <tests/driver/mbus/mbus_world.h>

namespace tav::mbus {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::string kFree = "10 40 FD 3D 16";
const std::string kAskSelected = "10 7B FD 78 16";

class MBusReadout : public MBusWorld {
 protected:
  cMBusReadoutResult Read(const cMBusAddress& address) {
    m_requests.clear();
    m_result.reset();
    m_readout = std::make_unique<cMBusReadout>(*m_master, m_link, address, [this](const cMBusReadoutResult& result) {
      m_result = result;
      m_readout.reset();  // as a driver may do
    });
    m_readout->Start();
    EXPECT_TRUE(Await([this] { return m_result.has_value(); }));
    return m_result.value_or(cMBusReadoutResult());
  }
  cMBusReadoutResult Read(std::uint8_t primary) { return Read(cMBusAddress::Primary(primary)); }
  static std::string AccessOf(const std::string& frame) { return Hex(frame.substr(15, 1)); }

  cMBusLink m_link;
  std::unique_ptr<cMBusReadout> m_readout;
  std::optional<cMBusReadoutResult> m_result;
};

// ---- by primary address

TEST_F(MBusReadout, InitialisesOnceAndTogglesWithEveryAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  EXPECT_EQ(Read(5).outcome, eOutcome::Answered);
  EXPECT_THAT(m_requests, ElementsAre("10 40 05 45 16", "10 7B 05 80 16"));
  EXPECT_EQ(Read(5).outcome, eOutcome::Answered);
  EXPECT_THAT(m_requests, ElementsAre("10 5B 05 60 16"));
  const cMBusReadoutResult third = Read(5);
  EXPECT_THAT(m_requests, ElementsAre("10 7B 05 80 16"));
  ASSERT_THAT(third.frames, SizeIs(1));
  EXPECT_EQ(AccessOf(third.frames[0]), "03");
  EXPECT_EQ(third.cause, "");
}

TEST_F(MBusReadout, RepeatsWithTheSameBitAndGetsTheSameTelegram) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  Read(5);
  m_bus.Inject(eBusFault::Checksum, 2);
  const cMBusReadoutResult result = Read(5);
  EXPECT_EQ(result.outcome, eOutcome::Answered);
  EXPECT_THAT(m_requests, ElementsAre("10 5B 05 60 16", "10 5B 05 60 16", "10 5B 05 60 16"));
  EXPECT_EQ(AccessOf(result.frames.at(0)), "02");
}

TEST_F(MBusReadout, ReadsAMeterThatDoesNotAcknowledge) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  m_bus.Inject(eBusFault::Silence, 3);  // all attempts of the initialisation
  EXPECT_EQ(Read(5).outcome, eOutcome::Answered);
  EXPECT_THAT(m_requests, SizeIs(4));
  EXPECT_TRUE(m_link.initialised);
}

TEST_F(MBusReadout, BeginsAnewAfterAFailure) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  Read(5);
  m_bus.Inject(eBusFault::Checksum, 3);
  const cMBusReadoutResult failed = Read(5);
  EXPECT_EQ(failed.outcome, eOutcome::Damaged);
  EXPECT_THAT(failed.cause, HasSubstr("the checksum is wrong"));
  EXPECT_THAT(failed.frames, IsEmpty());
  EXPECT_EQ(AccessOf(Read(5).frames.at(0)), "03");  // not the telegram that was meant before
  EXPECT_EQ(m_requests.at(0), "10 40 05 45 16");
}

TEST_F(MBusReadout, ReadsEveryTelegram) {
  AddMeter(eMeterKind::Months, 5);
  Connect();
  for (int round = 0; round < 2; ++round) {
    const cMBusReadoutResult result = Read(5);
    EXPECT_EQ(result.outcome, eOutcome::Answered);
    ASSERT_THAT(result.frames, SizeIs(3));
    for (unsigned int i = 0; i < 3; ++i)
      EXPECT_EQ(result.frames[i], m_bus.GetSlave(0).GetMeter().Telegram(
                                      i, 5, static_cast<std::uint8_t>(3 * round + static_cast<int>(i) + 1), kNow));
  }
}

TEST_F(MBusReadout, KeepsTheTelegramsBeforeAFailure) {
  AddMeter(eMeterKind::Months, 5);
  Connect();
  int asked = 0;
  m_line->onRequest = [&](cBytes request, const std::string&) {
    if (request.size() == 5 && (request[1] & 0x0F) == 0x0B && ++asked == 2) m_bus.SetPresent(0, false);
  };
  const cMBusReadoutResult result = Read(5);
  EXPECT_EQ(result.outcome, eOutcome::Silent);
  EXPECT_THAT(result.frames, SizeIs(2));
}

TEST_F(MBusReadout, SaysThatNobodyAnswers) {
  Connect();
  const cMBusReadoutResult result = Read(9);
  EXPECT_EQ(result.outcome, eOutcome::Silent);
  EXPECT_EQ(result.cause, "no answer");
}

TEST_F(MBusReadout, SaysThatTheLineIsLost) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  Read(5);
  PullOut();
  const cMBusReadoutResult result = Read(5);
  EXPECT_EQ(result.outcome, eOutcome::LineLost);
  EXPECT_NE(result.cause, "");
  EXPECT_FALSE(m_link.initialised);
}

TEST_F(MBusReadout, EndsWhileItReads) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  auto readout = std::make_unique<cMBusReadout>(*m_master, m_link, cMBusAddress::Primary(5),
                                                [](const cMBusReadoutResult&) { ADD_FAILURE(); });
  readout->Start();
  EXPECT_TRUE(m_master->IsBusy());
  readout.reset();
  EXPECT_FALSE(m_master->IsBusy());
  Pass(10'000);
}

// ---- by secondary address

TEST_F(MBusReadout, SelectsReadsAndLetsGo) {
  AddMeter(eMeterKind::Heat, 5);
  AddMeter(eMeterKind::Gas, 5);
  Connect();
  cMBusAddress address;
  address.id = IdOf(1);
  for (int round = 0; round < 2; ++round) {
    const cMBusReadoutResult result = Read(address);
    EXPECT_EQ(result.outcome, eOutcome::Answered) << result.cause;
    EXPECT_THAT(m_requests, ElementsAre(kFree, Hex(MakeSelection(address)), kAskSelected, kFree));
    ASSERT_THAT(result.frames, SizeIs(1));
    EXPECT_EQ(result.frames[0],
              m_bus.GetSlave(1).GetMeter().Telegram(0, 5, static_cast<std::uint8_t>(round + 1), kNow));
    EXPECT_FALSE(m_bus.GetSlave(1).IsSelected());
  }
}

TEST_F(MBusReadout, SelectsByTheWholeAddress) {
  AddMeter(0x11111111, "TAV", 1, 7);
  AddMeter(0x11111111, "SIE", 1, 7);
  Connect();
  const cMBusReadoutResult both = Read({kSecondary, 0x11111111});
  EXPECT_NE(both.outcome, eOutcome::Answered);
  const cMBusReadoutResult one = Read({kSecondary, 0x11111111, ManufacturerCode("SIE"), 1, 7});
  EXPECT_EQ(one.outcome, eOutcome::Answered);
}

TEST_F(MBusReadout, SaysThatNobodyIsSelected) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  const cMBusReadoutResult result = Read({kSecondary, 0x00000001});
  EXPECT_EQ(result.outcome, eOutcome::Silent);
  EXPECT_EQ(result.cause, "the selection: no answer");
}

// ---- what is learned

TEST(MBusLink, WaitsForWhatTheLineAllowsUntilItHasLearned) {
  cMBusLink link;
  EXPECT_EQ(link.WaitMs(188), 188u);
  link.Learn(20);
  EXPECT_EQ(link.WaitMs(188), cMBusLink::kLeastWaitMs);  // 20 and four times 10
  EXPECT_EQ(link.WaitMs(50), 50u);
  link.Learn(160);
  EXPECT_GT(link.WaitMs(1000), 160u);
  for (int i = 0; i < 100; ++i) link.Learn(150);
  EXPECT_NEAR(link.answerMs, 150, 0.1);
  EXPECT_NEAR(link.WaitMs(1000), 151, 1);
  link.Learn(1'000'000'000'000);
  EXPECT_EQ(link.WaitMs(1000), 1000u);
}

TEST(MBusLink, LearnsOfAnInstantAnswer) {
  cMBusLink link;
  for (int i = 0; i < 10; ++i) link.Learn(0);
  EXPECT_EQ(link.WaitMs(188), cMBusLink::kLeastWaitMs);
}

// ---- what the test's own meter answers

class MBusReadoutAlone : public MBusReadout {
 protected:
  cMBusReadoutResult ReadAnswers(const cMBusAddress& address, const std::vector<std::string>& answers) {
    if (!m_meter) {
      m_meter = std::make_unique<cPseudoLine>(m_settings.input.path);
      m_settings.retries = 0;
      m_master = std::make_unique<cMBusMaster>(&m_host, m_settings);
    }
    m_link = {};
    m_result.reset();
    cMBusReadout readout(*m_master, m_link, address, [this](const cMBusReadoutResult& result) { m_result = result; });
    readout.Start();
    std::size_t next = 0;
    std::string asked;
    EXPECT_TRUE(PollUntil(m_host, [&] {
      m_host.Poll(0);
      asked += m_meter->Read();
      if (asked.empty())
        m_clock->Advance(1);
      else if (next != answers.size())
        m_meter->Write(FromHex(answers[next++]));
      asked.clear();
      return m_result.has_value();
    }));
    return m_result.value_or(cMBusReadoutResult());
  }

  std::unique_ptr<cPseudoLine> m_meter;
};

std::string Answering(std::uint8_t address, std::uint8_t information, const std::string& data) {
  return Hex(MakeLongFrame(eRspUd, address, information, View(data)));
}

TEST_F(MBusReadoutAlone, SaysWhatIsWrongWithATelegram) {
  const cMBusAddress five = cMBusAddress::Primary(5);
  const struct {
    std::string answer;
    eOutcome outcome;
    const char* cause;
    std::size_t frames;
  } kCases[] = {
      {Answering(5, 0x78, FromHex("0C1378563412")), eOutcome::Answered, "", 1},
      {Answering(5, 0x72, "short"), eOutcome::Damaged, "byte 12: the header ends too early", 1},
      {Answering(5, 0x70, "\x08"), eOutcome::Damaged, "the meter reports an error: application too busy for a readout",
       1},
      {Answering(5, 0x70, ""), eOutcome::Damaged, "the meter reports an error: unspecified error", 1},
      {Answering(5, 0x33, ""), eOutcome::Damaged, "byte 6: a control information that no meter answers with (33)", 1},
      {Answering(7, 0x78, FromHex("0C1378563412")), eOutcome::Collision, "address 7 has answered", 0},
      {"E5", eOutcome::Damaged, "the meter has no data: it answers without any", 0},
  };
  for (const auto& c : kCases) {
    const cMBusReadoutResult result = ReadAnswers(five, {"E5", c.answer});
    EXPECT_EQ(result.outcome, c.outcome) << c.answer;
    EXPECT_EQ(result.cause, c.cause);
    EXPECT_THAT(result.frames, SizeIs(c.frames)) << c.answer;
  }
}

TEST_F(MBusReadoutAlone, TakesWhoeverAnswersForTheAddressOfAll) {
  const std::string telegram = Answering(7, 0x78, FromHex("0C1378563412"));
  EXPECT_EQ(ReadAnswers(cMBusAddress::Primary(kBroadcastReply), {"E5", telegram}).outcome, eOutcome::Answered);
}

TEST_F(MBusReadoutAlone, NamesWhoAnswersInPlaceOfTheSelected) {
  cMBusWriter to;
  to.Bcd({0x13}, 1, 8);
  cMBusHeader header;
  header.id = 0x22222222;
  header.manufacturer = ManufacturerCode("TAV");
  header.version = 1;
  header.medium = 7;
  const cMBusReadoutResult result =
      ReadAnswers({kSecondary, 0x11111111}, {"E5", "E5", Hex(to.Telegram(3, header)), "E5"});
  EXPECT_EQ(result.outcome, eOutcome::Collision);
  EXPECT_EQ(result.cause,
            "the meter 22222222"
            "5036"
            "0107 has answered");
  EXPECT_THAT(result.frames, IsEmpty());
}

TEST_F(MBusReadoutAlone, StopsAMeterThatNeverEnds) {
  std::vector<std::string> answers = {"E5"};
  for (int i = 0; i < 70; ++i) answers.push_back(Answering(5, 0x78, "\x1F"));
  const cMBusReadoutResult result = ReadAnswers(cMBusAddress::Primary(5), answers);
  EXPECT_EQ(result.outcome, eOutcome::Damaged);
  EXPECT_EQ(result.cause, "the meter has more than 64 telegrams");
  EXPECT_THAT(result.frames, SizeIs(cMBusReadout::kMostTelegrams));
}

}  // namespace
}  // namespace tav::mbus
