// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/devices_page.h>

#include <tav/service/device_protocol.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

class DevicesPage : public cPagesWorld {
 protected:
  std::string Page() { return Get("/devices").body; }
  cAnswer Do(const std::string& action, cFields fields = {}) {
    fields.emplace_back("do", action);
    return Post("/devices", fields);
  }
};

TEST_F(DevicesPage, ShowsHowAllOfThemAre) {
  Enter();
  const std::string body = Page();
  for (const char* name :
       {"ui.led.wan", "ui.led.meter-1", "ui.relay", "time-service.clock", "time-service.wan", "gsm.state", "gsm.apn"})
    EXPECT_THAT(body, HasSubstr("data-live=\"" + std::string(name) + "\"")) << name;
  EXPECT_THAT(body, HasSubstr("data-live=\"ui.relay\">open</dd>"));
}

TEST_F(DevicesPage, SwitchesALight) {
  Enter();
  EXPECT_EQ(Do("led", {{"led", "meter-2"}, {"mode", "blink"}}).Header("Location"), "/devices?done=led");
  const std::string body = Get("/devices", {{"done", "led"}}).body;
  EXPECT_THAT(body, HasSubstr("data-live=\"ui.led.meter-2\">blink</dd>"));
  EXPECT_THAT(body, HasSubstr("The light is switched."));
}

TEST_F(DevicesPage, SwitchesTheRelay) {
  Enter();
  EXPECT_EQ(Do("relay", {{"mode", "closed"}, {"timeout", ""}}).Status(), 303u);
  EXPECT_THAT(Page(), HasSubstr("data-live=\"ui.relay\">closed</dd>"));
  EXPECT_EQ(Do("relay", {{"mode", "open"}, {"timeout", "3600"}}).Status(), 303u);
  EXPECT_THAT(Page(), HasSubstr("data-live=\"ui.relay\">open</dd>"));
  const cAnswer answer = Do("relay", {{"mode", "closed"}, {"timeout", "4294967295"}});
  EXPECT_EQ(answer.Status(), 409u) << "longer than its timer goes";
  EXPECT_THAT(answer.body, HasSubstr("value=\"4294967295\"")) << "what was typed stays";
}

TEST_F(DevicesPage, ConnectsAndDisconnectsTheModem) {
  Enter();
  EXPECT_EQ(Do("modem-start", {{"pin", "4711"}, {"apn", "net.test"}, {"user", "u"}, {"password", "p4ssw0rd"}}).Status(),
            303u);
  const std::string body = Page();
  EXPECT_THAT(body, HasSubstr("data-live=\"gsm.apn\">net.test</dd>"));
  EXPECT_THAT(body, AnyOf(HasSubstr(">connecting</dd>"), HasSubstr(">connected</dd>")));
  EXPECT_EQ(Do("modem-stop").Status(), 303u);
  EXPECT_THAT(Page(), AnyOf(HasSubstr(">disconnecting</dd>"), HasSubstr("data-live=\"gsm.state\">off</dd>")));
}

TEST_F(DevicesPage, ASecretIsNeverShownBack) {
  Enter();
  const cAnswer answer = Do("modem-start", {{"pin", "4711"}, {"apn", ""}, {"user", "me<"}, {"password", "p4ssw0rd"}});
  EXPECT_EQ(answer.Status(), 400u);
  EXPECT_THAT(answer.body, HasSubstr("Access point: expected"));
  EXPECT_THAT(answer.body, HasSubstr("value=\"me&lt;\"")) << "the rest of what was typed stays";
  EXPECT_THAT(answer.body, Not(HasSubstr("4711")));
  EXPECT_THAT(answer.body, Not(HasSubstr("p4ssw0rd")));
}

TEST_F(DevicesPage, SetsTheClock) {
  Enter();
  EXPECT_EQ(Do("clock", {{"time", "2030-01-02T03:04:05Z"}}).Status(), 303u);
  EXPECT_THAT(Page(), HasSubstr("data-live=\"time-service.last-set\">2030-01-02T03:04:05Z</dd>"));
}

TEST_F(DevicesPage, TellsHowTheNetworkIs) {
  Enter();
  EXPECT_EQ(Do("wan-up").Status(), 303u);
  EXPECT_THAT(Page(), HasSubstr("data-live=\"time-service.wan\">up</dd>"));
  EXPECT_EQ(Do("wan-down").Status(), 303u);
  EXPECT_THAT(Page(), HasSubstr("data-live=\"time-service.wan\">down</dd>"));
}

