// SPDX-License-Identifier: Apache-2.0
// The queue of readings and events: what is sent when, what is dropped, what is said.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/service/db_ctrl_io_fixture.h>

using namespace db_ctrl_io_fixture;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class DbCtrlIOQueue : public cDbCtrlIOFixture {};

}  // namespace

// ---- storing readings

TEST_F(DbCtrlIOQueue, AStoredReadingIsSentWithAFreshIdentifier) {
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

TEST_F(DbCtrlIOQueue, SeveralReadingsAreOneMessage) {
  Connect("");
  Traced();
  EXPECT_TRUE(m_io->StoreMeterRec(std::list<cMeterRecord>{Reading("2"), Reading("1"), Reading("2")}));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreMeterRec] multiple store"));
  Settle();
  ASSERT_EQ(m_server->messages.size(), 1u);
  EXPECT_TRUE(m_server->messages[0].GetId().IsValid());
  EXPECT_THAT(Received(), ElementsAre("51009 2 1 2"));
}

TEST_F(DbCtrlIOQueue, AnEmptyListIsAMessageLikeAnyOther) {
  Connect("");
  EXPECT_TRUE(m_io->StoreMeterRec(std::list<cMeterRecord>()));
  EXPECT_THAT(Received(), ElementsAre("51009"));
  CutWire();
  EXPECT_TRUE(m_io->StoreMeterRec(std::list<cMeterRecord>()));
  EXPECT_EQ(m_io->m_queue.size(), 1u);
}

TEST_F(DbCtrlIOQueue, WithABacklogTheOldestIsSent) {
  Start("ehzif");
  StoreMany(2);
  Reconnect();
  Received();
  EXPECT_TRUE(Store("new"));
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
  EXPECT_THAT(Queued(), ElementsAre("2", "new"));
}

TEST_F(DbCtrlIOQueue, AReadyMessageIsQueuedAndSentAsItIs) {
  Connect("");
  vorn::cMsg msg(0x51234);
  msg.Record().AppendTextPar("any", "thing");
  EXPECT_TRUE(m_io->StoreMeterRecQueued(msg));
  EXPECT_THAT(Received(), ElementsAre("51234 any text=thing"));
}

TEST_F(DbCtrlIOQueue, WhileDisconnectedAReadingIsQueuedAndAConnectionTriedAtOnce) {
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

TEST_F(DbCtrlIOQueue, WhileDisconnectedAStoreIsTrueAsLongAsThereIsRoomForOneMore) {
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

TEST_F(DbCtrlIOQueue, AFullQueueDropsItsOldest) {
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

TEST_F(DbCtrlIOQueue, AFullQueueLosesTwoFromItsFrontWhenItIsConnected) {
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

TEST_F(DbCtrlIOQueue, TheFrontOfAFullQueueMayBeStoredAgain) {
  Start("ehzif");
  StoreMany(kLimit);
  m_io->StoreMeterRecQueued(m_io->m_queue.front());
  EXPECT_EQ(Queued().front(), "2");
  EXPECT_EQ(Queued().back(), "1");
}

TEST_F(DbCtrlIOQueue, AnotherLimitHolds) {
  Start("ehzif");
  m_io->m_queueLimit = 2;
  EXPECT_TRUE(Store("1"));
  EXPECT_FALSE(Store("2"));
  Traced();
  EXPECT_FALSE(Store("3"));
  EXPECT_THAT(Traced(), Contains("4 dbctrl[StoreMeterRec] store, queue full (size=2)"));
  EXPECT_THAT(Queued(), ElementsAre("2", "3"));
}

TEST_F(DbCtrlIOQueue, WithALimitOfNoneTheNewestIsStillTaken) {
  Start("ehzif");
  m_io->m_queueLimit = 0;
  EXPECT_FALSE(Store("1"));
  EXPECT_FALSE(Store("2"));
  EXPECT_THAT(Queued(), ElementsAre("2"));
}

TEST_F(DbCtrlIOQueue, ALimitLoweredLaterDropsOneAStore) {
  Start("ehzif");
  StoreMany(4);
  m_io->m_queueLimit = 2;
  EXPECT_FALSE(Store("5"));
  EXPECT_THAT(Queued(), ElementsAre("2", "3", "4", "5"));
}

TEST_F(DbCtrlIOQueue, ARefusedSendKeepsTheReadingAndAsksForAHealthCheck) {
  Connect("");
  Congest();
  Traced();
  EXPECT_FALSE(Store("1"));
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[StoreMeterRec] store", "2 dbctrl[StoreMeterRec] store, send failed"));
  EXPECT_THAT(Queued(), ElementsAre("1"));
  EXPECT_TRUE(IsHealthChecked());
}

TEST_F(DbCtrlIOQueue, ASentReadingAsksForNoHealthCheck) {
  Connect("");
  EXPECT_TRUE(Store("1"));
  EXPECT_FALSE(IsHealthChecked());
}

TEST_F(DbCtrlIOQueue, NothingIsBuiltBelowTheLevelOfProgress) {
  const cTraceLevel quiet("UnitTAV", 15);
  Connect("ehzif");
  Store("1");
  m_io->StoreEvent(Event("e"));
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- storing events

TEST_F(DbCtrlIOQueue, AnEventIsSentAsTheWholeRecordWithoutIdentifier) {
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

TEST_F(DbCtrlIOQueue, EventsAndReadingsShareOneQueueInOrder) {
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

TEST_F(DbCtrlIOQueue, WithABacklogAnEventSendsTheOldest) {
  Start("ehzif");
  StoreMany(1);
  Reconnect();
  Received();
  EXPECT_TRUE(m_io->StoreEvent(Event("e")));
  EXPECT_THAT(Received(), ElementsAre("51009 1"));
  EXPECT_THAT(Queued(), ElementsAre("e"));
}

TEST_F(DbCtrlIOQueue, WhileDisconnectedAnEventIsTriedQueuedAndFalse) {
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

TEST_F(DbCtrlIOQueue, ARefusedEventAsksForNoHealthCheck) {
  Connect("");
  Congest();
  EXPECT_FALSE(m_io->StoreEvent(Event("e")));
  EXPECT_THAT(Queued(), ElementsAre("e"));
  EXPECT_FALSE(IsHealthChecked());
}

TEST_F(DbCtrlIOQueue, AFullQueueTakesAnEventForItsOldestWithoutSending) {
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
