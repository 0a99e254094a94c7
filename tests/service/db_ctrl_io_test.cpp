// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_io.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <tav/framework/helper.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>
#include <tests/support/trace_level.h>

using tav::cDbCtrlIO;
using tav::cMeterRecord;
using tav::cMeterTav;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {

constexpr unsigned int kLimit = 50;
constexpr int kPingMs = 5000;

cMeterRecord Reading(const std::string& meterID) {
  cMeterRecord record("ehzif", "EMH", "E", meterID, "12", "ok", 1, cMeterTav::eTsRtc, 2);
  record.AddMeasurementEntry({"1-0:1.8.0", "1", "Wh", 1, cMeterTav::eTsRtc});
  return record;
}

vorn::cRecord Event(const std::string& text) {
  vorn::cRecord event;
  event.AppendTextPar("text", text);
  return event;
}

void AppendStoreValue(vorn::cRecord& to, const std::string& key, const std::string& value) {
  vorn::cRecord pair;
  pair.AppendTextPar("key", key);
  pair.AppendTextPar("value", value);
  to.AppendRecordPar("store-value", pair);
}

vorn::cRecord StoreOf(const std::vector<std::pair<std::string, std::string>>& values) {
  vorn::cRecord store;
  for (const auto& [key, value] : values) AppendStoreValue(store, key, value);
  return store;
}

vorn::cRecord Because(const std::string& reason) {
  vorn::cRecord record;
  record.AppendTextPar("reason", reason);
  return record;
}

// A client and a service on loops of their own, so that a test may leave the service without a turn. The client's clock
// stands still: it does not reconnect unless time is moved or a health check is asked for.
class DbCtrlIO : public testing::Test {
 protected:
  // ---- the wire
  void Serve() { m_server = std::make_unique<cRecordingServer>(&m_far, "data"); }
  void Start(const std::string& driver) { m_io = std::make_unique<cDbCtrlIO>(&m_near, driver); }
  bool Await(const std::function<bool()>& condition) {
    return PollUntil(m_near, [&] {
      m_far.Poll(0);
      return condition();
    });
  }
  bool AwaitConnection() {
    return Await([&] { return m_io->IsConnected() && !m_server->GetChannels().empty(); });
  }
  // Lets pass whatever is under way; nothing waits for time here.
  void Settle() {
    while (m_near.Poll(0) || m_far.Poll(0) || m_near.Poll(1)) {
    }
  }
  void Connect(const std::string& driver) {
    Serve();
    Start(driver);
    ASSERT_TRUE(AwaitConnection());
    Settle();
  }
  void CutWire() {
    m_server.reset();
    ASSERT_TRUE(Await([&] { return !m_io->IsConnected(); }));
  }
  void Reconnect() {
    Serve();
    m_io->HealthRequest();
    ASSERT_TRUE(AwaitConnection());
    Settle();
  }
  // Fills the output buffer while the service gets no turn.
  void Congest() {
    vorn::cMsg bulk(0x50000);
    bulk.Record().AppendDataPar("bulk", vorn::cData(std::string(1 << 20, 'x')));
    while (m_io->Send(bulk) == 1) {
    }
    bulk.Record() = vorn::cRecord();
    while (m_io->Send(bulk) == 1) {
    }
  }
  // Whether a health check is under way that the service, which gets no turn, does not answer.
  bool IsHealthChecked() {
    m_near.Poll(0);
    m_clock->Advance(kPingMs + 1);
    while (m_near.Poll(0)) {
    }
    return !m_io->IsConnected();
  }
  void Answer(unsigned int type, const vorn::cRecord& record = {}) {
    vorn::cMsg msg(type);
    msg.Record() = record;
    ASSERT_EQ(m_server->GetChannels().front()->Send(msg), 1);
    Settle();
  }

  // ---- what was stored and what arrived
  bool Store(const std::string& meterID) { return m_io->StoreMeterRec(Reading(meterID)); }
  void StoreMany(unsigned int count) {
    const cTraceLevel quiet("UnitTAV", 0);
    for (unsigned int i = 1; i <= count; ++i) Store(std::to_string(i));
  }
  // One text a message: "51009 4711", "51038 text=...", otherwise its type and its parameters.
  std::vector<std::string> Received() {
    Settle();
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : m_server->messages) {
      std::string text = vorn::FormatString("%x", msg.GetType());
      if (msg.GetType() == 0x51009)
        for (auto par = msg.Record().GetPar("meter-record"); par.IsValid(); par = par.NextSame()) {
          vorn::cRecord reading;
          par.GetRecord(reading);
          text += " " + reading.GetTextPar("meterID");
        }
      else
        for (const std::string& par : Parameters(msg.Record())) text += " " + par;
      texts.push_back(text);
    }
    m_server->messages.clear();
    return texts;
  }
  std::vector<std::string> Queued() const {
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : m_io->m_queue)
      texts.push_back(msg.GetType() == 0x51009 ? msg.Record().GetRecordPar("meter-record").GetTextPar("meterID")
                                               : msg.Record().GetTextPar("text"));
    return texts;
  }
  // The library's lines since the last call.
  std::vector<std::string> Traced() {
    std::vector<std::string> lines;
    for (; m_traced < m_trace.GetLines().size(); ++m_traced)
      if (m_trace.GetLines()[m_traced].rfind("UnitTAV ", 0) == 0)
        lines.push_back(m_trace.GetLines()[m_traced].substr(8));
    return lines;
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cRecordingService m_near{"driver", m_folder.GetPath(), m_clock};
  cRecordingService m_far{"data", m_folder.GetPath()};
  const cTraceLevel m_level{"UnitTAV", 16};
  const cTraceLevel m_frameworkLevel{"UnitVORN", 0};
  cCapturedTrace m_trace;
  std::size_t m_traced = 0;
  std::unique_ptr<cRecordingServer> m_server;
  std::unique_ptr<cDbCtrlIO> m_io;
};

}  // namespace