TEST_F(DevicesPage, WhatCannotBeMeantIsRefused) {
  Enter();
  const std::vector<std::pair<cFields, std::string>> cases = {
      {{{"do", "led"}, {"led", "meter-3"}, {"mode", "on"}}, "There is no light &quot;meter-3&quot;."},
      {{{"do", "led"}, {"led", "wan"}, {"mode", "<b>"}}, "No light can be &quot;&lt;b&gt;&quot;."},
      {{{"do", "relay"}, {"mode", "ajar"}}, "The relay cannot be &quot;ajar&quot;."},
      {{{"do", "relay"}, {"mode", "open"}, {"timeout", "4294967296"}}, "Seconds: expected"},
      {{{"do", "relay"}, {"mode", "open"}, {"timeout", "-1"}}, "Seconds: expected"},
      {{{"do", "clock"}, {"time", "half past nine"}}, "Time: "},
      {{{"do", "clock"}, {"time", ""}}, "Time: "},
      {{{"do", "explode"}}, "does not say what to do"},
      {{}, "does not say what to do"},
  };
  for (const auto& [fields, text] : cases) {
    const cAnswer answer = Post("/devices", fields);
    EXPECT_EQ(answer.Status(), 400u) << text;
    EXPECT_THAT(answer.body, HasSubstr(text));
  }
}

TEST_F(DevicesPage, WhatAServiceRefusesIsShown) {
  Enter();
  const cAnswer answer = Do("clock", {{"time", "2023-12-31T23:59:59Z"}});
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("The service &quot;time-service&quot; refused: "));
  EXPECT_THAT(answer.body, HasSubstr("value=\"2023-12-31T23:59:59Z\""));
}

TEST_F(DevicesPage, AServiceThatIsAwayIsOneNoteAmongTheOthers) {
  Enter();
  EndService("gsm");
  ASSERT_TRUE(Await([&] { return !m_pages->GetGateway().gsm.IsConnected(); }));
  const cAnswer answer = Get("/devices");
  EXPECT_EQ(answer.Status(), 200u);
  EXPECT_THAT(answer.body, HasSubstr("The service &quot;gsm&quot; is away."));
  EXPECT_THAT(answer.body, HasSubstr("data-live=\"ui.relay\""));
  const cAnswer refused = Do("modem-stop");
  EXPECT_EQ(refused.Status(), 503u);
  EXPECT_THAT(refused.body, HasSubstr("role=\"alert\">The service &quot;gsm&quot; is away."));
  EXPECT_THAT(refused.body, HasSubstr("data-live=\"ui.relay\""));
}

TEST_F(DevicesPage, AServiceThatIsSilentIsWaitedForAndThenShownSo) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  EndService("ui");
  ASSERT_TRUE(Await([&] { return !m_pages->GetGateway().ui.IsConnected(); }));
  cRecordingServer silent(m_gateway.get(), "ui");
  m_pages->GetGateway().ui.HealthRequest();
  ASSERT_TRUE(Await([&] { return m_pages->GetGateway().ui.IsConnected(); }));
  const vorn::cUuid id = Send(MakeRequest("GET", "/devices", {}, {}));
  ASSERT_TRUE(Await([&] { return !silent.messages.empty(); }));
  clock->Advance(cWebPage::kPatience * 1000 + 1);
  ASSERT_TRUE(Await([&] { return m_answers[id].isFinished; }));
  EXPECT_EQ(m_answers[id].Status(), 200u);
  EXPECT_THAT(m_answers[id].body, HasSubstr("The service &quot;ui&quot; does not answer."));
  EXPECT_THAT(m_answers[id].body, HasSubstr("data-live=\"gsm.state\""));
}

TEST_F(DevicesPage, AViewerOnlyLooks) {
  Enter(eRole::Viewer);
  const std::string body = Page();
  EXPECT_THAT(body, HasSubstr("data-live=\"ui.relay\""));
  EXPECT_THAT(body, Not(HasSubstr("name=\"do\"")));
  EXPECT_EQ(Do("wan-up").Status(), 403u);
}

}  // namespace
}  // namespace tav::pages
