// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_master.h>

#include <gateway/driver/mbus/master/mbus_timing.h>

#include <tests/driver/input/pseudo_line.h>
#include <tests/driver/input/tcp_listener.h>

#include <tests/driver/mbus/mbus_world.h>

namespace tav::mbus {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

// What became of an exchange, with the answer's bytes.
struct cHeard {
  eOutcome outcome = eOutcome::LineLost;
  std::string bytes;
  std::string cause;
  unsigned int attempts = 0;
  std::int64_t answerMs = 0;
};

cHeard Keep(const cMBusAnswer& answer) {
  return {answer.outcome,
          {answer.frame.bytes.begin(), answer.frame.bytes.end()},
          answer.cause,
          answer.attempts,
          answer.answerMs};
}

class MBusMaster : public MBusWorld {
 protected:
  cHeard Ask(const std::string& bytes, eExpected expected) {
    cMBusRequest request;
    request.bytes = bytes;
    request.expected = expected;
    return Ask(request);
  }
  cHeard Ask(const cMBusRequest& request) {
    Begin(request);
    EXPECT_TRUE(Await([this] { return m_heard.has_value(); }));
    EXPECT_FALSE(m_master->IsBusy());
    return m_heard.value_or(cHeard());
  }
  void Begin(const cMBusRequest& request) {
    m_heard.reset();
    m_master->Exchange(request, [this](const cMBusAnswer& answer) { m_heard = Keep(answer); });
    EXPECT_FALSE(m_heard.has_value());
  }
  cHeard AskData(std::uint8_t primary) { return Ask(MakeReadoutRequest(primary, true), eExpected::Data); }

  std::optional<cHeard> m_heard;
};

TEST_F(MBusMaster, HasTheUsualLineUnlessToldOtherwise) {
  const cMBusLineSettings settings;
  EXPECT_EQ(settings.input.baud, 2400u);
  EXPECT_EQ(settings.input.framing, "8E1");
}

TEST_F(MBusMaster, HandsOverTheAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  const cHeard ack = Ask(MakeInitialise(5), eExpected::Ack);
  EXPECT_EQ(ack.outcome, eOutcome::Answered);
  EXPECT_EQ(Hex(ack.bytes), "E5");
  EXPECT_EQ(ack.attempts, 1u);
  EXPECT_EQ(ack.cause, "");
  const cHeard data = AskData(5);
  EXPECT_EQ(data.outcome, eOutcome::Answered);
  EXPECT_EQ(data.bytes, m_bus.GetSlave(0).GetMeter().Telegram(0, 5, 1, kNow));
  EXPECT_THAT(m_requests, ElementsAre("10 40 05 45 16", "10 7B 05 80 16"));
}

TEST_F(MBusMaster, IsSilentAfterEveryRepetition) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  for (const unsigned int retries : {0u, 1u, 4u}) {
    m_requests.clear();
    cMBusRequest request;
    request.bytes = MakeInitialise(6);
    request.retries = retries;
    const cHeard heard = Ask(request);
    EXPECT_EQ(heard.outcome, eOutcome::Silent);
    EXPECT_EQ(heard.cause, "no answer");
    EXPECT_EQ(heard.attempts, retries + 1);
    EXPECT_THAT(m_requests, SizeIs(retries + 1));
  }
  m_requests.clear();
  EXPECT_EQ(Ask(MakeInitialise(6), eExpected::Ack).attempts, 3u);  // the line's own
}

TEST_F(MBusMaster, RepeatsUntilThereIsAGoodAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  for (const eBusFault fault :
       {eBusFault::Noise, eBusFault::Truncation, eBusFault::Collision, eBusFault::Silence, eBusFault::Checksum}) {
    m_bus.Inject(fault, 2);
    const cHeard heard = AskData(5);
    EXPECT_EQ(heard.outcome, eOutcome::Answered) << static_cast<int>(fault);
    EXPECT_EQ(heard.attempts, 3u) << static_cast<int>(fault);
    EXPECT_EQ(heard.cause, "");
  }
}

