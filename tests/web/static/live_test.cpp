// SPDX-License-Identifier: Apache-2.0
#include <tests/web/static/static_fixture.h>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Live : public cStaticFixture {
 protected:
  static constexpr const char* kBody =
      "<p><span id='a' data-live='m.1'>1</span><span id='again' data-live='m.1'>1</span></p>"
      "<p id='when' data-live-when='m.1'>before</p><p><span id='state' class='state ok' "
      "data-live-state='m.1'>ok</span></p>"
      "<p id='odd' data-live='&quot;]&lt;x&gt;'>2</p>";

  // A page that listens, with its stream open.
  void Listen() {
    Give("/live", {200, "text/event-stream", ""});
    Show(kBody, {"live.js"}, " data-live='/live'");
    AwaitStream();
  }
  void AwaitStream() {
    m_browser->Await("the stream", [&] { return m_server->CountStreams() == 1; });
  }
  std::string Note() { return m_browser->Text(".live-note"); }
  bool IsStale() { return m_browser->Exists("body.stale"); }
};

}  // namespace

TEST_F(Live, ShowsValuesWhereverTheirKeyStands) {
  Listen();
  m_server->Tell("value", R"({"key":"m.1","text":"42.4","when":"12:00:01","state":"bad"})");
  EXPECT_EQ(m_browser->AwaitText("#a", "42.4"), "42.4");
  EXPECT_EQ(m_browser->Text("#again"), "42.4");
  EXPECT_EQ(m_browser->Text("#when"), "12:00:01");
  EXPECT_EQ(m_browser->Text("#state"), "bad");
  EXPECT_EQ(m_browser->Attribute("#state", "class"), "state bad");
  EXPECT_EQ(m_browser->Text("#odd"), "2");
}

TEST_F(Live, TakesEventsOfStatusAlikeAndKeysOfAnyText) {
  Listen();
  m_server->Tell("status", R"({"key":"\"]<x>","text":"<b>up</b>"})");
  EXPECT_EQ(m_browser->AwaitText("#odd", "up"), "<b>up</b>") << "as text";
  m_server->Tell("status", R"({"key":"nobody's","text":"1"})");
  m_server->Tell("value", R"({"key":"m.1","state":"strange"})");
  EXPECT_EQ(m_browser->AwaitText("#state", "strange"), "strange");
  EXPECT_EQ(m_browser->Attribute("#state", "class"), "state");
  EXPECT_EQ(m_browser->Text("#a"), "1") << "what is not told stays";
}

TEST_F(Live, FlashesWhatHasChangedForAMoment) {
  Listen();
  m_server->Tell("value", R"({"key":"m.1","text":"1","when":"later"})");
  m_browser->AwaitText("#when", "later");
  EXPECT_FALSE(m_browser->Exists(".changed")) << "the same value";
  m_server->Tell("value", R"({"key":"m.1","text":"2"})");
  m_browser->AwaitTrue("return document.querySelector('#a.changed')");
  m_browser->AwaitTrue("return !document.querySelector('.changed')");
}

TEST_F(Live, SaysThatValuesAreInterruptedAndWhenTheyComeBack) {
  Listen();
  EXPECT_EQ(m_browser->Attribute(".live-note", "aria-live"), "polite");
  EXPECT_EQ(Note(), "");
  m_server->Tell("gone", "{}");
  m_browser->AwaitText(".live-note", "Live values are interrupted");
  EXPECT_TRUE(IsStale());
  m_server->Tell("value", R"({"key":"m.1","text":"3"})");
  m_browser->AwaitText("#a", "3");
  EXPECT_FALSE(IsStale());
  EXPECT_EQ(Note(), "");
}

TEST_F(Live, ComesBackAfterABrokenConnection) {
  m_expectsFailures = true;
  Listen();
  m_server->CutStreams();
  m_browser->AwaitText(".live-note", "interrupted");
  AwaitStream();
  m_browser->AwaitTrue("return !document.body.classList.contains('stale')");
}

TEST_F(Live, ComesBackAfterAnAnswerThatIsNone) {
  m_expectsFailures = true;
  Give("/live", {503, "text/html", "busy"});
  Show(kBody, {"live.js"}, " data-live='/live'");
  m_browser->AwaitText(".live-note", "interrupted");
  Give("/live", {200, "text/event-stream", ""});
  AwaitStream();
  m_browser->AwaitTrue("return !document.body.classList.contains('stale')");
}

TEST_F(Live, OutlivesNonsense) {
  m_expectsFailures = true;
  Listen();
  m_server->Tell("value", "no json");
  m_server->Tell("value", "null");
  m_server->Tell("value", R"({"key":1,"text":2})");
  m_server->Tell("value", R"({"key":"m.1","text":"4"})");
  EXPECT_EQ(m_browser->AwaitText("#a", "4"), "4");
  EXPECT_THAT(m_browser->ConsoleErrors(), ElementsAre(HasSubstr("no record: no json"), HasSubstr("no record: null")));
}

TEST_F(Live, DoesNothingWithoutAnAddress) {
  Show(kBody, {"live.js"});
  EXPECT_FALSE(m_browser->Exists(".live-note"));
  EXPECT_THAT(Asked("/live"), testing::IsEmpty());
}
