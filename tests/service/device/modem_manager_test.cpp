// SPDX-License-Identifier: Apache-2.0
// Against a bus and a ModemManager of the test's own.
#include <gateway/service/device/modem_manager.h>

#include <gateway/service/device/gsm_server.h>
#include <tests/service/device/device_world.h>
#include <tests/service/device/fake_modem_manager.h>
#include <tests/support/trace_level.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using eReply = cFakeModemManager::eReply;

// A modem of these tests, and what it says.
class ModemManager : public DeviceWorld {
 protected:
  void SetUp() override {
    if (!cPrivateBus::IsPossible()) GTEST_SKIP() << "needs " << cPrivateBus::kDaemon << " (Debian package dbus-daemon)";
    m_bus.emplace();
    ASSERT_TRUE(m_bus->AwaitStart());
    MakeModem(m_bus->GetAddress());
  }
  void MakeModem(const std::string& address) {
    m_modem = std::make_unique<cModemManager>(&m_host, address);
    m_modem->SetOnConnected([this] { m_said.emplace_back("connected"); });
    m_modem->SetOnFailed([this](const std::string& reason) { m_said.push_back("failed: " + reason); });
  }
  cFakeModemManager& Fake(bool withModem = true) {
    m_fake.emplace(&m_host, m_bus->GetAddress(), withModem);
    return *m_fake;
  }
  void Connect(const cDialUp& how = {"", "internet", "", ""}) {
    m_modem->Connect(how, [this](const std::string& fault) { m_said.push_back("begun" + fault); });
  }
  void Disconnect() {
    m_modem->Disconnect([this](const std::string& fault) { m_said.push_back("ended" + fault); });
  }
  // What was said since the last call, when it is that much.
  std::vector<std::string> Said(std::size_t count) {
    EXPECT_TRUE(PollUntil(m_host, [&] { return m_said.size() >= count; }));
    return std::exchange(m_said, {});
  }
  void AwaitAsked(std::size_t count) {
    ASSERT_TRUE(PollUntil(m_host, [&] { return m_fake->asked.size() >= count; }));
  }

  std::optional<cPrivateBus> m_bus;
  std::optional<cFakeModemManager> m_fake;
  std::unique_ptr<cModemManager> m_modem;
  std::vector<std::string> m_said;
};

TEST_F(ModemManager, SaysThatThereIsNoBus) {
  MakeModem("unix:path=" + m_folder.File("none"));
  Connect();
  EXPECT_THAT(Said(1), ElementsAre("begunthere is no bus at unix:path=" + m_folder.File("none") +
                                   ": No such file or directory"));
  Disconnect();
  EXPECT_THAT(Said(1), ElementsAre("ended"));
}

TEST_F(ModemManager, SaysThatNoModemManagerIsOnTheBus) {
  Connect();
  EXPECT_THAT(Said(1), ElementsAre(StartsWith("begunthere is no org.freedesktop.ModemManager1 on the bus: ")));
  Fake();
  Connect();
  EXPECT_THAT(Said(2), ElementsAre("begun", "connected")) << "it has come meanwhile";
}

TEST_F(ModemManager, SaysThatThereIsNoModem) {
  Fake(false);
  Connect();
  EXPECT_THAT(Said(1), ElementsAre("begunModemManager knows no modem"));
  EXPECT_EQ(m_modem->GetPlace(), "ModemManager");
}

TEST_F(ModemManager, HandsOnWhatIsThereAndNothingElse) {
  Fake();
  Connect();
  EXPECT_THAT(Said(2), ElementsAre("begun", "connected"));
  EXPECT_THAT(m_fake->asked, ElementsAre("Connect apn=internet allowed-auth=1"));
  EXPECT_EQ(m_modem->GetPlace(), cFakeModemManager::kModem);
  Connect({"1234", "meters", "jane", "s3cret"});
  EXPECT_THAT(Said(2), ElementsAre("begun", "connected"));
  EXPECT_EQ(m_fake->asked.back(), "Connect pin=1234 apn=meters user=jane password=s3cret allowed-auth=6");
}

TEST_F(ModemManager, NamesTheParameterThatIsNoText) {
  Fake();
  Connect({"", "caf\xE9", "", ""});
  EXPECT_THAT(Said(1), ElementsAre("begunparameter \"APN\": no UTF-8 text"));
  EXPECT_TRUE(m_fake->asked.empty());
}

TEST_F(ModemManager, SaysWhyTheNetworkRefuses) {
  Fake().reply = eReply::Error;
  Connect();
  EXPECT_THAT(Said(2), ElementsAre("begun", "failed: the network does not want it"));
}