// ---- connection

TEST_F(DbCtrlIO, StartsEmptyOnChannelData) {
  Start("ehzif");
  EXPECT_EQ(m_io->GetName(), "data");
  EXPECT_THAT(m_io->m_queue, IsEmpty());
  EXPECT_EQ(m_io->m_queueLimit, kLimit);
  EXPECT_EQ(m_io->m_driver, "ehzif");
  EXPECT_THAT(m_io->m_store, IsEmpty());
  EXPECT_EQ(m_io->m_storeName, "");
}

TEST_F(DbCtrlIO, RegistersItsDriverOnConnect) {
  Connect("ehzif");
  EXPECT_THAT(Received(), ElementsAre("5101e driver text=ehzif"));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection established, register driver 'ehzif'"));
}

TEST_F(DbCtrlIO, SaysWhenTheRegistrationCannotBeSent) {
  Start("ehzif");
  m_io->OnConnect();  // while there is no connection
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection established, register driver 'ehzif'",
                                    "2 send driver registration failed"));
}

TEST_F(DbCtrlIO, WithoutDriverAndStoreItOnlySaysSo) {
  Connect("");
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection established, no driver"));
}

TEST_F(DbCtrlIO, WithoutDriverItAttachesToItsStore) {
  Serve();
  Start("");
  m_io->SetStoreName("settings");
  ASSERT_TRUE(AwaitConnection());
  EXPECT_THAT(Received(), ElementsAre("5107c store text=settings"));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection established, no driver, store=settings"));
}

TEST_F(DbCtrlIO, AStoreThatCannotBeAttachedIsNoFailure) {
  Start("");
  m_io->SetStoreName("settings");
  m_io->OnConnect();
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection established, no driver, store=settings"));
}

TEST_F(DbCtrlIO, ADriverIgnoresAStoreName) {
  Serve();
  Start("ehzif");
  m_io->SetStoreName("settings");
  ASSERT_TRUE(AwaitConnection());
  EXPECT_THAT(Received(), ElementsAre("5101e driver text=ehzif"));
}

TEST_F(DbCtrlIO, KeepsEverythingWhenTheConnectionCloses) {
  Connect("ehzif");
  Answer(0x5101f, StoreOf({{"key", "value"}}));
  Congest();
  Store("1");
  Traced();
  m_server.reset();
  ASSERT_TRUE(Await([&] { return !m_io->IsConnected(); }));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection shutdown"));
  EXPECT_THAT(Queued(), ElementsAre("1"));
  EXPECT_EQ(m_io->m_driver, "ehzif");
  EXPECT_EQ(m_io->GetStoreValue("key"), "value");
}

TEST_F(DbCtrlIO, RegistersAgainOnEveryConnection) {
  Connect("ehzif");
  CutWire();
  Reconnect();
  EXPECT_THAT(Received(), ElementsAre("5101e driver text=ehzif"));
}

