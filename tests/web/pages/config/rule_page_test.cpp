// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/rule_page.h>

#include <gateway/rules/rules_file.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

// The map of a fresh gateway holds the rules that ship with it; those of the tests stand behind them.
class RulePage : public cPagesWorld {
 protected:
  static constexpr const char* kId = "99000";

  cFields Rule(const std::string& action, const std::string& obis = "1-0:97.97.1",
               const std::string& map = "protocol=dlms") const {
    return {{"id", kId}, {"name", "Rule <of> a test"}, {"obis", obis}, {"map", map}, {"do", action}};
  }
  const cObisMap& Map() { return m_pages->GetGateway().obis.map; }
  bool Has(unsigned long long id) { return Map().GetEntries().Contains(id); }
  void SaveRule() {
    Enter();
    ASSERT_EQ(Post("/rule", Rule("save")).Status(), 303u);
    ASSERT_TRUE(Await([&] { return Has(99000); }));
  }
};

TEST_F(RulePage, AllRulesAreListedAndFoundByTheirText) {
  SaveRule();
  const std::string all = Get("/rules").body;
  EXPECT_THAT(all, HasSubstr("Rule &lt;of&gt; a test"));
  EXPECT_THAT(all, HasSubstr("1-0:1.8.0"));
  const std::string found = Get("/rules", {{"q", "RULE <OF>"}}).body;
  EXPECT_THAT(found, HasSubstr("97.97.1"));
  EXPECT_THAT(found, Not(HasSubstr("1-0:1.8.0</code>")));
  EXPECT_THAT(found, HasSubstr("value=\"RULE &lt;OF&gt;\""));
  EXPECT_THAT(Get("/rules", {{"q", "no such text"}}).body, HasSubstr("No rule has that text."));
}

TEST_F(RulePage, TheListSaysWhatIsWrongWithARule) {
  SaveRule();
  cFields same = Rule("save");
  same[0].second = "99001";
  ASSERT_EQ(Post("/rule", same).Status(), 303u) << "a warning stands in nobody's way";
  ASSERT_TRUE(Await([&] { return Has(99001); }));
  EXPECT_THAT(Get("/rules").body, HasSubstr("the same as rule 99000"));
  EXPECT_THAT(Get("/rule", {{"id", "99001"}}).body, HasSubstr("the same as rule 99000"));
  EXPECT_THAT(Get("/rule", {{"id", "99000"}}).body, HasSubstr("the same as rule 99000"))
      << "whom it stands in the way of is told too";
}

TEST_F(RulePage, ARuleIsSavedAndShownWithANote) {
  Enter();
  const cAnswer answer = Post("/rule", Rule("save"));
  EXPECT_EQ(answer.Header("Location"), "/rule?id=99000&done=saved");
  ASSERT_TRUE(Await([&] { return Has(99000); }));
  const cAnswer page = Get("/rule", {{"id", kId}, {"done", "saved"}});
  EXPECT_THAT(page.body, HasSubstr("The rule is saved."));
  EXPECT_THAT(page.body, HasSubstr("value=\"Rule &lt;of&gt; a test\""));
  EXPECT_THAT(Get("/rule", {{"id", kId}, {"done", "<script>"}}).body, Not(HasSubstr("role=\"status\"")));
}

TEST_F(RulePage, ARuleIsChangedUnderItsId) {
  SaveRule();
  cFields changed = Rule("save");
  changed[1].second = "Another name";
  EXPECT_EQ(Post("/rule", changed, {{"id", kId}}).Status(), 303u);
  EXPECT_TRUE(Await([&] { return Map().GetEntries().at(99000).GetName() == "Another name"; }));
}

TEST_F(RulePage, ANewRuleTakesNoOthersPlace) {
  SaveRule();
  const cAnswer answer = Post("/rule", Rule("save", "1-0:98.98.1"));
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("There is a rule 99000 already"));
  EXPECT_THAT(answer.body, HasSubstr("value=\"1-0:98.98.1\"")) << "what was typed stays";
}

