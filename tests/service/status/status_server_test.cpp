// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/status/status_server.h>

#include <unistd.h>

#include <random>

#include <tav/service/status_protocol.h>
#include <tests/service/status/status_world.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/test_client.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class StatusServer : public StatusWorld {
 protected:
  // A client of which every message is seen, on the service's own loop.
  void Watch() {
    m_client = std::make_unique<cTestClient>(m_host.get(), "status");
    ASSERT_TRUE(m_client->AwaitConnection());
  }
  vorn::cRecord Text(const std::string& name, const char* value) {
    vorn::cRecord record;
    record.AppendTextPar(name, value);
    return record;
  }
  void TearDown() override { m_client.reset(); }

  std::unique_ptr<cTestClient> m_client;
};

TEST_F(StatusServer, GivesEveryClientTheValuesOfAll) {
  cStatusProxy& a = Add("a");
  cStatusProxy& b = Add("b");
  a.SingleSet("a.one", "1");
  b.MultiSet({{"b.one", "1"}, {"b.two", "2"}});
  Settle();
  EXPECT_EQ(Known(), (Values{{"a.one", "1"}, {"b.one", "1"}, {"b.two", "2"}}));
  ExpectAllEqual();
  EXPECT_EQ(AddConnected("c").m_values, Known());
}

