// SPDX-License-Identifier: Apache-2.0
// How fast outputs may come, and what a page process is told of them.
#include "tests/web/front/front_world.h"

#include <gateway/web/front/web_limits.h>

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

constexpr std::size_t kPiece = std::size_t{64} << 10;
constexpr int kSmallBuffer = 16 << 10;

class FrontFlow : public FrontWorld {
 protected:
  void SetUp() override { Start(); }

  // A page that has answered with its header.
  vorn::cMsg Begin(cTestPages& pages, cWebClient& client, const std::string& fields = "") {
    client.Send(Get("/", fields));
    const vorn::cMsg request = AwaitRequest(pages, pages.requests.size() + 1);
    pages.Output(request, kHtml);
    EXPECT_TRUE(Await([&] { return client.Input().find("\r\n\r\n") != std::string::npos; }));
    return request;
  }
};

}  // namespace

TEST_F(FrontFlow, EachOutputIsAcknowledgedOnceItHasGoneOn) {
  cTestPages& pages = AddPages({}, true);
  cWebClient& client = Connect();
  const vorn::cMsg request = Begin(pages, client);
  EXPECT_TRUE(Await([&] { return pages.passed == 1; }));
  for (unsigned int i = 0; i < 10; ++i) {
    pages.Output(request, "x");
    EXPECT_TRUE(Await([&] { return pages.passed == i + 2; })) << i;
  }
  pages.Finish(request);
  EXPECT_EQ(AwaitReply(client).body, "xxxxxxxxxx");
  EXPECT_EQ(pages.passed, 11u);
  EXPECT_THAT(pages.lost, testing::IsEmpty());
}

TEST_F(FrontFlow, OutputsOfAWholeAnswerAreAcknowledgedTogether) {
  cTestPages& pages = AddPages({}, true);
  pages.onRequest = [&](const vorn::cMsg& request) {
    pages.Output(request, "Status: 2");
    pages.Output(request, "00\r\n\r\nbo");
    pages.Output(request, "");
    pages.Output(request, "dy");
    pages.Finish(request);
  };
  EXPECT_EQ(Ask(Get("/")).body, "body");
  EXPECT_TRUE(Await([&] { return pages.passed == 4; }));
  EXPECT_THAT(pages.lost, testing::IsEmpty());
}

TEST_F(FrontFlow, NothingIsToldToWhomDidNotAsk) {
  cTestPages& pages = AddPages();
  cWebClient& client = Connect();
  const vorn::cMsg request = Begin(pages, client);
  client.Close();
  Settle();
  pages.Output(request, "x");
  Settle();
  EXPECT_EQ(pages.passed, 0u);
  EXPECT_THAT(pages.lost, testing::IsEmpty());
}

TEST_F(FrontFlow, ASlowReaderHoldsItsPageBack) {
  cTestPages& pages = AddPages({}, true);
  cWebClient& client = Connect(kSmallBuffer);
  const vorn::cMsg request = Begin(pages, client);
  unsigned int sent = 1;
  const auto sendOn = [&] {  // four pieces are under way at a time
    for (; sent < pages.passed + 4; ++sent) pages.Output(request, std::string(kPiece, 'x'));
  };
  for (int i = 0; i < 50; ++i) {
    sendOn();
    Settle(false);
  }
  const unsigned int stuckAt = pages.passed;
  EXPECT_LT(stuckAt, 20u) << "what the kernel holds";
  EXPECT_LT(std::stoul(Value("bytes-waiting")), 5 * kPiece);
  while (sent < 200) {
    sendOn();
    ASSERT_TRUE(Await([&] { return pages.passed + 4 > sent; }));
  }
  pages.Finish(request);
  EXPECT_EQ(AwaitReply(client).body.size(), (sent - 1) * kPiece);
  EXPECT_EQ(Value("bytes-waiting"), "0");
}

