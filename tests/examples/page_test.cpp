// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <vector>

#include <tav/http/http_protocol.h>
#include <tests/support/child_process.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace http = tav::http;

namespace {

// The example as a process of its own, and a web front end for it.
class ExamplePage : public testing::Test {
 protected:
  struct cAsked {
    std::string name;    // in the query
    std::string cookie;  // of the session
    std::string path = "/hello";
    std::string scheme = "http";
  };

  void SetUp() override {
    m_process = std::make_unique<cChildProcess>(std::vector<std::string>{EXAMPLE_PAGE, m_folder.GetPath()},
                                                std::vector<std::string>(), m_folder.File("said"));
    ASSERT_TRUE(PollUntil(m_service, [&] { return !m_server->messages.empty(); }));
  }
  static vorn::cMsg Request(const cAsked& asked) {
    vorn::cMsg msg(http::eRequest);
    vorn::cUuid id;
    id.Create();
    msg.SetId(id);
    vorn::cRecord query, cookies, cookie;
    query.AppendTextPar("name", asked.name);
    cookie.AppendTextPar(http::kValue, asked.cookie);
    cookies.AppendRecordPar("hello-sid", cookie);
    msg.Record().AppendTextPar(http::kTechnologyName, "web");
    msg.Record().AppendTextPar(http::kServerProtocol, "HTTP/1.1");
    msg.Record().AppendTextPar(http::kPathInfo, asked.path);
    msg.Record().AppendTextPar(http::kRequestScheme, asked.scheme);
    if (!asked.name.empty()) msg.Record().AppendRecordPar(http::kQueryString, query);
    if (!asked.cookie.empty()) msg.Record().AppendRecordPar(http::kCookies, cookies);
    return msg;
  }
  // The whole answer: its header and body; what else is wrong is reported.
  std::string Ask(const cAsked& asked) {
    const vorn::cMsg request = Request(asked);
    m_server->messages.clear();
    EXPECT_EQ(m_server->GetChannels().front()->Send(request), 1);
    EXPECT_TRUE(PollUntil(m_service, [&] {
      return !m_server->messages.empty() && (m_server->messages.back().Record().GetBoolPar(http::kFinish) ||
                                             m_server->messages.back().GetType() == http::eRequestRefused);
    }));
    if (m_server->messages.empty() || m_server->messages.back().GetType() == http::eRequestRefused) return "refused";
    EXPECT_EQ(m_server->messages.front().GetType(), http::eRequestTaken);
    EXPECT_TRUE(m_server->messages.back().Record().GetBoolPar(http::kSuccess));
    std::string answer;
    for (const vorn::cMsg& msg : m_server->messages) {
      EXPECT_EQ(msg.GetId(), request.GetId());
      answer += msg.Record().GetTextPar(http::kContent);
    }
    return answer;
  }
  // The session that an answer names; empty when it names none.
  static std::string SessionOf(const std::string& answer) {
    std::smatch found;
    return std::regex_search(answer, found, std::regex("hello-sid=([-0-9a-f]{36});")) ? found[1].str() : "";
  }

  cTempFolder m_folder;
  vorn::cScmService m_service{"web", m_folder.GetPath()};
  std::unique_ptr<cRecordingServer> m_server = std::make_unique<cRecordingServer>(&m_service, "web");
  std::unique_ptr<cChildProcess> m_process;
};

}  // namespace

TEST_F(ExamplePage, RegistersForItsPath) {
  EXPECT_EQ(m_server->messages.front().GetType(), http::eRegister);
  EXPECT_THAT(Parameters(m_server->messages.front().Record()), ElementsAre("prefix text=/hello"));
}

TEST_F(ExamplePage, RegistersAgainWithAFrontEndThatWasRestarted) {
  m_server.reset();
  m_server = std::make_unique<cRecordingServer>(&m_service, "web");
  ASSERT_TRUE(PollUntil(m_service, [&] { return !m_server->messages.empty(); }));
  EXPECT_EQ(m_server->messages.front().GetType(), http::eRegister);
  EXPECT_THAT(Ask({}), StartsWith("Status: 200\r\n"));
}

