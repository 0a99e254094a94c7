// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/obis/obis_server.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include <tav/obis/obis_protocol.h>
#include <tav/obis/obis_proxy.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/temp_folder.h>
#include <tests/support/test_client.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

cObisMapEntry Rule(unsigned long long id, const std::string& name = "Energy", const std::string& obis = "1-0:1.8.0",
                   const std::string& map = "protocol=dlms") {
  cObisMapEntry rule;
  EXPECT_TRUE(rule.Set(id, name, obis, map)) << rule.GetError();
  return rule;
}

class ObisServer : public testing::Test {
 protected:
  void SetUp() override { Serve(); }
  void TearDown() override { End(); }

  void Serve(const cObisMap& shipped = {}) {
    data::cDataOptions options;
    options.file = m_folder.File("tav.db");
    options.durability = data::eDurability::Normal;
    m_store = std::make_unique<cObisStore>(options);
    const data::cFault fault = m_store->Open();
    ASSERT_FALSE(fault) << fault.text;
    m_host = std::make_unique<cServiceHost>("obis-test", m_folder.GetPath());
    m_server = std::make_unique<cObisServer>(m_host.get(), m_store.get(), shipped);
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    ASSERT_EQ(m_server->GetFault(), "");
    m_client = std::make_unique<cTestClient>(m_host.get(), "obis");
    ASSERT_TRUE(m_client->AwaitConnection());
  }
  void End() {
    m_proxies.clear();
    m_client.reset();
    m_server.reset();
    m_host.reset();
    m_store.reset();
  }
  void Restart(const cObisMap& shipped = {}) {
    End();
    Serve(shipped);
  }

  cObisProxy& AddProxy() {
    m_proxies.push_back(std::make_unique<cObisProxy>(m_host.get()));
    cObisProxy& proxy = *m_proxies.back();
    EXPECT_TRUE(m_client->Await([&] { return proxy.loaded; }));
    return proxy;
  }
  bool AwaitSame(const cObisProxy& proxy) {
    return m_client->Await([&] { return proxy.map.ToString() == m_server->GetMap().ToString(); });
  }

  static vorn::cRecord Entry(const vorn::cRecord& form) {
    vorn::cRecord request;
    request.AppendRecordPar(obis::kEntry, form);
    return request;
  }
  // The answer to a change; the notification that follows it is taken off.
  vorn::cMsg Ask(unsigned int type, const vorn::cRecord& form) {
    const vorn::cMsg answer = m_client->Ask(type, Entry(form));
    if (answer.GetType() == type + 1) m_told = m_client->Next();
    return answer;
  }
  vorn::cMsg Set(const cObisMapEntry& rule) { return Ask(obis::eSetRule, rule.ToRecord()); }
  vorn::cMsg Remove(const cObisMapEntry& rule) { return Ask(obis::eRemoveRule, rule.ToRecord()); }
  vorn::cMsg Apply(const cObisMap& map, bool replace) {
    vorn::cRecord request;
    request.AppendRecordPar(obis::kObisMap, map.ToRecord());
    request.AppendBoolPar(obis::kReplace, replace);
    return m_client->Ask(obis::eApplyMap, request);
  }
  static std::string Reason(const vorn::cMsg& msg) { return msg.Record().GetTextPar(obis::kReason); }
  static cObisMap MapOf(std::initializer_list<cObisMapEntry> rules) {
    cObisMap map;
    for (const cObisMapEntry& rule : rules) map.Add(rule);
    return map;
  }

  cTempFolder m_folder;
  std::unique_ptr<cObisStore> m_store;
  std::unique_ptr<cServiceHost> m_host;
  std::unique_ptr<cObisServer> m_server;
  std::unique_ptr<cTestClient> m_client;
  std::vector<std::unique_ptr<cObisProxy>> m_proxies;
  vorn::cMsg m_told;
};

TEST_F(ObisServer, SendsTheWholeMapInsideItsParameter) {
  Set(Rule(9, "Late"));
  Set(Rule(5));
  const vorn::cMsg answer = m_client->Ask(obis::eGetMap);
  EXPECT_EQ(answer.GetType(), obis::eMap);
  EXPECT_THAT(Parameters(answer.Record()),
              ElementsAre("obis-map record={entry record={ID uint64=5, name text=Energy, obis text=1-0:1.8.0, map "
                          "text=protocol=dlms}, entry record={ID uint64=9, name text=Late, obis text=1-0:1.8.0, map "
                          "text=protocol=dlms}}"));
}

