// SPDX-License-Identifier: Apache-2.0
#include <tavctl/device_command.h>

#include <fstream>

#include <gateway/service/device/gsm_server.h>
#include <gateway/service/device/time_server.h>
#include <gateway/service/device/ui_server.h>
#include <tests/support/parameters.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class DeviceCommand : public TavctlWorld {};

TEST_F(DeviceCommand, NamesTheHardwareWithoutAGateway) {
  EXPECT_EQ(Run({"device", "identify", "X-013"}).out, "ID     HARDWARE\nX-013  RS232/LAN/WAN/GPRS\n");
  EXPECT_EQ(Run({"--json", "device", "identify", "X-001"}).Json()[0]["hardware"], "RS485 / LAN / GPRS");
}

TEST_F(DeviceCommand, FailsForHardwareThatIsNotKnown) {
  const cOutput output = Run({"device", "identify", "X-099"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.out, "ID     HARDWARE\nX-099  Hardware ID unknown\n");
}

// With all three services, simulated.
class DeviceServices : public TavctlWorld {
 protected:
  static std::string Row(const gateway::cDeviceServer& server, const std::string& name) {
    for (const auto& [key, value] : server.GetState())
      if (key == name) return value;
    return "none";
  }
  // Nothing said, and done.
  void ExpectDone(const cOutput& output) {
    EXPECT_EQ(output.exit, eExitDone) << output.err;
    EXPECT_EQ(output.out + output.err, "");
  }
  void ExpectUsage(const std::vector<std::string>& arguments, const std::string& error) {
    const cOutput output = Run(arguments);
    EXPECT_EQ(output.exit, eExitUsage);
    EXPECT_THAT(output.err, HasSubstr(error));
  }

  gateway::cUiServer m_ui{&m_host};
  gateway::cTimeServer m_time{&m_host};
  gateway::cGsmServer m_gsm{&m_host};
};

TEST_F(DeviceServices, ShowTheirState) {
  const cOutput output = Run({"device"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_THAT(output.out, StartsWith("SERVICE       NAME           VALUE\nui            led.wan        off, dark\n"));
  EXPECT_THAT(output.out, HasSubstr("\ntime-service  wan            unknown\n"));
  EXPECT_THAT(output.out, HasSubstr("\ngsm           state          off\n"));
  const nlohmann::json rows = Run({"--json", "device"}).Json();
  EXPECT_EQ(rows[0].dump(), R"({"name":"led.wan","service":"ui","value":"off, dark"})");
}

TEST_F(DeviceServices, SwitchLights) {
  ExpectDone(Run({"device", "led", "wan", "blink"}));
  EXPECT_THAT(Row(m_ui, "led.wan"), StartsWith("blink, "));
  ExpectDone(Run({"device", "led", "meter-2", "on"}));
  EXPECT_EQ(Row(m_ui, "led.meter-2"), "on, lit");
  ExpectDone(Run({"device", "led", "meter-1", "flash"}));
}

TEST_F(DeviceServices, RefuseLightsThatDoNotExist) {
  ExpectUsage({"device", "led", "roof", "on"}, "wan|meter-1|meter-2: expected one of these, found \"roof\"");
  ExpectUsage({"device", "led", "wan", "dim"}, "on|off|blink|try|error|flash: expected one of these, found \"dim\"");
  ExpectUsage({"device", "led", "wan"}, "on|off|blink|try|error|flash is required");
}

TEST_F(DeviceServices, SwitchTheRelay) {
  EXPECT_EQ(Run({"device", "relay"}).out, "SERVICE  NAME   VALUE\nui       relay  open\n");
  ExpectDone(Run({"device", "relay", "closed", "--for", "600"}));
  EXPECT_EQ(Run({"--json", "device", "relay"}).Json()[0]["value"], "closed");
  EXPECT_THAT(Row(m_ui, "relay.back-in"), testing::AnyOf("599", "600"));
  ExpectDone(Run({"device", "relay", "open"}));
  EXPECT_EQ(Row(m_ui, "relay.back-in"), "0");
}

TEST_F(DeviceServices, SayWhyTheRelayIsNotSwitched) {
  const cOutput output = Run({"device", "relay", "closed", "--for", "2592001"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_EQ(output.err,
            "tavctl: service 'ui' refused switch-relay: parameter \"timeout\": expected at most 2592000 seconds, "
            "found 2592001\n");
  EXPECT_EQ(Run({"device", "relay", "closed", "--for", "4294967295"}).exit, eExitRefused);
  ExpectUsage({"device", "relay", "closed", "--for", "4294967296"}, "--for: expected at most 4294967295");
  ExpectUsage({"device", "relay", "--for", "5"}, "--for: the mode is missing");
  EXPECT_EQ(Row(m_ui, "relay"), "open");
}

TEST_F(DeviceServices, SetTheClock) {
  ExpectDone(Run({"device", "time", "2030-01-02T03:04:05Z"}));
  EXPECT_EQ(Row(m_time, "last-set"), "2030-01-02T03:04:05Z");
  EXPECT_THAT(Run({"device", "time"}).out, HasSubstr("last-set      2030-01-02T03:04:05Z\n"));
  const cOutput refused = Run({"device", "time", "2001-01-01"});
  EXPECT_EQ(refused.exit, eExitRefused);
  EXPECT_THAT(refused.err, HasSubstr("expected 2024-01-01T00:00:00Z to 2099-12-31T23:59:59Z, found 2000-12-31"));
  ExpectUsage({"device", "time", "teatime"}, "TIME: ");
}

TEST_F(DeviceServices, TellOfTheLink) {
  ExpectDone(Run({"device", "wan", "up"}));
  EXPECT_EQ(Row(m_time, "wan"), "up");
  ExpectDone(Run({"device", "wan", "down"}));
  EXPECT_EQ(Row(m_time, "wan"), "down");
  ExpectUsage({"device", "wan", "sideways"}, "up|down: expected one of these");
}

TEST_F(DeviceServices, StartAndStopTheModem) {
  ExpectDone(Run({"device", "modem", "start", "--apn", "internet"}));
  EXPECT_EQ(Row(m_gsm, "state"), "connecting");
  EXPECT_EQ(Row(m_gsm, "apn"), "internet");
  ExpectDone(Run({"device", "modem", "stop"}));
  EXPECT_EQ(Row(m_gsm, "state"), "off");
}

TEST_F(DeviceServices, RefuseWhatTheModemCannotBeTold) {
  ExpectUsage({"device", "modem", "start"}, "--apn is missing");
  ExpectUsage({"device", "modem", "stop", "--user", "jane"}, "takes no options");
  ExpectUsage({"device", "modem", "start", "--apn", "a", "--pin-file", "-", "--password-file", "-"},
              "standard input cannot be both");
  ExpectUsage({"device", "modem", "start", "--apn", "a", "--password", "s3cret"}, "no option or place");
  const cOutput missing = Run({"device", "modem", "start", "--apn", "a", "--pin-file", m_folder.File("none")});
  EXPECT_EQ(missing.exit, eExitFile);
  EXPECT_EQ(Row(m_gsm, "state"), "off");
}

TEST_F(DeviceServices, ShowARowForTheOneThatIsAway) {
  const cTempFolder folder;
  gateway::cServiceHost host("alone", folder.GetPath());
  const gateway::cUiServer lights(&host);
  std::ostringstream out, err;
  std::istringstream in;
  cApplication application({in, out, err}, &host);
  EXPECT_EQ(application.Run({"device"}), eExitDone);
  EXPECT_THAT(out.str(), HasSubstr("ui            led.wan        off, dark\n"));
  EXPECT_THAT(out.str(), HasSubstr("\ngsm           -              service 'gsm': there is no socket "));
}

TEST_F(DeviceCommand, FailsWhenNoDeviceServiceIsThere) {
  const cOutput output = Run({"device"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_THAT(output.out, HasSubstr("time-service  -     service 'time-service': there is no socket "));
  EXPECT_EQ(Run({"device", "led", "wan", "on"}).exit, eExitUnreachable);
  EXPECT_EQ(Run({"device", "time"}).exit, eExitUnreachable);
}

// ---- what is sent

class DeviceModem : public TavctlWorld {
 protected:
  DeviceModem() {
    m_server.onMessage = [this](const vorn::cMsg& request) {
      vorn::cMsg answer(request.GetType() + 1);
      answer.SetId(request.GetId());
      if (!m_reason.empty()) answer.Record().AppendTextPar("reason", m_reason);
      request.GetReplyChannel()->Send(answer);
    };
  }
  std::string File(const std::string& name, const std::string& text) {
    std::ofstream(m_folder.File(name)) << text;
    return m_folder.File(name);
  }

  std::string m_reason;
  cRecordingServer m_server{&m_host, "gsm"};
};

TEST_F(DeviceModem, ReadsSecretsFromFiles) {
  const cOutput output = Run({"device", "modem", "start", "--apn", "internet", "--pin-file", File("pin", "1234\n"),
                              "--user", "jane", "--password-file", "-"},
                             "s3 cret\r\n");
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  ASSERT_EQ(m_server.messages.size(), 1u);
  EXPECT_THAT(
      Parameters(m_server.messages[0].Record()),
      testing::ElementsAre("MobilePin text=1234", "APN text=internet", "User text=jane", "Password text=s3 cret"));
}

TEST_F(DeviceModem, BoundsASecret) {
  const auto start = [&](std::size_t length) {
    return Run({"device", "modem", "start", "--apn", "a", "--password-file", File("p", std::string(length, 'x'))}).exit;
  };
  EXPECT_EQ(start(1023), eExitDone);
  EXPECT_EQ(start(1024), eExitDone);
  EXPECT_EQ(start(1025), eExitFile);
}

TEST_F(DeviceModem, TakesAnAnswerWithAReasonForTheRefusalThatItIs) {
  m_reason = "there is no modem";
  const cOutput output = Run({"device", "modem", "start", "--apn", "internet"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_EQ(output.err, "tavctl: service 'gsm' refused start: there is no modem\n");
  // Where a refusal has a number of its own, a "reason" beside an answer means nothing.
  EXPECT_EQ(Run({"device", "modem", "stop"}).exit, eExitDone);
}

}  // namespace
}  // namespace tav::ctl
