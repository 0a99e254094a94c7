// SPDX-License-Identifier: Apache-2.0
// Requests on their way to page processes, and their outputs on the way back.
#include "tests/web/front/front_world.h"

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

class FrontPages : public FrontWorld {
 protected:
  void SetUp() override { Start(); }
};

}  // namespace

TEST_F(FrontPages, AnAnswerThatIsWholeHasItsLength) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, "<p>hello</p>"); };
  const cReply reply = Ask(Get("/"));
  EXPECT_EQ(reply.status, 200u);
  EXPECT_EQ(reply.body, "<p>hello</p>");
  EXPECT_EQ(reply.Field("Content-Length"), "12");
  EXPECT_EQ(reply.Field("Content-Type"), "text/html");
  EXPECT_EQ(reply.Field("X-Frame-Options"), "DENY");
}

TEST_F(FrontPages, AnAnswerThatComesLaterIsChunked) {
  cTestPages& pages = AddPages();
  cWebClient& client = Connect();
  client.Send(Get("/slow"));
  const vorn::cMsg request = AwaitRequest(pages);
  pages.Accept(request);
  pages.Output(request, std::string(kHtml) + "one,");
  ASSERT_TRUE(Await([&] { return client.Input().find("one,") != std::string::npos; }));
  pages.Output(request, "two");
  pages.Finish(request);
  const cReply reply = AwaitReply(client);
  EXPECT_TRUE(reply.isWhole);
  EXPECT_EQ(reply.body, "one,two");
  EXPECT_EQ(reply.Field("Transfer-Encoding"), "chunked");
}

TEST_F(FrontPages, ARequestHasAllThatTheTableNames) {
  cTestPages& pages = AddPages();
  cWebClient& client = Connect();
  client.Send(Get("/a%20b/c?x=1&y=%C3%BC+z&x=2", "Cookie: sid=abc; theme=dark\r\nAccept: a\r\nACCEPT: b\r\n"));
  vorn::cMsg request = AwaitRequest(pages);
  EXPECT_TRUE(request.GetId().IsValid());
  std::string error;
  EXPECT_TRUE(CheckParameters(*http::kProtocol.Find(http::eRequest), request.Record(), error)) << error;
  const vorn::cRecord& record = request.Record();
  EXPECT_EQ(record.GetTextPar("Path-Info"), "/a b/c");
  EXPECT_EQ(record.GetTextPar("Request-Method"), "GET");
  EXPECT_EQ(record.GetTextPar("Request-Scheme"), "http");
  EXPECT_EQ(record.GetTextPar("Server-Protocol"), "HTTP/1.1");
  EXPECT_EQ(record.GetTextPar("Server-Port"), std::to_string(m_port));
  EXPECT_EQ(record.GetTextPar("Technology-Name"), "web");
  EXPECT_EQ(record.GetTextPar("Remote-Addr"), "127.0.0.1");
  EXPECT_EQ(record.GetRecordPar("Headers").GetTextPar("accept"), "a, b");
  EXPECT_EQ(record.GetRecordPar("Headers").GetTextPar("host"), "gateway");
  EXPECT_FALSE(record.GetRecordPar("Headers").GetPar("cookie").IsValid());
  cHttpRequest page(request);
  EXPECT_EQ(page.GetFromQueryString("x"), "1");
  EXPECT_EQ(page.GetFromQueryString("y"), "\xC3\xBC z");
  cHttpCookie cookie;
  ASSERT_TRUE(page.GetCookie("theme", cookie));
  EXPECT_EQ(cookie.value, "dark");
}

TEST_F(FrontPages, AFormIsSplitIntoItsFields) {
  cTestPages& pages = AddPages();
  cWebClient& client = Connect();
  client.Send(Post("/save", "application/x-www-form-urlencoded", "name=a%26b&empty=&last=x+y"));
  vorn::cMsg request = AwaitRequest(pages);
  cHttpRequest page(request);
  EXPECT_EQ(page.GetFromPostData("name"), "a&b");
  EXPECT_EQ(page.GetFromPostData("last"), "x y");
  EXPECT_TRUE(page.GetPostData().GetPar("empty").IsValid());
  EXPECT_EQ(page.GetContentLength(), 26u);
}

}  // namespace tav::gateway::web