TEST_F(RulePage, ARuleWithAnErrorIsNotSent) {
  Enter();
  for (const auto& [obis, map] : cFields{{"nonsense", "protocol=dlms"},
                                         {"1-0:300.8.0", "protocol=dlms"},
                                         {"1-0:1.8.0", ""},
                                         {"1-0:1.8.0", "protocol=morse"},
                                         {"", "protocol=dlms"}}) {
    const cAnswer answer = Post("/rule", Rule("save", obis, map));
    EXPECT_EQ(answer.Status(), 400u) << obis << " " << map;
    EXPECT_THAT(answer.body, HasSubstr("was not sent")) << obis << " " << map;
    EXPECT_THAT(answer.body, HasSubstr(">error</span>")) << obis << " " << map;
  }
  EXPECT_FALSE(Has(99000));
}

TEST_F(RulePage, AnIdThatIsNoNumberIsRefused) {
  Enter();
  for (const char* id : {"", "-1", "one", "18446744073709551616", "1 "}) {
    cFields rule = Rule("save");
    rule[0].second = id;
    const cAnswer answer = Post("/rule", rule);
    EXPECT_EQ(answer.Status(), 400u) << id;
    EXPECT_THAT(answer.body, HasSubstr("ID: expected")) << id;
  }
}

TEST_F(RulePage, TheLargestIdIsOne) {
  Enter();
  cFields rule = Rule("save");
  rule[0].second = "18446744073709551615";
  EXPECT_EQ(Post("/rule", rule).Status(), 303u);
  ASSERT_TRUE(Await([&] { return Has(18446744073709551615ULL); }));
  EXPECT_THAT(Get("/rule").body, HasSubstr("name=\"id\" value=\"\"")) << "there is none behind it";
}

TEST_F(RulePage, CheckingShowsTheMapAsItIsAndAsItWouldBe) {
  SaveRule();
  const cAnswer answer = Post("/rule", Rule("check", "1-0:300.8.0"), {{"id", kId}});
  EXPECT_EQ(answer.Status(), 200u);
  EXPECT_THAT(answer.body, HasSubstr("<h2>As it is</h2>\n<p class=\"empty\">Nothing is wrong.</p>"));
  EXPECT_THAT(answer.body, HasSubstr("<h2>As it would be</h2>\n<ul"));
  EXPECT_EQ(Map().GetEntries().at(99000).GetObisID(), "1-0:97.97.1") << "nothing was sent";
}

TEST_F(RulePage, ARuleIsDeleted) {
  SaveRule();
  const cAnswer answer = Post("/rule", {{"do", "delete"}}, {{"id", kId}});
  EXPECT_EQ(answer.Header("Location"), "/rules?done=deleted");
  EXPECT_TRUE(Await([&] { return !Has(99000); }));
  EXPECT_THAT(Get("/rules", {{"done", "deleted"}}).body, HasSubstr("The rule is deleted."));
  EXPECT_EQ(Post("/rule", {{"do", "delete"}}, {{"id", kId}}).Status(), 409u) << "it is gone";
}

TEST_F(RulePage, WhatTheServiceRefusesIsShownWithWhatWasTyped) {
  Enter();
  cFields rule = Rule("save");
  rule[1].second = std::string(70'000, 'x');
  const cAnswer answer = Post("/rule", rule);
  EXPECT_EQ(answer.Status(), 409u);
  EXPECT_THAT(answer.body, HasSubstr("The service &quot;obis&quot; refused: "));
  EXPECT_THAT(answer.body, HasSubstr("value=\"1-0:97.97.1\""));
}

TEST_F(RulePage, WithoutTheServiceNothingTypedIsLost) {
  Enter();
  EndService("obis");
  ASSERT_TRUE(Await([&] { return !m_pages->GetGateway().obis.IsConnected(); }));
  const cAnswer answer = Post("/rule", Rule("save"));
  EXPECT_EQ(answer.Status(), 503u);
  EXPECT_THAT(answer.body, HasSubstr("value=\"1-0:97.97.1\""));
  EXPECT_THAT(Get("/rules").body, HasSubstr("as they were last known"));
  EXPECT_EQ(Get("/rules/download").Status(), 503u);
}

TEST_F(RulePage, AnUnknownRuleIsNotFound) {
  Enter();
  for (const char* id : {"123456789", "nonsense", "<b>"}) EXPECT_EQ(Get("/rule", {{"id", id}}).Status(), 404u) << id;
}

TEST_F(RulePage, AViewerOnlyLooks) {
  SaveRule();
  Enter(eRole::Viewer);
  EXPECT_THAT(Get("/rule", {{"id", kId}}).body, Not(HasSubstr("<button name")));
  EXPECT_THAT(Get("/rules").body, Not(HasSubstr("New rule")));
  EXPECT_EQ(Get("/rule").Status(), 400u);
  EXPECT_EQ(Post("/rule", Rule("save")).Status(), 403u);
}

// ---- for programs

TEST_F(RulePage, TheLinterTellsAProgramOneFindingALine) {
  SaveRule();
  const auto lint = [this](const std::string& id, const std::string& obis, const std::string& map) {
    return Get("/rules/lint", {{"id", id}, {"name", "n"}, {"obis", obis}, {"map", map}});
  };
  EXPECT_EQ(lint("99001", "1-0:97.97.2", "protocol=dlms").body, "");
  EXPECT_THAT(lint("99001", "1-0:97.97.1", "protocol=dlms").body, testing::StartsWith("warning: "));
  EXPECT_THAT(lint("99001", "nonsense", "protocol=dlms").body, testing::StartsWith("error: 'nonsense' is no OBIS"));
  const std::string lines = lint("99001", "non\nsense", "protocol=dlms").body;
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 1);
  EXPECT_EQ(lint("x", "1-0:1.8.0", "protocol=dlms").Status(), 400u);
}

