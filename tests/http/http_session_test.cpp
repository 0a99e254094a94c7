// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_session.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>

#include <tests/http/page_fixture.h>

using tav::cHttpRequest;
using tav::cHttpSession;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class HttpSession : public cPageFixture {
 protected:
  // Time-out messages of a session, and nothing else, after so much time.
  std::size_t TimeoutsAfter(std::int64_t milliseconds) {
    const std::vector<vorn::cMsg> posted = PostedAfter(milliseconds);
    for (const vorn::cMsg& msg : posted) EXPECT_EQ(Show(msg), "52014 SID uuid=" + m_sid.ToString());
    return posted.size();
  }

  static constexpr std::int64_t kSlackMs = 1000;

  vorn::cUuid m_sid = Uuid('5');
  cNotingPage m_page{&m_near};
};

}  // namespace

TEST_F(HttpSession, StartsIdleUnderItsIdentifier) {
  const cHttpSession session(m_sid, &m_near, 0);
  EXPECT_EQ(session.GetSid(), m_sid);
  EXPECT_EQ(session.GetPage(), nullptr);
  EXPECT_TRUE(tav::HttpSessions.empty()) << "entered by the process, not by the session";
  EXPECT_TRUE(std::has_virtual_destructor_v<cHttpSession>);
}

TEST_F(HttpSession, CopiesItsIdentifier) {
  vorn::cUuid sid = m_sid;
  const cHttpSession session(sid, &m_near, 1);
  sid.Create();
  EXPECT_EQ(session.GetSid(), m_sid);
  EXPECT_EQ(TimeoutsAfter(1000 + kSlackMs), 1u);
}

// ---- its time

