// SPDX-License-Identifier: Apache-2.0
#include <tests/web/static/static_fixture.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Form : public cStaticFixture {
 protected:
  void SetUp() override {
    cStaticFixture::SetUp();
    Give("/done", {200, "text/html", "<link rel='icon' href='/static/icon.svg'><h1>done</h1>"});
  }
  void ShowForm(const std::string& fields) {
    Show("<form method='post' action='/done'><input type='hidden' name='token' value='t'>" + fields + "</form>",
         {"form.js"});
  }
};

}  // namespace

TEST_F(Form, AsksBeforeItIsSentByAButtonThatSaysSo) {
  ShowForm("<button id='save'>Save</button><button name='do' value='remove' data-confirm='Remove it?'>Remove</button>");
  m_browser->Click("[data-confirm]");
  EXPECT_EQ(m_browser->AlertText(), "Remove it?");
  m_browser->DismissAlert();
  EXPECT_EQ(m_browser->GetUrl(), m_server->Url("/"));
  EXPECT_THAT(Asked("/done"), IsEmpty());
  m_browser->Click("[data-confirm]");
  m_browser->AcceptAlert();
  m_browser->AwaitText("h1", "done");
  EXPECT_THAT(Asked("/done"), ElementsAre("/done token=t&do=remove"));
}

TEST_F(Form, IsSentWithoutAQuestionByOtherButtons) {
  ShowForm("<button id='save'>Save</button><button data-confirm='Remove it?'>Remove</button>");
  m_browser->Click("#save");
  m_browser->AwaitText("h1", "done");
}

TEST_F(Form, ShowsAPasswordOnDemandAndSendsItHidden) {
  ShowForm("<input type='password' name='pw' id='pw' autofocus><button id='save'>Save</button>");
  EXPECT_EQ(m_browser->Execute("return document.activeElement.id"), "pw") << "the focus stays where it was";
  m_browser->Type("#pw", "secret");
  EXPECT_EQ(m_browser->Text(".password button"), "Show");
  m_browser->Click(".password button");
  EXPECT_EQ(m_browser->Property("#pw", "type"), "text");
  EXPECT_EQ(m_browser->Text(".password button"), "Hide");
  EXPECT_EQ(m_browser->Attribute(".password button", "aria-pressed"), "true");
  m_browser->Click(".password button");
  EXPECT_EQ(m_browser->Property("#pw", "type"), "password");
  m_browser->Click(".password button");
  m_browser->Click("#save");
  m_browser->AwaitText("h1", "done");
  EXPECT_THAT(Asked("/done"), ElementsAre("/done token=t&pw=secret"));
}

TEST_F(Form, TellsTheVerdictWhileOneTypes) {
  Give("/rules/lint", {200, "text/plain; charset=utf-8", "line 1: <b>unknown</b>"});
  ShowForm(
      "<input type='password' name='pw' value='x'><textarea id='rule' name='rule' data-lint='/rules/lint'"
      " data-lint-into='verdict'>a</textarea><p id='verdict'></p>");
  EXPECT_THAT(Asked("/rules/lint"), IsEmpty());
  m_browser->Press("#rule", "=b&c");
  EXPECT_EQ(m_browser->AwaitText("#verdict", "unknown"), "line 1: <b>unknown</b>") << "as text";
  EXPECT_EQ(m_browser->Attribute("#verdict", "aria-live"), "polite");
  ASSERT_THAT(Asked("/rules/lint"), testing::Not(IsEmpty()));
  EXPECT_EQ(Asked("/rules/lint").back(), "/rules/lint?rule=a%3Db%26c") << "the form's fields, none hidden or secret";
}

TEST_F(Form, SaysThatThereIsNoVerdict) {
  m_expectsFailures = true;
  Give("/rules/lint", {503, "text/html", "busy"});
  ShowForm("<input id='rule' name='rule' data-lint='/rules/lint' data-lint-into='verdict'><p id='verdict'></p>");
  m_browser->Type("#rule", "a");
  EXPECT_EQ(m_browser->AwaitText("#verdict", "no verdict"), "There is no verdict: the gateway answered 503.");
}

TEST_F(Form, ShowsARefusalInPlainText) {
  m_expectsFailures = true;
  Give("/rules/lint", {422, "text/plain", "the text is too long"});
  ShowForm("<input id='rule' name='rule' data-lint='/rules/lint' data-lint-into='verdict'><p id='verdict'></p>");
  m_browser->Type("#rule", "a");
  EXPECT_EQ(m_browser->AwaitText("#verdict", "long"), "the text is too long");
}
