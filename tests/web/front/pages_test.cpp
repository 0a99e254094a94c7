// SPDX-License-Identifier: Apache-2.0
// Requests on their way to page processes, and their outputs on the way back.
#include <tav/http/http_page.h>
#include <tav/http/http_session.h>

#include "tests/web/front/front_world.h"

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

// A page as they are written.
class cHelloPage : public cHttpPage {
 public:
  using cHttpPage::cHttpPage;
  bool Process(cHttpRequest& request) override {
    HttpSuccess(0, 200);
    HttpOutput(0, "hello " + request.GetFromQueryString("name"));
    CloseSuccess();
    return true;
  }
  bool OnMessage(vorn::cMsg&) override { return false; }
};

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

// ---- registration

TEST_F(FrontPages, TheLongestPrefixOfWholeSegmentsServes) {
  cTestPages& all = AddPages();
  cTestPages& api = AddPages({"/api/"});
  cTestPages& meters = AddPages({"/api/meters", "/other"});
  const auto serve = [&](cTestPages& pages, const std::string& name) {
    pages.onRequest = [&pages, name](const vorn::cMsg& request) { pages.Serve(request, kHtml, name); };
  };
  serve(all, "all");
  serve(api, "api");
  serve(meters, "meters");
  const std::pair<const char*, const char*> kCases[] = {{"/", "all"},
                                                        {"/api", "api"},
                                                        {"/api/", "api"},
                                                        {"/api/x", "api"},
                                                        {"/apiary", "all"},
                                                        {"/api/meters", "meters"},
                                                        {"/api/meters/1?x=y", "meters"},
                                                        {"/api/metersx", "api"},
                                                        {"/other/", "meters"}};
  for (const auto& [path, name] : kCases) EXPECT_EQ(Ask(Get(path)).body, name) << path;
}

TEST_F(FrontPages, APrefixThatIsTakenIsRefusedWithWhoHasIt) {
  AddPages({"/a", "/b"});
  cTestPages& second = AddPages({"/c", "/b/"});
  EXPECT_FALSE(second.isRegistered);
  EXPECT_THAT(second.refusal, HasSubstr("\"/b/\" is served by web_front_test["));
  EXPECT_EQ(Ask(Get("/c")).status, 503u) << "a refused registration registers nothing";
}

TEST_F(FrontPages, APrefixThatCannotBeServedIsRefused) {
  for (const char* prefix : {"", "a", "/static", "/static/x", "/a\nb"})
    EXPECT_THAT(AddPages({prefix}).refusal, HasSubstr("prefix \"")) << prefix;
}

TEST_F(FrontPages, ARegistrationLastsAsLongAsItsChannel) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, "first"); };
  EXPECT_EQ(Ask(Get("/")).body, "first");
  EXPECT_EQ(Value("page-processes"), "1");
  Kill(pages);
  Settle();
  EXPECT_EQ(Value("page-processes"), "0");
  EXPECT_EQ(Ask(Get("/")).status, 503u);
  cTestPages& again = AddPages();
  again.onRequest = [&](const vorn::cMsg& request) { again.Serve(request, kHtml, "second"); };
  EXPECT_EQ(Ask(Get("/")).body, "second");
}

// ---- the forms of answers

TEST_F(FrontPages, HeadHasTheHeaderAndNoBody) {
  cTestPages& pages = AddPages({}, true);
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, "body"); };
  cWebClient& client = Connect();
  client.Send(Get("/", "", "HEAD"));
  const cReply reply = AwaitReply(client, true);
  EXPECT_EQ(reply.status, 200u);
  EXPECT_EQ(reply.Field("Content-Type"), "text/html");
  EXPECT_TRUE(Await([&] { return client.IsClosed(); }));
  EXPECT_EQ(client.Input(), "");
  EXPECT_THAT(pages.lost, testing::ElementsAre(HasSubstr("HEAD")));
}

TEST_F(FrontPages, AnAnswerWithoutABodyByItsStatusHasNone) {
  cTestPages& pages = AddPages();
  for (const char* status : {"204", "304"}) {
    pages.onRequest = [&](const vorn::cMsg& request) {
      pages.Serve(request, std::string("Status: ") + status + "\r\n\r\n", "never");
    };
    cWebClient& client = Connect();
    client.Send(Get("/") + Get("/"));
    EXPECT_EQ(std::to_string(AwaitReply(client).status), status);
    EXPECT_EQ(std::to_string(AwaitReply(client).status), status);
    EXPECT_EQ(client.Input(), "");
  }
}

