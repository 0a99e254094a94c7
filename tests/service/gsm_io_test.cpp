// SPDX-License-Identifier: Apache-2.0
#include <tav/service/gsm_io.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/proxy_fixture.h>

using tav::cGsmIO;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class GsmIO : public cProxyFixture<cGsmIO> {
 protected:
  GsmIO() : cProxyFixture("gsm") {}
};

}  // namespace

// ---- the channel

TEST_F(GsmIO, SaysNothingOfItsConnection) {
  Connect();
  EXPECT_EQ(m_io->GetName(), "gsm");
  EXPECT_THAT(Received(), IsEmpty());
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(GsmIO, LeavesAnIdleServiceInPeace) {
  Connect();
  EXPECT_FALSE(PingsAnIdleService());
}

TEST_F(GsmIO, SwallowsWhateverComes) {
  Connect();
  for (const unsigned int type : {0x12000u, 0x12001u, 0x12003u, 0x12004u, 0x12011u, 0x51031u, 0xFFFFFFFFu})
    Answer(type);
  EXPECT_THAT(m_near.messages, IsEmpty());
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0)));
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- the data connection

TEST_F(GsmIO, StartSendsAllFourTexts) {
  Connect();
  EXPECT_EQ(m_io->Start("1234", "internet", "me", "secret"), 1);
  EXPECT_THAT(Received(), ElementsAre("12000 MobilePin text=1234 APN text=internet User text=me Password text=secret"));
  EXPECT_THAT(Traced(), IsEmpty()) << "secrets are not told";
}

TEST_F(GsmIO, StartSendsEmptyTextsToo) {
  Connect();
  EXPECT_EQ(m_io->Start("", "", "", ""), 1);
  EXPECT_THAT(Received(), ElementsAre("12000 MobilePin text= APN text= User text= Password text="));
}

TEST_F(GsmIO, TextsAreBytes) {
  const std::string latin =
      "stra\xDF"
      "e";
  Connect();
  EXPECT_EQ(m_io->Start("0", latin, latin, latin), 1);
  EXPECT_THAT(Received(), ElementsAre("12000 MobilePin text=0 APN text=" + latin + " User text=" + latin +
                                      " Password text=" + latin));
}

TEST_F(GsmIO, StopSendsNoMoreThanItsNumber) {
  Connect();
  EXPECT_EQ(m_io->Stop(), 1);
  EXPECT_THAT(Received(), ElementsAre("12002"));
}

TEST_F(GsmIO, NothingIsKeptForTheNextConnection) {
  Connect();
  m_io->Start("1234", "internet", "me", "secret");
  Messages();
  CutWire();
  Reconnect();
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(GsmIO, WithoutAServiceNothingIsTakenAndNothingSaid) {
  Start();
  EXPECT_EQ(m_io->Start("1234", "internet", "me", "secret"), 0);
  EXPECT_EQ(m_io->Stop(), 0);
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- deriving

namespace {

class DerivedGsmIO : public cProxyFixture<cOverriding<cGsmIO>> {
 protected:
  DerivedGsmIO() : cProxyFixture("gsm") {}
};

}  // namespace

TEST_F(DerivedGsmIO, MayOverrideEveryCallback) {
  Connect();
  Answer(0x12001);
  CutWire();
  EXPECT_THAT(m_io->calls, ElementsAre("OnConnect", "DispatchMessage", "OnClose"));
}