TEST_F(MBusMaster, SaysWhatIsWrongWithAnAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  const struct {
    eBusFault fault;
    eOutcome outcome;
    const char* cause;
  } kCases[] = {
      {eBusFault::Checksum, eOutcome::Damaged, "the checksum is wrong"},
      {eBusFault::Truncation, eOutcome::Damaged, "the frame ends too early"},
      {eBusFault::Collision, eOutcome::Collision, "byte 0: no frame starts with this byte (28)"},
      {eBusFault::Silence, eOutcome::Silent, "no answer"},
  };
  for (const auto& c : kCases) {
    m_bus.Inject(c.fault, 3);
    const cHeard heard = AskData(5);
    EXPECT_EQ(heard.outcome, c.outcome) << c.cause;
    EXPECT_THAT(heard.cause, HasSubstr(c.cause));
    EXPECT_EQ(heard.bytes, "");
    EXPECT_EQ(heard.attempts, 3u);
  }
}

TEST_F(MBusMaster, TellsOfTheWorstThatHappened) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  m_bus.Inject(eBusFault::Collision, 1);  // comes before silence
  m_bus.Inject(eBusFault::Silence, 2);
  const cHeard heard = AskData(5);
  EXPECT_EQ(heard.outcome, eOutcome::Collision);
  EXPECT_THAT(heard.cause, HasSubstr("no frame"));
}

TEST_F(MBusMaster, KnowsACollisionOfSeveralMeters) {
  AddMeter(eMeterKind::Heat, 5);
  AddMeter(eMeterKind::Gas, 5);
  Connect();
  EXPECT_EQ(Ask(MakeInitialise(5), eExpected::Ack).outcome, eOutcome::Answered);  // the same of both
  EXPECT_NE(AskData(5).outcome, eOutcome::Answered);
}

TEST_F(MBusMaster, RepeatsACollisionUnlessItIsExpected) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  m_bus.Inject(eBusFault::Collision, 1);
  cMBusRequest request;
  request.bytes = MakeReadoutRequest(5, true);
  request.expected = eExpected::Data;
  request.repeatsCollision = false;
  const cHeard heard = Ask(request);
  EXPECT_EQ(heard.outcome, eOutcome::Collision);
  EXPECT_EQ(heard.attempts, 1u);
}

TEST_F(MBusMaster, AsksWithoutWaitingForAnAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  const std::int64_t begin = m_clock->Now();
  EXPECT_EQ(Ask(MakeInitialise(kBroadcast), eExpected::Nothing).outcome, eOutcome::Answered);
  EXPECT_LE(m_clock->Now() - begin, 35);  // the idle line and five bytes
  EXPECT_THAT(m_requests, SizeIs(1));
}

TEST_F(MBusMaster, ForgetsWhatIsAbandonedAndItsLateAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  AddMeter(eMeterKind::Gas, 6);
  Connect();
  cMBusRequest request;
  request.bytes = MakeReadoutRequest(5, true);
  request.expected = eExpected::Data;
  Begin(request);
  ASSERT_TRUE(Await([this] { return !m_requests.empty(); }));
  m_master->Abandon();
  EXPECT_FALSE(m_master->IsBusy());
  const cHeard heard = AskData(6);
  EXPECT_EQ(heard.outcome, eOutcome::Answered);
  EXPECT_EQ(heard.bytes, m_bus.GetSlave(1).GetMeter().Telegram(0, 6, 1, kNow));
}

TEST_F(MBusMaster, EndsWhileItAsks) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  cMBusRequest request;
  request.bytes = MakeReadoutRequest(5, true);
  Begin(request);
  m_master.reset();
  Pass(10'000);
  EXPECT_FALSE(m_heard.has_value());
}

TEST_F(MBusMaster, ShowsEveryFrame) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  std::vector<std::string> traced;
  m_master->onBytes = [&](bool sent, cBytes bytes) {
    Count(sent, bytes.size());
    traced.push_back((sent ? "> " : "< ") + Hex({bytes.begin(), bytes.end()}));
  };
  Ask(MakeInitialise(5), eExpected::Ack);
  EXPECT_THAT(traced, ElementsAre("> 10 40 05 45 16", "< E5"));
}

// ---- time