TEST_F(FrontPages, Http10HasItsLengthOrEndsWithTheConnection) {
  cTestPages& pages = AddPages();
  cWebClient& whole = Connect();
  whole.Send(Get("/", "", "GET", "HTTP/1.0"));
  pages.Serve(AwaitRequest(pages), kHtml, "whole");
  EXPECT_EQ(pages.requests[0].Record().GetTextPar("Server-Protocol"), "HTTP/1.0");
  const cReply reply = AwaitReply(whole);
  EXPECT_EQ(reply.body, "whole");
  EXPECT_EQ(reply.Field("Content-Length"), "5");
  cWebClient& stream = Connect();
  stream.Send(Get("/", "", "GET", "HTTP/1.0"));
  const vorn::cMsg request = AwaitRequest(pages, 2);
  pages.Output(request, std::string(kHtml) + "one ");
  ASSERT_TRUE(Await([&] { return stream.Input().find("one ") != std::string::npos; }));
  pages.Output(request, "two");
  pages.Finish(request);
  ASSERT_TRUE(Await([&] { return stream.IsClosed(); }));
  EXPECT_FALSE(stream.WasReset());
  EXPECT_EQ(AwaitReply(stream).body, "one two");
}

TEST_F(FrontPages, ManyRequestsOfOneConnectionAreAnsweredInTheirOrder) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& request) {
    pages.Serve(request, kHtml, request.Record().GetTextPar("Path-Info"));
  };
  cWebClient& client = Connect();
  std::string all;
  for (int i = 0; i < 50; ++i) all += Get("/" + std::to_string(i));
  client.Send(all);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(AwaitReply(client).body, "/" + std::to_string(i));
  EXPECT_FALSE(client.IsClosed());
  EXPECT_EQ(Value("connections"), "1");
  EXPECT_EQ(Value("requests"), "50");
}

TEST_F(FrontPages, TheThreeRunTogetherFormsOfAPageReachTheClient) {
  cTestPages& pages = AddPages();
  const std::pair<const char*, const char*> kForms[] = {
      {"Cache-Control: no-cache,no-store\r\nConnection: close", "Cache-Control"},
      {"Pragma: no-cache\r\nConnection: close", "Pragma"},
      {"Connection: close", "Content-Type"}};
  for (const auto& [form, field] : kForms) {
    pages.onRequest = [&, form = std::string(form)](const vorn::cMsg& request) {
      pages.Serve(request, "Status: 200\r\nContent-Type: text/html" + form + "\r\n\r\n", "x");
    };
    const cReply reply = Ask(Get("/"));
    EXPECT_EQ(reply.status, 200u) << form;
    EXPECT_EQ(reply.Field("Content-Type"), "text/html") << form;
    EXPECT_TRUE(reply.HasField(field)) << form;
    EXPECT_FALSE(reply.HasField("Connection")) << "that is between page and front end: " << form;
  }
}

TEST_F(FrontPages, APageOfTheLibraryIsServed) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& msg) {
    vorn::cMsg copy = msg;
    cHttpRequest request(copy);
    vorn::cUuid sid;
    sid.Create();
    cHttpSession session(sid, pages.GetService(), 0);
    cHelloPage page(pages.GetService());
    session.Run(request, &page);
  };
  for (const char* version : {"HTTP/1.1", "HTTP/1.0"}) {
    const cReply reply = Ask(Get("/?name=you", "", "GET", version));
    EXPECT_EQ(reply.status, 200u);
    EXPECT_EQ(reply.Field("Content-Type"), "text/html");
    EXPECT_EQ(reply.body, "hello you");
  }
}

TEST_F(FrontPages, NoPageInjectsAField) {
  cTestPages& pages = AddPages();
  const std::string kValues[] = {"/a\rSet-Cookie: x=y", "/a\x01", std::string("/a\0b", 4), "/a\x7f", "/a\x0bX: y"};
  for (const std::string& value : kValues) {
    pages.onRequest = [&](const vorn::cMsg& request) {
      pages.Serve(request, "Status: 302\r\nLocation: " + value + "\r\n\r\n", "");
    };
    const cReply reply = Ask(Get("/"));
    EXPECT_EQ(reply.status, 502u);
    EXPECT_FALSE(reply.HasField("Set-Cookie"));
    EXPECT_FALSE(reply.HasField("Location"));
  }
}

