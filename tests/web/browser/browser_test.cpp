// SPDX-License-Identifier: Apache-2.0
#include <tests/support/browser/browser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>

#include <tests/support/browser/tiny_server.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class Browser : public testing::Test {
 protected:
  void SetUp() override {
    if (const std::string why = cBrowser::WhyMissing(); !why.empty()) GTEST_SKIP() << why;
    m_browser = std::make_unique<cBrowser>();
  }
  // Opens a small page with that body.
  void Show(const std::string& body) {
    const std::string file = m_folder.File("page.html");
    std::ofstream(file)
        << "<!DOCTYPE html><html lang='en'><head><meta charset='utf-8'><title>small</title></head><body>" << body
        << "</body></html>";
    m_browser->Open("file://" + file);
  }
  // What a failing call throws.
  static std::string ErrorOf(const std::function<void()>& call) {
    try {
      call();
    } catch (const cWebDriverError& error) {
      return error.what();
    }
    return "no error";
  }

  cTempFolder m_folder;
  std::unique_ptr<cBrowser> m_browser;
};

}  // namespace

TEST_F(Browser, ShowsAPage) {
  m_browser->Open(
      "data:text/html;charset=utf-8,<title>small</title><p id='a'>Hello</p><p>W%C3%A4rme</p><p hidden>x</p>");
  EXPECT_EQ(m_browser->GetTitle(), "small");
  EXPECT_THAT(m_browser->GetUrl(), HasSubstr("data:text/html"));
  EXPECT_EQ(m_browser->Text("#a"), "Hello");
  EXPECT_THAT(m_browser->Texts("p:not([hidden])"), ElementsAre("Hello", "Wärme"));
  EXPECT_TRUE(m_browser->Exists("p + p"));
  EXPECT_FALSE(m_browser->Exists("h1"));
  EXPECT_EQ(m_browser->Attribute("#a", "id"), "a");
  EXPECT_EQ(m_browser->Attribute("#a", "class"), "");
  EXPECT_EQ(m_browser->Execute("return arguments[0] + 1", {41}), 42);
  EXPECT_THAT(m_browser->ConsoleErrors(), IsEmpty());
  EXPECT_THAT(m_browser->FailedRequests(), IsEmpty());
  EXPECT_THAT(m_browser->AllHostsContacted(), IsEmpty());
}

TEST_F(Browser, TypesClicksAndSelects) {
  Show(
      "<input id='name' value='old'><input id='day' type='date'><select id='unit'><option value='Wh'>Wh</option>"
      "<option value='kWh'>kWh</option></select><input type='checkbox' id='box'><button>Go</button><p id='out'></p>"
      "<script>const by = (id) => document.getElementById(id); document.querySelector('button').onclick = () =>"
      " setTimeout(() => { by('out').textContent = [by('name').value, by('day').value, by('unit').value,"
      " by('box').checked].join(' '); }, 50)</script>");
  m_browser->Type("#name", "Anna");
  m_browser->Press("#name", "-Maria");
  m_browser->SetValue("#day", "2026-03-01");
  m_browser->Select("#unit", "kWh");
  m_browser->Click("#box");
  m_browser->Click("button");
  EXPECT_EQ(m_browser->AwaitText("#out", "Anna"), "Anna-Maria 2026-03-01 kWh true");
  EXPECT_EQ(m_browser->Property("#name", "value"), "Anna-Maria");
  m_browser->AwaitTrue("return document.querySelector('#box').checked");
}

TEST_F(Browser, FollowsLinksAndComesBack) {
  std::ofstream(m_folder.File("other.html")) << "<title>other</title>";
  Show("<a href='other.html'>other</a>");
  m_browser->Click("a");
  EXPECT_THAT(m_browser->AwaitUrl("other.html"), HasSubstr("file://"));
  EXPECT_EQ(m_browser->GetTitle(), "other");
  m_browser->Back();
  m_browser->AwaitUrl("page.html");
  m_browser->Reload();
  EXPECT_TRUE(m_browser->Exists("a"));
}

TEST_F(Browser, AnswersQuestions) {
  Show(
      "<button>Ask</button><p></p><script>document.querySelector('button').onclick = () => {"
      " document.querySelector('p').textContent = confirm('Really?') ? 'yes' : 'no'; }</script>");
  m_browser->Click("button");
  EXPECT_EQ(m_browser->AlertText(), "Really?");
  m_browser->DismissAlert();
  EXPECT_EQ(m_browser->AwaitText("p", "no"), "no");
  m_browser->Click("button");
  m_browser->AcceptAlert();
  EXPECT_EQ(m_browser->AwaitText("p", "yes"), "yes");
}