// ---- registration

TEST_F(DbCtrlIO, ARefusedRegistrationIsOnlyTraced) {
  Connect("ehzif");
  Traced();
  m_io->m_queue.emplace_back(0x51009);
  Answer(0x51020, Because("no room"));
  EXPECT_THAT(Traced(), ElementsAre("2 register driver 'ehzif' failed (no room)"));
  EXPECT_EQ(m_io->m_queue.size(), 1u);
  EXPECT_THAT(Received(), ElementsAre("5101e driver text=ehzif"));
  EXPECT_THAT(m_near.messages, IsEmpty()) << "handled";
}

TEST_F(DbCtrlIO, TheReasonOfARefusalIsItsFirstAndMayBeOfAnyTypeOrMissing) {
  Connect("ehzif");
  Traced();
  vorn::cRecord two = Because("first");
  two.AppendTextPar("reason", "second");
  Answer(0x51020, two);
  vorn::cRecord number;
  number.AppendUIntPar("reason", 5);
  Answer(0x51020, number);
  Answer(0x51020);
  EXPECT_THAT(Traced(), ElementsAre("2 register driver 'ehzif' failed (first)", "2 register driver 'ehzif' failed (5)",
                                    "2 register driver 'ehzif' failed ()"));
}

TEST_F(DbCtrlIO, WithADriverTheBacklogWaitsForTheRegistration) {
  Start("ehzif");
  StoreMany(3);
  Reconnect();
  EXPECT_THAT(Received(), ElementsAre("5101e driver text=ehzif"));
  Answer(0x5101f, StoreOf({{"key", "value"}}));
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
  EXPECT_EQ(m_io->GetStoreValue("key"), "value");
  EXPECT_THAT(Queued(), ElementsAre("2", "3"));
}

TEST_F(DbCtrlIO, ARegistrationWithoutStoreEmptiesIt) {
  Connect("ehzif");
  m_io->m_store.Set("old", "value");
  Answer(0x5101f);
  EXPECT_THAT(m_io->m_store, IsEmpty());
}

TEST_F(DbCtrlIO, ARegistrationReplacesTheStoreThoughTheBacklogCannotBeSent) {
  Start("ehzif");
  StoreMany(1);
  Traced();
  vorn::cMsg registered(0x5101f);
  registered.Record() = StoreOf({{"key", "value"}});
  EXPECT_TRUE(m_io->DispatchMessage(registered));
  EXPECT_THAT(Traced(), ElementsAre("2 driver connected: re-send failed"));
  EXPECT_EQ(m_io->GetStoreValue("key"), "value");
  EXPECT_THAT(Queued(), ElementsAre("1"));
}

TEST_F(DbCtrlIO, ARegistrationWithAnEmptyQueueSendsNothing) {
  Start("ehzif");
  Traced();
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0x5101f)));
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(DbCtrlIO, WhileRegisteringEachStoreSendsTheFront) {
  Start("ehzif");
  StoreMany(2);
  Reconnect();
  EXPECT_TRUE(Store("3"));
  EXPECT_THAT(Received(), ElementsAre("5101e driver text=ehzif", "51009 1"));
  EXPECT_THAT(Queued(), ElementsAre("2", "3"));
}

// ---- acknowledgements

TEST_F(DbCtrlIO, WithoutDriverOneGoesOutOnConnectAndOneAnAcknowledgement) {
  Start("");
  StoreMany(4);
  Reconnect();
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
  Answer(0x5100a);
  EXPECT_THAT(Received(), ElementsAre("51009 2"));
  Answer(0x51039);
  EXPECT_THAT(Received(), ElementsAre("51009 3"));
  Answer(0x5100a);
  EXPECT_THAT(Received(), ElementsAre("51009 4"));
  Answer(0x5100a);
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(m_near.messages, IsEmpty()) << "all handled";
}

TEST_F(DbCtrlIO, AnAttachedStoreIsAskedForBeforeTheBacklog) {
  Serve();
  Start("");
  m_io->SetStoreName("settings");
  StoreMany(1);
  ASSERT_TRUE(AwaitConnection());
  EXPECT_THAT(Received(), ElementsAre("5107c store text=settings", "51009 1"));
}

TEST_F(DbCtrlIO, SaysWhenTheBacklogCannotBeSentOnConnect) {
  Start("");
  StoreMany(1);
  Traced();
  m_io->OnConnect();
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl connection established, no driver", "2 re-send failed"));
  EXPECT_THAT(Queued(), ElementsAre("1"));
}