TEST_F(ExamplePage, GreetsTellsTheTimeAndCounts) {
  const std::string answer = Ask({"Anna", ""});
  EXPECT_THAT(answer, StartsWith("Status: 200\r\nCache-Control: no-cache,no-store\r\n"
                                 "Content-Type: text/html; charset=utf-8\r\nSet-Cookie: hello-sid="));
  EXPECT_THAT(answer, HasSubstr("; HttpOnly; Path=/hello; SameSite=Strict\r\n\r\n<!DOCTYPE html>"));
  EXPECT_THAT(answer, HasSubstr("<h1>Hello, Anna!</h1>"));
  EXPECT_TRUE(std::regex_search(answer, std::regex("It is \\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ\\."))) << answer;
  EXPECT_THAT(answer, HasSubstr("Visits of this session: 1<"));
  EXPECT_THAT(answer, EndsWith("</html>\n"));
}

TEST_F(ExamplePage, GreetsTheWorldWhenNobodyIsNamed) { EXPECT_THAT(Ask({}), HasSubstr("<h1>Hello, world!</h1>")); }

TEST_F(ExamplePage, EscapesWhatItIsGiven) {
  EXPECT_THAT(Ask({"<script>\"&'", ""}), HasSubstr("<h1>Hello, &lt;script&gt;&quot;&amp;&#39;!</h1>"));
}

TEST_F(ExamplePage, CountsEachSessionByItself) {
  const std::string sid = SessionOf(Ask({}));
  ASSERT_NE(sid, "");
  const std::string second = Ask({"", sid});
  EXPECT_THAT(second, HasSubstr("Visits of this session: 2<"));
  EXPECT_THAT(second, Not(HasSubstr("Set-Cookie"))) << "it is known";
  EXPECT_THAT(Ask({}), HasSubstr("Visits of this session: 1<")) << "somebody else's";
  EXPECT_THAT(Ask({"", sid}), HasSubstr("Visits of this session: 3<"));
}

TEST_F(ExamplePage, GivesAnUnknownSessionANewOne) {
  for (const char* sid : {"00000000-0000-4000-8000-000000000001", "nonsense"}) {
    const std::string answer = Ask({"", sid});
    EXPECT_THAT(answer, HasSubstr("Visits of this session: 1<"));
    EXPECT_NE(SessionOf(answer), "");
    EXPECT_NE(SessionOf(answer), sid) << "a client does not choose it";
  }
}

TEST_F(ExamplePage, KeepsItsCookieToEncryptedConnectionsWhereItWasGivenOnOne) {
  EXPECT_THAT(Ask({"", "", "/hello", "https"}), HasSubstr("; SameSite=Strict; Secure\r\n"));
}

TEST_F(ExamplePage, ServesNothingBelowItsPath) {
  EXPECT_EQ(Ask({"", "", "/hello/there"}), "Status: 404\r\nConnection: close\r\n\r\n");
}

TEST_F(ExamplePage, TakesAThousandVisitorsAndRefusesTheNext) {
  const std::string sid = SessionOf(Ask({}));
  for (int i = 1; i < 1000; ++i) ASSERT_NE(SessionOf(Ask({})), "") << i;
  EXPECT_EQ(Ask({}), "refused");
  EXPECT_EQ(m_server->messages.back().Record().GetTextPar(http::kReason), "there are too many visitors");
  EXPECT_THAT(Ask({"", sid}), HasSubstr("Visits of this session: 2<")) << "who is known is served";
}

TEST_F(ExamplePage, EndsWhenItIsAskedTo) {
  m_process->Signal(SIGTERM);
  EXPECT_EQ(m_process->Wait(), 0);
}
