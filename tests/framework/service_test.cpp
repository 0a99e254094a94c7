// SPDX-License-Identifier: Apache-2.0
// The loop: what is handled when, and synchronous calls that lose and reorder nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>

#include "tests/support/scm_world.h"

namespace {

using testing::ElementsAre;

std::vector<unsigned int> TypesOf(const std::vector<vorn::cMsg>& messages) {
  std::vector<unsigned int> types;
  for (const vorn::cMsg& msg : messages) types.push_back(msg.GetType());
  return types;
}

TEST(Service, DispatchesPostedMessagesInOrder) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  for (unsigned int type : {1u, 2u, 3u}) service.Post(vorn::cMsg(type));
  EXPECT_TRUE(service.messages.empty());
  EXPECT_TRUE(service.Poll(0));
  EXPECT_THAT(TypesOf(service.messages), ElementsAre(1, 2, 3));
  EXPECT_EQ(service.messages[0].GetReplyChannel(), nullptr);
}

TEST(Service, PollTellsWhetherItHandledSomething) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  EXPECT_FALSE(service.Poll(0));
  EXPECT_FALSE(service.Poll(1));
  service.Post(vorn::cMsg(1));
  EXPECT_TRUE(service.Poll(1000));
}

TEST(Service, AMessageThatPostsAnotherDoesNotHoldItsPoll) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  service.onMessage = [&](const vorn::cMsg& msg) { service.Post(msg); };
  service.Post(vorn::cMsg(1));
  EXPECT_TRUE(service.Poll(0));
  EXPECT_GE(service.messages.size(), 1u);
}

TEST(Service, StopEndsRunAfterTheHandlerThatCallsIt) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  service.onMessage = [&](const vorn::cMsg& msg) {
    if (msg.GetType() == 2) service.Stop();
  };
  service.Post(vorn::cMsg(1));
  service.Post(vorn::cMsg(2));
  service.Run();
  EXPECT_EQ(service.messages.size(), 2u);
  service.Stop();
  service.Run();  // returns at once
}

TEST(Service, PostedMessagesComeBehindWhatIsReady) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  cRecordingServer server(&service, "data");
  cRecordingClient first(&service, "data");
  cRecordingClient second(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 2; }));
  PollUntilIdle(service);
  // Both are on the socket before the loop looks: what the first one posts waits for the second.
  std::size_t seenWhenPostedCame = 0;
  server.onMessage = [&](const vorn::cMsg&) {
    if (server.messages.size() == 1) service.Post(vorn::cMsg(1));
  };
  service.onMessage = [&](const vorn::cMsg&) { seenWhenPostedCame = server.messages.size(); };
  first.Send(vorn::cMsg(0x1000));
  second.Send(vorn::cMsg(0x1000));
  ASSERT_TRUE(PollUntil(service, [&] { return service.messages.size() == 1; }));
  EXPECT_EQ(seenWhenPostedCame, 2u);
}

TEST(Service, PeersThatKeepAnsweringEachOtherDoNotHoldPostedMessages) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  server.onMessage = [](const vorn::cMsg& msg) { msg.GetReplyChannel()->Send(vorn::cMsg(0x1001)); };
  client.onMessage = [&](const vorn::cMsg&) { client.Send(vorn::cMsg(0x1000)); };
  client.onConnect = [&] { client.Send(vorn::cMsg(0x1000)); };
  ASSERT_TRUE(PollUntil(service, [&] { return client.messages.size() > 1; }));
  service.Post(vorn::cMsg(1));
  EXPECT_TRUE(PollUntil(service, [&] { return service.messages.size() == 1; }));
}

TEST(Service, DestroyingAServiceWithOpenChannelsAndQueuedWorkIsClean) {
  cTempFolder directory;
  auto service = std::make_unique<cRecordingService>("test", directory.GetPath());
  {
    cRecordingServer server(service.get(), "data");
    cRecordingClient client(service.get(), "data");
    ASSERT_TRUE(PollUntil(*service, [&] { return client.IsConnected(); }));
    client.Send(vorn::cMsg(0x1000));
    service->Post(vorn::cMsg(1));
  }
  service.reset();
}

// ---- synchronous calls: the server lives in another process' place, a second service on a thread of its own would not
// be allowed, so it is forked