TEST_F(MBusMaster, WaitsAsLongAsTheStandardAllows) {
  const struct {
    unsigned int baud, sendMs, longestMs;
  } kCases[] = {{300, 184, 1150}, {2400, 23, 188}, {9600, 6, 85}, {38400, 2, 59}};
  for (const auto& c : kCases) {
    m_settings.input.baud = c.baud;
    Connect();
    EXPECT_EQ(m_master->LongestAnswerMs(), c.longestMs);
    Pass(1000);  // the line is idle
    cMBusRequest request;
    request.bytes = MakeInitialise(5);
    request.retries = 0;
    Begin(request);
    ASSERT_TRUE(Await([this] { return !m_requests.empty(); }));
    const std::int64_t sent = m_clock->Now();
    ASSERT_TRUE(Await([this] { return m_heard.has_value(); }));
    EXPECT_EQ(m_clock->Now() - sent, c.sendMs + c.longestMs) << c.baud;
    m_requests.clear();
    m_master.reset();
  }
}

TEST_F(MBusMaster, WaitsAsLongAsItIsTold) {
  m_settings.longestAnswerMs = 700;
  Connect();
  EXPECT_EQ(m_master->LongestAnswerMs(), 700u);
  for (const unsigned int answerMs : {0u, 333u}) {
    cMBusRequest request;
    request.bytes = MakeInitialise(5);
    request.retries = 0;
    request.answerMs = answerMs;
    m_requests.clear();
    Begin(request);
    ASSERT_TRUE(Await([this] { return !m_requests.empty(); }));
    const std::int64_t sent = m_clock->Now();
    ASSERT_TRUE(Await([this] { return m_heard.has_value(); }));
    EXPECT_EQ(m_clock->Now() - sent, 23 + (answerMs != 0 ? answerMs : 700));
  }
}

TEST_F(MBusMaster, MeasuresTheTimeToTheAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  m_options.instant = false;
  Connect();
  const cHeard heard = AskData(5);
  EXPECT_EQ(heard.outcome, eOutcome::Answered);
  EXPECT_EQ(heard.answerMs, cMBusBus::kAnswerMs + cSimulatedBus::kPieceMs);  // its first bytes come in one piece
}

TEST_F(MBusMaster, ReadsEveryRateThatItsMeterHas) {
  AddMeter(eMeterKind::Electricity, 5);
  m_options.instant = false;
  Connect();
  for (const unsigned int baud : kBauds) {
    EXPECT_EQ(Ask(MakeSetBaud(5, baud), eExpected::Ack).outcome, eOutcome::Answered) << baud;
    const bool isHeard = baud == m_master->GetSettings().input.baud;
    EXPECT_EQ(AskData(5).outcome, isHeard ? eOutcome::Answered : eOutcome::Silent) << baud;
    m_master->SetBaud(baud);
    m_tickMs = baud < 2400 ? 5 : 1;
    EXPECT_EQ(AskData(5).outcome, eOutcome::Answered) << baud;
  }
}

TEST_F(MBusMaster, LetsALateAnswerCountForNothing) {
  AddMeter(eMeterKind::Heat, 5);
  AddMeter(eMeterKind::Gas, 6);
  m_settings.retries = 0;
  Connect();
  m_bus.Inject(eBusFault::Slow, 1, 0);
  EXPECT_EQ(AskData(5).outcome, eOutcome::Silent);
  m_clock->Advance(cMBusBus::kSlowMs);  // it comes now, and nobody has read it yet
  const cHeard heard = AskData(6);
  EXPECT_EQ(heard.outcome, eOutcome::Answered);
  EXPECT_EQ(heard.bytes, m_bus.GetSlave(1).GetMeter().Telegram(0, 6, 1, kNow));
}

// ---- echo

TEST_F(MBusMaster, TakesTheEchoAway) {
  AddMeter(eMeterKind::Heat, 5);
  m_options.echo = m_settings.echo = true;
  Connect();
  EXPECT_EQ(Ask(MakeInitialise(5), eExpected::Ack).outcome, eOutcome::Answered);
  EXPECT_EQ(AskData(5).bytes, m_bus.GetSlave(0).GetMeter().Telegram(0, 5, 1, kNow));
  EXPECT_EQ(Ask(MakeSelection({}), eExpected::Ack).outcome, eOutcome::Answered);
  const cHeard silent = AskData(6);
  EXPECT_EQ(silent.outcome, eOutcome::Silent);
  EXPECT_EQ(silent.cause, "no answer");
}