TEST_F(ObisServer, AnswersASetAndThenTellsEveryClient) {
  cObisProxy& other = AddProxy();
  EXPECT_EQ(Set(Rule(5)).GetType(), obis::eRuleSet);
  EXPECT_EQ(m_told.GetType(), obis::eChanged);
  EXPECT_THAT(Parameters(m_told.Record()),
              ElementsAre("command text=set",
                          "entry record={ID uint64=5, name text=Energy, obis text=1-0:1.8.0, map "
                          "text=protocol=dlms}"));
  EXPECT_TRUE(AwaitSame(other));
}

TEST_F(ObisServer, AnswersARemovalAndThenTellsEveryClient) {
  Set(Rule(5));
  cObisProxy& other = AddProxy();
  EXPECT_EQ(Remove(Rule(5)).GetType(), obis::eRuleRemoved);
  EXPECT_THAT(Parameters(m_told.Record()), ElementsAre("command text=remove", "entry record={ID uint64=5}"));
  EXPECT_TRUE(AwaitSame(other));
  EXPECT_TRUE(other.map.GetEntries().empty());
}

TEST_F(ObisServer, LooksOnlyAtTheIdOfWhatIsToBeRemoved) {
  Set(Rule(5));
  vorn::cRecord form;
  form.AppendUInt64Par("ID", 5);
  EXPECT_EQ(Ask(obis::eRemoveRule, form).GetType(), obis::eRuleRemoved);
}

TEST_F(ObisServer, CountsTheAnswersOfItsClients) {
  AddProxy();
  AddProxy();
  Set(Rule(5));
  ASSERT_TRUE(m_client->Await([&] { return m_server->GetCounters().applied == 2; }));
  EXPECT_EQ(m_server->GetCounters().told, 3u);
  EXPECT_EQ(m_server->CountUnanswered(), 1u);
  m_client->SendRequest(obis::eChangeNotApplied);
  ASSERT_TRUE(m_client->Await([&] { return m_server->GetCounters().notApplied == 1; }));
  EXPECT_EQ(m_server->CountUnanswered(), 0u);
}

TEST_F(ObisServer, ForgetsTheUnansweredOfAClientThatIsGone) {
  Set(Rule(5));
  EXPECT_EQ(m_server->CountUnanswered(), 1u);
  m_client->GetChannel()->Close();
  AddProxy();
  EXPECT_EQ(m_server->CountUnanswered(), 0u);
}

TEST_F(ObisServer, DoesNotCountAnswersToNothing) {
  m_client->SendRequest(obis::eChangeApplied);
  m_client->Ask(obis::eGetMap);
  EXPECT_EQ(m_server->GetCounters().applied, 0u);
}

TEST_F(ObisServer, ASetThatIsRefusedSaysWhy) {
  struct cCase {
    const char *name, *obis, *map, *reason;
  };
  for (const cCase& bad : {cCase{"", "1-0:1.8.0", "protocol=dlms", "rule: \"name\" is empty"},
                           {"E", "", "protocol=dlms", "rule: \"obis\" is empty"},
                           {"E", "1-0:1.8.0", "", "rule: \"map\" is empty"},
                           {"E", "1-0:1.8", "protocol=dlms", "obis-id invalid"},
                           {"E", "1-0:1.8.0", "dlms", "syntax error in mapping"},
                           {"E", "1-0:1.8.0", "protocol=iec", "unknown protocol"}}) {
    vorn::cRecord form;
    form.AppendUInt64Par("ID", 7);
    form.AppendTextPar("name", bad.name);
    form.AppendTextPar("obis", bad.obis);
    form.AppendTextPar("map", bad.map);
    const vorn::cMsg answer = Ask(obis::eSetRule, form);
    EXPECT_EQ(answer.GetType(), obis::eSetRuleFailed);
    EXPECT_THAT(Reason(answer), HasSubstr(bad.reason));
  }
  EXPECT_THAT(Reason(Ask(obis::eSetRule, {})), HasSubstr("\"ID\" is missing"));
  EXPECT_THAT(Reason(m_client->Ask(obis::eSetRule)), HasSubstr("\"entry\" is missing"));
  EXPECT_TRUE(m_server->GetMap().GetEntries().empty());
  EXPECT_EQ(m_client->CountWaiting(), 0u);
}

