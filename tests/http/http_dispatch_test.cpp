// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_dispatch.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/http/page_fixture.h>

using tav::cHttpRequest;
using tav::cHttpSession;
using tav::httpDisptachByMsgID;
using tav::httpDisptachBySID;
using testing::IsEmpty;

namespace {

// Two sessions, each with a page, entered in the table against their order.
class HttpDispatch : public cPageFixture {
 protected:
  HttpDispatch() {
    tav::HttpSessions.Set(m_secondSid, &m_second);
    tav::HttpSessions.Set(m_firstSid, &m_first);
  }

  void Run(cHttpSession& session, cNotingPage& page, const vorn::cUuid& requestId) {
    cHttpRequest request = Request("HTTP/1.1", requestId);
    session.Run(request, &page);
  }
  static vorn::cMsg Message(const vorn::cUuid& id, unsigned int type = 0x50000) {
    vorn::cMsg msg(type);
    msg.SetId(id);
    return msg;
  }
  static bool BySid(const vorn::cUuid& id, unsigned int type = 0x50000) {
    vorn::cMsg msg = Message(id, type);
    return httpDisptachBySID(msg);
  }
  static bool ByMsgId(const vorn::cUuid& id, unsigned int type = 0x50000) {
    vorn::cMsg msg = Message(id, type);
    return httpDisptachByMsgID(msg);
  }
  // How many messages each of the pages saw since the last call.
  std::pair<std::size_t, std::size_t> Seen() {
    const auto seen = std::make_pair(m_firstPage.messages.size(), m_secondPage.messages.size());
    m_firstPage.messages.clear();
    m_secondPage.messages.clear();
    return seen;
  }

  using Counts = std::pair<std::size_t, std::size_t>;

  vorn::cUuid m_firstSid = Uuid('1'), m_secondSid = Uuid('2');
  const vorn::cUuid m_firstRequest = Uuid('b'), m_secondRequest = Uuid('a');
  cHttpSession m_first{m_firstSid, &m_near, 0}, m_second{m_secondSid, &m_near, 0};
  cNotingPage m_firstPage{&m_near}, m_secondPage{&m_near};
};

}  // namespace

// ---- by session

TEST_F(HttpDispatch, BySidReachesTheSessionOfThatIdentifierOnly) {
  Run(m_first, m_firstPage, m_firstRequest);
  Run(m_second, m_secondPage, m_secondRequest);
  EXPECT_TRUE(BySid(m_secondSid));
  EXPECT_EQ(Seen(), Counts(0, 1));
  EXPECT_TRUE(BySid(m_firstSid));
  EXPECT_EQ(Seen(), Counts(1, 0));
}

TEST_F(HttpDispatch, BySidOfAnUnknownSessionIsFalse) {
  Run(m_first, m_firstPage, m_firstRequest);
  EXPECT_FALSE(BySid(Uuid('3')));
  EXPECT_FALSE(BySid(m_firstRequest)) << "a request's identifier is no session's";
  EXPECT_FALSE(BySid(vorn::cUuid()));
  EXPECT_EQ(Seen(), Counts(0, 0));
}

TEST_F(HttpDispatch, BySidOfAnIdleSessionIsFalse) { EXPECT_FALSE(BySid(m_firstSid)); }

TEST_F(HttpDispatch, BySidIsFalseWhenThePageHasFinished) {
  Run(m_first, m_firstPage, m_firstRequest);
  m_firstPage.wantsMore = false;
  EXPECT_FALSE(BySid(m_firstSid));
  EXPECT_EQ(Seen(), Counts(1, 0)) << "it got the message";
  EXPECT_EQ(m_first.GetPage(), nullptr);
  EXPECT_FALSE(BySid(m_firstSid));
  EXPECT_EQ(Seen(), Counts(0, 0));
}

TEST_F(HttpDispatch, BySidBringsThePagesTimeoutToThePage) {
  Run(m_first, m_firstPage, m_firstRequest);
  Run(m_second, m_secondPage, m_secondRequest);
  m_secondPage.StartTimeout(2);
  std::vector<vorn::cMsg> posted = PostedAfter(2000);
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_TRUE(httpDisptachBySID(posted.front()));
  ASSERT_EQ(m_secondPage.messages.size(), 1u);
  EXPECT_EQ(m_secondPage.messages.front().GetType(), 0x5201eu);
  EXPECT_THAT(m_firstPage.messages, IsEmpty());
}

