// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/interface_page.h>

#include <tests/web/pages/config/config_world.h>

namespace tav::pages {
namespace {

class InterfacePage : public cConfigWorld {
 protected:
  void HaveInterface(const std::string& name = "RS485", const std::string& options = "baud=9600") {
    Set(cInterfaceRecord(name, options, true));
  }
  static constexpr const char* kUrl = "/interface?name=RS485";
};

TEST_F(InterfacePage, CreatesAnInterface) {
  cShownForm form = FormAt("/interface");
  const cAnswer answer = Submit(form.Set("name", "RS485").Set("options", "baud=9600,parity=none"));
  EXPECT_EQ(answer.Status(), 303u) << answer.body;
  EXPECT_EQ(answer.Header("Location"), "/interface?name=RS485&done=created");
  ASSERT_EQ(Interfaces().size(), 1u);
  EXPECT_EQ(Interfaces()[0].ToString(), "RS485(enabled):baud=9600,parity=none");
  EXPECT_THAT(Open(answer.Header("Location")).body, HasSubstr("Created."));
}

TEST_F(InterfacePage, ChangesAnInterface) {
  HaveInterface();
  const cAnswer answer = Submit(FormAt(kUrl).Set("options", "baud=300").Clear("enabled"));
  EXPECT_EQ(answer.Header("Location"), "/interface?name=RS485&done=changed") << answer.body;
  EXPECT_EQ(Interfaces()[0].ToString(), "RS485(disabled):baud=300");
}

TEST_F(InterfacePage, SaysNothingOfWhatWasNotDone) {
  HaveInterface();
  EXPECT_THAT(Get("/interface", {{"name", "RS485"}, {"done", "hacked"}}).body, Not(HasSubstr("note ok")));
}

TEST_F(InterfacePage, ItsNameStaysWhateverIsSent) {
  HaveInterface();
  EXPECT_EQ(Submit(FormAt(kUrl).Set("name", "other")).Status(), 303u);
  ASSERT_EQ(Interfaces().size(), 1u);
  EXPECT_EQ(Interfaces()[0].name, "RS485");
}

TEST_F(InterfacePage, DeletesAfterItHasAsked) {
  HaveInterface();
  EXPECT_THAT(Open(kUrl).body, HasSubstr("href=\"/interface?name=RS485&amp;delete=ask\""));
  const cAnswer question = Open("/interface?name=RS485&delete=ask");
  EXPECT_THAT(question.body, HasSubstr("Delete the interface &quot;RS485&quot;?"));
  EXPECT_EQ(Interfaces().size(), 1u);
  const cAnswer answer = Submit(FormOf(question, "delete"));
  EXPECT_EQ(answer.Header("Location"), "/interfaces?done=deleted") << answer.body;
  EXPECT_THAT(Interfaces(), IsEmpty());
  EXPECT_THAT(Open(answer.Header("Location")).body, HasSubstr("Deleted."));
}

TEST_F(InterfacePage, ShowsItsMetersAndIsNotDeletedUnderThem) {
  HaveMeter();
  const cAnswer page = Open("/interface?name=SIM");
  EXPECT_THAT(page.body, HasSubstr("<a href=\"/meter-config?id=4711&amp;medium=E&amp;mfct=TAV\">4711</a>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  const cAnswer answer = Submit(FormAt("/interface?name=SIM&delete=ask", "delete"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("Not deleted: "));
  EXPECT_THAT(answer.body, HasSubstr("is needed by meter &#39;4711&#39;"));
  EXPECT_EQ(Interfaces().size(), 1u);
}

TEST_F(InterfacePage, ARefusalKeepsWhatWasTyped) {
  for (const std::size_t size : {63u, 64u, 65u}) {
    const std::string name(size, 'n');
    const cAnswer answer = Submit(FormAt("/interface").Set("name", name).Set("options", "baud=1").Clear("enabled"));
    EXPECT_EQ(answer.Status(), size <= 64 ? 303u : 409u) << size;
    if (size <= 64) continue;
    EXPECT_THAT(answer.body, HasSubstr("has 65 bytes, at most 64 are kept"));
    EXPECT_EQ(FormOf(answer, "save").Value("name"), name);
    EXPECT_EQ(FormOf(answer, "save").Value("options"), "baud=1");
    EXPECT_EQ(FormOf(answer, "save").Value("enabled"), "(none)");
  }
  EXPECT_EQ(Interfaces().size(), 2u);
}

TEST_F(InterfacePage, ManyOptionsAreTakenUpToTheLimit) {
  HaveInterface();
  for (const std::size_t size : {1023u, 1024u, 1025u})
    EXPECT_EQ(Submit(FormAt(kUrl).Set("options", std::string(size, 'o'))).Status(), size <= 1024 ? 303u : 409u) << size;
  EXPECT_EQ(Interfaces()[0].options.size(), 1024u);
}

TEST_F(InterfacePage, NeedsAName) {
  const cAnswer answer = Submit(FormAt("/interface").Set("options", "kept=1"));
  EXPECT_EQ(answer.Status(), 400u);
  EXPECT_THAT(answer.body, HasSubstr("Not saved: missing interface name."));
  EXPECT_EQ(FormOf(answer, "save").Value("options"), "kept=1");
}

TEST_F(InterfacePage, DoesNotCreateOverOneThatIsThere) {
  HaveInterface();
  const cAnswer answer = Submit(FormAt("/interface").Set("name", "RS485").Set("options", "mine"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("the interface &quot;RS485&quot; is there already."));
  EXPECT_EQ(FormOf(answer, "save").Value("options"), "mine");
  EXPECT_EQ(Interfaces()[0].options, "baud=9600");
}

TEST_F(InterfacePage, DoesNotOverwriteWhatSomebodyElseHasChanged) {
  HaveInterface();
  cShownForm form = FormAt(kUrl).Set("options", "mine");
  Set(cInterfaceRecord("RS485", "theirs", true));
  const cAnswer answer = Submit(form);
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("has been changed meanwhile"));
  EXPECT_THAT(answer.body, HasSubstr("Stored now: theirs"));
  EXPECT_EQ(FormOf(answer, "save").Value("options"), "mine");
  EXPECT_EQ(Interfaces()[0].options, "theirs");
  EXPECT_EQ(Submit(FormOf(answer, "save")).Status(), 303u) << "who has seen it may";
  EXPECT_EQ(Interfaces()[0].options, "mine");
}

// Else a fault between would let the next attempt through.
TEST_F(InterfacePage, AFormThatComesBackKeepsTheStateItWasMadeFrom) {
  HaveInterface();
  const cAnswer refused = Submit(FormAt(kUrl).Set("options", std::string(1025, 'o')));
  Set(cInterfaceRecord("RS485", "theirs", true));
  EXPECT_EQ(Submit(FormOf(refused, "save").Set("options", "mine")).Status(), 409u);
  EXPECT_EQ(Interfaces()[0].options, "theirs");
}

TEST_F(InterfacePage, AFormWithoutAStateOverwritesNothing) {
  HaveInterface();
  EXPECT_EQ(Submit(FormAt(kUrl).Clear("state").Set("options", "mine")).Status(), 409u);
  EXPECT_EQ(Interfaces()[0].options, "baud=9600");
}

TEST_F(InterfacePage, DoesNotDeleteWhatSomebodyElseHasChanged) {
  HaveInterface();
  const cShownForm form = FormAt("/interface?name=RS485&delete=ask", "delete");
  Set(cInterfaceRecord("RS485", "theirs", true));
  const cAnswer answer = Submit(form);
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_EQ(Interfaces().size(), 1u);
  EXPECT_EQ(Submit(FormOf(answer, "delete")).Status(), 303u);
}

TEST_F(InterfacePage, SaysWhenItIsNotThereAnyMore) {
  HaveInterface();
  const cShownForm form = FormAt(kUrl);
  Submit(FormAt("/interface?name=RS485&delete=ask", "delete"));
  EXPECT_EQ(Submit(form).Status(), 404u);
  EXPECT_EQ(Open(kUrl).Status(), 404u);
  EXPECT_THAT(Open(kUrl).body, HasSubstr("There is no interface &quot;RS485&quot;."));
}

TEST_F(InterfacePage, RefusesActionsThatItDoesNotKnow) {
  HaveInterface();
  for (const char* url : {kUrl, "/interface"})
    for (const char* action : {"", "explode"})
      EXPECT_EQ(Submit(FormAt(url).Set("action", action)).Status(), 400u) << url << action;
  EXPECT_EQ(Submit(FormAt("/interface").Set("action", "delete")).Status(), 400u);
}

TEST_F(InterfacePage, AViewerSeesItWithoutButtons) {
  HaveInterface();
  Enter(eRole::Viewer);
  for (const char* url : {kUrl, "/interface?name=RS485&delete=ask"}) {
    const cAnswer page = Open(url);
    EXPECT_THAT(page.body, HasSubstr("<dt>Options</dt><dd>baud=9600</dd>"));
    EXPECT_THAT(page.body, Not(HasSubstr("name=\"action\"")));
    EXPECT_THAT(page.body, Not(HasSubstr("class=\"button\"")));
  }
  EXPECT_EQ(Open("/interface").Status(), 403u);
  EXPECT_EQ(Post("/interface", {{"action", "delete"}}, {{"name", "RS485"}}).Status(), 403u);
  EXPECT_EQ(Interfaces().size(), 1u);
}

TEST_F(InterfacePage, EscapesAHostileNameWhereverItStands) {
  const cAnswer created = Submit(FormAt("/interface").Set("name", kHostile).Set("options", kHostile));
  ASSERT_EQ(created.Status(), 303u) << created.body;
  EXPECT_EQ(Interfaces()[0].name, kHostile);
  const std::string url = created.Header("Location");
  for (const std::string& page : {Open(url).body, Open(url + "&delete=ask").body, Get("/interfaces").body}) {
    EXPECT_THAT(page, HasSubstr(kHostileShown));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
  }
  EXPECT_EQ(Submit(FormAt(url).Set("options", "tame")).Status(), 303u);
  EXPECT_EQ(Interfaces()[0].options, "tame");
  EXPECT_EQ(Submit(FormAt(url + "&delete=ask", "delete")).Status(), 303u);
  EXPECT_THAT(Interfaces(), IsEmpty());
}

TEST_F(InterfacePage, SaysWhenTheServiceIsAway) {
  HaveInterface();
  m_data.reset();
  m_services.clear();
  ASSERT_TRUE(Await([this] { return !m_pages->GetGateway().data.IsConnected(); }));
  const cAnswer answer = Open(kUrl);
  EXPECT_EQ(answer.Status(), 503u);
  EXPECT_THAT(answer.body, HasSubstr("&quot;data&quot; is away"));
}

}  // namespace
}  // namespace tav::pages
