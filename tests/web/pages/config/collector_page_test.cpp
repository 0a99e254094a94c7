// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/collector_page.h>

#include <tests/web/pages/config/config_world.h>

namespace tav::pages {
namespace {

class CollectorPage : public cConfigWorld {
 protected:
  static constexpr const char* kNewUrl = "/collector?meter=4711&addr=";
  static constexpr const char* kUrl = "/collector?meter=4711&addr=1";

  cShownForm NewForm(const std::string& addr) {
    return FormAt(kNewUrl).Set("addr", addr).Set("event-type", "hour").Set("obis-ids", "1-0:1.8.0*255");
  }
  std::list<cCollectorConfig> Collectors() { return Meters().at(0).collectors; }
};

TEST_F(CollectorPage, CreatesOneBesideTheOthers) {
  HaveMeter({Collector("1")});
  const cMeterConfig before = Meters()[0];
  const cAnswer answer = Submit(NewForm("2").Set("distanceRP", "3"));
  EXPECT_EQ(answer.Header("Location"), "/collector?meter=4711&medium=E&mfct=TAV&addr=2&done=created") << answer.body;
  ASSERT_EQ(Collectors().size(), 2u);
  EXPECT_EQ(Collectors().back().distanceRP, 3u);
  EXPECT_TRUE(Collectors().back().activation);
  cMeterConfig after = Meters()[0];
  after.collectors.pop_back();
  EXPECT_EQ(after.ToRecord(), before.ToRecord()) << "all else of the meter stays, its key too";
  EXPECT_THAT(Open(answer.Header("Location")).body, HasSubstr("Created."));
}

TEST_F(CollectorPage, ChangesNothingButWhatWasTyped) {
  HaveMeter({Collector("1"), Collector("2")});
  cMeterConfig expected = Meters()[0];
  EXPECT_EQ(Submit(FormAt(kUrl).Set("countRP", "7")).Status(), 303u);
  expected.collectors.front().countRP = 7;
  EXPECT_EQ(Meters()[0].ToRecord(), expected.ToRecord());
  EXPECT_EQ(Meters()[0].key, kSecret);
}

TEST_F(CollectorPage, DeletesOneAndLeavesTheOthers) {
  HaveMeter({Collector("1"), Collector("2")});
  const cAnswer answer = Submit(FormAt("/collector?meter=4711&addr=1&delete=ask", "delete"));
  EXPECT_EQ(answer.Header("Location"), "/meter-config?id=4711&medium=E&mfct=TAV&done=deleted") << answer.body;
  ASSERT_EQ(Collectors().size(), 1u);
  EXPECT_EQ(Collectors().front().addr, "2");
  EXPECT_EQ(Collectors().front().distanceRP, 4u);
}

TEST_F(CollectorPage, ARefusalKeepsWhatWasTyped) {
  HaveMeter();
  const cAnswer answer =
      Submit(NewForm("1").Set("event-type", "at <noon>").Set("countRP", "12").Set("push-period", "x"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("event-type &#39;at &lt;noon&gt;&#39; is none of"));
  EXPECT_EQ(FormOf(answer, "save").Value("event-type"), "at <noon>");
  EXPECT_EQ(FormOf(answer, "save").Value("countRP"), "12");
  EXPECT_EQ(FormOf(answer, "save").Value("addr"), "1");
  EXPECT_THAT(Collectors(), IsEmpty());
}

TEST_F(CollectorPage, TellsAWrongNumberBesideItsField) {
  HaveMeter({Collector()});
  const std::pair<const char*, unsigned int> cases[] = {{"65534", 303}, {"65535", 303}, {"65536", 400}};
  for (const auto& [offset, status] : cases) {
    const cAnswer answer = Submit(FormAt(kUrl).Set("push-random-offset", offset));
    EXPECT_EQ(answer.Status(), status) << offset;
    if (status == 400) {
      EXPECT_THAT(answer.body, HasSubstr("Expected a whole number from 0 to 65535."));
      EXPECT_EQ(FormOf(answer, "save").Value("push-random-offset"), offset);
    }
  }
}

TEST_F(CollectorPage, TellsWhatIsMissing) {
  HaveMeter();
  for (const char* field : {"addr", "event-type", "obis-ids"}) {
    const cAnswer answer = Submit(NewForm("1").Set(field, ""));
    EXPECT_EQ(answer.Status(), 400u) << field;
    EXPECT_THAT(answer.body, HasSubstr("a collector needs an address, an event type and OBIS identifiers"));
  }
}

TEST_F(CollectorPage, AMeterHasAsManyAsTheServiceKeeps) {
  std::list<cCollectorConfig> many;
  for (int i = 1; i <= 31; ++i) many.push_back(Collector(std::to_string(i)));
  HaveMeter(many);
  EXPECT_EQ(Submit(NewForm("32")).Status(), 303u);
  const cAnswer answer = Submit(NewForm("33"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("at most 32 collectors of one meter are kept"));
  EXPECT_EQ(Collectors().size(), 32u);
}

TEST_F(CollectorPage, DoesNotCreateOverOneThatIsThere) {
  HaveMeter({Collector()});
  EXPECT_EQ(Submit(NewForm("1")).Status(), 409u);
  EXPECT_EQ(Collectors().front().eventType, "15min");
}

TEST_F(CollectorPage, FollowsThePushTargetThatWasChanged) {
  Set(Target("far"));
  Set(Target("near"));
  cCollectorConfig collector = Collector();
  collector.SetPushTargetName("far");
  HaveMeter({collector});
  EXPECT_EQ(FormAt(kUrl).Value("push-target-idx"), "1");
  EXPECT_EQ(Submit(FormAt(kUrl).Set("push-target-name", "near")).Status(), 303u);
  EXPECT_EQ(Collectors().front().pushTargetIdx, 2u);
  EXPECT_EQ(Submit(FormAt(kUrl).Set("push-target-idx", "1")).Status(), 303u);
  EXPECT_EQ(Collectors().front().pushTargetName, "far");
  EXPECT_EQ(Submit(FormAt(kUrl).Set("push-target-idx", "2").Set("push-target-name", "nobody")).Status(), 409u);
  EXPECT_EQ(Submit(FormAt(kUrl).Set("push-target-name", "")).Status(), 303u);
  EXPECT_EQ(Collectors().front().pushTargetIdx, 0u) << "none any more";
}

TEST_F(CollectorPage, DoesNotOverwriteWhatSomebodyElseHasChanged) {
  HaveMeter({Collector("1"), Collector("2")});
  const cShownForm first = FormAt(kUrl).Set("countRP", "7");
  const cShownForm second = FormAt("/collector?meter=4711&addr=2").Set("countRP", "9");
  cMeterConfig theirs = Meters()[0];
  theirs.collectors.front().countRP = 55;
  Set(theirs);
  const cAnswer answer = Submit(first);
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("Stored now: 55"));
  EXPECT_EQ(Submit(second).Status(), 303u) << "another collector is another thing";
  EXPECT_EQ(Collectors().front().countRP, 55u);
  EXPECT_EQ(Collectors().back().countRP, 9u);
}

TEST_F(CollectorPage, SaysWhenMeterOrCollectorIsNotThere) {
  HaveMeter();
  EXPECT_THAT(Open("/collector?meter=1&addr=1").body, HasSubstr("There is no meter &quot;1&quot;."));
  EXPECT_THAT(Open(kUrl).body, HasSubstr("There is no collector &quot;1&quot;."));
  for (const char* url : {"/collector?meter=1&addr=1", kUrl, "/collector"}) EXPECT_EQ(Open(url).Status(), 404u) << url;
}

TEST_F(CollectorPage, AViewerSeesItWithoutButtons) {
  HaveMeter({Collector()});
  Enter(eRole::Viewer);
  const cAnswer page = Open(kUrl);
  EXPECT_THAT(page.body, HasSubstr("<dt>Event type</dt><dd>15min</dd>"));
  EXPECT_THAT(page.body, Not(HasSubstr("name=\"action\"")));
  EXPECT_THAT(page.body, Not(HasSubstr(kSecret)));
  EXPECT_EQ(Open(kNewUrl).Status(), 403u);
}

TEST_F(CollectorPage, EscapesAHostileAddress) {
  HaveMeter();
  const cAnswer created = Submit(NewForm(kHostile).Set("push-period", kHostile));
  ASSERT_EQ(created.Status(), 303u) << created.body;
  const std::string url = created.Header("Location");
  for (const std::string& page : {Open(url).body, Open(url + "&delete=ask").body, Open("/meter-config?id=4711").body}) {
    EXPECT_THAT(page, HasSubstr(kHostileShown));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
  }
  EXPECT_EQ(Submit(FormAt(url + "&delete=ask", "delete")).Status(), 303u);
  EXPECT_THAT(Collectors(), IsEmpty());
}

}  // namespace
}  // namespace tav::pages