TEST_F(FrontPages, APageCannotLoosenWhatGuardsBrowsers) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& request) {
    pages.Serve(request,
                "Status: 200\r\nX-Frame-Options: ALLOWALL\r\nContent-Security-Policy: none\r\n"
                "Content-Length: 1\r\nTransfer-Encoding: chunked\r\nAccess-Control-Allow-Origin: *\r\n\r\n",
                "body");
  };
  const cReply reply = Ask(Get("/"));
  EXPECT_EQ(reply.body, "body");
  EXPECT_EQ(reply.Field("X-Frame-Options"), "DENY");
  EXPECT_THAT(reply.Field("Content-Security-Policy"), HasSubstr("default-src 'self'"));
  EXPECT_FALSE(reply.HasField("Access-Control-Allow-Origin"));
  EXPECT_FALSE(reply.HasField("Strict-Transport-Security"));
}

TEST_F(FrontPages, TextIsCompressedWhenTheClientAsks) {
  cTestPages& pages = AddPages();
  const std::string text(10'000, 'x');
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, text); };
  const cReply packed = Ask(Get("/", "Accept-Encoding: gzip\r\n"));
  EXPECT_EQ(packed.Field("Content-Encoding"), "gzip");
  EXPECT_EQ(packed.Field("Vary"), "Accept-Encoding");
  EXPECT_LT(packed.body.size(), 500u);
  EXPECT_EQ(Ask(Get("/")).body, text);
  pages.onRequest = [&](const vorn::cMsg& request) {
    pages.Serve(request, "Status: 200\r\nContent-Type: text/event-stream\r\n\r\n", text);
  };
  EXPECT_EQ(Ask(Get("/", "Accept-Encoding: gzip\r\n")).body, text);
}

// ---- what goes wrong

TEST_F(FrontPages, NobodyServesThePath) {
  const cReply reply = Ask(Get("/<script>"));
  EXPECT_EQ(reply.status, 503u);
  EXPECT_EQ(reply.Field("Content-Type"), "text/html; charset=utf-8");
  EXPECT_EQ(reply.body.find("<script"), std::string::npos);
}

TEST_F(FrontPages, ARefusedRequestIsAnsweredWithTheReason) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Refuse(request, "<too many> sessions"); };
  const cReply reply = Ask(Get("/"));
  EXPECT_EQ(reply.status, 503u);
  EXPECT_THAT(reply.body, HasSubstr("&lt;too many&gt; sessions"));
}

