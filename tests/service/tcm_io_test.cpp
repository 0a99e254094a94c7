// SPDX-License-Identifier: Apache-2.0
#include <tav/service/tcm_io.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/proxy_fixture.h>

using tav::cTcmIO;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TcmIO : public cProxyFixture<cTcmIO> {
 protected:
  TcmIO() : cProxyFixture("time-service") {}

  vorn::cTime m_noon = vorn::cTime::FromSeconds(1393675200, true);
};

}  // namespace

// ---- the channel

TEST_F(TcmIO, SaysNothingOfItsConnection) {
  Connect();
  EXPECT_EQ(m_io->GetName(), "time-service");
  EXPECT_THAT(Received(), IsEmpty());
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(TcmIO, LeavesAnIdleServiceInPeace) {
  Connect();
  EXPECT_FALSE(PingsAnIdleService());
}

TEST_F(TcmIO, SwallowsWhateverComes) {
  Connect();
  for (const unsigned int type : {0x56002u, 0x56003u, 0x56004u, 0x56015u, 0x56031u, 0x51031u, 0xFFFFFFFFu})
    Answer(type);
  EXPECT_THAT(m_near.messages, IsEmpty());
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0)));
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- the clock

TEST_F(TcmIO, SetTimeSendsTheTimeUnderAnIdentifierThatTheCallerLearns) {
  Connect();
  vorn::cUuid id;
  EXPECT_EQ(m_io->SetTimeUTC(id, m_noon), 1);
  EXPECT_TRUE(id.IsValid());
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(Show(messages[0]), "56002 new-utc time=2014-03-01T12:00:00Z");
  EXPECT_EQ(messages[0].GetId(), id);
  EXPECT_EQ(m_noon.GetSeconds(), 1393675200u);
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(TcmIO, AValidIdentifierIsKept) {
  Connect();
  vorn::cUuid id;
  id.Create();
  const vorn::cUuid given = id;
  EXPECT_EQ(m_io->SetTimeUTC(id, m_noon), 1);
  EXPECT_EQ(id, given);
  EXPECT_EQ(Messages().front().GetId(), given);
}

TEST_F(TcmIO, TheShortFormUsesFreshIdentifiers) {
  Connect();
  EXPECT_EQ(m_io->SetTimeUTC(m_noon), 1);
  EXPECT_EQ(m_io->SetTimeUTC(m_noon), 1);
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 2u);
  for (const vorn::cMsg& msg : messages) {
    EXPECT_EQ(Show(msg), "56002 new-utc time=2014-03-01T12:00:00Z");
    EXPECT_TRUE(msg.GetId().IsValid());
  }
  EXPECT_NE(messages[0].GetId(), messages[1].GetId());
}

// ---- the link

TEST_F(TcmIO, TheStateOfTheLinkIsAMessageEach) {
  Connect();
  EXPECT_EQ(m_io->WanUp(), 1);
  EXPECT_EQ(m_io->WanDown(), 1);
  EXPECT_THAT(Received(), ElementsAre("56014", "56017"));
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(TcmIO, WithoutAServiceNothingIsTakenAndNothingSaid) {
  Start();
  vorn::cUuid id;
  EXPECT_EQ(m_io->SetTimeUTC(id, m_noon), 0);
  EXPECT_TRUE(id.IsValid()) << "created all the same";
  EXPECT_EQ(m_io->SetTimeUTC(m_noon), 0);
  EXPECT_EQ(m_io->WanUp(), 0);
  EXPECT_EQ(m_io->WanDown(), 0);
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- deriving

namespace {

class DerivedTcmIO : public cProxyFixture<cOverriding<cTcmIO>> {
 protected:
  DerivedTcmIO() : cProxyFixture("time-service") {}
};

}  // namespace

TEST_F(DerivedTcmIO, MayOverrideEveryCallback) {
  Connect();
  Answer(0x56003);
  CutWire();
  EXPECT_THAT(m_io->calls, ElementsAre("OnConnect", "DispatchMessage", "OnClose"));
}
