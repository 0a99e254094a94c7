// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/live.h>

#include <gateway/web/pages/view/live_page.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class Live : public cPagesWorld {
 protected:
  void SetUp() override {
    cPagesWorld::SetUp();
    StartPages(m_clock);
    Enter();
    Store("m1", 1'700'000'000, {{"1-0:1.8.0", "100", "Wh"}});
  }
  vorn::cUuid Listen() {
    const vorn::cUuid id = Send(MakeRequest("GET", "/live", {}, {}));
    EXPECT_TRUE(Await([&] { return m_answers[id].body.find(": all is as it was") != std::string::npos; }));
    return id;
  }
  // One look, while there is no service to wait for.
  void LookAlone() {
    m_clock->Advance(cLive::kLookMs);
    PollUntilIdle(*m_pages);
    PollUntilIdle(*m_gateway);
  }
  void EndData() {
    EndService("data");
    ASSERT_TRUE(Await([this] { return !m_pages->GetGateway().data.IsConnected(); }));
  }

  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
};

TEST_F(Live, ANewListenerHearsEverything) {
  m_pages->GetGateway().status.SingleSet("test.state", "well");
  const cAnswer& answer = m_answers[Listen()];
  EXPECT_EQ(answer.Header("Content-Type"), "text/event-stream");
  EXPECT_THAT(answer.body, HasSubstr("event: value\ndata: {\"key\":\"m1 1-0:1.8.0\",\"text\":\"100\",\"when\":"));
  EXPECT_THAT(answer.body, HasSubstr("event: status\ndata: {\"key\":\"test.state\",\"text\":\"well\"}\n\n"));
}

TEST_F(Live, HearsWhatIsNewAndNothingElse) {
  const vorn::cUuid id = Listen();
  Store("m1", 1'700'000'060, {{"1-0:1.8.0", "101", "Wh"}});
  m_answers[id].body.clear();
  m_clock->Advance(cLive::kLookMs);
  ASSERT_TRUE(Await([&] { return m_answers[id].body.find("\"101\"") != std::string::npos; }));
  m_answers[id].body.clear();
  m_pages->GetGateway().status.SingleSet("test.state", "well");
  m_clock->Advance(cLive::kLookMs);
  ASSERT_TRUE(Await([&] { return m_answers[id].body.find("test.state") != std::string::npos; }));
  EXPECT_THAT(m_answers[id].body, Not(HasSubstr("\"101\"")));
}

TEST_F(Live, HearsThatAStatusValueIsGone) {
  m_pages->GetGateway().status.SingleSet("test.state", "well");
  const vorn::cUuid id = Listen();
  m_pages->GetGateway().status.SingleRemove("test.state");
  m_answers[id].body.clear();
  m_clock->Advance(cLive::kLookMs);
  EXPECT_TRUE(Await([&] { return !m_answers[id].body.empty(); }));
  EXPECT_EQ(m_answers[id].body, "event: status\ndata: {\"key\":\"test.state\",\"text\":\"\"}\n\n");
}

TEST_F(Live, HearsASignOfLifeWhenNothingHappensForLong) {
  const vorn::cUuid id = Listen();
  EndData();
  // Until the pages have told their own counters, which this request has changed.
  for (unsigned int look = 0; look < 8; ++look) LookAlone();
  m_answers[id].body.clear();
  for (unsigned int look = 0; look < cLive::kSilentLooks; ++look) LookAlone();
  EXPECT_EQ(m_answers[id].body, ": all is as it was\n\n") << "once in so many looks";
}

TEST_F(Live, HostileTextsBreakOutOfNoEvent) {
  m_pages->GetGateway().status.SingleSet("evil", "\n\nevent: value\ndata: {}\n\n</script>\xE4");
  EXPECT_THAT(m_answers[Listen()].body,
              HasSubstr("\"text\":\"\\n\\nevent: value\\ndata: {}\\n\\n</script>\xC3\xA4\"}\n\n"));
}

TEST_F(Live, AClientThatIsGoneIsToldNothingMore) {
  const vorn::cUuid id = Listen();
  Lose(id);
  ASSERT_TRUE(Await([this] { return m_pages->CountRuns() == 0; }));
  const unsigned int outputs = m_answers[id].outputs;
  m_pages->GetGateway().status.SingleSet("test.state", "well");
  m_clock->Advance(2 * cLive::kLookMs);
  PollUntilIdle(*m_pages);
  EXPECT_EQ(m_answers[id].outputs, outputs);
  EXPECT_FALSE(m_answers[id].isFinished);
}

TEST_F(Live, ABrowserThatTakesNothingLosesItsStream) {
  m_holdsBack = true;
  const vorn::cUuid id = Listen();
  for (unsigned int i = 0; i < 2 * cLivePage::kMaxWaiting && !m_answers[id].isFinished; ++i) {
    const unsigned int outputs = m_answers[id].outputs;
    m_pages->GetGateway().status.SingleSet("test.count", std::to_string(i));
    m_clock->Advance(cLive::kLookMs);
    ASSERT_TRUE(Await([&] { return m_answers[id].outputs > outputs || m_answers[id].isFinished; })) << i;
  }
  EXPECT_TRUE(m_answers[id].isFinished);
  EXPECT_FALSE(m_answers[id].isWhole);
  EXPECT_EQ(m_answers[id].outputs, cLivePage::kMaxWaiting);
}

TEST_F(Live, TheServicesResultIsGivenBack) {
  Listen();
  EXPECT_EQ(Statistic("results"), 0u);
}

TEST_F(Live, GoesOnWhileTheServiceIsAway) {
  const vorn::cUuid id = Listen();
  EndData();
  m_answers[id].body.clear();
  m_pages->GetGateway().status.SingleSet("test.state", "well");
  m_clock->Advance(cLive::kLookMs);
  EXPECT_TRUE(Await([&] { return m_answers[id].body.find("test.state") != std::string::npos; }));
}

}  // namespace
}  // namespace tav::pages
