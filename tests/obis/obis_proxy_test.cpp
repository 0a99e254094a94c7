// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_proxy.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/record/meter_tav.h>
#include <tests/support/proxy_fixture.h>

using tav::cObisMap;
using tav::cObisMapEntry;
using tav::cObisProxy;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kMbus = "protocol=mbus,dif=04,vif=03";

cObisMapEntry Rule(unsigned long long id, const std::string& name = "Energy", const std::string& obis = "1-0:1.8.0") {
  return cObisMapEntry(id, name, obis, kMbus);
}

vorn::cRecord MapOf(const std::vector<cObisMapEntry>& rules) {
  cObisMap map;
  for (const cObisMapEntry& rule : rules) map.Set(rule);
  vorn::cRecord record;
  record.AppendRecordPar("obis-map", map.ToRecord());
  return record;
}

vorn::cRecord Change(const std::string& command, const vorn::cRecord& entry) {
  vorn::cRecord record;
  record.AppendTextPar("command", command);
  record.AppendRecordPar("entry", entry);
  return record;
}

vorn::cRecord EntryOf(unsigned long long id) {
  vorn::cRecord entry;
  entry.AppendUInt64Par("ID", id);
  return entry;
}

class ObisProxy : public cProxyFixture<cObisProxy> {
 protected:
  ObisProxy() : cProxyFixture("obis") {}

  // Connected, the greeting and its line of trace out of the way.
  void ConnectQuietly() {
    Connect();
    Messages();
    Traced();
  }
  // What the client answers to a notification.
  vorn::cMsg Notify(const vorn::cRecord& change) {
    Answer(0x51085, change);
    const std::vector<vorn::cMsg> answers = Messages();
    EXPECT_EQ(answers.size(), 1u);
    return answers.empty() ? vorn::cMsg() : answers.front();
  }
  std::string Rules() const { return m_io->map.ToString(); }
};

const std::string kEnergy = "1-0:1.8.0 Energy " + std::string(kMbus);
const std::string kPower = "1-0:16.7.0 Power " + std::string(kMbus);

}  // namespace

// ---- the channel

TEST_F(ObisProxy, StartsEmptyOnChannelObis) {
  Start();
  EXPECT_EQ(m_io->GetName(), "obis");
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  EXPECT_FALSE(m_io->loaded);
}

TEST_F(ObisProxy, AsksForTheMapWhenConnected) {
  Connect();
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages.front().GetType(), 0x51082u);
  EXPECT_TRUE(messages.front().Record().IsEmpty());
  EXPECT_TRUE(messages.front().GetId().IsValid());
  EXPECT_THAT(Traced(), ElementsAre("16 ObisProxy connection established"));
  EXPECT_FALSE(m_io->loaded) << "only asked for";
}

TEST_F(ObisProxy, AsksUnderAFreshIdentifierOnEveryConnection) {
  Connect();
  const vorn::cUuid first = Messages().front().GetId();
  CutWire();
  Reconnect();
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages.front().GetType(), 0x51082u);
  EXPECT_NE(messages.front().GetId(), first);
}

TEST_F(ObisProxy, AQuestionThatCannotBeSentIsNoFailure) {
  Start();
  m_io->OnConnect();  // while there is no connection
  EXPECT_THAT(Traced(), ElementsAre("16 ObisProxy connection established"));
}

TEST_F(ObisProxy, KeepsItsRulesWhenTheConnectionCloses) {
  Connect();
  Answer(0x51083, MapOf({Rule(5)}));
  Traced();
  CutWire();
  EXPECT_THAT(Traced(), ElementsAre("16 ObisProxy connection shutdown"));
  EXPECT_FALSE(m_io->loaded);
  cObisMapEntry found;
  EXPECT_TRUE(m_io->map.GetEntryByObisId("1-0:1.8.0*255", found, false));
  EXPECT_EQ(tav::cMeterTav::ObisName("1-0:1.8.0", m_io->map), "Energy");
}