TEST_F(DbCtrlIO, AnAcknowledgementWhoseNextCannotBeSentAsksForAHealthCheck) {
  for (const unsigned int type : {0x5100au, 0x51039u}) {
    Connect("");
    m_io->m_queue.emplace_back(0x51009);
    Congest();
    Traced();
    EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(type)));
    EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[StoreMeterRec] store, re-send failed"));
    EXPECT_EQ(m_io->m_queue.size(), 1u);
    EXPECT_TRUE(IsHealthChecked());
    m_io.reset();
    m_server.reset();
  }
}

TEST_F(DbCtrlIO, AnAcknowledgementWithAnEmptyQueueDoesNothing) {
  Connect("");
  Congest();
  Traced();
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0x5100a)));
  EXPECT_THAT(Traced(), IsEmpty());
  EXPECT_FALSE(IsHealthChecked());
}

TEST_F(DbCtrlIO, AFailedStoreIsTracedAndNotQueuedAgain) {
  Connect("");
  Store("1");
  m_io->m_queue.emplace_back(0x51009);
  Received();
  Traced();
  Answer(0x5100b, Because("disk full"));
  Answer(0x5103a, Because("disk full"));
  EXPECT_THAT(Traced(), ElementsAre("2 store meter-rec failed (disk full)", "2 store event failed (disk full)"));
  EXPECT_EQ(m_io->m_queue.size(), 1u);
  EXPECT_THAT(Received(), IsEmpty()) << "and nothing else goes out";
  EXPECT_THAT(m_near.messages, IsEmpty()) << "both handled";
}

TEST_F(DbCtrlIO, RefusalsAreHandledThoughNobodyTraces) {
  const cTraceLevel quiet("UnitTAV", 1);
  Start("ehzif");
  for (const unsigned int type : {0x51020u, 0x5100bu, 0x5103au})
    EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(type))) << std::hex << type;
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(DbCtrlIO, LeavesEveryOtherMessageToItsService) {
  Connect("ehzif");
  for (const unsigned int type : {0x51001u, 0x51071u, 0x5101eu, 0x5107cu, 0x5107eu, 0x51083u, 0x5102bu, 0x0u})
    EXPECT_FALSE(m_io->DispatchMessage(vorn::cMsg(type))) << std::hex << type;
  Answer(0x51071);
  ASSERT_EQ(m_near.messages.size(), 1u);
  EXPECT_EQ(m_near.messages.front().GetType(), 0x51071u);
}

// ---- storing readings

TEST_F(DbCtrlIO, AStoredReadingIsSentWithAFreshIdentifier) {
  Connect("");
  Traced();
  EXPECT_TRUE(Store("1"));
  EXPECT_TRUE(Store("2"));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreMeterRec] store", "16 dbctrl[StoreMeterRec] store"));
  EXPECT_THAT(m_io->m_queue, IsEmpty());
  Settle();
  ASSERT_EQ(m_server->messages.size(), 2u);
  EXPECT_TRUE(m_server->messages[0].GetId().IsValid());
  EXPECT_NE(m_server->messages[0].GetId(), m_server->messages[1].GetId());
  EXPECT_EQ(m_server->messages[0].Record().GetCount(), 1u);
  EXPECT_EQ(m_server->messages[0].Record().GetRecordPar("meter-record"), Reading("1").ToRecord());
}

TEST_F(DbCtrlIO, SeveralReadingsAreOneMessage) {
  Connect("");
  Traced();
  EXPECT_TRUE(m_io->StoreMeterRec(std::list<cMeterRecord>{Reading("2"), Reading("1"), Reading("2")}));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreMeterRec] multiple store"));
  Settle();
  ASSERT_EQ(m_server->messages.size(), 1u);
  EXPECT_TRUE(m_server->messages[0].GetId().IsValid());
  EXPECT_THAT(Received(), ElementsAre("51009 2 1 2"));
}

TEST_F(DbCtrlIO, AnEmptyListIsAMessageLikeAnyOther) {
  Connect("");
  EXPECT_TRUE(m_io->StoreMeterRec(std::list<cMeterRecord>()));
  EXPECT_THAT(Received(), ElementsAre("51009"));
  CutWire();
  EXPECT_TRUE(m_io->StoreMeterRec(std::list<cMeterRecord>()));
  EXPECT_EQ(m_io->m_queue.size(), 1u);
}

