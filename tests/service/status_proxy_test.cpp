// SPDX-License-Identifier: Apache-2.0
#include <tav/service/status_proxy.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/proxy_fixture.h>

using tav::cStatusProxy;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace {

using Values = vorn::cMap<std::string, std::string>;

class StatusProxy : public cProxyFixture<cStatusProxy> {
 protected:
  StatusProxy() : cProxyFixture("status") {}

  // Connected with these values, the greeting and its line of trace out of the way.
  void ConnectWith(const Values& values = {}) {
    Serve();
    Start();
    m_io->m_values = values;
    ASSERT_TRUE(AwaitConnection());
    Messages();
    Traced();
  }
  // The one message that the service got, under an identifier of its own.
  std::string ReceivedOne() {
    const std::vector<vorn::cMsg> messages = Messages();
    EXPECT_EQ(messages.size(), 1u);
    if (messages.size() != 1) return {};
    EXPECT_TRUE(messages.front().GetId().IsValid());
    EXPECT_NE(messages.front().GetId(), m_lastId);
    m_lastId = messages.front().GetId();
    return Show(messages.front());
  }
  Values GetValues(const std::string& prefix, const std::string& separator) {
    Values found = {{"from", "before"}};
    const unsigned int count = m_io->GetValues(prefix, found, separator);
    EXPECT_EQ(count, found.size());
    return found;
  }

  vorn::cUuid m_lastId;
};

const Values kTwo = {{"a", "1"}, {"b", "2"}};

vorn::cRecord TextOf(const std::string& name, const std::string& value) {
  vorn::cRecord record;
  record.AppendTextPar(name, value);
  return record;
}

}  // namespace

// ---- the channel

TEST_F(StatusProxy, StartsEmptyOnChannelStatus) {
  Start();
  EXPECT_EQ(m_io->GetName(), "status");
  EXPECT_THAT(m_io->m_values, IsEmpty());
  EXPECT_FALSE(m_io->m_synced);
}

TEST_F(StatusProxy, SendsAllItsValuesInOrderWhenConnected) {
  Serve();
  Start();
  m_io->m_values = {{"b", "2"}, {"", "nameless"}, {"a.b", ""}, {"B", "4"}};
  ASSERT_TRUE(AwaitConnection());
  EXPECT_EQ(ReceivedOne(), "51030  text=nameless B text=4 a.b text= b text=2");
  EXPECT_THAT(Traced(), ElementsAre("16 StatusProxy connection established"));
  EXPECT_FALSE(m_io->m_synced);
}

TEST_F(StatusProxy, SendsAnEmptySetToo) {
  Connect();
  EXPECT_EQ(ReceivedOne(), "51030");
}

TEST_F(StatusProxy, SendsItsValuesAgainOnEveryConnection) {
  ConnectWith(kTwo);
  Answer(0x51031);
  EXPECT_TRUE(m_io->m_synced);
  CutWire();
  EXPECT_FALSE(m_io->m_synced);
  EXPECT_THAT(Traced(), ElementsAre("16 StatusProxy connection shutdown"));
  EXPECT_EQ(m_io->ToString(), "a=1\nb=2");
  m_io->SingleSet("c", "3");
  m_io->SingleRemove("a");
  Reconnect();
  EXPECT_EQ(ReceivedOne(), "51030 b text=2 c text=3");
  EXPECT_FALSE(m_io->m_synced) << "not before the service has sent its values";
}

TEST_F(StatusProxy, LeavesAnIdleServiceInPeace) {
  ConnectWith();
  EXPECT_FALSE(PingsAnIdleService());
}

