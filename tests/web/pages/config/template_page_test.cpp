// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/template_page.h>

#include <tests/web/pages/config/config_world.h>

namespace tav::pages {
namespace {

class TemplatePage : public cConfigWorld {
 protected:
  static constexpr const char* kUrl = "/template?name=House";

  void HaveTemplate() {
    cMeterTemplate preset;
    preset.name = "House";
    preset.meterConfig = Meter("");
    preset.meterConfig.AddCollector(Collector());
    preset.pushConfig = Target();
    preset.pushConfig.password = "push-secret";
    Set(preset);
  }
};

TEST_F(TemplatePage, CreatesATemplate) {
  const cAnswer answer = Submit(FormAt("/template")
                                    .Set("name", "House")
                                    .Set("meter-config.medium", "E")
                                    .Set("meter-config.key", kSecret)
                                    .Set("push-config.name", "far")
                                    .Set("push-config.protocoll", "https")
                                    .Set("push-config.host", "host.example"));
  EXPECT_EQ(answer.Header("Location"), "/template?name=House&done=created") << answer.body;
  ASSERT_EQ(Templates().size(), 1u);
  EXPECT_TRUE(Templates()[0].enable);
  EXPECT_EQ(Templates()[0].meterConfig.medium, "E");
  EXPECT_EQ(Templates()[0].meterConfig.key, kSecret);
  EXPECT_EQ(Templates()[0].pushConfig.host, "host.example");
}

TEST_F(TemplatePage, MayLeaveMeterAndPushTargetOpen) {
  EXPECT_EQ(Submit(FormAt("/template").Set("name", "House")).Status(), 303u);
  EXPECT_EQ(Submit(FormAt(kUrl).Set("meter-config.vendor", "V")).Status(), 303u);
  EXPECT_EQ(Templates()[0].meterConfig.vendor, "V");
}

TEST_F(TemplatePage, ShowsAllPartsAndNoSecrets) {
  HaveTemplate();
  const cAnswer page = Open(kUrl);
  EXPECT_EQ(FormOf(page, "save").Value("idx"), "1");
  EXPECT_EQ(FormOf(page, "save").Value("meter-config.vendor"), "A vendor");
  EXPECT_EQ(FormOf(page, "save").Value("push-config.host"), "host.example:8443");
  EXPECT_THAT(page.body, HasSubstr("<th scope=\"row\">1</th><td>yes</td><td>15min</td>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  EXPECT_THAT(page.body, Not(HasSubstr("push-secret")));
}

TEST_F(TemplatePage, ChangesNothingButWhatWasTyped) {
  HaveTemplate();
  cMeterTemplate expected = Templates()[0];
  EXPECT_EQ(Submit(FormAt(kUrl).Set("meter-config.vendor", "V").Set("push-config.collect", "3")).Status(), 303u);
  expected.meterConfig.vendor = "V";
  expected.pushConfig.collect = 3;
  EXPECT_EQ(Templates()[0].ToRecord(), expected.ToRecord());
  EXPECT_EQ(Templates()[0].meterConfig.collectors.front().distanceRP, 4u);
  EXPECT_EQ(Templates()[0].pushConfig.password, "push-secret");
}

TEST_F(TemplatePage, ARefusalKeepsWhatWasTyped) {
  const cAnswer half = Submit(FormAt("/template").Set("name", "House").Set("push-config.name", "far"));
  EXPECT_EQ(half.Status(), 400u);
  EXPECT_THAT(half.body, HasSubstr("Not saved: push target: missing protocoll."));
  EXPECT_EQ(FormOf(half, "save").Value("push-config.name"), "far");
  const cAnswer number = Submit(FormAt("/template").Set("name", "House").Set("push-config.collect", "many"));
  EXPECT_EQ(number.Status(), 400u);
  EXPECT_EQ(FormOf(number, "save").Value("push-config.collect"), "many");
  const cAnswer nameless = Submit(FormAt("/template"));
  EXPECT_THAT(nameless.body, HasSubstr("missing name"));
  const std::string tooLong(256, 'v');
  const cAnswer refused = Submit(FormAt("/template").Set("name", "House").Set("meter-config.vendor", tooLong));
  EXPECT_EQ(refused.Status(), 409u);
  EXPECT_THAT(refused.body, HasSubstr("has 256 bytes, at most 255 are kept"));
  EXPECT_EQ(FormOf(refused, "save").Value("meter-config.vendor"), tooLong);
  EXPECT_THAT(Templates(), IsEmpty());
}

TEST_F(TemplatePage, IsDeleted) {
  HaveTemplate();
  EXPECT_EQ(Submit(FormAt("/template?name=House&delete=ask", "delete")).Header("Location"), "/templates?done=deleted");
  EXPECT_THAT(Templates(), IsEmpty());
  EXPECT_EQ(Open(kUrl).Status(), 404u);
}

TEST_F(TemplatePage, DoesNotOverwriteOthersOrWhatOthersHaveChanged) {
  HaveTemplate();
  EXPECT_EQ(Submit(FormAt("/template").Set("name", "House")).Status(), 409u);
  const cShownForm form = FormAt(kUrl).Set("meter-config.vendor", "mine");
  cMeterTemplate theirs = Templates()[0];
  theirs.meterConfig.AddCollector(Collector("2"));
  Set(theirs);
  EXPECT_EQ(Submit(form).Status(), 409u);
  EXPECT_EQ(Templates()[0].meterConfig.collectors.size(), 2u);
  EXPECT_EQ(Templates()[0].meterConfig.vendor, "A vendor");
}

TEST_F(TemplatePage, AViewerSeesNeitherSecretsNorButtons) {
  HaveTemplate();
  Enter(eRole::Viewer);
  const cAnswer page = Open(kUrl);
  EXPECT_THAT(page.body, HasSubstr("<dt>Host</dt><dd>host.example:8443</dd>"));
  EXPECT_THAT(page.body, HasSubstr("<td>15min</td>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  EXPECT_THAT(page.body, Not(HasSubstr("push-secret")));
  EXPECT_THAT(page.body, Not(HasSubstr("name=\"action\"")));
  EXPECT_EQ(Open("/template").Status(), 403u);
}

TEST_F(TemplatePage, EscapesAHostileName) {
  cMeterTemplate preset;
  preset.name = kHostile;
  preset.enable = true;
  preset.meterConfig.AddCollector(Collector(kHostile));
  Set(preset);
  const std::string url = MakeUrl("/template", {{"name", kHostile}});
  for (const std::string& page :
       {Open(url).body, Open(url + "&delete=ask").body, Get("/templates").body, Get("/meter-config").body}) {
    EXPECT_THAT(page, HasSubstr(kHostileShown));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
  }
}

}  // namespace
}  // namespace tav::pages
