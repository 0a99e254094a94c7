// SPDX-License-Identifier: Apache-2.0
// A person at a gateway: real processes, a simulated meter, a real browser.
#include <map>

#include <tests/web/pages/browser/gateway_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using GatewayInBrowser = cGatewayWorld;

TEST_F(GatewayInBrowser, IsSetUpSeenChangedAndLeft) {
  // The first password, by the code that the gateway says.
  SetThePassword();
  m_browser->Click("form.logout button");
  m_browser->AwaitText("h1", "Log in");
  LogIn();
  m_browser->AwaitText("h1", "Meters");

  // A meter's values change while one looks.
  const std::string value = ".card [data-live=\"" + kMeter + " 1-0:1.8.0\"]";
  m_browser->Await("the meter's card", [&] {
    if (m_browser->Exists(value)) return true;
    m_browser->Reload();
    return false;
  });
  const std::string before = m_browser->Text(value);
  m_browser->AwaitText(value, [&](const std::string& now) { return now != before; });
  Picture("overview");

  // Its curve is drawn, and told in words.
  m_browser->Click(".card h2 a");
  m_browser->AwaitText("#chart-summary", "highest");
  EXPECT_TRUE(
      m_browser->Execute("const c = document.querySelector('#chart');"
                         "const d = c.getContext('2d').getImageData(0, 0, c.width, c.height).data;"
                         "return d.some(byte => byte != 0);"))
      << "something is drawn";
  Picture("meter");

  // A rule is changed, and the next reading is shown by its new name.
  OpenPage("/rules?q=1-0:36.7.0");
  m_browser->Open(
      m_browser->Execute("return [...document.querySelectorAll('tr')]"
                         ".find(row => row.textContent.includes('1-0:36.7.0')).querySelector('a').href"));
  m_browser->Type("[name=name]", "Power of the kitchen");
  m_browser->Click("form.entry .actions button");
  m_browser->AwaitText(".note.ok", "The rule is saved.");
  Picture("rule");
  OpenPage(MeterPath());
  EXPECT_THAT(m_browser->Text("main"), HasSubstr("Power of the kitchen"));
  const std::string time = "[data-live-when=\"" + kMeter + " 1-0:36.7.0\"]";
  const std::string then = m_browser->Text(time);
  m_browser->AwaitText(time, [&](const std::string& now) { return now != then; });

  // Values are taken away as a file.
  m_browser->SetDownloadFolder(m_folder.GetPath());
  m_browser->Click("a[href*='format=csv']");
  m_browser->Await("the file", [&] { return std::filesystem::exists(m_folder.File("values.csv")); });
  EXPECT_THAT(Load("values.csv"), StartsWith("meterID,timestamp,time-source,obis-id,value,unit\r\n" + kMeter + ","));

  m_browser->Click("form.logout button");
  m_browser->AwaitText("h1", "Log in");
  OpenPage("/");
  m_browser->AwaitText("h1", "Log in");
  ExpectNothingWrong();
}

TEST_F(GatewayInBrowser, ShowsEveryPageOnADesktopAndOnAPhone) {
  SetThePassword();
  m_browser->Await("the driver's reading", [&] {
    OpenPage("/");
    return m_browser->Exists(".card");
  });
  for (const unsigned int width : {1200u, 360u}) {
    m_browser->SetWindow(width, 800);
    OpenPage("/");
    std::vector<std::string> paths = {"/", MeterPath()};
    for (const auto& path :
         m_browser->Execute("return [...document.querySelectorAll('nav a')].map(a => a.getAttribute('href'))"))
      paths.push_back(path);
    EXPECT_GT(paths.size(), 2u);
    for (const std::string& path : paths) {
      OpenPage(path);
      EXPECT_LE(m_browser->Execute("return document.documentElement.scrollWidth").get<unsigned int>(), width)
          << path << " is wider than the window";
      std::string name = path.substr(1, path.find('?') - 1);
      Picture((name.empty() ? "overview" : name) + "-" + std::to_string(width));
    }
  }
  ExpectNothingWrong();
}