TEST_F(MBusMaster, SaysThatTheEchoIsMissing) {
  m_settings.echo = true;
  Connect();
  EXPECT_EQ(AskData(6).cause, "no answer, nor the echo of the request");
}

TEST_F(MBusMaster, SaysThatTheEchoIsNotWhatWasSent) {
  AddMeter(eMeterKind::Heat, 5);
  m_settings.echo = true;  // and there is none: the answer stands in its place
  Connect();
  const cHeard heard = Ask(MakeInitialise(5), eExpected::Ack);
  EXPECT_EQ(heard.outcome, eOutcome::Damaged);
  EXPECT_EQ(heard.cause, "byte 0: the echo is not what was sent, by a collision or noise (E5)");
}

TEST_F(MBusMaster, TakesNoRequestForItsAnswer) {
  AddMeter(eMeterKind::Heat, 5);
  m_options.echo = true;
  Connect();
  const cCapturedTrace trace;
  EXPECT_EQ(Hex(Ask(MakeInitialise(5), eExpected::Ack).bytes), "E5");
  EXPECT_EQ(AskData(5).bytes, m_bus.GetSlave(0).GetMeter().Telegram(0, 5, 1, kNow));
  EXPECT_EQ(Hex(Ask(MakeSelection({}), eExpected::Ack).bytes), "E5");
  EXPECT_EQ(AskData(6).outcome, eOutcome::Silent);
  EXPECT_THAT(trace.GetLines(), ElementsAre(HasSubstr("gives back what is sent; set echo")));
}

// ---- the line

TEST_F(MBusMaster, SaysThatTheLineIsLostAndComesBack) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  EXPECT_EQ(AskData(5).outcome, eOutcome::Answered);
  PullOut();
  ASSERT_TRUE(Await([this] { return m_told.size() == 2; }));
  EXPECT_FALSE(m_master->IsOpen());
  EXPECT_THAT(m_told, ElementsAre("open", HasSubstr("lost: ")));
  const cHeard lost = AskData(5);
  EXPECT_EQ(lost.outcome, eOutcome::LineLost);
  EXPECT_EQ("lost: " + lost.cause, m_told[1]);
  PlugIn();
  ASSERT_TRUE(Await([this] { return m_master->IsOpen(); }));
  EXPECT_EQ(AskData(5).outcome, eOutcome::Answered);
  EXPECT_EQ(m_told.back(), "open");
}

TEST_F(MBusMaster, LosesTheLineWhileItWaits) {
  Connect();
  cMBusRequest request;
  request.bytes = MakeInitialise(5);
  Begin(request);
  ASSERT_TRUE(Await([this] { return !m_requests.empty(); }));
  PullOut();
  ASSERT_TRUE(Await([this] { return m_heard.has_value(); }));
  EXPECT_EQ(m_heard->outcome, eOutcome::LineLost);
  EXPECT_EQ(m_heard->attempts, 1u);
}

TEST_F(MBusMaster, SaysWhyTheLineCannotBeOpened) {
  MakeMaster();
  const cHeard heard = AskData(5);
  EXPECT_EQ(heard.outcome, eOutcome::LineLost);
  EXPECT_THAT(heard.cause, HasSubstr("cannot open " + m_settings.input.path));
}

TEST_F(MBusMaster, SharesItsLineWithNobody) {
  AddMeter(eMeterKind::Heat, 5);
  Connect();
  auto first = std::move(m_master);
  MakeMaster();
  EXPECT_EQ(AskData(5).cause, m_settings.input.path + " is in use by another process");
  first.reset();
  ASSERT_TRUE(Await([this] { return m_master->IsOpen(); }));
  EXPECT_EQ(AskData(5).outcome, eOutcome::Answered);
}

TEST_F(MBusMaster, CannotAskAFile) {
  m_settings.input.kind = eInputKind::File;
  m_settings.input.path = "/dev/null";
  MakeMaster();
  const cHeard heard = AskData(5);
  EXPECT_EQ(heard.outcome, eOutcome::LineLost);
  EXPECT_EQ(heard.cause, "/dev/null cannot be asked");
}