TEST_F(DbCtrlIO, WithABacklogTheOldestIsSent) {
  Start("ehzif");
  StoreMany(2);
  Reconnect();
  Received();
  EXPECT_TRUE(Store("new"));
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
  EXPECT_THAT(Queued(), ElementsAre("2", "new"));
}

TEST_F(DbCtrlIO, AReadyMessageIsQueuedAndSentAsItIs) {
  Connect("");
  vorn::cMsg msg(0x51234);
  msg.Record().AppendTextPar("any", "thing");
  EXPECT_TRUE(m_io->StoreMeterRecQueued(msg));
  EXPECT_THAT(Received(), ElementsAre("51234 any text=thing"));
}

TEST_F(DbCtrlIO, WhileDisconnectedAReadingIsQueuedAndAConnectionTriedAtOnce) {
  Start("");
  m_near.Poll(0);  // the first attempt, in vain
  Serve();
  Settle();
  ASSERT_FALSE(m_io->IsConnected());
  EXPECT_TRUE(Store("1"));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreMeterRec] store",
                                    "4 dbctrl[StoreMeterRec] failed, not connectetd (queue=1)"));
  EXPECT_TRUE(AwaitConnection()) << "though time stands still";
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
}

TEST_F(DbCtrlIO, WhileDisconnectedAStoreIsTrueAsLongAsThereIsRoomForOneMore) {
  Start("ehzif");
  StoreMany(kLimit - 2);
  Traced();
  EXPECT_TRUE(Store("49"));
  EXPECT_FALSE(Store("50")) << "the queue is full now";
  EXPECT_THAT(
      Traced(),
      ElementsAre("16 dbctrl[StoreMeterRec] store", "4 dbctrl[StoreMeterRec] failed, not connectetd (queue=49)",
                  "16 dbctrl[StoreMeterRec] store", "4 dbctrl[StoreMeterRec] failed, not connectetd (queue=50)"));
  EXPECT_EQ(m_io->m_queue.size(), kLimit);
  EXPECT_EQ(Queued().front(), "1") << "nothing was dropped yet";
}

TEST_F(DbCtrlIO, AFullQueueDropsItsOldest) {
  Start("ehzif");
  StoreMany(kLimit);
  Traced();
  EXPECT_FALSE(Store("new"));
  EXPECT_THAT(Traced(),
              ElementsAre("16 dbctrl[StoreMeterRec] store", "4 dbctrl[StoreMeterRec] store, queue full (size=50)",
                          "4 dbctrl[StoreMeterRec] failed, not connectetd (queue=50)"));
  EXPECT_EQ(m_io->m_queue.size(), kLimit);
  EXPECT_EQ(Queued().front(), "2");
  EXPECT_EQ(Queued().back(), "new");
}

TEST_F(DbCtrlIO, AFullQueueLosesTwoFromItsFrontWhenItIsConnected) {
  Start("ehzif");
  StoreMany(kLimit);
  Reconnect();
  Received();
  Traced();
  EXPECT_TRUE(Store("new"));
  EXPECT_THAT(Traced(),
              ElementsAre("16 dbctrl[StoreMeterRec] store", "4 dbctrl[StoreMeterRec] store, queue full (size=50)"));
  EXPECT_THAT(Received(), ElementsAre("51009 2")) << "1 was dropped";
  EXPECT_EQ(Queued().front(), "3");
}

TEST_F(DbCtrlIO, TheFrontOfAFullQueueMayBeStoredAgain) {
  Start("ehzif");
  StoreMany(kLimit);
  m_io->StoreMeterRecQueued(m_io->m_queue.front());
  EXPECT_EQ(Queued().front(), "2");
  EXPECT_EQ(Queued().back(), "1");
}

TEST_F(DbCtrlIO, AnotherLimitHolds) {
  Start("ehzif");
  m_io->m_queueLimit = 2;
  EXPECT_TRUE(Store("1"));
  EXPECT_FALSE(Store("2"));
  Traced();
  EXPECT_FALSE(Store("3"));
  EXPECT_THAT(Traced(), Contains("4 dbctrl[StoreMeterRec] store, queue full (size=2)"));
  EXPECT_THAT(Queued(), ElementsAre("2", "3"));
}

TEST_F(DbCtrlIO, WithALimitOfNoneTheNewestIsStillTaken) {
  Start("ehzif");
  m_io->m_queueLimit = 0;
  EXPECT_FALSE(Store("1"));
  EXPECT_FALSE(Store("2"));
  EXPECT_THAT(Queued(), ElementsAre("2"));
}

