// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_io.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include <tav/http/http_protocol.h>
#include <tests/support/proxy_fixture.h>

using tav::cHttpIO;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr vorn::cMsg* kNoRegistration = nullptr;

class HttpIO : public cProxyFixture<cHttpIO> {
 protected:
  HttpIO() : cProxyFixture("web") {
    m_registration.SetType(tav::http::eRegister);
    m_registration.Record().AppendTextPar("prefix", "/hello");
  }

  void StartRegistering() { Start(m_service, &m_registration); }
  void ConnectRegistering() { Connect(m_service, &m_registration); }

  const std::string m_kRegistered = "10019 prefix text=/hello";
  vorn::cMsg m_registration;
};

}  // namespace

TEST_F(HttpIO, IsOnTheChannelThatItsMakerNames) {
  Start(std::string("other-web"), kNoRegistration);
  EXPECT_EQ(m_io->GetName(), "other-web");
}

TEST_F(HttpIO, RegistersWhenConnected) {
  Serve();
  StartRegistering();
  EXPECT_TRUE(m_io->HoldsRegistration());
  ASSERT_TRUE(AwaitConnection());
  EXPECT_THAT(Received(), ElementsAre(m_kRegistered));
  EXPECT_FALSE(m_io->HoldsRegistration());
  EXPECT_THAT(Traced(), ElementsAre("16 http connection established"));
}

TEST_F(HttpIO, SendsTheRegistrationWholeWithItsIdentifier) {
  vorn::cUuid id;
  id.Create();
  m_registration.SetId(id);
  ConnectRegistering();
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages.front().GetId(), id);
  EXPECT_EQ(messages.front().Record(), m_registration.Record());
}

TEST_F(HttpIO, KeepsACopyOfTheRegistration) {
  StartRegistering();
  m_registration = vorn::cMsg(0x50000);
  Serve();
  m_io->HealthRequest();
  ASSERT_TRUE(AwaitConnection());
  EXPECT_THAT(Received(), ElementsAre(m_kRegistered));
}

TEST_F(HttpIO, WithoutARegistrationSendsNothing) {
  Connect(m_service, kNoRegistration);
  EXPECT_FALSE(m_io->HoldsRegistration());
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), ElementsAre("16 http connection established"));
}

TEST_F(HttpIO, RegistersOnTheFirstConnectionOnly) {
  ConnectRegistering();
  EXPECT_THAT(Received(), ElementsAre(m_kRegistered));
  CutWire();
  Reconnect();
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), ElementsAre("16 http connection established", "16 http connection shutdown",
                                    "16 http connection established"));
}

TEST_F(HttpIO, ForgetsTheRegistrationWhateverBecomesOfItsSending) {
  // A frame over the limit is refused by the channel.
  m_registration.Record().AppendDataPar("bulk", vorn::cData(std::string(5 << 20, 'x')));
  ConnectRegistering();
  EXPECT_FALSE(m_io->HoldsRegistration());
  EXPECT_THAT(Received(), IsEmpty());
  CutWire();
  Reconnect();
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(HttpIO, TakesTheAcknowledgement) {
  ConnectRegistering();
  Answer(tav::http::eRegistered);
  EXPECT_THAT(m_near.messages, IsEmpty());
  EXPECT_TRUE(m_io->IsConnected());
}

TEST_F(HttpIO, AnAcknowledgementBeforeTheRegistrationWasSentDeletesIt) {
  StartRegistering();
  EXPECT_TRUE(m_io->HoldsRegistration());
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0x1001a)));
  EXPECT_FALSE(m_io->HoldsRegistration());
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0x1001a))) << "a second one is taken too";
  Serve();
  m_io->HealthRequest();
  ASSERT_TRUE(AwaitConnection());
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(HttpIO, LeavesEverythingElseToTheService) {
  ConnectRegistering();
  const std::vector<unsigned int> kOthers = {0x10019, 0x1001b, 0x55005, 0x55006, 0x5500a, 0x5500b, 0x5500c, 0x50000};
  std::vector<unsigned int> arrived;
  for (const unsigned int type : kOthers) Answer(type);
  for (const vorn::cMsg& msg : m_near.messages) arrived.push_back(msg.GetType());
  EXPECT_EQ(arrived, kOthers);
  StartRegistering();
  EXPECT_FALSE(m_io->DispatchMessage(vorn::cMsg(0x1001b)));
  EXPECT_TRUE(m_io->HoldsRegistration());
}

TEST_F(HttpIO, PingsAnIdleFrontEnd) {
  Connect(m_service, kNoRegistration);
  EXPECT_TRUE(PingsAnIdleService());
}

TEST_F(HttpIO, ProgressIsTracedFromItsLevelOn) {
  const cTraceLevel below("UnitTAV", 15);
  ConnectRegistering();
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(HttpIO, CanBeDerivedFrom) {
  Serve();
  cOverriding<cHttpIO> io(&m_near, m_service, &m_registration);
  ASSERT_TRUE(Await([&] { return io.IsConnected() && !m_server->messages.empty(); }));
  m_server->GetChannels().front()->Send(vorn::cMsg(tav::http::eRegistered));
  ASSERT_TRUE(Await([&] { return io.calls.size() == 2; }));
  m_server.reset();
  ASSERT_TRUE(Await([&] { return io.calls.size() == 3; }));
  EXPECT_THAT(io.calls, ElementsAre("OnConnect", "DispatchMessage", "OnClose"));
  const vorn::cScmServiceIO& base = io;
  EXPECT_EQ(base.ToString().rfind("overridden ", 0), 0u);
}

// What a process does that wants to be served again when the front end comes back.
TEST_F(HttpIO, ADerivedOneRegistersOnEveryConnection) {
  class cFaithfulIO : public cHttpIO {
   public:
    cFaithfulIO(vorn::cScmService* service, vorn::cMsg registration)
        : cHttpIO(service, "web", nullptr), m_mine(std::move(registration)) {}
    void OnConnect() override {
      cHttpIO::OnConnect();
      Send(m_mine);
    }

   private:
    const vorn::cMsg m_mine;
  };
  Serve();
  cFaithfulIO io(&m_near, m_registration);
  ASSERT_TRUE(Await([&] { return !m_server->messages.empty(); }));
  EXPECT_THAT(Received(), ElementsAre(m_kRegistered));
  m_server.reset();
  ASSERT_TRUE(Await([&] { return !io.IsConnected(); }));
  Serve();
  io.HealthRequest();
  ASSERT_TRUE(Await([&] { return !m_server->messages.empty(); }));
  EXPECT_THAT(Received(), ElementsAre(m_kRegistered));
}

TEST_F(HttpIO, EndsQuietlyWithItsRegistrationUnsent) {
  StartRegistering();
  m_io.reset();
  EXPECT_THAT(Traced(), IsEmpty());
}