TEST_F(HttpDispatch, BySidDoesNotReadTheSessionTimersSID) {
  Run(m_first, m_firstPage, m_firstRequest);
  m_first.SetTimeout(1);
  std::vector<vorn::cMsg> posted = PostedAfter(2000);
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_FALSE(httpDisptachBySID(posted.front()));
  EXPECT_FALSE(httpDisptachByMsgID(posted.front()));
  cHttpSession* found = nullptr;
  EXPECT_TRUE(tav::HttpSessions.Get(posted.front().Record().GetUuidPar("SID"), found)) << "the process looks it up";
  EXPECT_EQ(found, &m_first);
}

// ---- by message

TEST_F(HttpDispatch, ByMsgIdReachesTheSessionWhosePageServesThatRequestOnly) {
  Run(m_first, m_firstPage, m_firstRequest);
  Run(m_second, m_secondPage, m_secondRequest);
  EXPECT_TRUE(ByMsgId(m_secondRequest));
  EXPECT_EQ(Seen(), Counts(0, 1));
  EXPECT_TRUE(ByMsgId(m_firstRequest));
  EXPECT_EQ(Seen(), Counts(1, 0));
}

TEST_F(HttpDispatch, ByMsgIdOfAnUnknownRequestIsFalse) {
  Run(m_first, m_firstPage, m_firstRequest);
  EXPECT_FALSE(ByMsgId(m_secondRequest));
  EXPECT_FALSE(ByMsgId(m_firstSid)) << "a session's identifier is no request's";
  EXPECT_FALSE(ByMsgId(vorn::cUuid()));
  EXPECT_EQ(Seen(), Counts(0, 0));
}

TEST_F(HttpDispatch, ByMsgIdPassesIdleSessionsBy) {
  Run(m_second, m_secondPage, m_secondRequest);
  EXPECT_TRUE(ByMsgId(m_secondRequest));
  EXPECT_EQ(Seen(), Counts(0, 1));
}

TEST_F(HttpDispatch, ByMsgIdTakesTheFirstInTheOrderOfTheSessions) {
  Run(m_second, m_secondPage, m_firstRequest);
  Run(m_first, m_firstPage, m_firstRequest);
  EXPECT_TRUE(ByMsgId(m_firstRequest));
  EXPECT_EQ(Seen(), Counts(1, 0));
}

TEST_F(HttpDispatch, ByMsgIdAsksNoOtherWhenTheFirstHasFinished) {
  Run(m_first, m_firstPage, m_firstRequest);
  Run(m_second, m_secondPage, m_firstRequest);
  m_firstPage.wantsMore = false;
  EXPECT_FALSE(ByMsgId(m_firstRequest));
  EXPECT_EQ(Seen(), Counts(1, 0));
  EXPECT_TRUE(ByMsgId(m_firstRequest)) << "the next time it is the second's";
  EXPECT_EQ(Seen(), Counts(0, 1));
}

TEST_F(HttpDispatch, ByMsgIdMayFindTheTableChangedAfterwards) {
  Run(m_first, m_firstPage, m_firstRequest);
  m_firstPage.onMessage = [] { tav::HttpSessions.clear(); };
  EXPECT_TRUE(ByMsgId(m_firstRequest));
  EXPECT_FALSE(ByMsgId(m_firstRequest));
}

TEST_F(HttpDispatch, ANewRequestOfASessionReplacesTheOldOne) {
  Run(m_first, m_firstPage, m_firstRequest);
  Run(m_first, m_firstPage, m_secondRequest);
  EXPECT_FALSE(ByMsgId(m_firstRequest));
  EXPECT_TRUE(ByMsgId(m_secondRequest));
}

TEST_F(HttpDispatch, WhatTheFrontEndTellsOfARequestComesToItsPage) {
  Run(m_first, m_firstPage, m_firstRequest);
  vorn::cMsg lost = Message(m_firstRequest, tav::http::eOutputLost);
  lost.Record().AppendTextPar("reason", "the client has gone");
  m_near.onMessage = [](const vorn::cMsg& msg) {
    vorn::cMsg copy = msg;
    EXPECT_TRUE(httpDisptachByMsgID(copy));
  };
  m_server->GetChannels().front()->Send(lost);
  ASSERT_TRUE(Await([&] { return !m_firstPage.messages.empty(); }));
  EXPECT_EQ(Show(m_firstPage.messages.front()), "5500c reason text=the client has gone");
}

// ---- the table

TEST_F(HttpDispatch, AnEmptyTableKnowsNobody) {
  tav::HttpSessions.clear();
  EXPECT_FALSE(BySid(m_firstSid));
  EXPECT_FALSE(ByMsgId(m_firstRequest));
}

TEST_F(HttpDispatch, AnEntryWithoutSessionIsPassedBy) {
  Run(m_second, m_secondPage, m_secondRequest);
  tav::HttpSessions.Set(m_firstSid, nullptr);
  EXPECT_FALSE(BySid(m_firstSid));
  EXPECT_TRUE(ByMsgId(m_secondRequest));
}