TEST_F(ObisProxy, IsLoadedAgainByTheMapOfTheNewConnection) {
  Connect();
  Answer(0x51083, MapOf({Rule(5)}));
  CutWire();
  Reconnect();
  EXPECT_FALSE(m_io->loaded);
  EXPECT_EQ(Rules(), kEnergy);
  Answer(0x51083, MapOf({Rule(6, "Power", "1-0:16.7.0")}));
  EXPECT_TRUE(m_io->loaded);
  EXPECT_EQ(Rules(), kPower);
}

TEST_F(ObisProxy, KeepsTheConnectionAliveByPings) {
  Connect();
  EXPECT_TRUE(PingsAnIdleService());
}

TEST_F(ObisProxy, ProgressIsTracedFromItsLevelOn) {
  const cTraceLevel below("UnitTAV", 15);
  Connect();
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- the whole map

TEST_F(ObisProxy, TakesTheWholeMap) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(6, "Power", "1-0:16.7.0"), Rule(5)}));
  EXPECT_TRUE(m_io->loaded);
  EXPECT_EQ(Rules(), kEnergy + "; " + kPower) << "in the order of the IDs";
  EXPECT_THAT(Received(), IsEmpty()) << "is not answered";
  EXPECT_THAT(m_near.messages, IsEmpty()) << "handled";
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, ASecondMapReplacesTheFirst) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5), Rule(7)}));
  Answer(0x51083, MapOf({Rule(6, "Power", "1-0:16.7.0")}));
  EXPECT_EQ(Rules(), kPower);
  EXPECT_TRUE(m_io->loaded);
}

TEST_F(ObisProxy, AnEmptyMapIsAMap) {
  ConnectQuietly();
  m_io->map.Set(Rule(5));
  Answer(0x51083, MapOf({}));
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  EXPECT_TRUE(m_io->loaded);
}

TEST_F(ObisProxy, AMapThatIsNotWrappedHoldsNoRules) {
  ConnectQuietly();
  m_io->map.Set(Rule(5));
  cObisMap map;
  map.Set(Rule(6));
  Answer(0x51083, map.ToRecord());
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  EXPECT_TRUE(m_io->loaded);
}

TEST_F(ObisProxy, AMapOfAnotherTypeHoldsNoRules) {
  ConnectQuietly();
  m_io->map.Set(Rule(5));
  vorn::cRecord record;
  record.AppendTextPar("obis-map", "entry");
  Answer(0x51083, record);
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  EXPECT_TRUE(m_io->loaded);
}

TEST_F(ObisProxy, BadRulesOfAMapAreLeftOut) {
  ConnectQuietly();
  vorn::cRecord rules, record;
  rules.AppendRecordPar("entry", EntryOf(4));
  rules.AppendRecordPar("entry", Rule(5).ToRecord());
  rules.AppendTextPar("entry", "6");
  record.AppendRecordPar("obis-map", rules);
  Answer(0x51083, record);
  EXPECT_EQ(Rules(), kEnergy);
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- changes

TEST_F(ObisProxy, ASetAddsARule) {
  ConnectQuietly();
  const vorn::cMsg answer = Notify(Change("set", Rule(5).ToRecord()));
  EXPECT_EQ(answer.GetType(), 0x51086u);
  EXPECT_TRUE(answer.Record().IsEmpty());
  EXPECT_TRUE(answer.GetId().IsValid());
  EXPECT_EQ(Rules(), kEnergy);
  EXPECT_FALSE(m_io->loaded) << "a change is not the whole map";
  EXPECT_THAT(m_near.messages, IsEmpty()) << "handled";
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, ASetReplacesTheRuleOfItsId) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5, "Old"), Rule(6, "Power", "1-0:16.7.0")}));
  EXPECT_EQ(Notify(Change("set", Rule(5).ToRecord())).GetType(), 0x51086u);
  EXPECT_EQ(Rules(), kEnergy + "; " + kPower);
  EXPECT_TRUE(m_io->loaded);
}

