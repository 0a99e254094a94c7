// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/page_process.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;

class PageProcess : public cPagesWorld {
 protected:
  vorn::cUuid Open(const std::string& path, const cFields& query = {}) {
    return Send(MakeRequest("GET", path, query, {}));
  }
  // In place of a service of the gateway one that says nothing by itself.
  std::unique_ptr<cRecordingServer> Silence(const std::string& name, vorn::cScmServiceIO& client) {
    EndService(name);
    EXPECT_TRUE(Await([&] { return !client.IsConnected(); }));
    auto silent = std::make_unique<cRecordingServer>(m_gateway.get(), name);
    client.HealthRequest();
    EXPECT_TRUE(Await([&] { return client.IsConnected(); }));
    return silent;
  }
};

TEST_F(PageProcess, RegistersForAllPathsAndWantsToHearOfItsOutputs) {
  ASSERT_EQ(m_front->messages.size(), 1u);
  EXPECT_EQ(m_front->messages[0].GetType(), http::eRegister);
  EXPECT_FALSE(m_front->messages[0].Record().GetPar(http::kPrefix).IsValid());
  EXPECT_TRUE(m_front->messages[0].Record().GetBoolPar(http::kFlow));
}

TEST_F(PageProcess, RegistersAgainWithAFrontEndThatComesBack) {
  m_front.reset();
  m_front = std::make_unique<cRecordingServer>(m_gateway.get(), "web");
  m_front->onMessage = [this](const vorn::cMsg& msg) { Take(msg); };
  EXPECT_TRUE(Await([this] { return !m_front->messages.empty(); }));
  Enter();
  EXPECT_EQ(Get("/").Status(), 200u);
}

TEST_F(PageProcess, ServesSoManyRequestsAtATime) {
  Enter();
  const vorn::cUuid first = Open("/live");
  for (std::size_t i = 1; i < cPageProcess::kMaxRuns; ++i) Open("/live");
  ASSERT_TRUE(Await([this] { return m_pages->CountRuns() == cPageProcess::kMaxRuns; }));
  const vorn::cUuid more = Open("/live");
  ASSERT_TRUE(Await([&] { return IsOver(m_answers[more]); }));
  EXPECT_EQ(m_answers[more].refusal, "too many requests at a time");
  Lose(first);
  ASSERT_TRUE(Await([this] { return m_pages->CountRuns() < cPageProcess::kMaxRuns; }));
  EXPECT_EQ(Get("/").Status(), 200u) << "there is room again";
}

TEST_F(PageProcess, ARequestThatIsAnsweredIsForgotten) {
  Enter();
  Get("/");
  EXPECT_TRUE(Await([this] { return m_pages->CountRuns() == 0; }));
  EXPECT_EQ(HttpSessions.size(), 1u) << "but for the login";
}

TEST_F(PageProcess, AServiceThatIsAwayIsNamed) {
  Enter();
  EndService("data");
  ASSERT_TRUE(Await([this] { return !m_pages->GetGateway().data.IsConnected(); }));
  const cAnswer answer = Get("/");
  EXPECT_EQ(answer.Status(), 503u);
  EXPECT_THAT(answer.body, HasSubstr("The service &quot;data&quot; is away."));
  EXPECT_EQ(Get("/api/series", {{"meter", "1"}, {"obis", "1-0:1.8.0"}}).body,
            "The service \"data\" is away. Try again in a moment.\n");
}

TEST_F(PageProcess, AServiceThatDiesWhileAPageWaitsIsWaitedForSoLong) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  auto silent = Silence("data", m_pages->GetGateway().data);
  const vorn::cUuid id = Open("/");
  ASSERT_TRUE(Await([&] { return m_pages->CountRuns() == 1; }));
  silent.reset();
  clock->Advance(cWebPage::kPatience * 1000 - 1);
  PollUntilIdle(*m_pages);
  EXPECT_FALSE(m_answers[id].isFinished);
  clock->Advance(1001);  // a page's timer is of whole seconds
  ASSERT_TRUE(Await([&] { return m_answers[id].isFinished; }));
  EXPECT_EQ(m_answers[id].Status(), 504u);
  EXPECT_THAT(m_answers[id].body, HasSubstr("The service &quot;data&quot; does not answer."));
}

