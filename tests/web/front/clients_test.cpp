// SPDX-License-Identifier: Apache-2.0
// Clients that are slow, many, rude or gone; time is moved by hand.
#include <fstream>

#include "tests/web/front/front_world.h"

#include <gateway/web/front/web_limits.h>

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

class FrontClients : public FrontWorld {
 protected:
  void SetUp() override {
    std::ofstream(m_folder.File("static/style.css")) << "body {}";
    Start();
  }
  cTestPages& AddServing() {
    cTestPages& pages = AddPages();
    pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, "served"); };
    return pages;
  }
  void ConnectMany(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      Connect();
      if (i % 50 == 0) Settle();  // the kernel keeps some hundreds only for who does not accept
    }
    Settle();
  }
};

}  // namespace

TEST_F(FrontClients, AHeaderHasItsTime) {
  cWebClient& silent = Connect();
  cWebClient& slow = Connect();
  slow.Send("GET / HTTP/1.1\r\nHost: ");
  Settle();
  for (int i = 0; i < 19; ++i) {
    slow.Send("x");
    Pass(1'000);
  }
  EXPECT_FALSE(silent.IsClosed());
  EXPECT_FALSE(slow.IsClosed());
  Pass(2'000);
  EXPECT_TRUE(Await([&] { return silent.IsClosed() && slow.IsClosed(); }));
  EXPECT_EQ(silent.Input(), "");
  const cReply reply = AwaitReply(slow);
  EXPECT_EQ(reply.status, 408u);
  EXPECT_TRUE(reply.isWhole);
  EXPECT_EQ(reply.Field("X-Frame-Options"), "DENY");
  EXPECT_EQ(Value("connections-timed-out"), "2");
}

TEST_F(FrontClients, AConnectionMayRestBetweenRequests) {
  AddServing();
  cWebClient& client = Connect();
  client.Send(Get("/"));
  EXPECT_EQ(AwaitReply(client).body, "served");
  Pass(58'000);
  client.Send(Get("/"));
  EXPECT_EQ(AwaitReply(client).body, "served");
  Pass(58'000);
  EXPECT_FALSE(client.IsClosed());
  Pass(4'000);
  EXPECT_TRUE(Await([&] { return client.IsClosed(); }));
  EXPECT_EQ(client.Input(), "");
}

TEST_F(FrontClients, ALaterHeaderHasItsTimeAsWell) {
  AddServing();
  cWebClient& client = Connect();
  client.Send(Get("/"));
  EXPECT_EQ(AwaitReply(client).body, "served");
  client.Send("GET / HT");
  Settle();
  Pass(23'000);
  EXPECT_TRUE(Await([&] { return client.IsClosed(); }));
  EXPECT_EQ(AwaitReply(client).status, 408u);
}

TEST_F(FrontClients, ABodyHasALeastRate) {
  AddServing();
  cWebClient& slow = Connect();
  cWebClient& steady = Connect();
  for (cWebClient* client : {&slow, &steady}) client->Send(Get("/", "Content-Length: 500000\r\n", "POST"));
  for (int second = 0; second < 40; ++second) {
    slow.Send("x");
    steady.Send(std::string(2'000, 'x'));
    Settle();
    Pass(1'000);
  }
  EXPECT_TRUE(slow.IsClosed());
  EXPECT_EQ(AwaitReply(slow).status, 408u);
  EXPECT_FALSE(steady.IsClosed());
}

TEST_F(FrontClients, AReaderThatStandsStillIsClosed) {
  cTestPages& pages = AddPages({}, true);
  cWebClient& stuck = Connect(16 << 10);
  stuck.Send(Get("/"));
  const vorn::cMsg request = AwaitRequest(pages);
  pages.Output(request, kHtml);
  for (int i = 0; i < 40; ++i) pages.Output(request, std::string(64 << 10, 'x'));
  Settle(false);
  for (int i = 0; i < 58; ++i) {
    m_clock->Advance(1000);
    Settle(false);
  }
  EXPECT_TRUE(pages.lost.empty());
  for (int i = 0; i < 8; ++i) {
    m_clock->Advance(1000);
    Settle(false);
  }
  EXPECT_EQ(Value("connections-timed-out"), "1");
  EXPECT_EQ(pages.lost.size(), 1u);
  EXPECT_TRUE(Await([&] { return stuck.IsClosed(); }));
}

TEST_F(FrontClients, AThousandIdleConnectionsDisturbNobody) {
  AddServing();
  ConnectMany(1000);
  cWebClient& client = Connect();
  for (int i = 0; i < 20; ++i) {
    client.Send(Get("/"));
    EXPECT_EQ(AwaitReply(client).body, "served");
  }
  EXPECT_EQ(Value("connections"), "1001");
  EXPECT_EQ(Value("connections-evicted"), "0");
}

TEST_F(FrontClients, TheConnectionIdleLongestMakesRoom) {
  AddServing();
  cWebClient& first = Connect();
  Settle();
  ConnectMany(kMaxConnections + 100);
  EXPECT_TRUE(first.IsClosed());
  EXPECT_LE(std::stoul(Value("connections")), kMaxConnections);
  EXPECT_EQ(Ask(Get("/")).body, "served");
}

TEST_F(FrontClients, NoBrowserWaitsForAClientThatSendsByteByByte) {
  AddServing();
  const std::string request = Get("/");
  cWebClient& client = Connect();
  for (const char byte : request) {
    client.Send(std::string(1, byte));
    Settle();
    if (&byte == &request[request.size() / 2]) {
      EXPECT_EQ(Ask(Get("/")).body, "served");
    }
  }
  EXPECT_EQ(AwaitReply(client).body, "served");
}

TEST_F(FrontClients, TheHeaderHasALimit) {
  AddServing();
  const auto ask = [&](std::size_t size) {
    const std::string begin = "GET / HTTP/1.1\r\nHost: gateway\r\nX: ";
    return Ask(begin + std::string(size - begin.size() - 4, 'x') + "\r\n\r\n").status;
  };
  EXPECT_EQ(ask(kMaxHeaderBytes - 1), 200u);
  EXPECT_EQ(ask(kMaxHeaderBytes), 200u);
  EXPECT_EQ(ask(kMaxHeaderBytes + 1), 431u);
  EXPECT_EQ(ask(60'000), 431u);
  EXPECT_EQ(ask(100'000), 431u);
  EXPECT_EQ(ask(1'000'000), 431u);
}

TEST_F(FrontClients, TheAddressHasALimit) {
  AddServing();
  const auto ask = [&](std::size_t size) { return Ask(Get("/" + std::string(size - 1, 'x'))).status; };
  EXPECT_EQ(ask(kMaxTargetBytes - 1), 200u);
  EXPECT_EQ(ask(kMaxTargetBytes), 200u);
  EXPECT_EQ(ask(kMaxTargetBytes + 1), 414u);
  EXPECT_EQ(ask(30'000), 414u);
  EXPECT_EQ(ask(100'000), 414u);
}

TEST_F(FrontClients, AMethodIsServedOrNamed) {
  AddServing();
  for (const char* method : {"GET", "POST", "PUT", "PATCH", "DELETE", "OPTIONS"})
    EXPECT_EQ(Ask(Get("/", "Content-Length: 0\r\n", method)).status, 200u) << method;
  for (const char* method : {"TRACE", "CONNECT"}) EXPECT_EQ(Ask(Get("/", "", method)).status, 405u) << method;
  for (const char* method : {"get", "FOO", "G", "PROPFIND", "GET/"})
    EXPECT_EQ(Ask(Get("/", "", method)).status, 501u) << method;
}

// Files with requests that no client sends; the name begins with the status that answers them, "close" for none.
TEST_F(FrontClients, MalformedRequestsAreAnsweredClearly) {
  AddServing();
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TAV_SOURCE_DIR "/tests/web/front/malformed")) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string request{std::istreambuf_iterator<char>(file), {}};
    const std::string name = entry.path().filename();
    cWebClient& client = Connect();
    client.Send(request);
    Settle();
    client.EndOutput();
    EXPECT_TRUE(Await([&] { return client.IsClosed(); })) << name;
    const cReply reply = TakeReply(client.Input(), true);
    const std::string status = reply.status != 0 ? std::to_string(reply.status) : "close";
    EXPECT_EQ(status, name.substr(0, name.find('-'))) << name;
    EXPECT_EQ(client.Input().find("HTTP/1.1 2"), std::string::npos)
        << name << ": nothing behind it is taken for a request";
    ++count;
  }
  EXPECT_GT(count, 20u);
  EXPECT_EQ(Ask(Get("/")).body, "served");
}

TEST_F(FrontClients, EveryBeginningOfARequestIsBorne) {
  AddServing();
  const std::string whole = Post("/a?b=c", "application/x-www-form-urlencoded", "d=e");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    cWebClient& client = Connect();
    client.Send(whole.substr(0, size));
    if (size % 2 == 0) Settle();
    client.EndOutput();
    if (size % 3 == 0) client.Close();
  }
  Settle();
  EXPECT_EQ(Ask(whole).body, "served");
}

}  // namespace tav::gateway::web