TEST_F(HttpSession, TimesOutAfterTheSecondsOfItsMaker) {
  const cHttpSession session(m_sid, &m_near, 3);
  EXPECT_EQ(TimeoutsAfter(2999), 0u);
  EXPECT_EQ(TimeoutsAfter(1 + kSlackMs), 1u);
  EXPECT_EQ(TimeoutsAfter(100'000), 0u) << "once";
}

TEST_F(HttpSession, NamesItselfByTheParameterSIDAndNotByTheMessagesIdentifier) {
  const cHttpSession session(m_sid, &m_near, 1);
  const std::vector<vorn::cMsg> posted = PostedAfter(1000 + kSlackMs);
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_EQ(posted.front().GetType(), 0x52014u);
  EXPECT_EQ(posted.front().Record().GetPar("SID").GetType(), vorn::eParUuid);
  EXPECT_EQ(posted.front().Record().GetUuidPar("SID"), m_sid);
  EXPECT_EQ(posted.front().Record().GetCount(), 1u);
  EXPECT_FALSE(posted.front().GetId().IsValid());
}

TEST_F(HttpSession, WithoutTimeNeverTimesOut) {
  const cHttpSession session(m_sid, &m_near, 0);
  EXPECT_EQ(TimeoutsAfter(1'000'000'000), 0u);
}

TEST_F(HttpSession, SetTimeoutOfZeroStopsTheTimerAndStartsNone) {
  cHttpSession session(m_sid, &m_near, 3);
  session.SetTimeout(0);
  EXPECT_EQ(TimeoutsAfter(1'000'000), 0u);
}

TEST_F(HttpSession, SetTimeoutOfZeroWithdrawsATimeoutThatIsDue) {
  cHttpSession session(m_sid, &m_near, 3);
  m_clock->Advance(3000 + kSlackMs);
  session.SetTimeout(0);
  EXPECT_EQ(TimeoutsAfter(0), 0u);
}

TEST_F(HttpSession, SetTimeoutStartsTheTimeAnewWithTheIdentifierOnce) {
  cHttpSession session(m_sid, &m_near, 3);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(TimeoutsAfter(2999), 0u);
    session.SetTimeout(3);
  }
  EXPECT_EQ(TimeoutsAfter(2999), 0u);
  EXPECT_EQ(TimeoutsAfter(1 + kSlackMs), 1u);
}

TEST_F(HttpSession, SetTimeoutRunsAgainAfterItsEnd) {
  cHttpSession session(m_sid, &m_near, 1);
  EXPECT_EQ(TimeoutsAfter(1000 + kSlackMs), 1u);
  session.SetTimeout(2);
  EXPECT_EQ(TimeoutsAfter(1999), 0u);
  EXPECT_EQ(TimeoutsAfter(1 + kSlackMs), 1u);
  session.SetTimeout(0);
  session.SetTimeout(1);
  EXPECT_EQ(TimeoutsAfter(1000 + kSlackMs), 1u);
}

TEST_F(HttpSession, SharesTheWakeUpOfAnotherWithinASecond) {
  vorn::cTimer other(&m_near);
  const cHttpSession session(m_sid, &m_near, 10);
  other.Start(10'000 + kSlackMs, 0x50000);
  EXPECT_THAT(PostedAfter(9999), IsEmpty()) << "never early";
  std::vector<unsigned int> types;
  for (const vorn::cMsg& msg : PostedAfter(1 + kSlackMs)) types.push_back(msg.GetType());
  EXPECT_THAT(types, ElementsAre(0x52014u, 0x50000u));
}

TEST_F(HttpSession, TheLongestTimeIsTheTimersLongest) {
  constexpr unsigned int kMost = std::numeric_limits<unsigned int>::max();
  for (const unsigned int sec : {kMost / 1000, kMost / 1000 + 1, kMost}) {
    const cHttpSession session(m_sid, &m_near, sec);
    EXPECT_EQ(TimeoutsAfter(std::int64_t{kMost / 1000} * 1000 - 1), 0u) << sec;
    EXPECT_EQ(TimeoutsAfter(1000 + kSlackMs), 1u) << sec;
  }
}

TEST_F(HttpSession, TakesItsTimeoutWithItWhenItEnds) {
  auto session = std::make_unique<cHttpSession>(m_sid, &m_near, 1);
  m_clock->Advance(5000);
  session.reset();
  EXPECT_EQ(TimeoutsAfter(0), 0u);
}

// ---- a page

TEST_F(HttpSession, RunLinksBothAcceptsTheRequestAndStartsThePage) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  m_page.onProcess = [&](cHttpRequest& given) {
    EXPECT_EQ(&given, &request);
    EXPECT_EQ(m_page.GetSession(), &session);
    EXPECT_EQ(session.GetPage(), &m_page);
    EXPECT_EQ(m_page.GetRequest().GetRequestId(), request.GetRequestId());
    EXPECT_EQ(m_page.GetRequest().GetReplyChannel(), request.GetReplyChannel());
  };
  session.Run(request, &m_page);
  EXPECT_THAT(m_page.processed, ElementsAre(request.GetRequestId()));
  EXPECT_EQ(session.GetPage(), &m_page) << "still running";
}

TEST_F(HttpSession, RunSendsTheAcceptanceBeforeThePageSendsAnything) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  m_page.onProcess = [&](cHttpRequest&) { m_page.CloseSuccess(); };
  session.Run(request, &m_page);
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(Show(messages[0]), "55006") << "nothing but its type";
  EXPECT_EQ(messages[0].GetId(), request.GetRequestId());
  EXPECT_EQ(messages[1].GetType(), 0x5500au);
}

TEST_F(HttpSession, RunDoesNotLookAtTheResultOfProcess) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  m_page.processResult = false;
  session.Run(request, &m_page);
  EXPECT_EQ(session.GetPage(), &m_page);
  EXPECT_THAT(Received(), ElementsAre("55006"));
}

TEST_F(HttpSession, RunOfARequestThatCameOverNoChannelStartsThePage) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request;
  session.Run(request, &m_page);
  EXPECT_EQ(m_page.processed.size(), 1u);
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(HttpSession, RunOfNoPageDoesNothing) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  session.Run(request, nullptr);
  EXPECT_EQ(session.GetPage(), nullptr);
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(HttpSession, RunsOnePageAtATime) {
  cHttpSession session(m_sid, &m_near, 0);
  cNotingPage second(&m_near);
  cHttpRequest request = Request(), next = Request();
  session.Run(request, &m_page);
  session.Run(next, &second);
  EXPECT_EQ(session.GetPage(), &second);
  EXPECT_EQ(m_page.GetSession(), nullptr);
  vorn::cMsg msg(0x50000);
  EXPECT_TRUE(session.DispatchMessage(msg));
  EXPECT_THAT(m_page.messages, IsEmpty());
  EXPECT_EQ(second.messages.size(), 1u);
}

TEST_F(HttpSession, APageRunsInOneSessionAtATime) {
  vorn::cUuid other = Uuid('6');
  cHttpSession session(m_sid, &m_near, 0), second(other, &m_near, 0);
  cHttpRequest request = Request();
  session.Run(request, &m_page);
  second.Run(request, &m_page);
  EXPECT_EQ(session.GetPage(), nullptr);
  EXPECT_EQ(second.GetPage(), &m_page);
  EXPECT_EQ(m_page.GetSession(), &second);
}

TEST_F(HttpSession, APageMayRunAgain) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request(), next = Request();
  session.Run(request, &m_page);
  session.Run(next, &m_page);
  EXPECT_EQ(session.GetPage(), &m_page);
  EXPECT_EQ(m_page.GetSession(), &session);
  EXPECT_THAT(m_page.processed, ElementsAre(request.GetRequestId(), next.GetRequestId()));
  EXPECT_THAT(Received(), ElementsAre("55006", "55006"));
}

// ---- messages

