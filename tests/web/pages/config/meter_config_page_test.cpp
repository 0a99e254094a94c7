// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/meter_config_page.h>

#include <tests/web/pages/config/config_world.h>

namespace tav::pages {
namespace {

class MeterConfigPage : public cConfigWorld {
 protected:
  static constexpr const char* kUrl = "/meter-config?id=4711&medium=E&mfct=TAV";

  cMeterTemplate Preset(bool isOffered = true) {
    cMeterTemplate preset;
    preset.name = "House";
    preset.enable = isOffered;
    preset.meterConfig = Meter("");
    preset.meterConfig.AddCollector(Collector());
    return preset;
  }
};

TEST_F(MeterConfigPage, CreatesAMeter) {
  Set(cInterfaceRecord("SIM", "", true));
  const cAnswer answer = Submit(FormAt("/meter-config")
                                    .Set("meterID", "4711")
                                    .Set("medium", "E")
                                    .Set("key", kSecret)
                                    .Set("interface-name", "SIM")
                                    .Set("interface-protocol", "SML"));
  EXPECT_EQ(answer.Header("Location"), "/meter-config?id=4711&medium=E&mfct=&done=created") << answer.body;
  ASSERT_EQ(Meters().size(), 1u);
  EXPECT_EQ(Meters()[0].key, kSecret);
  EXPECT_TRUE(Meters()[0].storeRawEnabled) << "as a new meter has it";
  EXPECT_EQ(Open(answer.Header("Location")).Status(), 200u);
}

TEST_F(MeterConfigPage, ShowsWhatIsSetAndNeverTheKey) {
  HaveMeter({Collector()});
  const cAnswer page = Open(kUrl);
  EXPECT_THAT(page.body, HasSubstr("value=\"interval=900\""));
  EXPECT_THAT(page.body, HasSubstr("href=\"/meter?id=4711\""));
  EXPECT_THAT(page.body, HasSubstr("<a href=\"/collector?meter=4711&amp;medium=E&amp;mfct=TAV&amp;addr=1\">1</a>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
}

TEST_F(MeterConfigPage, ChangesNothingButWhatWasTyped) {
  HaveMeter({Collector("1"), Collector("2")});
  cMeterConfig expected = Meters()[0];
  EXPECT_EQ(Submit(FormAt(kUrl).Set("vendor", "Another")).Status(), 303u);
  expected.vendor = "Another";
  EXPECT_EQ(Meters()[0].ToRecord(), expected.ToRecord());
  EXPECT_EQ(Meters()[0].collectors.front().distanceRP, 4u);
  EXPECT_EQ(Meters()[0].key, kSecret);
}

TEST_F(MeterConfigPage, ItsIdentityStaysWhateverIsSent) {
  HaveMeter();
  Submit(FormAt(kUrl).Set("meterID", "9").Set("medium", "H").Set("mfct", "X"));
  ASSERT_EQ(Meters().size(), 1u);
  EXPECT_EQ(Meters()[0].meterID + Meters()[0].medium + Meters()[0].mfct, "4711ETAV");
}

TEST_F(MeterConfigPage, TellsMetersOfOneIdentifierApart) {
  HaveMeter();
  cMeterConfig other = Meter();
  other.SetIdentification("4711", "6", "H", "");
  Set(other);
  cMeterConfig addressed = Meter("1");
  addressed.SetIdentification("1", "4711", "E", "TAV");
  Set(addressed);
  EXPECT_THAT(Open("/meter-config?id=4711&medium=H&mfct=").body, HasSubstr("value=\"6\" id=\"f-addr\""));
  EXPECT_THAT(Open(kUrl).body, HasSubstr("value=\"5\" id=\"f-addr\""));
  EXPECT_EQ(Open("/meter-config?id=4711").Status(), 404u) << "it may be either";
  EXPECT_EQ(Open("/meter-config?id=1").Status(), 200u) << "only one can be meant";
  EXPECT_EQ(Submit(FormAt("/meter-config?id=4711&medium=H&mfct=").Set("vendor", "heat")).Status(), 303u);
  EXPECT_EQ(Submit(FormAt("/meter-config?id=4711&medium=H&mfct=&delete=ask", "delete")).Status(), 303u);
  EXPECT_EQ(Meters().size(), 2u);
}

TEST_F(MeterConfigPage, DoesNotCreateOverOneThatIsThere) {
  HaveMeter();
  const cAnswer answer = Submit(FormAt("/meter-config")
                                    .Set("meterID", "4711")
                                    .Set("medium", "E")
                                    .Set("mfct", "TAV")
                                    .Set("interface-name", "SIM"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("the meter &quot;4711&quot; is there already."));
  EXPECT_EQ(Meters()[0].key, kSecret);
}

TEST_F(MeterConfigPage, NeedsAnIdentifierAndAnInterfaceThatIsThere) {
  const cAnswer nameless = Submit(FormAt("/meter-config").Set("vendor", "kept"));
  EXPECT_EQ(nameless.Status(), 400u);
  EXPECT_THAT(nameless.body, HasSubstr("Not saved: missing meterID."));
  const cAnswer answer =
      Submit(FormAt("/meter-config").Set("meterID", "1").Set("interface-name", "nowhere").Set("key", kSecret));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("interface &#39;nowhere&#39; is not there"));
  EXPECT_EQ(FormOf(answer, "save").Value("interface-name"), "nowhere");
  EXPECT_EQ(FormOf(answer, "save").Value("key"), "");
  EXPECT_THAT(answer.body, Not(HasSubstr(kSecret)));
}

TEST_F(MeterConfigPage, IsDeletedWithItsCollectors) {
  HaveMeter({Collector("1"), Collector("2")});
  EXPECT_THAT(Open(std::string(kUrl) + "&delete=ask").body, HasSubstr("Its 2 collectors go with it"));
  const cAnswer answer = Submit(FormAt(std::string(kUrl) + "&delete=ask", "delete"));
  EXPECT_EQ(answer.Header("Location"), "/meter-configs?done=deleted");
  EXPECT_THAT(Meters(), IsEmpty());
}

TEST_F(MeterConfigPage, DoesNotOverwriteWhatSomebodyElseHasChanged) {
  HaveMeter();
  const cShownForm form = FormAt(kUrl).Set("vendor", "mine");
  cMeterConfig theirs = Meters()[0];
  theirs.addr = "77";
  Set(theirs);
  const cAnswer answer = Submit(form);
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("Stored now: 77"));
  EXPECT_EQ(Meters()[0].vendor, "A vendor");
}

TEST_F(MeterConfigPage, ACollectorThatChangesMeanwhileIsNoConflictAndStays) {
  HaveMeter();
  const cShownForm form = FormAt(kUrl).Set("vendor", "mine");
  cMeterConfig theirs = Meters()[0];
  theirs.AddCollector(Collector());
  Set(theirs);
  EXPECT_EQ(Submit(form).Status(), 303u);
  EXPECT_EQ(Meters()[0].vendor, "mine");
  EXPECT_EQ(Meters()[0].collectors.size(), 1u);
}

// ---- templates

TEST_F(MeterConfigPage, BeginsAsATemplateHasIt) {
  Set(cInterfaceRecord("SIM", "", true));
  Set(Preset());
  EXPECT_THAT(Open("/meter-config").body, HasSubstr("<option>House</option>"));
  const cAnswer page = Open("/meter-config?template=House");
  EXPECT_THAT(page.body, HasSubstr("<option selected>House</option>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  const cShownForm form = FormOf(page, "save").Set("meterID", "1");
  EXPECT_EQ(form.Value("interface-options"), "interval=900");
  EXPECT_EQ(Submit(form).Status(), 303u);
  ASSERT_EQ(Meters().size(), 1u);
  EXPECT_EQ(Meters()[0].key, kSecret) << "which has not been to the browser";
  ASSERT_EQ(Meters()[0].collectors.size(), 1u);
  EXPECT_EQ(Meters()[0].collectors.front().distanceRP, 4u);
}

TEST_F(MeterConfigPage, StaysWithItsTemplateWhenItIsRefused) {
  Set(Preset());
  const cAnswer answer = Submit(FormAt("/meter-config?template=House").Set("meterID", "1"));
  EXPECT_EQ(answer.Status(), 409u) << "there is no interface yet";
  Set(cInterfaceRecord("SIM", "", true));
  EXPECT_EQ(Submit(FormOf(answer, "save")).Status(), 303u);
  EXPECT_EQ(Meters()[0].key, kSecret);
}

TEST_F(MeterConfigPage, OffersNoTemplateThatIsSwitchedOff) {
  Set(Preset(false));
  EXPECT_THAT(Open("/meter-config").body, Not(HasSubstr("House")));
  EXPECT_EQ(Open("/meter-config?template=House").Status(), 404u);
  EXPECT_EQ(Open("/meter-config?template=nowhere").Status(), 404u);
}

// ---- what its driver can do

TEST_F(MeterConfigPage, AsksTheDriverToActivateTheMeterAndShowsItsAnswer) {
  HaveMeter();
  HaveDriver("ehzif", "woken <up>");
  const cAnswer answer = Submit(FormAt(kUrl, "activate").Set("vendor", "V").Set("key", "0123"));
  EXPECT_EQ(answer.Status(), 200u) << answer.body;
  EXPECT_THAT(answer.body, HasSubstr("The driver has done it."));
  EXPECT_THAT(answer.body, HasSubstr("woken &lt;up&gt;"));
  EXPECT_THAT(answer.body, Not(HasSubstr(kSecret))) << "what a driver tells of secrets is masked";
  EXPECT_THAT(answer.body, Not(HasSubstr("0123")));
  EXPECT_EQ(LastCommand().GetTextPar(db_ctrl::kCommand), "activate-meter");
  vorn::cRecord content;
  ASSERT_TRUE(LastCommand().GetPar(db_ctrl::kContent).GetRecord(content));
  EXPECT_EQ(content.GetTextPar(db_ctrl::kKey), "0123");
  EXPECT_EQ(content.GetTextPar(db_ctrl::kVendor), "V");
  EXPECT_EQ(Submit(FormOf(answer, "save")).Status(), 303u) << "the settings can be saved from there";
}

TEST_F(MeterConfigPage, AsksTheDriverToSetTheValve) {
  HaveMeter();
  HaveDriver("ehzif", "turned");
  const cAnswer answer = Submit(FormAt(kUrl, "valve").Set("valve", "half \"open\""));
  EXPECT_THAT(answer.body, HasSubstr("turned"));
  EXPECT_EQ(FormOf(answer, "valve").Value("valve"), "half \"open\"");
  EXPECT_EQ(LastCommand().GetTextPar(db_ctrl::kCommand), "set-valve");
}

TEST_F(MeterConfigPage, AsksTheDriverToSetTheClock) {
  HaveMeter();
  HaveDriver("ehzif", "set");
  EXPECT_EQ(FormAt(kUrl, "clock").Value("time"), "now");
  EXPECT_THAT(Submit(FormAt(kUrl, "clock").Set("time", "2024-03-01T12:00:00Z")).body, HasSubstr("has done it"));
  vorn::cRecord content;
  ASSERT_TRUE(LastCommand().GetPar(db_ctrl::kContent).GetRecord(content));
  EXPECT_EQ(content.GetUIntPar(db_ctrl::kTimestamp), 1709294400u);
  const cAnswer wrong = Submit(FormAt(kUrl, "clock").Set("time", "<soon>"));
  EXPECT_EQ(wrong.Status(), 400u);
  EXPECT_THAT(wrong.body, HasSubstr("&lt;soon&gt;"));
  EXPECT_EQ(FormOf(wrong, "clock").Value("time"), "<soon>");
}

TEST_F(MeterConfigPage, SaysWhyADriverDidNothing) {
  HaveMeter();
  const cAnswer nobody = Submit(FormAt(kUrl, "valve").Set("valve", "open"));
  EXPECT_EQ(nobody.Status(), 409u);
  EXPECT_THAT(nobody.body, HasSubstr("Not done: driver &#39;ehzif&#39; is not registered"));
  EXPECT_EQ(FormOf(nobody, "valve").Value("valve"), "open");
  HaveDriver("ehzif", "", "it has no valve");
  EXPECT_THAT(Submit(FormAt(kUrl, "valve")).body, HasSubstr("it has no valve"));
  Submit(FormAt(kUrl).Set("interface-protocol", "PIGEON"));
  EXPECT_THAT(Submit(FormAt(kUrl, "valve")).body, HasSubstr("no driver serves protocol &#39;PIGEON&#39;"));
}

TEST_F(MeterConfigPage, ADriverMayTakeLongerThanAService) {
  HaveMeter();
  HaveDriver("ehzif", "");
  m_drivers.back()->onMessage = nullptr;
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  const cShownForm form = FormAt(kUrl, "valve");
  const vorn::cUuid id = Send(MakeRequest("POST", form.path, form.query, form.fields));
  ASSERT_TRUE(Await([&] { return LastCommand().GetTextPar(db_ctrl::kCommand) == "set-valve"; }));
  clock->Advance((cMeterConfigPage::kDriverPatience - 1) * 1000);
  PollUntilIdle(*m_pages);
  EXPECT_FALSE(m_answers[id].isFinished);
  clock->Advance(2000);
  ASSERT_TRUE(Await([&] { return m_answers[id].isFinished; }));
  EXPECT_EQ(m_answers[id].Status(), 504u);
}

TEST_F(MeterConfigPage, AnActionDoesNotTouchTheSettings) {
  HaveMeter();
  const cMeterConfig before = Meters()[0];
  Submit(FormAt(kUrl, "activate").Set("vendor", "V").Set("key", "0123"));
  EXPECT_EQ(Meters()[0].ToRecord(), before.ToRecord());
  EXPECT_EQ(Submit(FormAt(kUrl, "valve").Set("action", "explode")).Status(), 400u);
}

// ---- who looks

TEST_F(MeterConfigPage, AViewerSeesNeitherSecretsNorButtons) {
  HaveMeter({Collector()});
  Enter(eRole::Viewer);
  const cAnswer page = Open(kUrl);
  EXPECT_THAT(page.body, HasSubstr("<dt>Interface options</dt><dd>interval=900</dd>"));
  EXPECT_THAT(page.body, HasSubstr("addr=1\">1</a>"));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  EXPECT_THAT(page.body, Not(HasSubstr("name=\"action\"")));
  EXPECT_THAT(page.body, Not(HasSubstr("class=\"button\"")));
  EXPECT_THAT(page.body, Not(HasSubstr("<dt>Key</dt>")));
  EXPECT_EQ(Open("/meter-config").Status(), 403u);
  EXPECT_EQ(Post("/meter-config", {{"action", "valve"}}, {{"id", "4711"}}).Status(), 403u);
}

TEST_F(MeterConfigPage, EscapesAHostileMeter) {
  Set(cInterfaceRecord("SIM", "", true));
  cMeterConfig meter = Meter(kHostile);
  meter.interfaceOptions = meter.vendor = meter.addr = kHostile;
  Set(meter);
  const std::string url = MakeUrl("/meter-config", {{"id", kHostile}, {"medium", "E"}, {"mfct", "TAV"}});
  for (const std::string& page :
       {Open(url).body, Open(url + "&delete=ask").body, Get("/meter-configs").body, Open("/interface?name=SIM").body}) {
    EXPECT_THAT(page, HasSubstr(kHostileShown));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
  }
  EXPECT_EQ(Submit(FormAt(url).Set("vendor", "tame")).Status(), 303u);
  EXPECT_EQ(Meters()[0].interfaceOptions, kHostile);
}

}  // namespace
}  // namespace tav::pages