class SyncCall : public testing::Test {
 protected:
  // 0x2000 is answered by 0x2001 with the same identifier, after messages 0x3000, 0x3001; 0x2100 never.
  struct cEchoServer : vorn::cScmServer {
    using vorn::cScmServer::cScmServer;
    bool DispatchMessage(const vorn::cMsg& msg) override {
      const auto& channel = msg.GetReplyChannel();
      if (msg.GetType() == 0x2200) {
        channel->Close();
        return true;
      }
      if (msg.GetType() == 0x2300) {  // tell the client first, answer its call later
        channel->Send(vorn::cMsg(0x4000));
        channel->Send(vorn::cMsg(0x4001));
        return true;
      }
      if (msg.GetType() != 0x2000) return true;
      channel->Send(vorn::cMsg(0x3000));
      vorn::cMsg stranger(0x2001);  // right type, another call's identifier
      vorn::cUuid id;
      id.Create();
      stranger.SetId(id);
      if (msg.GetId().IsValid()) channel->Send(stranger);
      vorn::cMsg answer(0x2001);
      answer.SetId(msg.GetId());
      answer.Record() = msg.Record();
      channel->Send(answer);
      channel->Send(vorn::cMsg(0x3001));
      return true;
    }
  };

  void SetUp() override {
    child = fork();
    if (child == 0) {
      vorn::cScmService echoService("echo", directory.GetPath());
      cEchoServer server(&echoService, "echo");
      echoService.Run();
      _exit(0);
    }
    client = std::make_unique<cRecordingClient>(&service, "echo");
    ASSERT_TRUE(PollUntil(service, [&] { return client->IsConnected(); }));
  }
  void TearDown() override {
    client.reset();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }

  cTempFolder directory;
  cRecordingService service{"test", directory.GetPath()};
  std::unique_ptr<cRecordingClient> client;
  pid_t child = 0;
};

TEST_F(SyncCall, GivesTheAnswerAndKeepsTheRestInOrder) {
  vorn::cMsg request(0x2000);
  request.Record().AppendUIntPar("number", 5);
  const vorn::cMsg answer = service.SendSyncMsg(client->GetChannel(), request, 5000, 0x2001);
  EXPECT_EQ(answer.GetType(), 0x2001u);
  EXPECT_EQ(answer.Record(), request.Record());
  EXPECT_TRUE(client->messages.empty()) << "nothing is dispatched during the call";
  ASSERT_TRUE(PollUntil(service, [&] { return client->messages.size() == 2; }));
  EXPECT_THAT(TypesOf(client->messages), ElementsAre(0x3000, 0x3001));
}

TEST_F(SyncCall, MatchesTheIdentifierOfTheRequest) {
  vorn::cMsg request(0x2000);
  vorn::cUuid id;
  id.Create();
  request.SetId(id);
  EXPECT_EQ(service.SendSyncMsg(client->GetChannel(), request, 5000, 0x2001).GetId(), id);
  ASSERT_TRUE(PollUntil(service, [&] { return client->messages.size() == 3; }));
  EXPECT_THAT(TypesOf(client->messages), ElementsAre(0x3000, 0x2001, 0x3001));
}

TEST_F(SyncCall, WorksFromWithinAHandlerOfTheSameChannel) {
  vorn::cMsg answer;
  client->onMessage = [&](const vorn::cMsg& msg) {
    if (msg.GetType() == 0x4000) answer = service.SendSyncMsg(client->GetChannel(), vorn::cMsg(0x2000), 5000, 0x2001);
  };
  client->Send(vorn::cMsg(0x2300));
  ASSERT_TRUE(PollUntil(service, [&] { return client->messages.size() == 4; }));
  EXPECT_EQ(answer.GetType(), 0x2001u);
  EXPECT_THAT(TypesOf(client->messages), ElementsAre(0x4000, 0x4001, 0x3000, 0x3001));
}

TEST_F(SyncCall, KeepsPostedMessagesAndTimersForLater) {
  service.Post(vorn::cMsg(7));
  service.SendSyncMsg(client->GetChannel(), vorn::cMsg(0x2000), 5000, 0x2001);
  EXPECT_TRUE(service.messages.empty());
  ASSERT_TRUE(PollUntil(service, [&] { return service.messages.size() == 1; }));
}

TEST_F(SyncCall, GivesTypeZeroWhenTheTimeIsOver) {
  EXPECT_EQ(service.SendSyncMsg(client->GetChannel(), vorn::cMsg(0x2100), 20, 0x2101).GetType(), 0u);
  EXPECT_TRUE(client->IsConnected());
}

TEST_F(SyncCall, GivesTypeZeroWhenTheChannelBreaks) {
  EXPECT_EQ(service.SendSyncMsg(client->GetChannel(), vorn::cMsg(0x2200), 5000, 0x2201).GetType(), 0u);
  EXPECT_EQ(client->closes, 0) << "nothing is dispatched during the call";
  ASSERT_TRUE(PollUntil(service, [&] { return client->closes == 1; }));
}

TEST_F(SyncCall, GivesTypeZeroAtOnceForANullOrClosedChannel) {
  EXPECT_EQ(service.SendSyncMsg(nullptr, vorn::cMsg(0x2000), 60000, 0x2001).GetType(), 0u);
  const auto channel = client->GetChannel();
  channel->Close();
  EXPECT_EQ(service.SendSyncMsg(channel, vorn::cMsg(0x2000), 60000, 0x2001).GetType(), 0u);
}

}  // namespace