TEST_F(FrontPages, APageThatNeverAcceptsOrNeverAnswersIsGivenUp) {
  cTestPages& pages = AddPages({}, true);
  cWebClient& client = Connect();
  client.Send(Get("/"));
  AwaitRequest(pages);
  Pass(4'000);
  EXPECT_EQ(client.Input(), "");
  Pass(2'000);
  EXPECT_EQ(AwaitReply(client).status, 504u);
  EXPECT_EQ(pages.lost.size(), 1u);
  client.Send(Get("/"));
  pages.Accept(AwaitRequest(pages, 2));
  Settle();
  Pass(29'000);
  EXPECT_EQ(client.Input(), "");
  Pass(2'000);
  EXPECT_EQ(AwaitReply(client).status, 504u);
  EXPECT_EQ(pages.lost.size(), 2u);
  client.Send(Get("/"));
  const vorn::cMsg request = AwaitRequest(pages, 3);
  pages.Output(request, "Status: 200\r\nContent-Type: text/event-stream\r\n\r\nfirst");
  ASSERT_TRUE(Await([&] { return client.Input().find("first") != std::string::npos; }));
  Pass(100'000);
  pages.Output(request, "second");
  EXPECT_TRUE(Await([&] { return client.Input().find("second") != std::string::npos; }))
      << "a stream may be silent for as long as it likes";
}

TEST_F(FrontPages, NonsenseBeforeTheHeaderIsABadGateway) {
  cTestPages& pages = AddPages({}, true);
  const std::function<void(const vorn::cMsg&)> kNonsense[] = {
      [&](const vorn::cMsg& request) { pages.Finish(request); },
      [&](const vorn::cMsg& request) { pages.Finish(request, false); },
      [&](const vorn::cMsg& request) { pages.Output(request, "<html>\n\n"); },
      [&](const vorn::cMsg& request) { pages.Output(request, std::string(20'000, 'x')); },
      [&](const vorn::cMsg& request) { pages.Reply(request, http::eOutput); },
      [&](const vorn::cMsg& request) {
        pages.Output(request, "Status: 200\r\n");
        pages.Finish(request);
      },
      [&](const vorn::cMsg& request) {
        pages.Output(request, kHtml);
        pages.Finish(request, false);
      },
  };
  for (std::size_t i = 0; i < std::size(kNonsense); ++i) {
    pages.onRequest = kNonsense[i];
    EXPECT_EQ(Ask(Get("/")).status, 502u) << i;
  }
  EXPECT_EQ(Value("failures"), std::to_string(std::size(kNonsense)));
}

TEST_F(FrontPages, AProcessThatEndsBeforeTheHeaderIsABadGateway) {
  cTestPages& pages = AddPages();
  cWebClient& client = Connect();
  client.Send(Get("/"));
  pages.Output(AwaitRequest(pages), "Status: 200\r\nContent-");
  Kill(pages);
  EXPECT_EQ(AwaitReply(client).status, 502u);
}

TEST_F(FrontPages, BehindTheHeaderAFaultBreaksTheTransfer) {
  for (const bool isHttp10 : {false, true})
    for (const bool isKilled : {false, true}) {
      cTestPages& pages = AddPages();
      cWebClient& client = Connect();
      client.Send(Get("/", "", "GET", isHttp10 ? "HTTP/1.0" : "HTTP/1.1"));
      const vorn::cMsg request = AwaitRequest(pages);
      pages.Output(request, std::string(kHtml) + "half");
      ASSERT_TRUE(Await([&] { return client.Input().find("half") != std::string::npos; }));
      if (isKilled)
        Kill(pages);
      else
        pages.Finish(request, false);
      ASSERT_TRUE(Await([&] { return client.IsClosed(); }));
      EXPECT_EQ(client.WasReset(), isHttp10);
      EXPECT_EQ(client.Input().find("\r\n0\r\n"), std::string::npos);
      m_processes.clear();
      Settle();
    }
}

TEST_F(FrontPages, WhatComesForARequestThatIsOverIsDropped) {
  cTestPages& pages = AddPages();
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, "x"); };
  EXPECT_EQ(Ask(Get("/")).status, 200u);
  pages.Output(pages.requests[0], "late");
  pages.Finish(pages.requests[0]);
  pages.Accept(pages.requests[0]);
  Settle();
  EXPECT_EQ(Ask(Get("/")).body, "x");
}

TEST_F(FrontPages, AnotherProcessCannotAnswerInItsPlace) {
  cTestPages& pages = AddPages({"/a"});
  cTestPages& other = AddPages({"/b"});
  cWebClient& client = Connect();
  client.Send(Get("/a"));
  const vorn::cMsg request = AwaitRequest(pages);
  other.Serve(request, kHtml, "other");
  Settle();
  EXPECT_EQ(client.Input(), "");
  pages.Serve(request, kHtml, "own");
  EXPECT_EQ(AwaitReply(client).body, "own");
}

TEST_F(FrontPages, AFrontEndThatWasRestartedServesAgain) {
  cTestPages& pages = AddPages();
  Stop();
  Settle();
  Start();
  cTestPages& again = AddPages();
  again.onRequest = [&](const vorn::cMsg& request) { again.Serve(request, kHtml, "again"); };
  EXPECT_EQ(Ask(Get("/")).body, "again");
  EXPECT_TRUE(pages.requests.empty());
}

TEST_F(FrontPages, TheEndOfTheFrontEndEndsWhatIsUnderWay) {
  cTestPages& pages = AddPages();
  cWebClient& waiting = Connect();
  waiting.Send(Get("/"));
  AwaitRequest(pages);
  cWebClient& streaming = Connect();
  streaming.Send(Get("/"));
  pages.Output(AwaitRequest(pages, 2), std::string(kHtml) + "half");
  ASSERT_TRUE(Await([&] { return streaming.Input().find("half") != std::string::npos; }));
  Stop();
  EXPECT_TRUE(Await([&] { return waiting.IsClosed() && streaming.IsClosed(); }));
}

}  // namespace tav::gateway::web
