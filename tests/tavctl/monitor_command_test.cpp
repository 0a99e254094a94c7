// SPDX-License-Identifier: Apache-2.0
#include <tavctl/monitor_command.h>

#include <unistd.h>

#include <csignal>
#include <set>

#include <tav/framework/watch.h>
#include <tests/support/raw_socket.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

// A client and the service talk without end: each answer brings the next request.
class MonitorCommand : public TavctlWithGateway {
 protected:
  void SetUp() override {
    TavctlWithGateway::SetUp();
    m_client.onConnect = [this] { Ask(); };
    m_client.onMessage = [this](const vorn::cMsg&) { Ask(); };
  }
  void Ask() {
    vorn::cMsg request(m_type);
    request.SetId(m_id);
    request.Record() = m_record;
    m_client.Send(request);
  }
  void Talk(unsigned int type, const vorn::cRecord& record) {
    m_type = type;
    m_record = record;
    m_id.FromString("6ba7b810-9dad-11d1-80b4-00c04fd430c8");
  }
  void TalkOfSecrets() {
    vorn::cRecord record;
    record.AppendTextPar("meterID", "M");
    record.AppendTextPar("manufactor", "EMH");
    record.AppendTextPar("medium", "E");
    record.AppendTextPar("key", "s3cret");
    Talk(db_ctrl::eActivateMeter, record);
  }

  cRecordingClient m_client{&m_host, "data"};
  unsigned int m_type = db_ctrl::eGetStatistics;
  vorn::cRecord m_record;
  vorn::cUuid m_id;
};

TEST_F(MonitorCommand, ShowsMessagesByNameWithTheirParameters) {
  vorn::cRecord record;
  record.AppendTextPar("driver", "ehzif");
  Talk(db_ctrl::eRegisterDriver, record);
  const cOutput output = Run({"monitor", "data", "--filter", "register-driver", "--count", "1"});
  EXPECT_EQ(output.exit, eExitDone);
  const std::string who = "tavctl_test\\[" + std::to_string(getpid()) + "\\]";
  EXPECT_THAT(output.out, ContainsRegex("^2[-0-9T:]+\\+0[12]:00  " + who +
                                        " -> data  register-driver  6ba7b810-9dad-11d1-80b4-00c04fd430c8\n"
                                        "  driver = \"ehzif\"\n$"));
  EXPECT_EQ(output.err, "tavctl: watching service 'data'\n");
}

TEST_F(MonitorCommand, IsOneArrayForPrograms) {
  const auto rows = Run({"--json", "monitor", "data", "--count", "4"}).Json();
  ASSERT_EQ(rows.size(), 4u) << "not one more, however many arrive at once";
  const std::size_t request = rows[0]["direction"] == "in" ? 0 : 1;
  EXPECT_EQ(rows[request]["message"], "get-statistics");
  EXPECT_EQ(rows[request]["type"], 0x5120f);
  EXPECT_EQ(rows[request]["pid"], getpid());
  EXPECT_EQ(rows[request]["process"], "tavctl_test");
  EXPECT_TRUE(rows[request]["id"].is_null());
  EXPECT_EQ(rows[request + 1]["direction"], "out");
  EXPECT_EQ(rows[request + 1]["message"], "statistics");
  EXPECT_EQ(rows[request + 1]["record"]["row"][0]["name"], "meters");
}

TEST_F(MonitorCommand, HidesSecretsUnlessAsked) {
  TalkOfSecrets();
  const cOutput hidden = Run({"monitor", "data", "--count", "1", "--filter", "key"});
  EXPECT_THAT(hidden.out, HasSubstr("  key = ***\n"));
  EXPECT_THAT(hidden.out, Not(HasSubstr("s3cret")));
  EXPECT_EQ(Run({"--json", "monitor", "data", "--count", "1", "--filter", "key"}).Json()[0]["record"]["key"], "***");
  const cOutput shown = Run({"monitor", "data", "--count", "1", "--filter", "key", "--secrets"});
  EXPECT_THAT(shown.out, HasSubstr("  key = \"s3cret\"\n"));
}

