// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/delivery.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>

namespace tav {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using vorn::cMsg;

constexpr unsigned int kNoon = 1'700'000'000;

// A delivery and the service that it stores to, on one loop. Readings are told apart by a number.
class Delivery : public testing::Test {
 protected:
  void SetUp() override {
    m_delivery = std::make_unique<cDelivery>(&m_service, "test-driver", [this] { ++m_progress; });
  }
  void TearDown() override {
    m_delivery.reset();
    m_server.reset();
  }

  void Serve() {
    m_server = std::make_unique<cRecordingServer>(&m_service, "data");
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_server->onMessage = [this](const cMsg& msg) {
      if (msg.GetType() == db_ctrl::eRegisterDriver)
        Answer(msg, db_ctrl::eDriverRegistered);
      else
        m_arrived.push_back(msg);
    };
    m_delivery->HealthRequest();
    ASSERT_TRUE(Await([this] { return !m_server->messages.empty(); }));
    PollUntilIdle(m_service);
  }
  // The service dies, and with it what it has not answered.
  void Die() {
    m_server.reset();
    m_arrived.clear();
    ASSERT_TRUE(Await([this] { return !m_delivery->IsConnected(); }));
  }
  bool Await(const std::function<bool()>& holds) { return PollUntil(m_service, holds); }

  void Deliver(unsigned int first, unsigned int last) {
    for (unsigned int number = first; number <= last; ++number) Deliver(number);
  }
  void Deliver(unsigned int number) {
    cMeterRecord reading("test-driver", "EMH", "E", "meter", "addr", "", kNoon + number, cMeterTav::eTsRtc, number);
    reading.AddMeasurementEntry(cMeasurementEntry("1-0:1.8.0", std::to_string(number), "Wh", kNoon, cMeterTav::eTsRtc));
    m_delivery->Deliver(reading);
    PollUntilIdle(m_service);
  }
  void Report(const std::string& text) {
    vorn::cRecord event;
    event.AppendTextPar("event", text);
    m_delivery->Report(event);
    PollUntilIdle(m_service);
  }

  // What the service got and has not answered: numbers of readings and texts of events.
  std::vector<std::string> Arrived() const {
    std::vector<std::string> all;
    for (const cMsg& msg : m_arrived) all.push_back(Text(msg));
    return all;
  }
  static std::string Text(const cMsg& msg) {
    if (msg.GetType() == db_ctrl::eStoreEvent) return msg.Record().GetTextPar("event");
    vorn::cRecord form;
    cMeterRecord reading;
    msg.Record().GetPar("meter-record").GetRecord(form);
    return reading.FromRecord(form) ? std::to_string(reading.GetTimestamp() - kNoon) : reading.GetError();
  }
  // Answers the oldest, and lets the answer take its effect; its text.
  std::string Acknowledge() { return AnswerNext(1); }
  std::string Refuse() { return AnswerNext(2); }
  std::vector<std::string> AcknowledgeAll() {
    std::vector<std::string> all;
    while (!m_arrived.empty()) all.push_back(Acknowledge());
    return all;
  }
  std::string AnswerNext(unsigned int offset) {
    const cMsg msg = m_arrived.front();
    m_arrived.pop_front();
    Answer(msg, msg.GetType() + offset);
    PollUntilIdle(m_service);
    return Text(msg);
  }
  static void Answer(const cMsg& request, unsigned int type) {
    cMsg answer(type);
    answer.SetId(request.GetId());
    if (type == request.GetType() + 2) answer.Record().AppendTextPar("reason", "no room");
    EXPECT_EQ(request.GetReplyChannel()->Send(answer), 1);
  }

  static std::vector<std::string> Numbers(unsigned int first, unsigned int last) {
    std::vector<std::string> all;
    for (unsigned int number = first; number <= last; ++number) all.push_back(std::to_string(number));
    return all;
  }
  // "readings acknowledged refused dropped unconfirmed open", and that none is missing in between.
  std::string Account() const {
    const cDeliveryCounts& counts = m_delivery->GetCounts();
    std::string text;
    for (const std::uint64_t count : {counts.readings, counts.acknowledged, counts.refused, counts.dropped,
                                      counts.unconfirmed, std::uint64_t{m_delivery->GetOpen()}})
      text += (text.empty() ? "" : " ") + std::to_string(count);
    return text;
  }

