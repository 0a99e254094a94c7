// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/gsm_server.h>

#include <gateway/service/device/time_server.h>
#include <gateway/service/device/ui_server.h>
#include <tav/service/device_protocol.h>
#include <tav/service/gsm_io.h>
#include <tests/service/device/device_world.h>
#include <tests/support/trace_level.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// What a modem was told, and what it has not said yet.
struct cModemLog {
  std::vector<std::string> told;
  cModem::Done begun;
  cModem::Done ended;
  cModem* modem = nullptr;
};

class cScriptedModem final : public cModem {
 public:
  explicit cScriptedModem(cModemLog* log) : m_log(log) { log->modem = this; }
  void Connect(const cDialUp& how, Done begun) override {
    m_log->told.push_back("connect " + how.pin + "|" + how.apn + "|" + how.user + "|" + how.password);
    m_log->begun = std::move(begun);
  }
  void Disconnect(Done done) override {
    m_log->told.emplace_back("disconnect");
    m_log->begun = nullptr;
    m_log->ended = std::move(done);
  }
  std::string GetPlace() const override { return "scripted"; }
  using cModem::Connected;
  using cModem::Failed;

 private:
  cModemLog* m_log;
};

class GsmServer : public DeviceWorld {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_server.IsListening()) << m_server.GetError();
    ASSERT_TRUE(m_client.AwaitConnection());
  }
  static vorn::cRecord DialUp(const std::string& apn) {
    vorn::cRecord record;
    record.AppendTextPar("MobilePin", "1234");
    record.AppendTextPar("APN", apn);
    record.AppendTextPar("User", "jane");
    record.AppendTextPar("Password", "s3cret");
    return record;
  }
  vorn::cUuid Start(const std::string& apn) { return Send(0x12000, DialUp(apn)); }
  vorn::cUuid Stop() { return Send(0x12002, {}); }
  // The service has seen it when this returns.
  vorn::cUuid Send(unsigned int type, const vorn::cRecord& record) {
    const vorn::cUuid id = m_client.SendRequest(type, record);
    PollUntilIdle(m_host);
    return id;
  }
  void Begin(const std::string& fault = "") { std::exchange(m_modem.begun, nullptr)(fault); }
  void End(const std::string& fault = "") { std::exchange(m_modem.ended, nullptr)(fault); }
  void Connected() { static_cast<cScriptedModem*>(m_modem.modem)->Connected(); }
  void Failed(const std::string& reason) { static_cast<cScriptedModem*>(m_modem.modem)->Failed(reason); }
  // A connection to this access point; nothing that was said until then is left.
  void Connect(const std::string& apn) {
    Start(apn);
    Begin();
    Connected();
    m_client.Next();
    m_modem.told.clear();
  }
  void ExpectAnswer(const vorn::cUuid& id, unsigned int type, const std::string& reason = "") {
    const vorn::cMsg answer = m_client.Next();
    EXPECT_EQ(answer.GetId(), id);
    EXPECT_EQ(answer.GetType(), type);
    EXPECT_EQ(Reason(answer), reason);
  }
  // The clients of the modem's service wait a moment before they try again.
  bool AwaitClient(const vorn::cScmServer& server) {
    return PollUntil(m_host, [&] {
      m_clock->Advance(10);
      return !server.GetChannels().empty();
    });
  }
  std::string State() const { return Row(m_server, "state"); }

  cModemLog m_modem;
  cGsmServer m_server{&m_host, {}, std::make_unique<cScriptedModem>(&m_modem)};
  cTestClient m_client{&m_host, "gsm"};
};

TEST_F(GsmServer, ShowsItsStateInRows) {
  const vorn::cMsg answer = m_client.Ask(0x12010);
  EXPECT_EQ(answer.GetType(), 0x12011u);
  EXPECT_THAT(Rows(answer),
              ElementsAre("modem=scripted", "state=off", testing::MatchesRegex("since=.*Z"), "apn=", "reason="));
}

TEST_F(GsmServer, AnswersAStartWhenTheConnectionIsBeingMade) {
  const vorn::cUuid id = Start("internet");
  EXPECT_THAT(m_modem.told, ElementsAre("connect 1234|internet|jane|s3cret"));
  EXPECT_EQ(State(), "connecting");
  EXPECT_EQ(m_client.CountWaiting(), 0u);
  Begin();
  ExpectAnswer(id, 0x12001);
  EXPECT_EQ(State(), "connecting");
  Connected();
  EXPECT_EQ(State(), "connected");
  EXPECT_EQ(Row(m_server, "apn"), "internet");
}