TEST_F(ModemManager, DisconnectsWhatIsConnected) {
  Fake();
  Connect();
  Said(2);
  Disconnect();
  EXPECT_THAT(Said(1), ElementsAre("ended"));
  EXPECT_EQ(m_fake->asked.back(), std::string("Disconnect ") + cFakeModemManager::kBearer);
  m_fake->ChangeState(9, 8);
  m_fake->reply = eReply::Error;
  Connect();
  EXPECT_THAT(Said(2), ElementsAre("begun", "failed: the network does not want it")) << "nothing was lost";
}

TEST_F(ModemManager, GivesUpAConnectionThatIsBeingMade) {
  Fake().reply = eReply::Wait;
  Connect();
  EXPECT_THAT(Said(1), ElementsAre("begun"));
  AwaitAsked(1);
  m_fake->reply = eReply::Done;
  Disconnect();
  EXPECT_THAT(Said(1), ElementsAre("ended"));
  EXPECT_EQ(m_fake->asked.back(), "Disconnect /");
  m_fake->Reply(eReply::Done);
  Disconnect();  // behind that answer
  EXPECT_THAT(Said(1), ElementsAre("ended"));
}

TEST_F(ModemManager, SaysWhyItCannotDisconnect) {
  Fake();
  Connect();
  Said(2);
  m_fake->reply = eReply::Error;
  Disconnect();
  EXPECT_THAT(Said(1), ElementsAre("endedthe network does not want it"));
}

TEST_F(ModemManager, KnowsAConnectionThatIsLost) {
  Fake();
  Connect();
  Said(2);
  m_fake->ChangeState(11, 9);  // it may be disconnecting, that is not lost yet
  m_fake->ChangeState(9, 8);
  EXPECT_THAT(Said(1), ElementsAre("failed: the modem has lost its connection, its state is 8, reason 1"));
}

TEST_F(ModemManager, KnowsThatTheModemHasGone) {
  Fake();
  Connect();
  Said(2);
  m_fake->RemoveModem();
  EXPECT_THAT(Said(1), ElementsAre(std::string("failed: the modem ") + cFakeModemManager::kModem + " has gone"));
}

TEST_F(ModemManager, KnowsThatModemManagerHasEnded) {
  Fake();
  Connect();
  Said(2);
  m_fake.reset();
  EXPECT_THAT(Said(1), ElementsAre("failed: ModemManager has ended"));
  Disconnect();
  EXPECT_THAT(Said(1), ElementsAre("ended"));
}

TEST_F(ModemManager, FailsWithAModemManagerThatEndsMeanwhile) {
  Fake().reply = eReply::Wait;
  Connect();
  Said(1);
  AwaitAsked(1);
  m_fake.reset();
  EXPECT_THAT(Said(1), ElementsAre(StartsWith("failed: ")));
}

TEST_F(ModemManager, KnowsThatTheBusHasEndedAndTakesTheNextOne) {
  Fake();
  Connect();
  Said(2);
  m_bus->End();
  EXPECT_THAT(Said(1), ElementsAre(StartsWith("failed: the bus has closed the connection: ")));
  Disconnect();
  EXPECT_THAT(Said(1), ElementsAre("ended"));
  Connect();
  EXPECT_THAT(Said(1), ElementsAre(StartsWith("begunthere is no bus at ")));
}

// ---- as the service uses it

TEST_F(ModemManager, ServesTheChannelGsm) {
  const cTraceLevel verbose("UnitGateway", 32);
  cGsmServer server(&m_host, {"modemmanager", m_bus->GetAddress()});
  cTestClient client(&m_host, "gsm");
  ASSERT_TRUE(client.AwaitConnection());
  vorn::cRecord how;
  for (const auto& [name, value] :
       {std::pair{"MobilePin", "1234"}, {"APN", "internet"}, {"User", "jane"}, {"Password", "s3cret"}})
    how.AppendTextPar(name, std::string(value));
  EXPECT_THAT(Reason(client.Ask(0x12000, how)), StartsWith("there is no org.freedesktop.ModemManager1 on the bus"));
  Fake();
  EXPECT_EQ(Reason(client.Ask(0x12000, how)), "");
  EXPECT_TRUE(PollUntil(m_host, [&] { return Row(server, "state") == "connected"; }));
  EXPECT_EQ(Row(server, "modem"), cFakeModemManager::kModem);
  EXPECT_EQ(client.Ask(0x12002).GetType(), 0x12003u);
  EXPECT_EQ(Row(server, "state"), "off");
  for (const char* const secret : {"1234", "jane", "s3cret"})
    for (const std::string& line : m_trace.GetLines()) EXPECT_THAT(line, Not(HasSubstr(secret)));
}

}  // namespace
}  // namespace tav::gateway