// ---- what else comes: the test plays the meter

class MBusMasterAlone : public MBusMaster {
 protected:
  void Play() {
    m_meter = std::make_unique<cPseudoLine>(m_settings.input.path);
    MakeMaster();
    ASSERT_TRUE(Await([this] { return m_master->IsOpen(); }));
  }
  // The pieces with so many milliseconds between them.
  cHeard Answer(const std::vector<std::string>& pieces, eExpected expected, std::int64_t pauseMs) {
    cMBusRequest request;
    request.bytes = expected == eExpected::Ack ? MakeInitialise(5) : MakeReadoutRequest(5, true);
    request.expected = expected;
    request.retries = 0;
    Begin(request);
    EXPECT_TRUE(PollUntil(m_host, [this] {
      m_clock->Advance(1);
      return !m_meter->Read().empty();
    }));
    std::uint64_t written = m_heardBytes;
    for (const std::string& piece : pieces) {
      EXPECT_TRUE(m_meter->Write(FromHex(piece)));
      written += FromHex(piece).size();
      EXPECT_TRUE(PollUntil(m_host, [&] { return m_heardBytes == written; }));
      Pass(pauseMs);
    }
    EXPECT_TRUE(Await([this] { return m_heard.has_value(); }));
    return m_heard.value_or(cHeard());
  }

  static inline const std::string kGood = "68 03 03 68 08 05 78 85 16";
  std::unique_ptr<cPseudoLine> m_meter;
};

TEST_F(MBusMasterAlone, JudgesWhatComes) {
  Play();
  const struct {
    eExpected expected;
    std::vector<std::string> pieces;
    eOutcome outcome;
    const char* cause;
  } kCases[] = {
      {eExpected::Ack, {"E5"}, eOutcome::Answered, ""},
      {eExpected::Ack, {"E5 E5"}, eOutcome::Collision, "1 byte behind the first answer"},
      {eExpected::Ack, {"E4"}, eOutcome::Collision, "byte 0: no frame starts with this byte (E4)"},
      {eExpected::Ack, {"A5 E5"}, eOutcome::Collision, "byte 0: no frame starts with this byte (A5)"},
      {eExpected::Ack, {kGood}, eOutcome::Damaged, "an answer that was not asked for"},
      {eExpected::Ack, {kGood, "E5"}, eOutcome::Answered, ""},
      {eExpected::Data, {kGood}, eOutcome::Answered, ""},
      {eExpected::Data, {"68 03", "03 68 08", "05 78 85", "16"}, eOutcome::Answered, ""},
      {eExpected::Data, {"FF 68", kGood}, eOutcome::Answered, ""},  // noise before it
      {eExpected::Data, {"E5"}, eOutcome::Answered, ""},
      {eExpected::Data, {kGood + kGood}, eOutcome::Collision, "9 bytes behind the first answer"},
      {eExpected::Data, {"68 03 03 68 08 05 78 86 16"}, eOutcome::Damaged, "byte 7: the checksum is wrong (86)"},
      {eExpected::Data, {"68 03 03 68 08 05 78 85 17"}, eOutcome::Damaged, "byte 8: the frame has no stop byte (17)"},
      {eExpected::Data, {"00 68 03 03 68 08"}, eOutcome::Damaged, "byte 6: the frame ends too early"},
      {eExpected::Data, {"68 04 03 68 08 05 E5 85 16"}, eOutcome::Collision, "byte 2: the two lengths differ (03)"},
      {eExpected::Data, {"10 5B 07 62 16"}, eOutcome::Damaged, "a request that was not sent from here"},
      {eExpected::Data, {"10 5B 07 62 16", kGood}, eOutcome::Answered, ""},
  };
  for (const auto& c : kCases) {
    const cHeard heard = Answer(c.pieces, c.expected, 3);
    EXPECT_EQ(heard.outcome, c.outcome) << c.pieces[0] << ": " << heard.cause;
    EXPECT_EQ(heard.cause, c.cause) << c.pieces[0];
  }
}