TEST_F(DbCtrlIO, ALimitLoweredLaterDropsOneAStore) {
  Start("ehzif");
  StoreMany(4);
  m_io->m_queueLimit = 2;
  EXPECT_FALSE(Store("5"));
  EXPECT_THAT(Queued(), ElementsAre("2", "3", "4", "5"));
}

TEST_F(DbCtrlIO, ARefusedSendKeepsTheReadingAndAsksForAHealthCheck) {
  Connect("");
  Congest();
  Traced();
  EXPECT_FALSE(Store("1"));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreMeterRec] store", "2 dbctrl[StoreMeterRec] store, send failed"));
  EXPECT_THAT(Queued(), ElementsAre("1"));
  EXPECT_TRUE(IsHealthChecked());
}

TEST_F(DbCtrlIO, ASentReadingAsksForNoHealthCheck) {
  Connect("");
  EXPECT_TRUE(Store("1"));
  EXPECT_FALSE(IsHealthChecked());
}

TEST_F(DbCtrlIO, NothingIsBuiltBelowTheLevelOfProgress) {
  const cTraceLevel quiet("UnitTAV", 15);
  Connect("ehzif");
  Store("1");
  m_io->StoreEvent(Event("e"));
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- storing events

TEST_F(DbCtrlIO, AnEventIsSentAsTheWholeRecordWithoutIdentifier) {
  Connect("");
  Traced();
  EXPECT_TRUE(m_io->StoreEvent(Event("door")));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreEvent] rec=" + Event("door").ToString()));
  EXPECT_THAT(m_io->m_queue, IsEmpty());
  Settle();
  ASSERT_EQ(m_server->messages.size(), 1u);
  EXPECT_EQ(m_server->messages[0].GetType(), 0x51038u);
  EXPECT_EQ(m_server->messages[0].Record(), Event("door"));
  EXPECT_FALSE(m_server->messages[0].GetId().IsValid());
}

TEST_F(DbCtrlIO, EventsAndReadingsShareOneQueueInOrder) {
  Start("");
  Store("1");
  m_io->StoreEvent(Event("e2"));
  Store("3");
  EXPECT_THAT(Queued(), ElementsAre("1", "e2", "3"));
  Reconnect();
  Answer(0x5100a);
  Answer(0x51039);
  EXPECT_THAT(Received(), ElementsAre("51009 1", "51038 text text=e2", "51009 3"));
}

TEST_F(DbCtrlIO, WithABacklogAnEventSendsTheOldest) {
  Start("ehzif");
  StoreMany(1);
  Reconnect();
  Received();
  EXPECT_TRUE(m_io->StoreEvent(Event("e")));
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
  EXPECT_THAT(Queued(), ElementsAre("e"));
}

TEST_F(DbCtrlIO, WhileDisconnectedAnEventIsTriedQueuedAndFalse) {
  Start("");
  m_near.Poll(0);
  Serve();
  EXPECT_FALSE(m_io->StoreEvent(Event("e")));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreEvent] rec=" + Event("e").ToString(),
                                    "2 dbctrl[StoreEvent] send failed, rec=" + Event("e").ToString()));
  EXPECT_THAT(Queued(), ElementsAre("e"));
  Settle();
  EXPECT_FALSE(m_io->IsConnected()) << "unlike a reading it asks for no connection";
}

TEST_F(DbCtrlIO, ARefusedEventAsksForNoHealthCheck) {
  Connect("");
  Congest();
  EXPECT_FALSE(m_io->StoreEvent(Event("e")));
  EXPECT_THAT(Queued(), ElementsAre("e"));
  EXPECT_FALSE(IsHealthChecked());
}

TEST_F(DbCtrlIO, AFullQueueTakesAnEventForItsOldestWithoutSending) {
  Start("ehzif");
  StoreMany(kLimit);
  Reconnect();
  Received();
  Traced();
  EXPECT_FALSE(m_io->StoreEvent(Event("e")));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreEvent] rec=" + Event("e").ToString(),
                                    "4 dbctrl[StoreEvent] store, queue full (size=50)"));
  EXPECT_THAT(Received(), IsEmpty()) << "though it is connected";
  EXPECT_EQ(m_io->m_queue.size(), kLimit);
  EXPECT_EQ(Queued().front(), "2");
  EXPECT_EQ(Queued().back(), "e");
}