TEST_F(FrontFlow, APageThatDoesNotCareOverrunsItsBoundAndIsBrokenOff) {
  cTestPages& pages = AddPages();
  cWebClient& client = Connect(kSmallBuffer);
  const vorn::cMsg request = Begin(pages, client);
  std::size_t most = 0;
  for (std::size_t sent = 0; sent < 2 * kMaxWaitingBytes; sent += kPiece) {
    pages.Output(request, std::string(kPiece, 'x'));
    Settle(false);
    most = std::max(most, std::size_t{std::stoul(Value("bytes-waiting"))});
  }
  EXPECT_LE(most, kMaxWaitingBytes);
  EXPECT_GT(most, kMaxWaitingBytes - 2 * kPiece);
  EXPECT_EQ(Value("bytes-waiting"), "0");
  EXPECT_TRUE(Await([&] { return client.IsClosed(); }));
  EXPECT_EQ(client.Input().find("\r\n0\r\n\r\n"), std::string::npos);
  EXPECT_EQ(Value("failures"), "1");
}

TEST_F(FrontFlow, AllAnswersTogetherHaveABound) {
  cTestPages& pages = AddPages();
  std::vector<vorn::cMsg> requests;
  for (int i = 0; i < 12; ++i) requests.push_back(Begin(pages, Connect(kSmallBuffer)));
  for (const vorn::cMsg& request : requests)
    for (std::size_t sent = 0; sent + kPiece < kMaxWaitingBytes; sent += kPiece) {
      pages.Output(request, std::string(kPiece, 'x'));
      Turn(false);
    }
  Settle(false);
  EXPECT_LE(std::stoul(Value("bytes-waiting")), kMaxWaitingTotalBytes);
  EXPECT_GT(std::stoul(Value("bytes-waiting")), kMaxWaitingTotalBytes / 2);
  EXPECT_NE(Value("failures"), "0");
}

TEST_F(FrontFlow, APageIsToldOnceThatItsClientIsGone) {
  for (const char* when : {"before the header", "in the body"}) {
    cTestPages& pages = AddPages({}, true);
    cWebClient& client = Connect();
    vorn::cMsg request;
    if (when[0] == 'b') {
      client.Send(Get("/"));
      request = AwaitRequest(pages);
      pages.Accept(request);
      Settle();
    } else {
      request = Begin(pages, client);
    }
    client.Close();
    EXPECT_TRUE(Await([&] { return pages.lost.size() == 1; })) << when;
    EXPECT_THAT(pages.lost.at(0), HasSubstr("client"));
    pages.Output(request, "more");
    pages.Finish(request);
    Settle();
    EXPECT_EQ(pages.lost.size(), 1u) << when;
    m_processes.clear();
    Settle();
  }
}

TEST_F(FrontFlow, EventsPassOnAtOnce) {
  cTestPages& pages = AddPages({}, true);
  cWebClient& client = Connect();
  client.Send(Get("/", "Accept-Encoding: gzip\r\n"));
  const vorn::cMsg request = AwaitRequest(pages);
  pages.Output(request, "Status: 200\r\nContent-Type: text/event-stream\r\n\r\n");
  for (int i = 0; i < 5; ++i) {
    const std::string event = "data: " + std::to_string(i) + "\n\n";
    pages.Output(request, event);
    EXPECT_TRUE(Await([&] { return client.Input().find(event) != std::string::npos; })) << i;
  }
}

TEST_F(FrontFlow, CompressedOutputPassesOnAtOnceAsWell) {
  cTestPages& pages = AddPages({}, true);
  cWebClient& client = Connect();
  const vorn::cMsg request = Begin(pages, client, "Accept-Encoding: gzip\r\n");
  for (unsigned int i = 0; i < 5; ++i) {
    const std::size_t before = client.Input().size();
    pages.Output(request, "line");
    EXPECT_TRUE(Await([&] { return client.Input().size() > before && pages.passed == i + 2; })) << i;
  }
}

}  // namespace tav::gateway::web