TEST_F(ObisProxy, ARemoveRemovesTheRuleOfItsId) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5), Rule(6, "Power", "1-0:16.7.0")}));
  EXPECT_EQ(Notify(Change("remove", Rule(6, "another", "1-0:2.8.0").ToRecord())).GetType(), 0x51086u);
  EXPECT_EQ(Rules(), kEnergy);
  EXPECT_EQ(Notify(Change("remove", EntryOf(5))).GetType(), 0x51086u) << "of the entry only the ID is read";
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, ARemoveOfARuleThatIsNotThereIsApplied) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5)}));
  EXPECT_EQ(Notify(Change("remove", EntryOf(6))).GetType(), 0x51086u);
  EXPECT_EQ(Rules(), kEnergy);
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, ARemoveWithoutAnIdIsThatOfTheIdZero) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(0), Rule(6, "Power", "1-0:16.7.0")}));
  vorn::cRecord entry;
  entry.AppendTextPar("name", "Power");
  EXPECT_EQ(Notify(Change("remove", entry)).GetType(), 0x51086u);
  EXPECT_EQ(Rules(), kPower);
}

TEST_F(ObisProxy, AnIdMayBeOfAnyIntegerType) {
  ConnectQuietly();
  vorn::cRecord entry;
  entry.AppendUIntPar("ID", 5);
  entry.AppendTextPar("name", "Energy");
  entry.AppendTextPar("obis", "1-0:1.8.0");
  entry.AppendTextPar("map", kMbus);
  Notify(Change("set", entry));
  EXPECT_EQ(m_io->map.GetEntries().begin()->first, 5u);
  Notify(Change("remove", entry));
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
}

TEST_F(ObisProxy, TheLargestIdIsAnIdLikeAnyOther) {
  constexpr unsigned long long kLargest = ~0ull;
  ConnectQuietly();
  Notify(Change("set", Rule(kLargest).ToRecord()));
  EXPECT_TRUE(m_io->map.GetEntries().Contains(kLargest));
  Notify(Change("remove", EntryOf(kLargest)));
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
}

TEST_F(ObisProxy, AnUnknownCommandIsTracedAndNotApplied) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5)}));
  const vorn::cMsg answer = Notify(Change("update", Rule(5, "Other").ToRecord()));
  EXPECT_EQ(answer.GetType(), 0x51087u);
  EXPECT_TRUE(answer.Record().IsEmpty());
  EXPECT_TRUE(answer.GetId().IsValid());
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[ObisNotify] unknown command update"));
  EXPECT_EQ(Rules(), kEnergy);
}

TEST_F(ObisProxy, CommandsAreComparedLetterByLetter) {
  ConnectQuietly();
  for (const char* command : {"Set", "set ", "REMOVE", "sets", "re"}) {
    EXPECT_EQ(Notify(Change(command, Rule(5).ToRecord())).GetType(), 0x51087u) << command;
    EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[ObisNotify] unknown command " + std::string(command)));
  }
}

// Each of these rules is refused; the line is that of a command nobody knows.
TEST_F(ObisProxy, ASetOfARefusedRuleIsTracedAsAnUnknownCommand) {
  vorn::cRecord badObis, badProtocol, emptyMap;
  for (vorn::cRecord* rule : {&badObis, &badProtocol, &emptyMap}) *rule = Rule(5).ToRecord();
  badObis.SetTextPar("obis", "1-0:1.8");
  badProtocol.SetTextPar("map", "protocol=iec");
  emptyMap.SetTextPar("map", "");
  ConnectQuietly();
  for (const vorn::cRecord& rule : {EntryOf(5), badObis, badProtocol, emptyMap}) {
    EXPECT_EQ(Notify(Change("set", rule)).GetType(), 0x51087u) << rule.ToString();
    EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[ObisNotify] unknown command set")) << rule.ToString();
    EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  }
}