TEST_F(GsmServer, RefusesAStartThatIsNotEvenTried) {
  const vorn::cUuid id = Start("internet");
  Begin("there is no modem");
  ExpectAnswer(id, 0x12001, "there is no modem");
  EXPECT_EQ(State(), "failed");
  EXPECT_EQ(Row(m_server, "reason"), "there is no modem");
}

TEST_F(GsmServer, KeepsTheReasonOfAFailureUntilTheNextStart) {
  Start("internet");
  Begin();
  Failed("no carrier");
  EXPECT_EQ(State(), "failed");
  EXPECT_EQ(Row(m_server, "reason"), "no carrier");
  Start("internet");
  EXPECT_EQ(State(), "connecting");
  EXPECT_EQ(Row(m_server, "reason"), "");
}

TEST_F(GsmServer, KnowsAConnectionThatBreaks) {
  Connect("internet");
  Failed("the network has gone");
  EXPECT_EQ(State(), "failed");
  EXPECT_EQ(Row(m_server, "reason"), "the network has gone");
}

TEST_F(GsmServer, HasNothingToDoForTheSameAccessPoint) {
  const vorn::cUuid first = Start("internet");
  const vorn::cUuid second = Start("internet");
  EXPECT_EQ(m_client.CountWaiting(), 0u);
  Begin();
  ExpectAnswer(first, 0x12001);
  ExpectAnswer(second, 0x12001);
  ExpectAnswer(Start("internet"), 0x12001);
  Connected();
  ExpectAnswer(Start("internet"), 0x12001);
  EXPECT_EQ(State(), "connected");
  EXPECT_EQ(m_modem.told.size(), 1u);
}

TEST_F(GsmServer, ConnectsAnewForAnotherAccessPoint) {
  Connect("internet");
  const vorn::cUuid id = Start("meters");
  EXPECT_THAT(m_modem.told, ElementsAre("disconnect"));
  EXPECT_EQ(State(), "disconnecting");
  End();
  EXPECT_EQ(m_modem.told.back(), "connect 1234|meters|jane|s3cret");
  EXPECT_EQ(State(), "connecting");
  Begin();
  ExpectAnswer(id, 0x12001);
  EXPECT_EQ(Row(m_server, "apn"), "meters");
}

TEST_F(GsmServer, RefusesAStartWhoseTurnNeverComes) {
  Connect("a");
  const vorn::cUuid b = Start("b");
  const vorn::cUuid c = Start("c");
  ExpectAnswer(b, 0x12001, "a later request to start with another access point has taken its place");
  const vorn::cUuid stop = Stop();
  ExpectAnswer(c, 0x12001, "a later request has stopped it");
  End();
  ExpectAnswer(stop, 0x12003);
  EXPECT_EQ(State(), "off");
  EXPECT_THAT(m_modem.told, ElementsAre("disconnect"));
}

TEST_F(GsmServer, RefusesAStartThatIsStoppedBeforeItHasBegun) {
  const vorn::cUuid start = Start("internet");
  const vorn::cUuid stop = Stop();
  ExpectAnswer(start, 0x12001, "a later request has stopped it");
  End();
  ExpectAnswer(stop, 0x12003);
  EXPECT_EQ(State(), "off");
}

TEST_F(GsmServer, StopsWhenTheConnectionHasEnded) {
  Connect("internet");
  const vorn::cUuid first = Stop();
  const vorn::cUuid second = Stop();
  EXPECT_EQ(m_client.CountWaiting(), 0u);
  EXPECT_EQ(State(), "disconnecting");
  Failed("a word too late");
  EXPECT_EQ(State(), "disconnecting");
  End();
  ExpectAnswer(first, 0x12003);
  ExpectAnswer(second, 0x12003);
  EXPECT_EQ(State(), "off");
  EXPECT_THAT(m_modem.told, ElementsAre("disconnect"));
}

TEST_F(GsmServer, RefusesAStopThatTheModemDoesNotObey) {
  Connect("internet");
  const vorn::cUuid id = Stop();
  End("the bus has gone");
  ExpectAnswer(id, 0x12004, "the bus has gone");
  EXPECT_EQ(State(), "failed");
}

TEST_F(GsmServer, IsDoneWithAStopWhileItIsOff) {
  ExpectAnswer(Stop(), 0x12003);
  Start("internet");
  Begin("no modem");
  m_client.Next();
  ExpectAnswer(Stop(), 0x12003);
  EXPECT_EQ(State(), "off");
  EXPECT_EQ(Row(m_server, "reason"), "no modem");
  EXPECT_EQ(m_modem.told.size(), 1u);
}