  cTempFolder m_folder;
  cRecordingService m_service{"test", m_folder.GetPath()};
  std::unique_ptr<cDelivery> m_delivery;
  std::unique_ptr<cRecordingServer> m_server;
  std::deque<cMsg> m_arrived;
  int m_progress = 0;
  cCapturedTrace m_trace;
};

TEST_F(Delivery, CountsAReadingAsAcknowledgedWhenTheServiceSaysSo) {
  Serve();
  Deliver(1);
  EXPECT_THAT(Arrived(), ElementsAre("1"));
  EXPECT_EQ(Account(), "1 0 0 0 0 1");
  Acknowledge();
  EXPECT_EQ(Account(), "1 1 0 0 0 0");
}

TEST_F(Delivery, GivesEachReadingAnIdentifierOfItsOwn) {
  Serve();
  Deliver(1, 2);
  EXPECT_TRUE(m_arrived[0].GetId().IsValid());
  EXPECT_FALSE(m_arrived[0].GetId() == m_arrived[1].GetId());
}

TEST_F(Delivery, HoldsReadingsUntilTheServiceComesAndKeepsTheirOrder) {
  Deliver(1, 5);
  EXPECT_EQ(Account(), "5 0 0 0 0 5");
  Serve();
  EXPECT_THAT(Arrived(), ElementsAre("1"));
  EXPECT_EQ(AcknowledgeAll(), Numbers(1, 5));
  EXPECT_EQ(Account(), "5 5 0 0 0 0");
}

TEST_F(Delivery, CountsARefusedReadingAndSendsTheNext) {
  Deliver(1, 3);
  Serve();
  EXPECT_EQ(Refuse(), "1");
  EXPECT_THAT(Arrived(), ElementsAre("2"));
  EXPECT_EQ(AcknowledgeAll(), Numbers(2, 3));
  EXPECT_EQ(Account(), "3 2 1 0 0 0");
  EXPECT_THAT(m_trace.GetLines(), testing::Contains(HasSubstr("store meter-rec failed (no room)")));
}

TEST_F(Delivery, ARefusalOfTheLastReadingSendsNothing) {
  Serve();
  Deliver(1);
  Refuse();
  EXPECT_THAT(Arrived(), IsEmpty());
  EXPECT_EQ(Account(), "1 0 1 0 0 0");
}

TEST_F(Delivery, DropsTheOldestReadingOfAFullQueueAndCountsIt) {
  Deliver(1, 50);
  EXPECT_EQ(Account(), "50 0 0 0 0 50");
  Deliver(51);
  EXPECT_EQ(Account(), "51 0 0 1 0 50");
  Deliver(52);
  Serve();
  EXPECT_EQ(AcknowledgeAll(), Numbers(3, 52));
  EXPECT_EQ(Account(), "52 50 0 2 0 0");
}

TEST_F(Delivery, PutsWhatTheServiceDidNotAcknowledgeBackInFrontOfTheQueue) {
  Serve();
  Deliver(1, 5);
  Acknowledge();
  Acknowledge();
  Die();
  EXPECT_EQ(Account(), "5 2 0 0 3 3");
  EXPECT_THAT(m_trace.GetLines(), testing::Contains("UnitDriver 4 3 readings handed over and not acknowledged when the "
                                                    "channel broke; they are handed over again"));
  Deliver(6, 7);
  Serve();
  EXPECT_EQ(AcknowledgeAll(), Numbers(3, 7));
  EXPECT_EQ(Account(), "7 7 0 0 3 0");
}

TEST_F(Delivery, HandsAReadingOverAgainUnderTheSameIdentifier) {
  Serve();
  Deliver(1);
  const cMsg first = m_arrived.front();
  Die();
  Serve();
  ASSERT_THAT(Arrived(), ElementsAre("1"));
  EXPECT_EQ(m_arrived.front().GetId(), first.GetId());
  EXPECT_EQ(m_arrived.front().Record(), first.Record());
}

TEST_F(Delivery, CountsAReadingAsOftenAsAChannelBreaksUnderIt) {
  for (int i = 0; i < 3; ++i) {
    Serve();
    if (i == 0) Deliver(1);
    Die();
  }
  Serve();
  AcknowledgeAll();
  EXPECT_EQ(Account(), "1 1 0 0 3 0");
}

TEST_F(Delivery, SaysNothingWhenAChannelBreaksWithNothingUnderWay) {
  Serve();
  Deliver(1);
  Acknowledge();
  Die();
  EXPECT_EQ(Account(), "1 1 0 0 0 0");
  EXPECT_THAT(m_trace.GetLines(), testing::Not(testing::Contains(HasSubstr("handed over"))));
}

TEST_F(Delivery, DropsTheOldestWhenWhatComesBackOverfillsTheQueue) {
  Serve();
  Deliver(1, 30);
  Die();
  Deliver(31, 60);  // the queue holds 50
  EXPECT_EQ(Account(), "60 0 0 10 30 50");
  Serve();
  EXPECT_EQ(AcknowledgeAll(), Numbers(11, 60));
}

TEST_F(Delivery, DropsTheOldestOfMoreUnderWayThanTheQueueHolds) {
  Serve();
  Deliver(1, 60);
  EXPECT_EQ(Arrived().size(), 60u);
  Die();
  EXPECT_EQ(Account(), "60 0 0 10 60 50");
  Serve();
  EXPECT_EQ(AcknowledgeAll(), Numbers(11, 60));
  EXPECT_EQ(Account(), "60 50 0 10 60 0");
}

TEST_F(Delivery, TakesEachAnswerForTheReadingWhoseIdentifierItBears) {
  Serve();
  Deliver(1, 3);
  Answer(m_arrived[1], db_ctrl::eMeterRecStored);
  m_arrived.erase(m_arrived.begin() + 1);
  PollUntilIdle(m_service);
  Die();
  Serve();
  EXPECT_EQ(AcknowledgeAll(), (std::vector<std::string>{"1", "3"}));
  EXPECT_EQ(Account(), "3 3 0 0 2 0");
}

TEST_F(Delivery, TakesNoNoticeOfAnAnswerToNothing) {
  Serve();
  Deliver(1);
  cMsg stranger = m_arrived.front();
  vorn::cUuid id;
  id.Create();
  stranger.SetId(id);
  for (const unsigned int type : {db_ctrl::eMeterRecStored, db_ctrl::eStoreMeterRecFailed, db_ctrl::eEventStored})
    Answer(stranger, type);
  PollUntilIdle(m_service);
  EXPECT_EQ(Account(), "1 0 0 0 0 1");
}

// ---- events

TEST_F(Delivery, SendsEventsInTheOrderOfTheReadings) {
  Deliver(1);
  Report("input lost");
  Deliver(2);
  EXPECT_EQ(Account(), "2 0 0 0 0 3");
  Serve();
  EXPECT_EQ(AcknowledgeAll(), (std::vector<std::string>{"1", "input lost", "2"}));
  EXPECT_EQ(Account(), "2 2 0 0 0 0");
}

TEST_F(Delivery, GoesOnAfterARefusedEventWithoutCountingItAsAReading) {
  Report("input lost");
  Deliver(1);
  Serve();
  EXPECT_EQ(Refuse(), "input lost");
  EXPECT_EQ(Acknowledge(), "1");
  EXPECT_EQ(Account(), "1 1 0 0 0 0");
}

TEST_F(Delivery, HandsEventsOverAgainAsWell) {
  Serve();
  Report("input lost");
  Deliver(1);
  Die();
  EXPECT_EQ(Account(), "1 0 0 0 1 2");
  Serve();
  EXPECT_EQ(AcknowledgeAll(), (std::vector<std::string>{"input lost", "1"}));
}

TEST_F(Delivery, LosesNeitherAReadingForAnEventNorAnEventForAReading) {
  Report("old");
  Deliver(1, 49);
  Report("new");
  EXPECT_EQ(Account(), "49 0 0 0 0 51");
  Deliver(50);
  EXPECT_EQ(Account(), "50 0 0 0 0 52");
  Serve();
  std::vector<std::string> all = Numbers(1, 50);
  all.insert(all.end(), {"new", "old"});
  EXPECT_EQ(AcknowledgeAll(), all);
  EXPECT_EQ(Account(), "50 50 0 0 0 0");
}

TEST_F(Delivery, PutsAsManyEventsAsideAsItMay) {
  Deliver(1, 50);
  for (std::size_t i = 0; i < cDelivery::kMostEvents; ++i) Report("kept");
  EXPECT_THAT(m_trace.GetLines(), testing::Not(testing::Contains(HasSubstr("too many events"))));
  Report("one more");
  EXPECT_THAT(m_trace.GetLines(), testing::Contains(HasSubstr("too many events, not reported")));
  EXPECT_EQ(Account(), "50 0 0 0 0 1050");
  Serve();
  EXPECT_EQ(AcknowledgeAll().size(), 1050u);
}

// ---- progress

TEST_F(Delivery, TellsOfEveryAnswerAndEveryChangeOfTheConnection) {
  Serve();
  const int connected = m_progress;
  EXPECT_GT(connected, 0);
  Deliver(1, 2);
  EXPECT_EQ(m_progress, connected);
  Acknowledge();
  EXPECT_EQ(m_progress, connected + 1);
  Refuse();
  EXPECT_EQ(m_progress, connected + 2);
  Die();
  EXPECT_EQ(m_progress, connected + 3);
}

TEST_F(Delivery, LeavesRoomInTheQueueForASourceThatKeepsToTheWindow) {
  EXPECT_LT(cDelivery::kWindow, cDbCtrlIO::kQueueLimit);
  Deliver(1, cDelivery::kWindow);
  Serve();
  Die();
  EXPECT_EQ(Account(), "40 0 0 0 1 40");
}

TEST_F(Delivery, LeavesOtherAnswersToTheDriver) {
  Serve();
  const cMsg other(db_ctrl::eGetMeter + 1);
  EXPECT_FALSE(m_delivery->DispatchMessage(other));
}

}  // namespace
}  // namespace tav