TEST_F(ObisServer, ARemovalOfWhatIsNotThereIsRefused) {
  EXPECT_THAT(Reason(Remove(Rule(7))), HasSubstr("no rule with the ID 7"));
  EXPECT_THAT(Reason(Ask(obis::eRemoveRule, {})), HasSubstr("\"ID\" is missing"));
}

TEST_F(ObisServer, TakesTextsUpToTheirLimit) {
  EXPECT_EQ(Set(Rule(1, std::string(cObisServer::kMaxTextBytes - 1, 'n'))).GetType(), obis::eRuleSet);
  EXPECT_EQ(Set(Rule(2, std::string(cObisServer::kMaxTextBytes, 'n'))).GetType(), obis::eRuleSet);
  EXPECT_THAT(Reason(Set(Rule(3, std::string(cObisServer::kMaxTextBytes + 1, 'n')))),
              HasSubstr("1001 bytes, at most 1000"));
}

TEST_F(ObisServer, TakesRulesUpToTheirLimit) {
  cObisMap map;
  for (unsigned int id = 1; id <= cObisServer::kMaxRules; ++id) map.Add(Rule(id));
  ASSERT_EQ(Apply(map, true).Record().GetUIntPar(obis::kChanged), cObisServer::kMaxRules);
  ASSERT_TRUE(m_client->Await([&] { return m_client->CountWaiting() == cObisServer::kMaxRules; }));
  while (m_client->CountWaiting() != 0) m_client->Next();
  EXPECT_THAT(Reason(Set(Rule(cObisServer::kMaxRules + 1))), HasSubstr("more than 10000 rules"));
  EXPECT_EQ(Set(Rule(cObisServer::kMaxRules, "Other")).GetType(), obis::eRuleSet);
}