TEST_F(RulePage, AllRulesAreDownloadedAsTheyCanBeReadAgain) {
  SaveRule();
  const cAnswer answer = Get("/rules/download");
  EXPECT_EQ(answer.Header("Content-Type"), "application/toml");
  EXPECT_EQ(answer.Header("Content-Disposition"), "attachment; filename=\"rules.toml\"");
  cObisMap read;
  std::string error;
  ASSERT_TRUE(rules::ReadRulesText(answer.body, "download", read, error)) << error;
  EXPECT_EQ(read.ToString(), Map().ToString());
}

// ---- which rule names a value

TEST_F(RulePage, SaysWhichRuleNamesAValue) {
  SaveRule();
  const std::string body = Get("/rules/why", {{"road", "dlms"}, {"obis", "1-0:97.97.1"}}).body;
  EXPECT_THAT(body, HasSubstr("names it</span></td><td class=\"num\"><a href=\"/rule?id=99000\""));
  EXPECT_THAT(Get("/rules/why", {{"road", "identifier"}, {"obis", "1-3:97.97.1"}}).body, HasSubstr("names it</span>"));
  const std::string none = Get("/rules/why", {{"road", "dlms"}, {"obis", "1-0:97.97.7"}}).body;
  EXPECT_THAT(none, HasSubstr("No rule names it."));
  EXPECT_THAT(none, HasSubstr("/rule?id=99000")) << "among the nearest";
}

TEST_F(RulePage, SaysWhichRuleNamesAValueOfABus) {
  Enter();
  ASSERT_EQ(Post("/rule", Rule("save", "8-0:97.1.0", "protocol=mbus,dif=04,vif=13")).Status(), 303u);
  ASSERT_TRUE(Await([&] { return Has(99000); }));
  EXPECT_THAT(Get("/rules/why", {{"road", "mbus"}, {"dif", "04"}, {"vif", "13"}, {"medium", "W"}}).body,
              HasSubstr("/rule?id=99000"));
  EXPECT_THAT(Get("/rules/why", {{"road", "modbus"}, {"register", "7"}}).body, HasSubstr("No rule names it."));
}

TEST_F(RulePage, SaysWhatIsNoValue) {
  Enter();
  EXPECT_EQ(Get("/rules/why").Status(), 200u);
  for (const cFields& query : {cFields{{"road", "morse"}}, cFields{{"road", "dlms"}, {"obis", "nonsense"}},
                               cFields{{"road", "mbus"}, {"dif", "4"}}, cFields{{"road", "mbus"}, {"vif", "<b>"}}}) {
    const cAnswer answer = Get("/rules/why", query);
    EXPECT_EQ(answer.Status(), 400u);
    EXPECT_THAT(answer.body, HasSubstr("expected"));
    EXPECT_THAT(answer.body, Not(HasSubstr("<b>")));
  }
}

}  // namespace
}  // namespace tav::pages