TEST_F(HttpSession, WithoutAPageAnswersEveryMessageWithFalse) {
  cHttpSession session(m_sid, &m_near, 0);
  for (const unsigned int type : {0u, 0x52014u, 0x5201eu, 0x5500cu}) {
    vorn::cMsg msg(type);
    EXPECT_FALSE(session.DispatchMessage(msg)) << std::hex << type;
  }
}

TEST_F(HttpSession, HandsMessagesToThePageWhileItWantsMore) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  session.Run(request, &m_page);
  for (const unsigned int type : {0x5201eu, 0x50001u, 0x5500cu}) {
    vorn::cMsg msg(type);
    EXPECT_TRUE(session.DispatchMessage(msg));
    EXPECT_EQ(m_page.messages.back().GetType(), type);
  }
  EXPECT_EQ(session.GetPage(), &m_page);
}

TEST_F(HttpSession, ForgetsAPageThatHasFinishedAndAnswersFalse) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  session.Run(request, &m_page);
  m_page.wantsMore = false;
  vorn::cMsg msg(0x50000);
  EXPECT_FALSE(session.DispatchMessage(msg));
  EXPECT_EQ(m_page.messages.size(), 1u) << "it saw the message";
  EXPECT_EQ(session.GetPage(), nullptr);
  m_page.wantsMore = true;
  EXPECT_FALSE(session.DispatchMessage(msg));
  EXPECT_EQ(m_page.messages.size(), 1u) << "and no further one";
  session.Run(request, &m_page);
  EXPECT_TRUE(session.DispatchMessage(msg)) << "it was not deleted and may run again";
}

TEST_F(HttpSession, APageThatHasFinishedMayHaveStartedAnother) {
  cHttpSession session(m_sid, &m_near, 0);
  cNotingPage second(&m_near);
  cHttpRequest request = Request(), next = Request();
  session.Run(request, &m_page);
  m_page.wantsMore = false;
  m_page.onMessage = [&] { session.Run(next, &second); };
  vorn::cMsg msg(0x50000);
  EXPECT_FALSE(session.DispatchMessage(msg));
  EXPECT_EQ(session.GetPage(), &second) << "which is not forgotten with it";
  EXPECT_TRUE(session.DispatchMessage(msg));
  EXPECT_EQ(second.messages.size(), 1u);
}

// ---- ends in either order

TEST_F(HttpSession, AnEndedPageIsForgotten) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  {
    cNotingPage page(&m_near);
    session.Run(request, &page);
  }
  EXPECT_EQ(session.GetPage(), nullptr);
  vorn::cMsg msg(0x50000);
  EXPECT_FALSE(session.DispatchMessage(msg));
}

TEST_F(HttpSession, AnEndedSessionIsForgottenByItsPage) {
  auto session = std::make_unique<cHttpSession>(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  session->Run(request, &m_page);
  session.reset();
  EXPECT_EQ(m_page.GetSession(), nullptr);
  Messages();
  m_page.CloseError();
  EXPECT_THAT(Received(), ElementsAre("5500a Technology-Name text=web finish bool=true success bool=false"))
      << "a page without session still answers";
}

TEST_F(HttpSession, APageMayEndItselfInAMessage) {
  for (const bool more : {true, false}) {
    cHttpSession session(m_sid, &m_near, 0);
    cHttpRequest request = Request();
    auto page = std::make_unique<cNotingPage>(&m_near);
    page->wantsMore = more;
    page->onMessage = [&] { page.reset(); };
    session.Run(request, page.get());
    vorn::cMsg msg(0x50000);
    EXPECT_EQ(session.DispatchMessage(msg), more);
    EXPECT_EQ(session.GetPage(), nullptr);
  }
}

// ---- a front end that dies

TEST_F(HttpSession, OutlivesTheFrontEndInTheMiddleOfAnAnswer) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  session.Run(request, &m_page);
  EXPECT_TRUE(m_page.HttpOutput(0, "first"));
  CutWire();
  EXPECT_FALSE(m_page.HttpOutput(0, "second")) << "the closed channel takes nothing";
  EXPECT_TRUE(m_page.HttpSuccessHeader(0, "text/plain"));
  m_page.CloseSuccess();
  vorn::cMsg msg(0x50000);
  EXPECT_TRUE(session.DispatchMessage(msg)) << "what becomes of the page is its own to decide";
  Reconnect();
  EXPECT_FALSE(m_page.HttpOutput(0, "third")) << "nor does the one that came after it";
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(HttpSession, RunsAPageOnARequestWhoseFrontEndHasDied) {
  cHttpSession session(m_sid, &m_near, 0);
  cHttpRequest request = Request();
  CutWire();
  session.Run(request, &m_page);
  EXPECT_EQ(m_page.processed.size(), 1u);
  EXPECT_EQ(session.GetPage(), &m_page);
}
