// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/push_target_page.h>

#include <tests/web/pages/config/config_world.h>

namespace tav::pages {
namespace {

class PushTargetPage : public cConfigWorld {
 protected:
  static constexpr const char* kUrl = "/push-target?idx=1";

  cShownForm NewForm(const std::string& name) {
    return FormAt("/push-target").Set("name", name).Set("protocoll", "https").Set("host", "host.example");
  }
};

TEST_F(PushTargetPage, CreatesOneUnderTheNumberThatTheServiceChooses) {
  const cAnswer answer = Submit(NewForm("far").Set("username", "me").Set("password", kSecret));
  EXPECT_EQ(answer.Header("Location"), "/push-target?idx=1&done=created") << answer.body;
  ASSERT_EQ(Targets().size(), 1u);
  EXPECT_EQ(Targets()[0].GetURL(), std::string("https://me:") + kSecret + "@host.example");
  EXPECT_TRUE(Targets()[0].enabled);
}

TEST_F(PushTargetPage, NeverShowsThePassword) {
  Set(Target());
  std::string pages = Open(kUrl).body + Open(std::string(kUrl) + "&delete=ask").body;
  pages += Submit(FormAt(kUrl).Set("collect", "0").Set("password", "another-secret")).body;
  pages += Submit(FormAt(kUrl).Clear("state").Set("password", "another-secret")).body;
  EXPECT_THAT(pages, Not(HasSubstr(kSecret)));
  EXPECT_THAT(pages, Not(HasSubstr("another-secret")));
  EXPECT_THAT(pages, HasSubstr("Password. Unchanged when empty."));
  EXPECT_THAT(pages, HasSubstr("type it once more"));
}

TEST_F(PushTargetPage, KeepsChangesAndRemovesThePassword) {
  Set(Target());
  Submit(FormAt(kUrl).Set("host", "other.example"));
  EXPECT_EQ(Targets()[0].GetURL(), std::string("https://me:") + kSecret + "@other.example/in");
  Submit(FormAt(kUrl).Set("password", "changed"));
  EXPECT_EQ(Targets()[0].password, "changed");
  const cAnswer refused = Submit(FormAt(kUrl).Set("password.remove", "true").Set("collect", "51"));
  EXPECT_EQ(Targets()[0].password, "changed");
  EXPECT_EQ(Submit(FormOf(refused, "save").Set("collect", "50")).Status(), 303u);
  EXPECT_EQ(Targets()[0].password, "");
}

TEST_F(PushTargetPage, MayBeCalledOtherwise) {
  Set(Target());
  EXPECT_EQ(Submit(FormAt(kUrl).Set("name", "near")).Header("Location"), "/push-target?idx=1&done=changed");
  ASSERT_EQ(Targets().size(), 1u);
  EXPECT_EQ(Targets()[0].name, "near");
}

TEST_F(PushTargetPage, DoesNotTakeTheNumberOrNameOfAnother) {
  Set(Target());
  const cAnswer number = Submit(NewForm("near").Set("idx", "1"));
  EXPECT_EQ(number.Status(), 409u);
  EXPECT_THAT(number.body, HasSubstr("number 1 is that of the push target &quot;far&quot;"));
  const cAnswer name = Submit(NewForm("far"));
  EXPECT_EQ(name.Status(), 409u);
  EXPECT_THAT(name.body, HasSubstr("number 1 has this name"));
  EXPECT_EQ(FormOf(name, "save").Value("host"), "host.example");
  ASSERT_EQ(Targets().size(), 1u);
  EXPECT_EQ(Targets()[0].host, "host.example:8443");
}

TEST_F(PushTargetPage, TellsWhatIsMissing) {
  const std::pair<const char*, const char*> cases[] = {
      {"name", "missing name"}, {"protocoll", "missing protocoll"}, {"host", "missing host"}};
  for (const auto& [field, fault] : cases) {
    const cAnswer answer = Submit(NewForm("far").Set(field, "").Set("uri", "kept"));
    EXPECT_EQ(answer.Status(), 400u) << field;
    EXPECT_THAT(answer.body, HasSubstr(fault));
    EXPECT_EQ(FormOf(answer, "save").Value("uri"), "kept");
  }
  EXPECT_THAT(Targets(), IsEmpty());
}

TEST_F(PushTargetPage, TakesAsManyCollectionsAsAllowed) {
  Set(Target());
  const std::pair<const char*, unsigned int> cases[] = {{"0", 400},  {"1", 303},  {"2", 303},
                                                        {"49", 303}, {"50", 303}, {"51", 400}};
  for (const auto& [collect, status] : cases) {
    const cAnswer answer = Submit(FormAt(kUrl).Set("collect", collect));
    EXPECT_EQ(answer.Status(), status) << collect;
    if (status == 400) {
      EXPECT_THAT(answer.body, HasSubstr("collection not in range from 1 to 50"));
      EXPECT_EQ(FormOf(answer, "save").Value("collect"), collect);
    }
  }
}

TEST_F(PushTargetPage, TellsAWrongNumberBesideItsField) {
  const cAnswer answer = Submit(NewForm("far").Set("maxruntime", "soon"));
  EXPECT_EQ(answer.Status(), 400u);
  EXPECT_THAT(answer.body,
              HasSubstr("<p class=\"fault\" role=\"alert\">Expected a whole number from 0 to 4294967295."));
  EXPECT_EQ(FormOf(answer, "save").Value("maxruntime"), "soon");
}

TEST_F(PushTargetPage, IsDeletedUnlessACollectorNeedsIt) {
  Set(Target());
  cCollectorConfig collector = Collector();
  collector.SetPushTargetName("far");
  HaveMeter({collector});
  const cAnswer answer = Submit(FormAt("/push-target?idx=1&delete=ask", "delete"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("is needed by meter &#39;4711&#39; collector &#39;1&#39;"));
  Submit(FormAt("/collector?meter=4711&addr=1&delete=ask", "delete"));
  EXPECT_EQ(Submit(FormOf(answer, "delete")).Header("Location"), "/push-targets?done=deleted");
  EXPECT_THAT(Targets(), IsEmpty());
}

TEST_F(PushTargetPage, DoesNotOverwriteWhatSomebodyElseHasChanged) {
  Set(Target());
  const cShownForm form = FormAt(kUrl).Set("host", "mine");
  cPushTarget theirs = Targets()[0];
  theirs.password = "theirs";
  Set(theirs);
  EXPECT_EQ(Submit(form).Status(), 409u) << "a secret is a change too";
  EXPECT_EQ(Targets()[0].host, "host.example:8443");
}

TEST_F(PushTargetPage, AViewerSeesNeitherSecretsNorButtons) {
  Set(Target());
  Enter(eRole::Viewer);
  const cAnswer page = Open(kUrl);
  EXPECT_THAT(page.body, HasSubstr("<dt>Host</dt><dd>host.example:8443</dd>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  EXPECT_THAT(page.body, Not(HasSubstr("name=\"action\"")));
  EXPECT_EQ(Open("/push-target").Status(), 403u);
}

TEST_F(PushTargetPage, RefusesANumberThatNobodyHas) {
  for (const char* idx : {"7", "one", "-1"}) EXPECT_EQ(Get("/push-target", {{"idx", idx}}).Status(), 404u) << idx;
}

TEST_F(PushTargetPage, EscapesAHostileName) {
  cPushTarget target = Target(kHostile);
  Set(target);
  for (const std::string& page :
       {Open(kUrl).body, Open("/push-target?idx=1&delete=ask").body, Get("/push-targets").body}) {
    EXPECT_THAT(page, HasSubstr(kHostileShown));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
  }
}

}  // namespace
}  // namespace tav::pages