TEST_F(ObisServer, RefusesAMapThatDoesNotFitOneMessage) {
  cObisMap map;
  for (unsigned int id = 1; id <= 1'100; ++id)
    map.Add(Rule(id, std::string(1'000, 'n'), "1-0:1.8.0", "protocol=dlms,x=" + std::string(980, 'x')));
  EXPECT_THAT(Reason(Apply(map, true)), HasSubstr("larger than 2097152 bytes"));
  EXPECT_TRUE(m_server->GetMap().GetEntries().empty());
}

TEST_F(ObisServer, KeepsItsRulesOverARestart) {
  Set(Rule(5));
  Set(Rule(6, "W\xe4rme \"x\"", "6-0:1.0.0", "protocol=mbus,dif=04,vif=06"));
  Set(Rule(std::numeric_limits<unsigned long long>::max(), "Largest"));
  Set(Rule(0, "Smallest"));
  Remove(Rule(5));
  const std::string before = m_server->GetMap().ToString();
  Restart();
  EXPECT_EQ(m_server->GetMap().ToString(), before);
  EXPECT_EQ(m_server->GetMap().GetEntries().size(), 3u);
}

TEST_F(ObisServer, PutsTheShippedRulesInOnce) {
  End();
  std::filesystem::remove(m_folder.File("tav.db"));
  const cObisMap shipped = MapOf({Rule(1), Rule(2, "Other", "1-0:2.8.0")});
  Serve(shipped);
  EXPECT_EQ(m_server->GetMap().GetEntries().size(), 2u);
  Remove(Rule(1));
  Remove(Rule(2));
  Restart(shipped);
  EXPECT_TRUE(m_server->GetMap().GetEntries().empty());
}

// ---- many at once

TEST_F(ObisServer, AppliesManyRulesAndTellsEachChange) {
  Set(Rule(1));
  Set(Rule(2));
  cObisProxy& other = AddProxy();
  const vorn::cMsg answer = Apply(MapOf({Rule(2), Rule(3), Rule(4)}), false);
  EXPECT_EQ(answer.GetType(), obis::eMapApplied);
  EXPECT_EQ(answer.Record().GetUIntPar(obis::kChanged), 2u);
  EXPECT_EQ(m_client->Next().GetType(), obis::eChanged);
  EXPECT_EQ(m_client->Next().GetType(), obis::eChanged);
  EXPECT_EQ(m_server->GetMap().GetEntries().size(), 4u);
  EXPECT_TRUE(AwaitSame(other));
}

TEST_F(ObisServer, ReplacesAllRules) {
  Set(Rule(1));
  Set(Rule(2));
  cObisProxy& other = AddProxy();
  EXPECT_EQ(Apply(MapOf({Rule(2, "Renamed"), Rule(3)}), true).Record().GetUIntPar(obis::kChanged), 3u);
  EXPECT_TRUE(AwaitSame(other));
  EXPECT_EQ(other.map.GetEntries().size(), 2u);
}

TEST_F(ObisServer, AppliesAllOrNothing) {
  vorn::cRecord map;
  map.AppendRecordPar(obis::kEntry, Rule(1).ToRecord());
  vorn::cRecord bad = Rule(2).ToRecord();
  bad.SetTextPar("obis", "1-0:1.8");
  map.AppendRecordPar(obis::kEntry, bad);
  vorn::cRecord request;
  request.AppendRecordPar(obis::kObisMap, map);
  request.AppendBoolPar(obis::kReplace, true);
  const vorn::cMsg answer = m_client->Ask(obis::eApplyMap, request);
  EXPECT_EQ(answer.GetType(), obis::eApplyMapFailed);
  EXPECT_EQ(Reason(answer), "rule number 2: rule 2 for '1-0:1.8' by 'protocol=dlms': obis-id invalid");
  EXPECT_TRUE(m_server->GetMap().GetEntries().empty());
}

TEST_F(ObisServer, RefusesAMapWithAnIdTwice) {
  vorn::cRecord map;
  map.AppendRecordPar(obis::kEntry, Rule(1).ToRecord());
  map.AppendRecordPar(obis::kEntry, Rule(1, "Again").ToRecord());
  vorn::cRecord request;
  request.AppendRecordPar(obis::kObisMap, map);
  request.AppendBoolPar(obis::kReplace, false);
  EXPECT_THAT(Reason(m_client->Ask(obis::eApplyMap, request)), HasSubstr("the ID 1 is there twice"));
}

// ---- the disk

TEST_F(ObisServer, AChangeThatCannotBeStoredIsRefusedAndNotTold) {
  Set(Rule(1));
  std::filesystem::rename(m_folder.File("tav.db"), m_folder.File("elsewhere.db"));
  const vorn::cMsg answer = Set(Rule(2));
  EXPECT_EQ(answer.GetType(), obis::eSetRuleFailed);
  EXPECT_THAT(Reason(answer), HasSubstr("removed or replaced"));
  EXPECT_EQ(m_client->CountWaiting(), 0u);
  EXPECT_EQ(m_server->GetMap().GetEntries().size(), 1u);
  std::filesystem::rename(m_folder.File("elsewhere.db"), m_folder.File("tav.db"));
  EXPECT_EQ(Set(Rule(2)).GetType(), obis::eRuleSet);
}

// ---- the road of a change from proxy to proxy

TEST_F(ObisServer, AProxysChangeComesBackToItAsToTheOthers) {
  cObisProxy& one = AddProxy();
  cObisProxy& other = AddProxy();
  cObisMapEntry rule = Rule(5);
  EXPECT_TRUE(one.SetEntry(rule));
  EXPECT_TRUE(one.map.GetEntries().empty());
  ASSERT_TRUE(m_client->Await([&] { return one.map.GetEntries().size() == 1; }));
  EXPECT_TRUE(AwaitSame(other));
  EXPECT_TRUE(one.RemoveEntry(rule));
  EXPECT_TRUE(m_client->Await([&] { return one.map.GetEntries().empty() && other.map.GetEntries().empty(); }));
}

TEST_F(ObisServer, AProxyThatComesBackHasTheMapOfThen) {
  cObisProxy& proxy = AddProxy();
  Set(Rule(5));
  ASSERT_TRUE(AwaitSame(proxy));
  proxy.GetChannel()->Close();
  ASSERT_TRUE(m_client->Await([&] { return !proxy.loaded; }));
  EXPECT_EQ(proxy.map.GetEntries().size(), 1u);
  Remove(Rule(5));
  Set(Rule(6));
  proxy.HealthRequest();
  ASSERT_TRUE(m_client->Await([&] { return proxy.loaded; }));
  EXPECT_EQ(proxy.map.ToString(), m_server->GetMap().ToString());
}

}  // namespace
}  // namespace tav::gateway