TEST_F(Browser, ReportsErrorsOfTheConsole) {
  Show("<script>console.warn('only a warning'); console.error('what went wrong'); missing();</script>");
  EXPECT_THAT(m_browser->ConsoleErrors(),
              ElementsAre(HasSubstr("what went wrong"), HasSubstr("missing is not defined")));
  EXPECT_THAT(m_browser->ConsoleErrors(), IsEmpty()) << "each once";
}

TEST_F(Browser, ReportsRequestsThatFail) {
  Show("<img src='absent.png' alt=''>");
  EXPECT_THAT(m_browser->FailedRequests(), ElementsAre(HasSubstr("absent.png: net::ERR_FILE_NOT_FOUND")));
  const cTinyServer server([](const cTinyServer::cRequest&) {
    return cTinyServer::cAnswer{404, "text/html", "<p>nope</p>"};
  });
  m_browser->Open("http://" + server.GetHost() + "/there");
  EXPECT_EQ(m_browser->Text("p"), "nope");
  EXPECT_THAT(m_browser->FailedRequests(), Contains("http://" + server.GetHost() + "/there: 404"));
  EXPECT_THAT(m_browser->AllHostsContacted(), ElementsAre(server.GetHost()));
}

TEST_F(Browser, NeverFindsAnotherHost) {
  EXPECT_THAT(ErrorOf([&] { m_browser->Open("http://www.example.com/"); }), HasSubstr("ERR_NAME_NOT_RESOLVED"));
  EXPECT_THAT(m_browser->AllHostsContacted(), ElementsAre("www.example.com")) << "but tells that it was asked for";
}

TEST_F(Browser, SaysWhatIsMissing) {
  Show("<p>here</p>");
  EXPECT_THAT(ErrorOf([&] { m_browser->Click("#absent"); }), HasSubstr("#absent"));
  EXPECT_THAT(ErrorOf([&] { m_browser->Text("#absent"); }), HasSubstr("there is no #absent on file://"));
  EXPECT_THAT(ErrorOf([&] { m_browser->Attribute("#absent", "id"); }), HasSubstr("no such element"));
  EXPECT_THAT(ErrorOf([&] { m_browser->Execute("missing()"); }), HasSubstr("missing is not defined"));
  EXPECT_THAT(ErrorOf([&] { m_browser->AlertText(); }), HasSubstr("no such alert"));
}

TEST_F(Browser, HasTheWindowAndTheMediaThatItIsGiven) {
  Show(
      "<style>body { color: rgb(1, 1, 1) } @media (prefers-color-scheme: dark) { body { color: rgb(2, 2, 2) } "
      "}</style>");
  const std::string script = "return [innerWidth, innerHeight, getComputedStyle(document.body).color]";
  m_browser->SetMedia("prefers-color-scheme", "light");
  EXPECT_EQ(m_browser->Execute(script).dump(), R"j([1280,900,"rgb(1, 1, 1)"])j");
  m_browser->SetWindow(320, 640);
  m_browser->SetMedia("prefers-reduced-motion", "reduce");
  m_browser->SetMedia("prefers-color-scheme", "dark");
  EXPECT_EQ(m_browser->Execute(script).dump(), R"j([320,640,"rgb(2, 2, 2)"])j");
  EXPECT_EQ(m_browser->Execute("return matchMedia('(prefers-reduced-motion: reduce)').matches"), true);
}

TEST_F(Browser, TakesPictures) {
  Show("<p>here</p>");
  m_browser->Screenshot(m_folder.File("page.png"));
  std::ifstream file(m_folder.File("page.png"), std::ios::binary);
  std::string begin(8, '\0');
  file.read(begin.data(), 8);
  EXPECT_EQ(begin, "\x89PNG\r\n\x1A\n");
}

TEST_F(Browser, KeepsDownloadsInTheFolderThatItIsGiven) {
  m_browser->SetDownloadFolder(m_folder.GetPath());
  Show("<a download='values.csv' href='data:text/csv,1;2'>values</a>");
  m_browser->Click("a");
  m_browser->Await("the file", [&] { return std::filesystem::exists(m_folder.File("values.csv")); });
  std::ifstream file(m_folder.File("values.csv"));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "1;2");
}

TEST_F(Browser, ChoosesFiles) {
  std::ofstream(m_folder.File("rules.toml")) << "rules";
  Show(
      "<input type='file'><p></p><script>document.querySelector('input').onchange = (event) =>"
      " event.target.files[0].text().then((text) => { document.querySelector('p').textContent = text; })</script>");
  m_browser->ChooseFile("input", m_folder.File("rules.toml"));
  EXPECT_EQ(m_browser->AwaitText("p", "r"), "rules");
}