// ---- the key/value store

TEST_F(DbCtrlIO, TheContentsOfAStoreReplaceTheCopy) {
  Connect("");
  m_io->m_store.Set("old", "value");
  Answer(0x5107d, StoreOf({{"a", "1"}, {"b", "2"}, {"a", "3"}}));
  EXPECT_THAT(m_io->m_store, ElementsAre(Pair("a", "3"), Pair("b", "2"))) << "the last of a key holds";
  EXPECT_THAT(m_near.messages, IsEmpty());
}

TEST_F(DbCtrlIO, StoreContentsTriggerNoSend) {
  Connect("");
  m_io->m_queue.emplace_back(0x51009);
  Answer(0x5107d);
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(DbCtrlIO, BadStoreValuesAreSkipped) {
  vorn::cMsg msg(0x5107d);
  msg.Record().AppendTextPar("store-value", "text");
  msg.Record().AppendRecordPar("store-value", vorn::cRecord());
  AppendStoreValue(msg.Record(), "", "empty key");
  AppendStoreValue(msg.Record(), "empty value", "");
  for (const bool badKey : {true, false}) {
    vorn::cRecord mistyped;
    if (badKey)
      mistyped.AppendUIntPar("key", 1);
    else
      mistyped.AppendTextPar("key", "mistyped value");
    mistyped.AppendUIntPar("value", 1);
    msg.Record().AppendRecordPar("store-value", mistyped);
  }
  vorn::cRecord keyOnly;
  keyOnly.AppendTextPar("key", "k");
  msg.Record().AppendRecordPar("store-value", keyOnly);
  AppendStoreValue(msg.Record(), "good", "value");
  Start("");
  m_io->SetStore(msg);
  EXPECT_THAT(m_io->m_store, ElementsAre(Pair("good", "value")));
}

TEST_F(DbCtrlIO, AnotherParameterIsNoStoreValue) {
  vorn::cMsg msg(0x5107d);
  vorn::cRecord pair;
  pair.AppendTextPar("key", "k");
  pair.AppendTextPar("value", "v");
  msg.Record().AppendRecordPar("other", pair);
  Start("");
  m_io->SetStore(msg);
  EXPECT_THAT(m_io->m_store, IsEmpty());
}

TEST_F(DbCtrlIO, AValueIsReadFromTheCopy) {
  Start("");
  m_io->m_store.Set("key", "value");
  std::string value = "untouched";
  EXPECT_FALSE(m_io->TryGetStoreValue("other", value));
  EXPECT_EQ(value, "untouched");
  EXPECT_TRUE(m_io->TryGetStoreValue("key", value));
  EXPECT_EQ(value, "value");
  EXPECT_EQ(m_io->GetStoreValue("key"), "value");
  EXPECT_EQ(m_io->GetStoreValue("other"), "");
}

TEST_F(DbCtrlIO, ASetValueIsKeptAndSentUnderTheDriversName) {
  Connect("ehzif");
  m_io->SetStoreName("settings");
  Received();
  EXPECT_TRUE(m_io->SetStoreValue("key", "value"));
  EXPECT_EQ(m_io->GetStoreValue("key"), "value");
  EXPECT_THAT(Received(), ElementsAre("51079 store text=ehzif key text=key value text=value"));
}

TEST_F(DbCtrlIO, WithoutDriverItIsSentUnderTheStoresName) {
  Connect("");
  m_io->SetStoreName("settings");
  EXPECT_TRUE(m_io->SetStoreValue("key", ""));
  EXPECT_THAT(Received(), ElementsAre("51079 store text=settings key text=key value text="));
}

TEST_F(DbCtrlIO, WithoutAnyNameNothingIsSetAndThatIsTrue) {
  Connect("");
  Traced();
  EXPECT_TRUE(m_io->SetStoreValue("key", "value"));
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[SetStoreValue] no store name"));
  EXPECT_THAT(m_io->m_store, IsEmpty());
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(DbCtrlIO, AValueThatCannotBeSentStaysSetAndIsNotQueued) {
  Start("ehzif");
  EXPECT_FALSE(m_io->SetStoreValue("key", "value"));
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[SetStoreValue] store=ehzif: key=value, send failed"));
  EXPECT_EQ(m_io->GetStoreValue("key"), "value");
  EXPECT_THAT(m_io->m_queue, IsEmpty());
}