TEST_F(ObisProxy, AnUnknownCommandIsTracedFromLevelTwoOn) {
  ConnectQuietly();
  const cTraceLevel two("UnitTAV", 2);
  Notify(Change("update", EntryOf(5)));
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[ObisNotify] unknown command update"));
  const cTraceLevel one("UnitTAV", 1);
  Notify(Change("update", EntryOf(5)));
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, AMalformedChangeIsNotAppliedAndNotTraced) {
  const vorn::cRecord entry = Rule(5).ToRecord();
  std::vector<vorn::cRecord> malformed(8);
  malformed[1].AppendRecordPar("entry", entry);  // no command
  malformed[2] = Change("", entry);
  malformed[3].AppendTextPar("command", nullptr);
  malformed[3].AppendRecordPar("entry", entry);
  malformed[4].AppendDataPar("command", vorn::cData(std::string("set")));
  malformed[4].AppendRecordPar("entry", entry);
  malformed[5].AppendTextPar("command", "set");  // no entry
  malformed[6] = Change("remove", {});
  malformed[7].AppendTextPar("command", "remove");
  malformed[7].AppendTextPar("entry", "5");
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5)}));
  for (const vorn::cRecord& change : malformed) {
    EXPECT_EQ(Notify(change).GetType(), 0x51087u) << change.ToString();
    EXPECT_THAT(Traced(), IsEmpty()) << change.ToString();
    EXPECT_EQ(Rules(), kEnergy) << change.ToString();
  }
}

TEST_F(ObisProxy, OnlyTheFirstCommandAndEntryCount) {
  ConnectQuietly();
  vorn::cRecord change = Change("set", Rule(5).ToRecord());
  change.AppendTextPar("command", "remove");
  change.AppendRecordPar("entry", Rule(6).ToRecord());
  EXPECT_EQ(Notify(change).GetType(), 0x51086u);
  EXPECT_EQ(Rules(), kEnergy);
}

TEST_F(ObisProxy, AChangeBeforeTheMapIsApplied) {
  Connect();
  Answer(0x51083, MapOf({Rule(5)}));
  CutWire();
  Reconnect();
  Messages();
  EXPECT_EQ(Notify(Change("set", Rule(6, "Power", "1-0:16.7.0").ToRecord())).GetType(), 0x51086u);
  EXPECT_EQ(Rules(), kEnergy + "; " + kPower);
  EXPECT_FALSE(m_io->loaded);
}

