// SPDX-License-Identifier: Apache-2.0
// A person configures a gateway: real processes, a real browser.
#include <tests/web/pages/browser/gateway_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class ConfigInBrowser : public cGatewayWorld {
 protected:
  void Save() { m_browser->Click("form.entry button[value=save]"); }
  // Creates what stands in the fields of a page, by the names of their inputs.
  void Create(const std::string& path, const std::vector<std::pair<std::string, std::string>>& fields) {
    OpenPage(path);
    for (const auto& [name, text] : fields) m_browser->Type("[name='" + name + "']", text);
    Save();
    m_browser->AwaitText(".note.ok", "Created.");
  }
  void ConfigureAll() {
    Create("/interface", {{"name", "RS485"}, {"options", "baud=9600"}});
    Create("/push-target", {{"name", "far"}, {"protocoll", "https"}, {"host", "host.example"}, {"password", "hidden"}});
    Create("/template", {{"name", "House"}, {"meter-config.medium", "E"}, {"meter-config.interface-name", "RS485"}});
    Create("/meter-config?template=House", {{"meterID", "4711"}, {"interface-protocol", "MODBUS"}, {"key", "hidden"}});
    Create("/collector?meter=4711&addr=",
           {{"addr", "day"}, {"event-type", "day"}, {"obis-ids", "1-0:1.8.0*255"}, {"push-target-name", "far"}});
  }
};

TEST_F(ConfigInBrowser, ConfiguresAMeterAndTakesItAwayAgain) {
  SetThePassword();
  ConfigureAll();
  m_browser->Click("p a");
  m_browser->AwaitText("h1", "Meter 4711");
  EXPECT_THAT(m_browser->Text("table"), HasSubstr("day"));

  m_browser->Type("#a-valve", "open");
  m_browser->Click("button[value=valve]");
  m_browser->AwaitText(".note.error", "driver 'dlmsif' is not registered");

  m_browser->Click("form.entry a.button");
  m_browser->AwaitText("main", "Its collector goes with it");
  m_browser->Click("button.danger");
  m_browser->AwaitText(".note.ok", "Deleted.");
  m_browser->AwaitText("h1", "Meter settings");
}

TEST_F(ConfigInBrowser, EverybodyCanUseTheFormsOnADesktopAndOnAPhone) {
  SetThePassword();
  ConfigureAll();
  for (const unsigned int width : {1200u, 360u}) {
    m_browser->SetWindow(width, 900);
    for (const char* path :
         {"/interfaces", "/interface", "/interface?name=RS485", "/interface?name=RS485&delete=ask", "/meter-configs",
          "/meter-config", "/meter-config?id=4711", "/collector?meter=4711&addr=day", "/push-targets",
          "/push-target?idx=1", "/templates", "/template?name=House"}) {
      OpenPage(path);
      ExpectEverybodyCanUseIt(path);
      EXPECT_LE(m_browser->Execute("return document.documentElement.scrollWidth").get<unsigned int>(), width)
          << path << " is wider than the window";
      std::string name(path + 1);
      for (char& letter : name)
        if (letter == '?' || letter == '&' || letter == '=') letter = '-';
      Picture(name + "-" + std::to_string(width));
    }
  }
  ExpectNothingWrong();
}

TEST_F(ConfigInBrowser, NeedsNoScripts) {
  m_browser->DisableScripts();
  SetThePassword();
  ConfigureAll();
  OpenPage("/push-target?idx=1");
  m_browser->Type("[name=collect]", "51");
  Save();
  m_browser->AwaitText(".note.error", "collection not in range from 1 to 50");
  OpenPage("/collector?meter=4711&addr=day&delete=ask");
  m_browser->Click("button.danger");
  m_browser->AwaitText(".note.ok", "Deleted.");
}

}  // namespace
}  // namespace tav::pages