TEST_F(StatusProxy, ProgressIsTracedFromItsLevelOn) {
  const cTraceLevel below("UnitTAV", 15);
  Connect();
  m_io->SingleSet("a", "1");
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- one value

TEST_F(StatusProxy, SingleSetStoresAndSendsAValue) {
  ConnectWith(kTwo);
  m_io->SingleSet("c", "3");
  EXPECT_EQ(m_io->ToString(), "a=1\nb=2\nc=3");
  EXPECT_EQ(ReceivedOne(), "5102a c text=3");
  EXPECT_THAT(Traced(), ElementsAre("16 SingleSet: name:c value:3"));
}

TEST_F(StatusProxy, SingleSetOfTheSameValueIsTracedAndNotSent) {
  ConnectWith();
  m_io->SingleSet("a", "1");
  m_io->SingleSet("a", "1");
  EXPECT_EQ(ReceivedOne(), "5102a a text=1");
  EXPECT_THAT(Traced(), ElementsAre("16 SingleSet: name:a value:1", "16 SingleSet: name:a value:1"));
}

TEST_F(StatusProxy, SingleSetSendsEveryChange) {
  ConnectWith(kTwo);
  m_io->SingleSet("a", "2");
  EXPECT_EQ(ReceivedOne(), "5102a a text=2");
  m_io->SingleSet("a", "");
  EXPECT_EQ(ReceivedOne(), "5102a a text=") << "an empty text is a value";
  EXPECT_EQ(m_io->ToString(), "a=\nb=2");
}

TEST_F(StatusProxy, SingleSetOfAnEmptyValueThatIsNotThereIsAChange) {
  ConnectWith();
  m_io->SingleSet("a", "");
  EXPECT_EQ(ReceivedOne(), "5102a a text=");
  EXPECT_TRUE(m_io->m_values.Contains("a"));
}

TEST_F(StatusProxy, EmptyNamesAndAStarCanBeSet) {
  ConnectWith();
  m_io->SingleSet("", "1");
  EXPECT_EQ(ReceivedOne(), "5102a  text=1");
  m_io->SingleSet("*", "2");
  EXPECT_EQ(ReceivedOne(), "5102a * text=2");
  EXPECT_EQ(m_io->ToString(), "=1\n*=2");
}

TEST_F(StatusProxy, ValuesAreBytes) {
  const std::string latin = "\xB0 C";
  ConnectWith();
  m_io->SingleSet(latin, latin);
  EXPECT_EQ(ReceivedOne(), "5102a " + latin + " text=" + latin);
  EXPECT_THAT(Traced(), ElementsAre("16 SingleSet: name:" + latin + " value:" + latin));
  const std::string zero("a\0b", 3);
  m_io->SingleSet("zero", zero);
  EXPECT_EQ(ReceivedOne(), "5102a zero text=" + zero);
  EXPECT_EQ(m_io->m_values["zero"], zero);
}

TEST_F(StatusProxy, SingleRemoveRemovesAndSendsTheNameWithoutText) {
  ConnectWith(kTwo);
  m_io->SingleRemove("a");
  EXPECT_EQ(m_io->ToString(), "b=2");
  EXPECT_EQ(ReceivedOne(), "5102a a text");
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, SingleRemoveOfANameThatIsNotThereIsSentToo) {
  ConnectWith(kTwo);
  m_io->SingleRemove("c");
  EXPECT_EQ(m_io->m_values, kTwo);
  EXPECT_EQ(ReceivedOne(), "5102a c text");
  m_io->SingleRemove("");
  EXPECT_EQ(ReceivedOne(), "5102a  text");
}

TEST_F(StatusProxy, SingleRemoveOfAStarRemovesAll) {
  ConnectWith(kTwo);
  m_io->SingleRemove("*");
  EXPECT_THAT(m_io->m_values, IsEmpty());
  EXPECT_EQ(ReceivedOne(), "5102a * text");
}

TEST_F(StatusProxy, ClearRemovesAll) {
  ConnectWith(kTwo);
  m_io->Clear();
  EXPECT_THAT(m_io->m_values, IsEmpty());
  EXPECT_EQ(ReceivedOne(), "5102a * text");
  m_io->Clear();
  EXPECT_EQ(ReceivedOne(), "5102a * text") << "nothing to remove is sent too";
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- several values

TEST_F(StatusProxy, MultiSetStoresAndSendsAllInOneMessage) {
  ConnectWith(kTwo);
  m_io->MultiSet({{"d", "4"}, {"b", "5"}, {"c", ""}});
  EXPECT_EQ(m_io->ToString(), "a=1\nb=5\nc=\nd=4");
  EXPECT_EQ(ReceivedOne(), "5102a b text=5 c text= d text=4");
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, MultiSetSendsUnchangedValuesAgain) {
  ConnectWith(kTwo);
  m_io->MultiSet({{"a", "1"}});
  EXPECT_EQ(ReceivedOne(), "5102a a text=1");
}

TEST_F(StatusProxy, MultiSetOfNothingSendsNothing) {
  ConnectWith(kTwo);
  m_io->MultiSet({});
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_EQ(m_io->m_values, kTwo);
}

TEST_F(StatusProxy, MultiRemoveRemovesAllInTheOrderOfTheList) {
  ConnectWith({{"a", "1"}, {"b", "2"}, {"c", "3"}});
  std::list<std::string> names = {"c", "a", "x", "c"};
  m_io->MultiRemove(names);
  EXPECT_EQ(m_io->ToString(), "b=2");
  EXPECT_EQ(ReceivedOne(), "5102a c text a text x text c text");
  EXPECT_EQ(names.size(), 4u);
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, MultiRemoveOfNothingSendsNothing) {
  ConnectWith(kTwo);
  std::list<std::string> none;
  m_io->MultiRemove(none);
  for (const char* text : {"", ",", ",,,"}) m_io->MultiRemove(std::string(text));
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_EQ(m_io->m_values, kTwo);
}

TEST_F(StatusProxy, InMultiRemoveAStarIsANameLikeAnyOther) {
  ConnectWith({{"*", "star"}, {"a", "1"}});
  std::list<std::string> star = {"*"};
  m_io->MultiRemove(star);
  EXPECT_EQ(m_io->ToString(), "a=1");
  EXPECT_EQ(ReceivedOne(), "5102a * text");
  m_io->MultiRemove("*,b");
  EXPECT_EQ(m_io->ToString(), "a=1");
  EXPECT_EQ(ReceivedOne(), "5102a * text b text");
}

TEST_F(StatusProxy, NamesInATextArePartedByCommas) {
  ConnectWith({{"a", "1"}, {" b", "2"}, {"b", "3"}, {"c;d", "4"}});
  m_io->MultiRemove("c;d,,a, b");
  EXPECT_EQ(m_io->ToString(), "b=3") << "blanks belong to a name";
  EXPECT_EQ(ReceivedOne(), "5102a c;d text a text  b text");
}

// ---- without a service

TEST_F(StatusProxy, ChangesAreAppliedQuietlyWhileTheServiceIsAway) {
  Start();
  m_io->SingleSet("a", "1");
  Traced();
  m_io->MultiSet({{"b", "2"}, {"c", "3"}, {"d", "4"}, {"e", "5"}});
  m_io->SingleRemove("b");
  std::list<std::string> names = {"c"};
  m_io->MultiRemove(names);
  m_io->MultiRemove("d");
  EXPECT_EQ(m_io->ToString(), "a=1\ne=5");
  m_io->Clear();
  EXPECT_EQ(m_io->ToString(), "");
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, AServiceThatDoesNotReadIsNoFailure) {
  ConnectWith();
  Congest();
  m_io->SingleSet("a", "1");
  EXPECT_THAT(Traced(), ElementsAre("16 SingleSet: name:a value:1"));
  EXPECT_TRUE(m_io->IsConnected());
  EXPECT_EQ(m_io->ToString(), "a=1");
}

// ---- the caller's texts may be the proxy's own

TEST_F(StatusProxy, ItsOwnNamesMayBeRemoved) {
  ConnectWith({{"*", "0"}, {"a", "1"}, {"b", "2"}, {"c", "3"}});
  m_io->SingleRemove(m_io->m_values.find("a")->first);
  EXPECT_EQ(ReceivedOne(), "5102a a text");
  m_io->MultiRemove(m_io->m_values.find("b")->first);
  EXPECT_EQ(ReceivedOne(), "5102a b text");
  m_io->SingleRemove(m_io->m_values.begin()->first);
  EXPECT_EQ(ReceivedOne(), "5102a * text");
  EXPECT_THAT(m_io->m_values, IsEmpty());
}

TEST_F(StatusProxy, ItsOwnValuesMayBeSet) {
  ConnectWith({{"a", "1"}, {"b", "2"}});
  m_io->SingleSet(m_io->m_values.begin()->first, m_io->m_values["b"]);
  EXPECT_EQ(ReceivedOne(), "5102a a text=2");
  m_io->SingleSet(m_io->m_values["b"], m_io->m_values["a"]);
  EXPECT_EQ(ReceivedOne(), "5102a 2 text=2");
  m_io->MultiSet(m_io->GetAllValues());
  EXPECT_EQ(ReceivedOne(), "5102a 2 text=2 a text=2 b text=2");
}

TEST_F(StatusProxy, ValuesMayBeCopiedIntoItsOwn) {
  Start();
  m_io->m_values = {{"modem", "1"}, {"modem.state", "up"}, {"wan", "2"}};
  EXPECT_EQ(m_io->GetValues("modem", m_io->m_values, "."), 1u);
  EXPECT_EQ(m_io->ToString(), "modem.state=up");
  EXPECT_EQ(m_io->GetValues("", m_io->m_values, "."), 1u);
  EXPECT_EQ(m_io->ToString(), "modem.state=up");
  m_io->m_values["a"] = "old";
  EXPECT_TRUE(m_io->Get("modem.state", m_io->m_values["a"]));
  EXPECT_EQ(m_io->ToString(), "a=up\nmodem.state=up");
}

// ---- questions

TEST_F(StatusProxy, GetGivesAValue) {
  Start();
  m_io->m_values = {{"a", "1"}, {"", "nameless"}};
  std::string value = "before";
  EXPECT_FALSE(m_io->Get("b", value));
  EXPECT_EQ(value, "before");
  EXPECT_TRUE(m_io->Get("a", value));
  EXPECT_EQ(value, "1");
  EXPECT_TRUE(m_io->Get("", value));
  EXPECT_EQ(value, "nameless");
}

TEST_F(StatusProxy, GetAllValuesIsTheWholeSet) {
  Start();
  EXPECT_EQ(&m_io->GetAllValues(), &m_io->m_values);
}

TEST_F(StatusProxy, GetValuesGivesThoseWhoseNameHasThePrefixAsFirstOfSeveralParts) {
  Start();
  m_io->m_values = {{"modem", "1"}, {"modem.state", "up"}, {"modem.state.old", "down"}, {"modemx.state", "2"}};
  EXPECT_THAT(GetValues("modem", "."), ElementsAre(Pair("modem.state", "up"), Pair("modem.state.old", "down")));
  EXPECT_THAT(GetValues("modem.state", "."), IsEmpty()) << "a prefix is one part";
  EXPECT_THAT(GetValues("mod", "."), IsEmpty());
  EXPECT_THAT(GetValues("state", "."), IsEmpty());
  EXPECT_THAT(GetValues("modem", "/"), IsEmpty());
}

TEST_F(StatusProxy, GetValuesWithoutAPrefixGivesAll) {
  Start();
  m_io->m_values = kTwo;
  EXPECT_EQ(GetValues("", "."), kTwo);
  EXPECT_EQ(GetValues("", ""), kTwo);
  m_io->m_values.clear();
  EXPECT_THAT(GetValues("", "."), IsEmpty()) << "what was there before is gone";
}

TEST_F(StatusProxy, EmptyPartsOfANameDoNotCount) {
  Start();
  m_io->m_values = {{".modem.state", "1"}, {"modem.", "2"}, {"modem..", "3"}, {".modem", "4"}, {"modem..state", "5"}};
  EXPECT_THAT(GetValues("modem", "."), ElementsAre(Pair(".modem.state", "1"), Pair("modem..state", "5")));
}

TEST_F(StatusProxy, ASeparatorIsOneText) {
  Start();
  m_io->m_values = {{"modem::state", "1"}, {"modem:state", "2"}};
  EXPECT_THAT(GetValues("modem", "::"), ElementsAre(Pair("modem::state", "1")));
  EXPECT_THAT(GetValues("modem", ""), IsEmpty()) << "an empty one parts nothing";
}

TEST_F(StatusProxy, ToStringIsALineAValue) {
  Start();
  EXPECT_EQ(m_io->ToString(), "");
  m_io->m_values = {{"", ""}};
  EXPECT_EQ(m_io->ToString(), "=");
  m_io->m_values = {{"b", "2"}, {"a", "1"}, {"", ""}};
  EXPECT_EQ(m_io->ToString(), "=\na=1\nb=2");
}

// ---- what the service sends

TEST_F(StatusProxy, ValuesOfTheServiceAreMerged) {
  ConnectWith(kTwo);
  vorn::cRecord values;
  values.AppendTextPar("c", "3");
  values.AppendTextPar("b", "new");
  Answer(0x51031, values);
  EXPECT_EQ(m_io->ToString(), "a=1\nb=new\nc=3");
  EXPECT_TRUE(m_io->m_synced);
  EXPECT_THAT(Received(), IsEmpty()) << "is not answered";
  EXPECT_THAT(m_near.messages, IsEmpty()) << "handled";
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, NoValuesOfTheServiceAreItsValuesToo) {
  ConnectWith(kTwo);
  Answer(0x51031);
  EXPECT_EQ(m_io->m_values, kTwo);
  EXPECT_TRUE(m_io->m_synced);
}

TEST_F(StatusProxy, AParameterOfAnyTypeIsTakenByItsTextForm) {
  ConnectWith();
  vorn::cUuid id;
  id.Create();
  vorn::cRecord nested = TextOf("x", "y"), values;
  values.AppendIntPar("int", -5);
  values.AppendUIntPar("uint", 5);
  values.AppendUInt64Par("uint64", ~0ull);
  values.AppendBoolPar("bool", true);
  values.AppendTimePar("time", vorn::cTime::FromSeconds(1393675200, true));
  values.AppendUuidPar("uuid", id);
  values.AppendDataPar("data", vorn::cData(std::string("\x0A\x01")));
  values.AppendRecordPar("record", nested);
  values.AppendTextPar("no text", nullptr);
  values.AppendTextPar("", "\xB0");
  Answer(0x51031, values);
  EXPECT_THAT(m_io->m_values,
              UnorderedElementsAre(Pair("int", "-5"), Pair("uint", "5"), Pair("uint64", "18446744073709551615"),
                                   Pair("bool", "true"), Pair("time", "2014-03-01T12:00:00Z"),
                                   Pair("uuid", id.ToString()), Pair("data", "0A 01"),
                                   Pair("record", nested.ToString()), Pair("no text", ""), Pair("", "\xB0")));
}

TEST_F(StatusProxy, TheLastOfANameHolds) {
  ConnectWith();
  vorn::cRecord values = TextOf("a", "1");
  values.AppendTextPar("a", "2");
  Answer(0x51031, values);
  EXPECT_EQ(m_io->ToString(), "a=2");
}

TEST_F(StatusProxy, TheServiceMayReplaceAllValues) {
  ConnectWith(kTwo);
  vorn::cRecord values = TextOf("b", "new");
  values.AppendUIntPar("c", 3);
  Answer(0x51033, values);
  EXPECT_EQ(m_io->ToString(), "b=new\nc=3");
  EXPECT_EQ(ReceivedOne(), "51034");
  EXPECT_FALSE(m_io->m_synced) << "only its own values make that";
  EXPECT_THAT(m_near.messages, IsEmpty()) << "handled";
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, ReplacingByNothingRemovesAllAndKeepsWhatIsSynced) {
  ConnectWith(kTwo);
  Answer(0x51031);
  Answer(0x51033);
  EXPECT_THAT(m_io->m_values, IsEmpty());
  EXPECT_EQ(ReceivedOne(), "51034");
  EXPECT_TRUE(m_io->m_synced);
}

TEST_F(StatusProxy, AReplacementWithoutAReplyChannelIsAppliedWithoutAnAnswer) {
  ConnectWith(kTwo);
  vorn::cMsg msg(0x51033);
  msg.Record() = TextOf("c", "3");
  EXPECT_TRUE(m_io->DispatchMessage(msg));
  EXPECT_EQ(m_io->ToString(), "c=3");
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(StatusProxy, TheServiceMayAskForAllValues) {
  ConnectWith({{"b", "2"}, {"a", "1"}});
  Answer(0x52000);
  EXPECT_EQ(ReceivedOne(), "52001 a text=1 b text=2");
  m_io->m_values.clear();
  Answer(0x52000);
  EXPECT_EQ(ReceivedOne(), "52001");
  EXPECT_FALSE(m_io->m_synced);
  EXPECT_THAT(m_near.messages, IsEmpty()) << "handled";
}

TEST_F(StatusProxy, AQuestionWithoutAReplyChannelIsHandled) {
  ConnectWith(kTwo);
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0x52000)));
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(StatusProxy, AcceptanceIsHandledWithoutAction) {
  ConnectWith(kTwo);
  for (const unsigned int type : {0x5102bu, 0x5102eu}) Answer(type, TextOf("c", "3"));
  EXPECT_EQ(m_io->m_values, kTwo);
  EXPECT_FALSE(m_io->m_synced);
  EXPECT_THAT(m_near.messages, IsEmpty());
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(StatusProxy, LeavesEverythingElseToItsService) {
  ConnectWith(kTwo);
  const std::vector<unsigned int> others = {0x5102a, 0x5102c, 0x5102d, 0x5102f, 0x51030, 0x51032, 0x51034, 0x52001};
  for (const unsigned int type : others) Answer(type, TextOf("c", "3"));
  ASSERT_EQ(m_near.messages.size(), others.size());
  for (std::size_t i = 0; i < others.size(); ++i) EXPECT_EQ(m_near.messages[i].GetType(), others[i]);
  EXPECT_FALSE(m_io->DispatchMessage(vorn::cMsg(0)));
  EXPECT_EQ(m_io->m_values, kTwo);
  EXPECT_THAT(Received(), IsEmpty());
}

// ---- deriving

namespace {

class DerivedStatusProxy : public cProxyFixture<cOverriding<cStatusProxy>> {
 protected:
  DerivedStatusProxy() : cProxyFixture("status") {}
};

}  // namespace

TEST_F(DerivedStatusProxy, MayOverrideEveryCallback) {
  Connect();
  Answer(0x51031, TextOf("a", "1"));
  CutWire();
  EXPECT_THAT(m_io->calls, ElementsAre("OnConnect", "DispatchMessage", "OnClose"));
  const vorn::cScmServiceIO& base = *m_io;
  EXPECT_EQ(base.ToString(), "overridden a=1");
}