TEST_F(GatewayInBrowser, EveryPageCanBeUsedWithoutEyesAndWithoutAMouse) {
  SetThePassword();
  for (const auto& path :
       m_browser->Execute("return [...document.querySelectorAll('nav a')].map(a => a.getAttribute('href'))")) {
    OpenPage(path);
    ExpectEverybodyCanUseIt(path);
    m_browser->Press("", "\xEE\x80\x84");  // the tab key
    EXPECT_EQ(m_browser->Execute("return document.activeElement.className"), "skip") << path;
  }
}

TEST_F(GatewayInBrowser, IsOfUseWithoutScripts) {
  m_browser->DisableScripts();
  SetThePassword();
  m_browser->Await("the meter's card", [&] {
    m_browser->Reload();
    return m_browser->Exists(".card h2 a");
  });
  m_browser->Click(".card h2 a");
  m_browser->AwaitText("h1", kMeter);
  EXPECT_THAT(m_browser->Texts("td.num"), testing::Not(testing::IsEmpty()));
  m_browser->Select("#obis", "1-0:16.7.0");
  m_browser->Click("form.range button");
  m_browser->AwaitUrl("obis=1-0%3A16.7.0");
  EXPECT_THAT(m_browser->Text("noscript"), HasSubstr("The curve needs scripts"));
  m_browser->Click("form.logout button");
  m_browser->AwaitText("h1", "Log in");
}

TEST_F(GatewayInBrowser, SaysWhenThePagesAreAwayAndShowsThemAgain) {
  SetThePassword();
  m_pages->Signal(SIGKILL);
  m_pages->Wait();
  m_browser->Await("the news that the values stand still",
                   [&] { return m_browser->Attribute("body", "class").find("stale") != std::string::npos; });
  OpenPage("/");
  EXPECT_THAT(m_browser->GetTitle(), HasSubstr("503"));
  StartPages();
  m_browser->Await("the login", [&] {
    OpenPage("/");
    return m_browser->Exists("#password");
  });
  LogIn();
  m_browser->AwaitText("h1", "Meters");
}

// The load is bounded: 20 connections for 4 seconds, and 100 requests one after the other, all to this machine.
TEST_F(GatewayInBrowser, WithstandsALoadWithThePagesKilledInBetween) {
  for (const char* program : {"wrk", "curl"})
    if (std::system(("command -v " + std::string(program) + " >/dev/null").c_str()) != 0)
      GTEST_SKIP() << program << " is not installed";
  SetThePassword();
  const auto load =
      Start({"/bin/sh", "-c", "exec wrk -t1 -c20 -d4s " + m_base + "/login >" + m_folder.File("wrk.out")}, "wrk.said");
  const auto requests = Start({"/bin/sh", "-c",
                               "for i in $(seq 100); do curl -s -o /dev/null -m 20 -w '%{http_code}\\n' " + m_base +
                                   "/login; done >" + m_folder.File("curl.out")},
                              "curl.said");
  for (int i = 0; i < 5; ++i) {
    OpenPage("/");
    m_browser->AwaitText("h1", "Meters");
  }
  m_pages->Signal(SIGKILL);
  m_pages->Wait();
  StartPages();
  m_browser->Await("the login", [&] {
    OpenPage("/");
    return m_browser->Exists("#password");
  });
  LogIn();
  m_browser->AwaitText("h1", "Meters");
  EXPECT_EQ(load->Wait(60'000), 0) << Load("wrk.said");
  EXPECT_EQ(requests->Wait(60'000), 0) << Load("curl.said");
  EXPECT_THAT(Load("wrk.out"), HasSubstr("Requests/sec"));
  std::map<std::string, unsigned int> answers;
  std::ifstream codes(m_folder.File("curl.out"));
  for (std::string code; std::getline(codes, code);) ++answers[code];
  EXPECT_GT(answers["200"], 0u);
  for (const auto& [code, count] : answers)
    EXPECT_THAT(code, testing::AnyOf("200", "502", "503")) << "each request is answered: " << count;
}

}  // namespace
}  // namespace tav::pages