TEST_F(StatusServer, TellsAChangeToTheOthers) {
  cStatusProxy& a = AddConnected("a");
  AddConnected("b");
  a.SingleSet("x", "1");
  Settle();
  ExpectAllEqual();
  a.SingleSet("x", "2");
  Settle();
  EXPECT_EQ(Known(), (Values{{"x", "2"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, TellsARemovalToTheOthers) {
  cStatusProxy& a = AddConnected("a");
  AddConnected("b");
  a.MultiSet({{"x", "1"}, {"y", "2"}});
  Settle();
  a.SingleRemove("x");
  Settle();
  EXPECT_EQ(Known(), (Values{{"y", "2"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, AnyClientMayRemoveAValue) {
  AddConnected("a").SingleSet("x", "1");
  Settle();
  AddConnected("b").SingleRemove("x");
  Settle();
  EXPECT_TRUE(Known().empty());
  ExpectAllEqual();
}

TEST_F(StatusServer, ClearingRemovesTheClientsOwnValuesOnly) {
  cStatusProxy& a = AddConnected("a");
  AddConnected("b").SingleSet("b.x", "1");
  a.SingleSet("a.x", "1");
  Settle();
  a.Clear();
  EXPECT_TRUE(a.m_values.empty());
  Settle();
  EXPECT_EQ(Known(), (Values{{"b.x", "1"}}));
  ExpectAllEqual();
}

// In a list "*" is a name like any other for the client, and alone in a message the name of all values for the service.
TEST_F(StatusServer, AListOfOnlyTheStarRemovesAllOfTheClient) {
  cStatusProxy& a = AddConnected("a");
  a.SingleSet("a.x", "1");
  Settle();
  a.MultiRemove("*");
  Settle();
  EXPECT_TRUE(Known().empty());
  ExpectAllEqual();
}

TEST_F(StatusServer, AStarAmongOtherNamesIsAName) {
  cStatusProxy& a = AddConnected("a");
  a.MultiSet({{"*", "star"}, {"x", "1"}, {"y", "2"}});
  Settle();
  a.MultiRemove("x,*");
  Settle();
  EXPECT_EQ(Known(), (Values{{"y", "2"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, DoesNotTellAClientItsOwnValues) {
  Watch();
  EXPECT_EQ(m_client->Ask(status::eFullSet, Text("x", "1")).GetType(), status::eValues);
  EXPECT_EQ(m_client->Ask(status::eChange, Text("x", "2")).GetType(), status::eAccepted);
  Settle();
  EXPECT_EQ(m_client->CountWaiting(), 0u);
}

TEST_F(StatusServer, AnswersTheFullSetWithWhatTheClientLacks) {
  AddConnected("a").MultiSet({{"x", "1"}, {"y", "2"}});
  Settle();
  Watch();
  const vorn::cMsg answer = m_client->Ask(status::eFullSet, Text("x", "1"));
  EXPECT_EQ(answer.GetType(), status::eValues);
  EXPECT_THAT(Parameters(answer.Record()), ElementsAre("y text=2"));
}

TEST_F(StatusServer, TakesParametersOfEveryTypeByTheirText) {
  Watch();
  vorn::cRecord change;
  change.AppendUIntPar("number", 7);
  change.AppendBoolPar("flag", true);
  EXPECT_EQ(m_client->Ask(status::eChange, change).GetType(), status::eAccepted);
  EXPECT_EQ(Known(), (Values{{"flag", "true"}, {"number", "7"}}));
}

TEST_F(StatusServer, TellsNothingToWhoHasNotBroughtItsSet) {
  Watch();
  AddConnected("a").SingleSet("x", "1");
  Settle();
  EXPECT_EQ(m_client->CountWaiting(), 0u);
}

TEST_F(StatusServer, TwoWritersOfOneValueAgreeInTheEnd) {
  cStatusProxy& a = AddConnected("a");
  cStatusProxy& b = AddConnected("b");
  for (int round = 0; round < 5; ++round) {
    a.SingleSet("x", "a" + std::to_string(round));
    b.SingleSet("x", "b" + std::to_string(round));
    Settle();
    ExpectAllEqual();
  }
}

// ---- clients that go and come back

TEST_F(StatusServer, KeepsTheValuesOfAClientThatIsGoneAndMarksThem) {
  cStatusProxy& a = AddConnected("a");
  a.SingleSet("a.x", "1");
  Settle();
  Remove(a);
  Settle();
  EXPECT_EQ(Known(), (Values{{"a.x", "1"}}));
  Watch();
  const vorn::cMsg answer = m_client->Ask(status::eList);
  const vorn::cRecord row = answer.Record().GetRecordPar(status::kRow);
  EXPECT_NE(row.GetTextPar(status::kProcess), "");
  EXPECT_FALSE(row.GetBoolPar(status::kConnected));
  EXPECT_EQ(m_server->GetSet().CountGone(), 1u);
}

TEST_F(StatusServer, DropsThemADayLater) {
  cStatusProxy& a = AddConnected("a");
  cStatusProxy& b = AddConnected("b");
  a.SingleSet("a.x", "1");
  b.SingleSet("b.x", "1");
  Settle();
  Remove(a);
  Settle();
  m_clock->Advance(cStatusSet::kKeepGoneMs - cStatusServer::kExpiryMs);
  Settle();
  EXPECT_EQ(Known().size(), 2u);
  m_clock->Advance(2 * cStatusServer::kExpiryMs);
  Settle();
  EXPECT_EQ(Known(), (Values{{"b.x", "1"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, ASuccessorTakesItsPredecessorsValuesOver) {
  cStatusProxy& a = AddConnected("driver");
  a.SingleSet("x", "old");
  Settle();
  Remove(a);
  Settle();
  cStatusProxy& successor = Add("driver");
  successor.SingleSet("x", "new");
  Settle();
  EXPECT_EQ(Known(), (Values{{"x", "new"}}));
  EXPECT_EQ(m_server->GetSet().CountGone(), 0u);
  ExpectAllEqual();
}

TEST_F(StatusServer, WhatAClientChangesWhileItIsAwayCounts) {
  cStatusProxy& a = AddConnected("a");
  AddConnected("b");
  a.MultiSet({{"x", "1"}, {"y", "1"}, {"z", "1"}});
  Settle();
  Cut(a);
  a.SingleSet("x", "2");
  a.SingleRemove("y");
  Settle();
  EXPECT_EQ(Known(), (Values{{"x", "2"}, {"z", "1"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, AnOldCopyDoesNotUndoWhatOthersHaveChangedMeanwhile) {
  cStatusProxy& a = AddConnected("a");
  cStatusProxy& b = AddConnected("b");
  a.MultiSet({{"a.x", "1"}, {"a.y", "1"}});
  Settle();
  Cut(b);
  a.SingleSet("a.x", "2");
  a.SingleRemove("a.y");
  while (Turn()) {
  }
  EXPECT_EQ(b.m_values, (Values{{"a.x", "1"}, {"a.y", "1"}}));
  Settle();
  EXPECT_EQ(Known(), (Values{{"a.x", "2"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, IsRebuiltFromItsClients) {
  cStatusProxy& a = AddConnected("a");
  AddConnected("b").SingleSet("b.x", "1");
  a.SingleSet("a.x", "1");
  Settle();
  End();
  std::filesystem::remove(m_folder.File("tav.db"));
  a.SingleSet("a.x", "2");
  while (Turn()) {
  }
  Serve();
  Settle();
  EXPECT_EQ(Known(), (Values{{"a.x", "2"}, {"b.x", "1"}}));
  ExpectAllEqual();
}

TEST_F(StatusServer, RemembersTheValuesOfThoseThatDoNotComeBack) {
  cStatusProxy& a = AddConnected("a");
  a.SingleSet("a.x", "1");
  Settle();
  Remove(a);
  Restart();
  EXPECT_EQ(Known(), (Values{{"a.x", "1"}}));
  EXPECT_EQ(m_server->GetSet().CountGone(), 1u);
}

// ---- bad input and limits

TEST_F(StatusServer, RefusesTooLongNamesAndValuesWhole) {
  Watch();
  vorn::cRecord change = Text("good", "1");
  change.AppendTextPar(std::string(cStatusSet::kMaxNameBytes + 1, 'n'), "1");
  EXPECT_THAT(m_client->Ask(status::eChange, change).Record().GetTextPar("reason"),
              HasSubstr("201 bytes, at most 200"));
  change = Text("good", "1");
  change.AppendTextPar("value", std::string(cStatusSet::kMaxValueBytes + 1, 'v'));
  const vorn::cMsg refusal = m_client->Ask(status::eChange, change);
  EXPECT_EQ(refusal.GetType(), status::eChangeFailed);
  EXPECT_THAT(refusal.Record().GetTextPar("reason"), HasSubstr("'value': 4097 bytes, at most 4096"));
  EXPECT_THAT(m_client->Ask(status::eFullSet, Text("", "1")).Record().GetTextPar("reason"),
              HasSubstr("without a name"));
  EXPECT_TRUE(Known().empty());
  EXPECT_EQ(m_server->GetCounters().refused, 3u);
}

TEST_F(StatusServer, TakesNamesAndValuesOfTheLongest) {
  Watch();
  vorn::cRecord change;
  change.AppendTextPar(std::string(cStatusSet::kMaxNameBytes, 'n'), std::string(cStatusSet::kMaxValueBytes, 'v'));
  EXPECT_EQ(m_client->Ask(status::eChange, change).GetType(), status::eAccepted);
}

TEST_F(StatusServer, AsksForWhatItHadNoRoomForWhenThereIsSome) {
  cStatusProxy& full = AddConnected("full");
  Values many;
  for (int i = 0; i < 254; ++i) many.Set("full." + std::to_string(1000 + i), std::string(4'090, 'v'));
  full.MultiSet(many);
  Settle();
  cStatusProxy& late = AddConnected("late");
  late.SingleSet("late", std::string(4'000, 'v'));
  late.SingleSet("later", std::string(4'000, 'v'));
  late.SingleSet("latest", std::string(4'000, 'v'));
  Settle();
  EXPECT_LT(Known().size(), 257u);
  full.MultiRemove("full.1000,full.1001,full.1002");
  Settle();
  EXPECT_EQ(Known().size(), 254u);
  ExpectAllEqual();
}

TEST_F(StatusServer, ListsTheValuesOfAPrefix) {
  AddConnected("a").MultiSet({{"a.x", "1"}, {"a.y", "2"}, {"ab", "3"}, {"b", "4"}});
  Settle();
  Watch();
  const vorn::cMsg answer = m_client->Ask(status::eList, Text("prefix", "a."));
  EXPECT_EQ(answer.GetType(), status::eListed);
  ASSERT_EQ(answer.Record().GetCount(), 2u);
  const vorn::cRecord row = answer.Record().GetRecordPar(status::kRow);
  EXPECT_EQ(row.GetTextPar("name"), "a.x");
  EXPECT_EQ(row.GetTextPar("value"), "1");
  EXPECT_EQ(row.GetTextPar("process"), m_client->GetChannel()->GetPeer().processName);
  EXPECT_EQ(row.GetUIntPar("pid"), static_cast<unsigned int>(getpid()));
  EXPECT_TRUE(row.GetBoolPar("connected"));
  EXPECT_NE(row.GetUIntPar("changed"), 0u);
}

// ---- whatever happens in whatever order

// Processes set, remove, clear, break and come back, in turns that let messages cross: in the end all know the same.
TEST_F(StatusServer, AllCopiesAgreeWhateverHasHappened) {
  std::mt19937 random(4711);
  const auto pick = [&](unsigned int count) { return random() % count; };
  for (const char* name : {"a", "b", "c", "d"}) Add(name);
  Settle();
  for (int round = 0; round < 150; ++round) {
    for (int step = 0; step < 30; ++step) {
      cTestProcess& process = *m_processes[pick(4)];
      const std::string own = process.service.GetProcessName() + "." + std::to_string(pick(4));
      const std::string shared = "shared." + std::to_string(pick(2));
      switch (pick(16)) {
        case 0:
          process.proxy.SingleRemove(own);
          break;
        case 1:
          process.proxy.SingleRemove(shared);
          break;
        case 2:
          if (pick(8) == 0) process.proxy.Clear();
          break;
        case 3:
          if (process.proxy.IsConnected() && pick(4) == 0) process.proxy.GetChannel()->Close();
          break;
        case 4:
          process.proxy.HealthRequest();
          break;
        case 5:
        case 6:
          process.proxy.SingleSet(shared, std::to_string(pick(5)));
          break;
        case 7:
        case 8:
        case 9:
          process.proxy.SingleSet(own, std::to_string(pick(5)));
          break;
        case 10:
        case 11:
          m_host->Poll(0);
          break;
        default:
          process.service.Poll(0);
      }
    }
    if (pick(20) == 0) {
      End();
      Serve();
    }
    Settle();
    ExpectAllEqual();
    if (HasFailure()) FAIL() << "round " << round;
  }
}

}  // namespace
}  // namespace tav::gateway