TEST_F(GsmServer, ShowsNoSecretsAnywhere) {
  const cTraceLevel verbose("UnitGateway", 32);
  Connect("internet");
  Failed("no carrier");
  Start("internet");
  Begin("no modem");
  vorn::cRecord wrong = DialUp("internet");
  wrong.SetUIntPar("APN", 1);
  Send(0x12000, wrong);
  EXPECT_THAT(m_trace.GetLines(), Not(IsEmpty()));
  for (const char* const secret : {"1234", "jane", "s3cret"}) {
    for (const std::string& line : m_trace.GetLines()) EXPECT_THAT(line, Not(HasSubstr(secret)));
    for (const auto& [name, value] : m_server.GetState()) EXPECT_THAT(value, Not(HasSubstr(secret)));
  }
}

TEST_F(GsmServer, TellsItsHostOfChanges) {
  std::vector<std::string> states;
  m_server.SetOnStateChanged([&] { states.push_back(State()); });
  Connect("a");
  Start("b");
  End();
  Begin();
  Failed("no carrier");
  Stop();
  EXPECT_THAT(states, ElementsAre("connecting", "connected", "disconnecting", "off", "connecting", "failed", "off"));
}

// ---- what others see

TEST_F(GsmServer, ShowsTheLinkOnTheLightAndToTheTimeService) {
  const cUiServer lights(&m_host);
  const cTimeServer time(&m_host);
  const auto shows = [&](const std::string& led, const std::string& wan) {
    return PollUntil(m_host, [&] { return Row(lights, "led.wan") == led && Row(time, "wan") == wan; });
  };
  ASSERT_TRUE(AwaitClient(lights) && AwaitClient(time));
  Start("internet");
  EXPECT_TRUE(shows("try, lit", "unknown"));
  Begin();
  Connected();
  EXPECT_TRUE(shows("on, lit", "up"));
  Failed("no carrier");
  EXPECT_TRUE(shows("error, lit", "down"));
  Stop();
  EXPECT_TRUE(shows("off, dark", "down"));
}

TEST_F(GsmServer, TellsThoseThatWereAwayWhenTheyAreBack) {
  Connect("internet");
  const cUiServer lights(&m_host);
  const cTimeServer time(&m_host);
  ASSERT_TRUE(AwaitClient(lights) && AwaitClient(time));
  EXPECT_TRUE(PollUntil(m_host, [&] { return Row(lights, "led.wan") == "on, lit" && Row(time, "wan") == "up"; }));
}

TEST_F(GsmServer, SaysNothingOfALinkThatItWasNotAskedFor) {
  const cUiServer lights(&m_host);
  const cTimeServer time(&m_host);
  ASSERT_TRUE(AwaitClient(lights) && AwaitClient(time));
  PollUntilIdle(m_host);
  EXPECT_EQ(Row(time, "wan"), "unknown");
}

// ---- by options

class GsmServerByOptions : public DeviceWorld {};

TEST_F(GsmServerByOptions, SimulatesAModem) {
  cGsmServer server(&m_host);
  cGsmIO client(&m_host);
  ASSERT_TRUE(PollUntil(m_host, [&] { return client.IsConnected(); }));
  client.Start("", "internet", "", "");
  ASSERT_TRUE(PollUntil(m_host, [&] { return Row(server, "state") == "connecting"; }));
  EXPECT_EQ(Row(server, "modem"), "simulated");
  Advance(2'000);
  EXPECT_EQ(Row(server, "state"), "connected");
  client.Stop();
  ASSERT_TRUE(PollUntil(m_host, [&] { return Row(server, "state") == "disconnecting"; }));
  Advance(500);
  EXPECT_EQ(Row(server, "state"), "off");
  client.Start("", "fail", "", "");
  ASSERT_TRUE(PollUntil(m_host, [&] { return Row(server, "state") == "connecting"; }));
  Advance(2'000);
  EXPECT_EQ(Row(server, "state"), "failed");
  EXPECT_THAT(Row(server, "reason"), HasSubstr("always fails"));
}

TEST(GsmOptions, NameTheKeyThatIsWrong) {
  cGsmOptions options;
  EXPECT_EQ(options.Check(), "");
  options.modem = "modemmanager";
  EXPECT_EQ(options.Check(), "");
  options.modem = "acoustic coupler";
  EXPECT_EQ(options.Check(), "modem: expected \"simulated\" or \"modemmanager\", found \"acoustic coupler\"");
}

}  // namespace
}  // namespace tav::gateway