TEST_F(PageProcess, WhatAServiceRefusesIsSaid) {
  Enter();
  auto data = Silence("data", m_pages->GetGateway().data);
  data->onMessage = [](const vorn::cMsg& msg) {
    vorn::cMsg refusal(msg.GetType() + 2);
    refusal.SetId(msg.GetId());
    refusal.Record().AppendTextPar("reason", "the disk is <full>");
    msg.GetReplyChannel()->Send(refusal);
  };
  const cAnswer answer = Get("/");
  EXPECT_EQ(answer.Status(), 502u);
  EXPECT_THAT(answer.body, HasSubstr("refused: the disk is &lt;full&gt;"));
}

TEST_F(PageProcess, AnAnswerThatComesTooLateHarmsNobody) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  auto data = Silence("data", m_pages->GetGateway().data);
  const vorn::cUuid id = Open("/");
  ASSERT_TRUE(Await([&] { return data->messages.size() == 1; }));
  Lose(id);
  ASSERT_TRUE(Await([&] { return m_pages->CountRuns() == 0; }));
  vorn::cUuid handle;
  handle.Create();
  vorn::cMsg late(db_ctrl::eMeterStatuses);
  late.SetId(id);
  late.Record().AppendUuidPar(db_ctrl::kHandle, handle);
  data->messages[0].GetReplyChannel()->Send(late);
  ASSERT_TRUE(Await([&] { return data->messages.size() == 2; })) << "the result is given back";
  EXPECT_EQ(data->messages[1].GetType(), db_ctrl::eCloseResult);
  EXPECT_EQ(data->messages[1].Record().GetUuidPar(db_ctrl::kHandle), handle);
}

TEST_F(PageProcess, AResultOfAServiceThatFallsSilentIsGivenBack) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  auto data = Silence("data", m_pages->GetGateway().data);
  vorn::cUuid handle;
  handle.Create();
  std::vector<vorn::cMsg> asked;
  data->onMessage = [&](const vorn::cMsg& msg) {
    asked.push_back(msg);
    if (msg.GetType() != db_ctrl::eGetStoredValues) return;
    vorn::cMsg answer(db_ctrl::eStoredValues);
    answer.SetId(msg.GetId());
    answer.Record().AppendUuidPar(db_ctrl::kHandle, handle);
    msg.GetReplyChannel()->Send(answer);
  };
  const vorn::cUuid id = Open("/download", {{"meter", "m1"}, {"format", "csv"}});
  ASSERT_TRUE(Await([&] { return asked.size() == 2; }));
  EXPECT_EQ(asked[1].GetType(), db_ctrl::eFetchStoredValues);
  clock->Advance(cWebPage::kPatience * 1000 + 1000);
  ASSERT_TRUE(Await([&] { return m_answers[id].isFinished && asked.size() == 3; }));
  EXPECT_EQ(m_answers[id].Status(), 504u);
  EXPECT_EQ(asked[2].GetType(), db_ctrl::eCloseResult);
  EXPECT_EQ(asked[2].Record().GetUuidPar(db_ctrl::kHandle), handle);
}

TEST_F(PageProcess, WhatAFrontEndWaitedForEndsWithIt) {
  Enter();
  for (int i = 0; i < 3; ++i) Store("m" + std::to_string(i), 1'700'000'000, {{"1-0:1.8.0", "1", "Wh"}});
  m_holdsBack = true;
  Open("/download", {{"meter", "m0"}, {"format", "csv"}});
  Open("/live");
  ASSERT_TRUE(Await([this] { return m_pages->CountRuns() == 2; }));
  m_front.reset();
  EXPECT_TRUE(Await([this] { return m_pages->CountRuns() == 0; }));
  EXPECT_EQ(Statistic("results"), 0u);
}

TEST_F(PageProcess, MessagesOfNobodyAreDropped) {
  Enter();
  for (const unsigned int type :
       std::initializer_list<unsigned int>{http::eOutputPassed, http::eOutputLost, http::eRegistered, 0x12345}) {
    vorn::cMsg msg(type);
    vorn::cUuid id;
    id.Create();
    msg.SetId(id);
    m_front->GetChannels().at(0)->Send(msg);
  }
  vorn::cMsg empty(http::eRequest);
  const vorn::cUuid id = Send(empty);
  EXPECT_TRUE(Await([&] { return m_answers[id].isFinished; })) << "a request that says nothing is one for no page";
  EXPECT_EQ(Get("/").Status(), 200u);
}

}  // namespace
}  // namespace tav::pages
