// SPDX-License-Identifier: Apache-2.0
// Many clients at once, and a page process that is killed in the middle of it.
#include <fstream>
#include <map>

#include "tests/web/front/front_world.h"

namespace tav::gateway::web {

namespace {

constexpr std::size_t kClients = 40;
constexpr std::size_t kReplies = 2'000;

class FrontLoad : public FrontWorld {
 protected:
  void SetUp() override {
    std::ofstream(m_folder.File("static/style.css")) << std::string(20'000, 'c');
    Start();
  }
  cTestPages& AddServing() {
    cTestPages& pages = AddPages({}, true);
    pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, std::string(3'000, 'x')); };
    return pages;
  }
  // Requests of all kinds, each client another.
  std::string RequestOf(std::size_t client) const {
    const std::string form = "a=" + std::string(2'000, 'b');
    switch (client % 4) {
      case 0:
        return Get("/page?x=y", "Cookie: sid=1\r\nAccept-Encoding: gzip\r\n");
      case 1:
        return Get("/static/style.css");
      case 2:
        return Post("/save", "application/x-www-form-urlencoded", form);
      default:
        return Post("/file", "application/octet-stream", form);
    }
  }
};

}  // namespace

TEST_F(FrontLoad, IsBorneThoughAPageProcessIsKilledInBetween) {
  cTestPages* pages = &AddServing();
  std::vector<cWebClient*> clients;
  for (std::size_t i = 0; i < kClients; ++i) {
    clients.push_back(&Connect());
    clients.back()->Send(RequestOf(i));
  }
  std::map<unsigned int, std::size_t> statuses;
  std::size_t replies = 0, broken = 0;
  bool wasKilled = false;
  const bool isDone = Await([&] {
    for (std::size_t i = 0; i < kClients; ++i) {
      const cReply reply = TakeReply(clients[i]->Input(), clients[i]->IsClosed());
      if (!reply.isWhole && !clients[i]->IsClosed()) continue;
      broken += reply.isWhole ? 0 : 1;
      ++statuses[reply.isWhole ? reply.status : 0];
      ++replies;
      if (clients[i]->IsClosed()) clients[i] = &Connect();
      clients[i]->Send(RequestOf(i));
    }
    if (!wasKilled && replies > kReplies / 2) {
      wasKilled = true;
      Kill(*pages);
      Settle();
      pages = &AddServing();
    }
    return replies >= kReplies;
  });
  EXPECT_TRUE(isDone) << replies;
  for (const auto& [status, count] : statuses)
    EXPECT_TRUE(status == 200 || status == 502 || status == 503) << status << " " << count << " times";
  EXPECT_GT(statuses[200], kReplies * 9 / 10);
  EXPECT_EQ(broken, 0u) << "each answer is whole before it is sent";
  m_clients.clear();
  Settle();
  for (const char* value : {"connections", "bytes-waiting", "bytes-stored"}) EXPECT_EQ(Value(value), "0") << value;
}

}  // namespace tav::gateway::web