TEST_F(ObisProxy, AChangeWithoutAReplyChannelIsAppliedWithoutAnAnswer) {
  ConnectQuietly();
  vorn::cMsg change(0x51085);
  change.Record() = Change("set", Rule(5).ToRecord());
  EXPECT_TRUE(m_io->DispatchMessage(change));
  EXPECT_EQ(Rules(), kEnergy);
  change.Record() = {};
  EXPECT_TRUE(m_io->DispatchMessage(change));
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(ObisProxy, AnswersUnderIdentifiersOfTheirOwn) {
  ConnectQuietly();
  vorn::cMsg change(0x51085);
  change.Record() = Change("set", Rule(5).ToRecord());
  vorn::cUuid id;
  id.Create();
  change.SetId(id);
  for (int twice = 0; twice < 2; ++twice) m_server->GetChannels().front()->Send(change);
  const std::vector<vorn::cMsg> answers = Messages();
  ASSERT_EQ(answers.size(), 2u);
  EXPECT_NE(answers[0].GetId(), id);
  EXPECT_NE(answers[0].GetId(), answers[1].GetId());
}

TEST_F(ObisProxy, TextsThatAreNotUtf8AreKeptAsTheyAre) {
  const std::string latin = "Temp. \xB0 outside";
  ConnectQuietly();
  Notify(Change("set", Rule(5, latin).ToRecord()));
  EXPECT_EQ(m_io->map.GetEntries().begin()->second.GetName(), latin);
  EXPECT_EQ(Notify(Change(latin, Rule(5).ToRecord())).GetType(), 0x51087u);
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[ObisNotify] unknown command " + latin));
}

TEST_F(ObisProxy, LeavesEverythingElseToItsService) {
  ConnectQuietly();
  const std::vector<unsigned int> others = {0x51082, 0x51084, 0x51086, 0x51087, 0x51088,
                                            0x51089, 0x5108a, 0x5108b, 0x5108c, 0x5108d};
  for (const unsigned int type : others) Answer(type);
  ASSERT_EQ(m_near.messages.size(), others.size());
  for (std::size_t i = 0; i < others.size(); ++i) EXPECT_EQ(m_near.messages[i].GetType(), others[i]);
  EXPECT_FALSE(m_io->DispatchMessage(vorn::cMsg(0)));
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_FALSE(m_io->loaded);
}

// ---- storing and deleting rules

TEST_F(ObisProxy, SetEntrySendsTheRuleUnderAnIdentifierThatTheCallerLearns) {
  ConnectQuietly();
  cObisMapEntry rule = Rule(5);
  vorn::cUuid id;
  EXPECT_TRUE(m_io->SetEntry(id, rule));
  EXPECT_TRUE(id.IsValid());
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(Show(messages[0]), "51088 entry record={ID uint64=5, name text=Energy, obis text=1-0:1.8.0, map text=" +
                                   std::string(kMbus) + "}");
  EXPECT_EQ(messages[0].GetId(), id);
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty()) << "the service's notification brings it";
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, RemoveEntrySendsTheRuleUnderAnIdentifierThatTheCallerLearns) {
  ConnectQuietly();
  m_io->map.Set(Rule(5));
  cObisMapEntry rule = Rule(5);
  vorn::cUuid id;
  EXPECT_TRUE(m_io->RemoveEntry(id, rule));
  EXPECT_TRUE(id.IsValid());
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(Show(messages[0]), "5108b entry record={ID uint64=5, name text=Energy, obis text=1-0:1.8.0, map text=" +
                                   std::string(kMbus) + "}");
  EXPECT_EQ(messages[0].GetId(), id);
  EXPECT_EQ(Rules(), kEnergy) << "the service's notification takes it away";
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, AValidIdentifierIsKept) {
  ConnectQuietly();
  cObisMapEntry rule = Rule(5);
  vorn::cUuid id;
  id.Create();
  const vorn::cUuid given = id;
  EXPECT_TRUE(m_io->SetEntry(id, rule));
  EXPECT_TRUE(m_io->RemoveEntry(id, rule));
  EXPECT_EQ(id, given);
  for (const vorn::cMsg& msg : Messages()) EXPECT_EQ(msg.GetId(), given);
}

TEST_F(ObisProxy, TheShortFormsUseFreshIdentifiers) {
  ConnectQuietly();
  cObisMapEntry rule = Rule(5);
  EXPECT_TRUE(m_io->SetEntry(rule));
  EXPECT_TRUE(m_io->RemoveEntry(rule));
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].GetType(), 0x51088u);
  EXPECT_EQ(messages[1].GetType(), 0x5108bu);
  EXPECT_TRUE(messages[0].GetId().IsValid());
  EXPECT_TRUE(messages[1].GetId().IsValid());
  EXPECT_NE(messages[0].GetId(), messages[1].GetId());
}

TEST_F(ObisProxy, ARuleIsSentAsItStandsAlsoWhenItWasRefused) {
  ConnectQuietly();
  cObisMapEntry rule;
  EXPECT_TRUE(m_io->SetEntry(rule));
  EXPECT_THAT(Received(), ElementsAre("51088 entry record={ID uint64=0, name text=, obis text=, map text=}"));
}