TEST_F(MBusMasterAlone, EndsAPartialAnswerAtAGap) {
  Play();
  EXPECT_EQ(Answer({"68 03 03 68", "08 05 78 85 16"}, eExpected::Data, 137).outcome, eOutcome::Answered);
  EXPECT_EQ(Answer({"68 03 03 68", "08 05 78 85 16"}, eExpected::Data, 138).outcome, eOutcome::Damaged);
  // The rest belongs to nobody, and is waited for before the next request.
  EXPECT_EQ(Answer({"E5"}, eExpected::Ack, 3).outcome, eOutcome::Answered);
}

TEST_F(MBusMasterAlone, StopsListeningToNoiseWithoutEnd) {
  Play();
  cMBusRequest request;
  request.bytes = MakeReadoutRequest(5, true);
  request.expected = eExpected::Data;
  request.retries = 1;
  Begin(request);
  EXPECT_TRUE(Await([this] {
    EXPECT_TRUE(m_meter->Write(std::string(100, '\x55')));
    m_meter->Read();
    return m_heard.has_value();
  }));
  EXPECT_EQ(m_heard->outcome, eOutcome::Damaged);
  EXPECT_EQ(m_heard->cause, "the line does not fall silent");
}

// ---- behind a network

class MBusMasterOverTcp : public MBusMaster {
 protected:
  void Connect() {
    m_settings.input.kind = eInputKind::Tcp;
    m_settings.input.host = "127.0.0.1";
    m_settings.input.port = std::to_string(m_converter.GetPort());
    MakeMaster();
    ASSERT_TRUE(Await([this] { return m_master->IsOpen() && m_converter.Accept(); }));
  }
  // Waits until the converter has the request, then answers in pieces.
  cHeard Answer(const std::string& request, eExpected expected, const std::vector<std::string>& pieces,
                std::int64_t pauseMs) {
    Begin({request, expected});
    std::string asked;
    EXPECT_TRUE(PollUntil(m_host, [&] {
      if ((asked += m_converter.Read()) != request) m_clock->Advance(1);
      return asked == request;
    }));
    std::uint64_t written = m_heardBytes;
    for (const std::string& piece : pieces) {
      Pass(pauseMs);
      EXPECT_TRUE(m_converter.Write(FromHex(piece)));
      written += FromHex(piece).size();
      EXPECT_TRUE(PollUntil(m_host, [&] { return m_heardBytes == written; }));
    }
    EXPECT_TRUE(Await([this] { return m_heard.has_value(); }));
    return m_heard.value_or(cHeard());
  }

  cTcpListener m_converter;
};

TEST_F(MBusMasterOverTcp, IsPatientWithTheNetwork) {
  Connect();
  EXPECT_EQ(m_master->LongestAnswerMs(), 188 + cMBusTiming::kNetworkMs);
  EXPECT_EQ(Answer(MakeInitialise(5), eExpected::Ack, {"E5"}, 1600).outcome, eOutcome::Answered);
  const cHeard data =
      Answer(MakeReadoutRequest(5, true), eExpected::Data, {"68", "03 03 68 08 05", "78 85", "16"}, 400);
  EXPECT_EQ(data.outcome, eOutcome::Answered) << data.cause;
  EXPECT_EQ(data.answerMs, 400);
}

TEST_F(MBusMasterOverTcp, LosesItsConverterAndFindsItAgain) {
  Connect();
  EXPECT_EQ(Answer(MakeInitialise(5), eExpected::Ack, {"E5"}, 10).outcome, eOutcome::Answered);
  Begin({MakeInitialise(5)});
  m_converter.HangUp();
  ASSERT_TRUE(Await([this] { return m_heard.has_value(); }));
  EXPECT_EQ(m_heard->outcome, eOutcome::LineLost);
  EXPECT_EQ(m_heard->cause, m_settings.input.ToString() + " ended");
  ASSERT_TRUE(Await([this] { return m_master->IsOpen() && m_converter.Accept(); }));
  EXPECT_EQ(Answer(MakeInitialise(5), eExpected::Ack, {"E5"}, 10).outcome, eOutcome::Answered);
}

}  // namespace
}  // namespace tav::mbus