TEST_F(MonitorCommand, SaysWhatAMessageLacks) {
  Talk(db_ctrl::eRegisterDriver, {});
  const cOutput output = Run({"monitor", "data", "--count", "2", "--filter", "register-driver"});
  EXPECT_THAT(output.out, HasSubstr("  ! parameter \"driver\" is missing, expected type text\n"));
  EXPECT_THAT(output.out, HasSubstr("register-driver-failed"));
  const auto rows = Run({"--json", "monitor", "data", "--count", "2", "--filter", "register-driver"}).Json();
  const bool requestFirst = rows[0]["direction"] == "in";
  EXPECT_EQ(rows[requestFirst ? 0 : 1]["fault"], "parameter \"driver\" is missing, expected type text");
  EXPECT_TRUE(rows[requestFirst ? 1 : 0]["fault"].is_null());
}

TEST_F(MonitorCommand, ShowsTheClientsOfAProcessOnly) {
  const auto rows = Run({"--json", "monitor", "data", "--count", "2", "--process", "tavctl_test"}).Json();
  EXPECT_EQ(rows.size(), 2u);
  std::size_t asked = 0;
  m_client.onMessage = [&](const vorn::cMsg&) {
    if (++asked == 20) raise(SIGINT);
    Ask();
  };
  EXPECT_EQ(Run({"--json", "monitor", "data", "--process", "somebody"}).out, "[]\n");
}

TEST_F(MonitorCommand, ShowsAnUnknownMessageByItsNumber) {
  Talk(0x5fff0, {});
  EXPECT_EQ(Run({"--json", "monitor", "data", "--count", "1", "--filter", "0x5fff0"}).Json()[0]["message"], "0x5fff0");
}

// A service of any name, and of any manners.
class MonitorOfStranger : public TavctlWorld {};

TEST_F(MonitorOfStranger, ShowsAllServicesWithoutAName) {
  cRecordingServer weather(&m_host, "weather");
  cRecordingServer tides(&m_host, "tides");
  cRecordingClient of[] = {{&m_host, "weather"}, {&m_host, "tides"}};
  const auto answer = [](const vorn::cMsg& request) { request.GetReplyChannel()->Send(vorn::cMsg(0x5fff1)); };
  weather.onMessage = tides.onMessage = answer;
  for (cRecordingClient& client : of) {
    client.onConnect = [&client] { client.Send(vorn::cMsg(0x5fff0)); };
    client.onMessage = [&client](const vorn::cMsg&) { client.Send(vorn::cMsg(0x5fff0)); };
  }
  const auto rows = Run({"--json", "monitor", "--count", "200"}).Json();
  std::set<std::string> services;
  for (const auto& row : rows) services.insert(row["service"]);
  EXPECT_EQ(services, (std::set<std::string>{"tides", "weather"}));
}

TEST_F(MonitorOfStranger, SaysWhenNoServiceIsThere) {
  const cOutput output = Run({"monitor"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_EQ(output.err, "tavctl: no service answers in " + Directory() + "\n");
}

TEST_F(MonitorOfStranger, EndsCleanlyWhenItIsInterrupted) {
  cRecordingServer server(&m_host, "weather");
  server.onConnect = [](vorn::cScmChannel&) { raise(SIGINT); };
  const cOutput output = Run({"--json", "monitor", "weather"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out, "[]\n");
}

TEST_F(MonitorOfStranger, SaysThatItIsRefused) {
  cRawSocket listener;
  ASSERT_TRUE(listener.Listen(m_host.GetSocketPath("weather")));
  int accepted = -1;
  // Wakes when the monitor is there, and answers like a service that does not want to be watched.
  const vorn::cWatch watch(&m_host, listener.Get(), vorn::cWatch::eEvent::Read, [&] {
    const int peer = listener.Accept();
    if (peer < 0) return;
    if (accepted >= 0) close(accepted);
    accepted = peer;
    vorn::cRecord reason;
    reason.AppendTextPar("reason", "not today");
    const std::string bytes = cRawSocket::Hello() + cRawSocket::Frame(0x12, reason);
    send(accepted, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  });
  const cOutput output = Run({"--json", "monitor", "weather"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_EQ(output.err, "tavctl: service 'weather' does not show its messages: not today\n");
  EXPECT_EQ(output.out, "");
  close(accepted);
}

TEST_F(MonitorOfStranger, SaysThatThereIsNoSuchService) {
  const cOutput output = Run({"monitor", "weather"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_THAT(output.err, HasSubstr("service 'weather': there is no socket"));
}

}  // namespace
}  // namespace tav::ctl
