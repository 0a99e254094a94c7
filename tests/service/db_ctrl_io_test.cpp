// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_io.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/service/db_ctrl_io_fixture.h>

using namespace db_ctrl_io_fixture;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class DbCtrlIO : public cDbCtrlIOFixture {};

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