TEST_F(ObisProxy, TheAnswerReachesTheServiceUnderTheIdentifier) {
  ConnectQuietly();
  cObisMapEntry rule = Rule(5);
  vorn::cUuid id;
  m_io->SetEntry(id, rule);
  vorn::cMsg stored(0x51089);
  stored.SetId(Messages().front().GetId());
  m_server->GetChannels().front()->Send(stored);
  Notify(Change("set", rule.ToRecord()));
  ASSERT_EQ(m_near.messages.size(), 1u);
  EXPECT_EQ(m_near.messages[0].GetType(), 0x51089u);
  EXPECT_EQ(m_near.messages[0].GetId(), id);
  EXPECT_EQ(Rules(), kEnergy);
}

TEST_F(ObisProxy, StoringAndDeletingShareTheLineOfAFailure) {
  Start();
  cObisMapEntry rule = Rule(5);
  for (const unsigned int type : {0x51088u, 0x5108bu}) {
    vorn::cUuid id;
    EXPECT_FALSE(type == 0x51088 ? m_io->SetEntry(id, rule) : m_io->RemoveEntry(id, rule));
    EXPECT_TRUE(id.IsValid()) << "created all the same";
    vorn::cMsg refused(type);
    refused.SetId(id);
    refused.Record().AppendRecordPar("entry", rule.ToRecord());
    EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[GetObisEntry] send failed, msg=" + refused.ToString()));
  }
}

TEST_F(ObisProxy, TheShortFormsTellAFailureToo) {
  Start();
  cObisMapEntry rule = Rule(5);
  EXPECT_FALSE(m_io->SetEntry(rule));
  EXPECT_FALSE(m_io->RemoveEntry(rule));
  EXPECT_THAT(Traced(), ElementsAre(testing::StartsWith("2 dbctrl[GetObisEntry] send failed, msg="),
                                    testing::StartsWith("2 dbctrl[GetObisEntry] send failed, msg=")));
}

TEST_F(ObisProxy, AFailureIsTracedFromLevelTwoOn) {
  Start();
  cObisMapEntry rule = Rule(5);
  const cTraceLevel two("UnitTAV", 2);
  m_io->SetEntry(rule);
  EXPECT_EQ(Traced().size(), 1u);
  const cTraceLevel one("UnitTAV", 1);
  m_io->SetEntry(rule);
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(ObisProxy, AServiceThatDoesNotReadMakesARequestFail) {
  ConnectQuietly();
  Congest();
  cObisMapEntry rule = Rule(5);
  EXPECT_FALSE(m_io->SetEntry(rule));
  EXPECT_TRUE(m_io->IsConnected());
  EXPECT_EQ(Traced().size(), 1u);
}

TEST_F(ObisProxy, ClearEmptiesTheCopyAndNothingElse) {
  ConnectQuietly();
  Answer(0x51083, MapOf({Rule(5)}));
  m_io->Clear();
  EXPECT_THAT(m_io->map.GetEntries(), IsEmpty());
  EXPECT_TRUE(m_io->loaded);
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- deriving

namespace {

class DerivedObisProxy : public cProxyFixture<cOverriding<cObisProxy>> {
 protected:
  DerivedObisProxy() : cProxyFixture("obis") {}
};

}  // namespace

TEST_F(DerivedObisProxy, MayOverrideEveryCallback) {
  Connect();
  Answer(0x51083, MapOf({Rule(5)}));
  CutWire();
  EXPECT_THAT(m_io->calls, ElementsAre("OnConnect", "DispatchMessage", "OnClose"));
  EXPECT_EQ(m_io->map.ToString(), kEnergy);
}

TEST_F(DerivedObisProxy, TheTextFormIsThatOfTheChannel) {
  Start();
  EXPECT_EQ(m_io->cObisProxy::ToString(), m_io->vorn::cScmServiceIO::ToString());
}
