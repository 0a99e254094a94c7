// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/list_pages.h>

#include <gateway/service/data/config/config_limits.h>
#include <tests/web/pages/config/config_world.h>

namespace tav::pages {
namespace {

using ListPages = cConfigWorld;

TEST_F(ListPages, StandInTheNavigation) {
  const std::string page = Get("/interfaces").body;
  for (const char* link :
       {"<a href=\"/interfaces\" aria-current=\"page\">Interfaces</a>", "<a href=\"/meter-configs\">Meter settings</a>",
        "<a href=\"/push-targets\">Push targets</a>", "<a href=\"/templates\">Templates</a>"})
    EXPECT_THAT(page, HasSubstr(link));
}

TEST_F(ListPages, SayWhenThereIsNothing) {
  for (const char* path : {"/interfaces", "/meter-configs", "/push-targets", "/templates"}) {
    const cAnswer page = Get(path);
    EXPECT_EQ(page.Status(), 200u) << path;
    EXPECT_THAT(page.body, HasSubstr("<p class=\"empty\">No ")) << path;
  }
}

TEST_F(ListPages, ShowEachThingWithALink) {
  HaveMeter();
  Set(Target());
  cMeterTemplate preset;
  preset.name = "House";
  Set(preset);
  EXPECT_THAT(Get("/interfaces").body, HasSubstr("<th scope=\"row\"><a href=\"/interface?name=SIM\">SIM</a></th>"));
  const std::string meters = Get("/meter-configs").body;
  EXPECT_THAT(meters, HasSubstr("<a href=\"/meter-config?id=4711&amp;medium=E&amp;mfct=TAV\">4711</a>"));
  EXPECT_THAT(meters, HasSubstr("<td>SIM</td><td>SML</td><td>interval=900</td><td>yes</td>"));
  const std::string targets = Get("/push-targets").body;
  EXPECT_THAT(targets, HasSubstr("<a href=\"/push-target?idx=1\">far</a></th><td class=\"num\">1</td><td>yes</td>"));
  EXPECT_THAT(Get("/templates").body, HasSubstr("<a href=\"/template?name=House\">House</a>"));
  for (const std::string& page : {meters, targets}) EXPECT_THAT(page, Not(HasSubstr(kSecret)));
}

TEST_F(ListPages, HaveColumnTitlesForPeople) {
  HaveMeter();
  EXPECT_THAT(Get("/meter-configs").body, HasSubstr("<th scope=\"col\">Meter</th><th scope=\"col\">Address</th>"));
}

TEST_F(ListPages, OfferAViewerNothingNew) {
  const std::pair<const char*, const char*> lists[] = {{"/interfaces", "href=\"/interface\""},
                                                       {"/meter-configs", "href=\"/meter-config\""},
                                                       {"/push-targets", "href=\"/push-target\""},
                                                       {"/templates", "href=\"/template\""}};
  for (const auto& [path, link] : lists) EXPECT_THAT(Get(path).body, HasSubstr(link));
  Enter(eRole::Viewer);
  for (const auto& [path, link] : lists) {
    const cAnswer page = Get(path);
    EXPECT_EQ(page.Status(), 200u);
    EXPECT_THAT(page.body, Not(HasSubstr(link)));
  }
}

// As many meters as the service keeps, each with long options and some collectors.
TEST_F(ListPages, ShowAFullGateway) {
  Set(cInterfaceRecord("SIM", "", true));
  vorn::cRecord all;
  for (unsigned int i = 0; i < data::kMaxMeters; ++i) {
    cMeterConfig meter = Meter("meter-" + std::to_string(i));
    meter.interfaceOptions = std::string(500, 'o');
    meter.collectors = {Collector("1"), Collector("2"), Collector("3")};
    all.AppendRecordPar(db_ctrl::kMeterConfigRecord, meter.ToRecord());
  }
  all.AppendBoolPar(db_ctrl::kReplace, false);
  ASSERT_EQ(AskData(db_ctrl::eApplyConfig, all).GetType(), db_ctrl::eApplyConfig + 1);
  for (const char* path : {"/meter-configs", "/interface?name=SIM"}) {
    const cAnswer page = Open(path);
    EXPECT_TRUE(page.isWhole) << path;
    for (const char* id : {"meter-0", "meter-1023"}) EXPECT_THAT(page.body, HasSubstr(std::string(">") + id + "</a>"));
  }
  EXPECT_THAT(Open("/meter-config?id=meter-1023").body, HasSubstr("<h1>Meter meter-1023</h1>"));
  EXPECT_THAT(Submit(FormAt("/meter-config").Set("meterID", "one more").Set("interface-name", "SIM")).body,
              HasSubstr("at most 1024 meters are kept"));
}

}  // namespace
}  // namespace tav::pages
