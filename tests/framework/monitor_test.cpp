// SPDX-License-Identifier: Apache-2.0
// Watching the messages of a service: what a monitor is shown, and when it is refused.
#include <tav/framework/monitor.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/captured_trace.h"
#include "tests/support/raw_socket.h"
#include "tests/support/scm_world.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class cRecordingMonitor : public vorn::cScmMonitor {
 public:
  using vorn::cScmMonitor::cScmMonitor;
  void OnWatching() override { ++watching; }
  void OnRefused(const std::string& reason) override { refusals.push_back(reason); }
  void OnMirrored(const vorn::cScmMirrored& mirrored) override { seen.push_back(mirrored); }
  void OnClose() override { ++closes; }

  int watching = 0;
  int closes = 0;
  std::vector<std::string> refusals;
  std::vector<vorn::cScmMirrored> seen;
};

class ScmMonitor : public testing::Test {
 protected:
  static vorn::cMsg Request() {
    vorn::cMsg request(0x1000);
    vorn::cUuid id;
    id.Create();
    request.SetId(id);
    request.Record().AppendTextPar("driver", "ehzif");
    return request;
  }
  bool Watch() {
    return PollUntil(service, [this] { return monitor.watching == 1 && client.connects == 1; });
  }

  cTempFolder directory;
  cRecordingService service{"test", directory.GetPath()};
  cCapturedTrace trace;
  std::unique_ptr<cRecordingServer> server = std::make_unique<cRecordingServer>(&service, "data");
  cRecordingClient client{&service, "data"};
  cRecordingMonitor monitor{&service, "data"};
};

TEST_F(ScmMonitor, SeesWhatAClientSaysAndHears) {
  server->onMessage = [](const vorn::cMsg& msg) {
    vorn::cMsg answer(0x1001);
    answer.SetId(msg.GetId());
    msg.GetReplyChannel()->Send(answer);
  };
  ASSERT_TRUE(Watch());
  const vorn::cMsg request = Request();
  client.Send(request);
  ASSERT_TRUE(PollUntil(service, [&] { return monitor.seen.size() == 2; }));
  EXPECT_TRUE(monitor.seen[0].incoming);
  EXPECT_EQ(monitor.seen[0].pid, getpid());
  EXPECT_EQ(monitor.seen[0].processName, client.GetChannel()->GetPeer().processName);
  EXPECT_EQ(monitor.seen[0].msg.GetType(), 0x1000u);
  EXPECT_EQ(monitor.seen[0].msg.GetId(), request.GetId());
  EXPECT_EQ(monitor.seen[0].msg.Record(), request.Record());
  EXPECT_FALSE(monitor.seen[1].incoming);
  EXPECT_EQ(monitor.seen[1].msg.GetType(), 0x1001u);
  EXPECT_EQ(monitor.seen[1].msg.GetId(), request.GetId());
  EXPECT_TRUE(monitor.seen[1].msg.Record().IsEmpty());
  EXPECT_THAT(service.messages, IsEmpty()) << "a monitor's messages are its own";
}

TEST_F(ScmMonitor, DoesNotSeeItself) {
  ASSERT_TRUE(Watch());
  monitor.Send(vorn::cMsg(0x2000));
  ASSERT_TRUE(PollUntil(service, [&] { return server->messages.size() == 1; }));
  client.Send(Request());
  ASSERT_TRUE(PollUntil(service, [&] { return !monitor.seen.empty(); }));
  ASSERT_EQ(monitor.seen.size(), 1u);
  EXPECT_EQ(monitor.seen[0].msg.GetType(), 0x1000u);
}

TEST_F(ScmMonitor, AsksAgainWhenTheServiceIsBack) {
  ASSERT_TRUE(Watch());
  server.reset();
  ASSERT_TRUE(PollUntil(service, [&] { return monitor.closes == 1; }));
  server = std::make_unique<cRecordingServer>(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return monitor.watching == 2 && client.connects == 2; }));
  client.Send(Request());
  EXPECT_TRUE(PollUntil(service, [&] { return monitor.seen.size() == 1; }));
}

TEST_F(ScmMonitor, GivesTheServiceWhatAServerSendsToIt) {
  ASSERT_TRUE(Watch());
  for (const auto& channel : server->GetChannels()) channel->Send(vorn::cMsg(0x3000));
  ASSERT_TRUE(PollUntil(service, [&] { return service.messages.size() == 1; }));
  EXPECT_EQ(service.messages[0].GetType(), 0x3000u);
}

// A server of any make, byte by byte.
class ScmMonitorOfAStranger : public testing::Test {
 protected:
  bool Accept() {
    return PollUntil(service, [this] { return accepted >= 0 || (accepted = listener.Accept()) >= 0; });
  }
  void TearDown() override {
    if (accepted >= 0) close(accepted);
  }
  void Say(const std::string& bytes) const {
    ASSERT_EQ(send(accepted, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
  }

  cTempFolder directory;
  cRecordingService service{"test", directory.GetPath()};
  cCapturedTrace trace;
  cRawSocket listener;
  int accepted = -1;
};

TEST_F(ScmMonitorOfAStranger, SaysWhyItIsRefused) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingMonitor monitor(&service, "data");
  ASSERT_TRUE(Accept());
  vorn::cRecord reason;
  reason.AppendTextPar("reason", "not today");
  Say(cRawSocket::Hello() + cRawSocket::Frame(0x12, reason));
  ASSERT_TRUE(PollUntil(service, [&] { return !monitor.refusals.empty(); }));
  EXPECT_THAT(monitor.refusals, ElementsAre("not today"));
  EXPECT_TRUE(monitor.IsConnected());
  EXPECT_EQ(monitor.watching, 0);
}

TEST_F(ScmMonitorOfAStranger, TakesAMessageThatLacksEverything) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingMonitor monitor(&service, "data");
  ASSERT_TRUE(Accept());
  Say(cRawSocket::Hello() + cRawSocket::RawFrame(0x13, ""));
  ASSERT_TRUE(PollUntil(service, [&] { return !monitor.seen.empty(); }));
  EXPECT_FALSE(monitor.seen[0].incoming);
  EXPECT_EQ(monitor.seen[0].pid, 0);
  EXPECT_EQ(monitor.seen[0].msg.GetType(), 0u);
  EXPECT_TRUE(monitor.seen[0].msg.Record().IsEmpty());
}

TEST_F(ScmMonitorOfAStranger, AnOtherClientIsNotSentMirroredMessages) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(Accept());
  Say(cRawSocket::Hello() + cRawSocket::RawFrame(0x13, ""));
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
  EXPECT_THAT(client.messages, IsEmpty());
  EXPECT_THAT(trace.GetLines(), testing::Contains(testing::HasSubstr("unexpected message of type 0x13")));
}

TEST_F(ScmMonitorOfAStranger, AMonitorTakesNoOtherFrameworkMessage) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingMonitor monitor(&service, "data");
  ASSERT_TRUE(Accept());
  Say(cRawSocket::Hello() + cRawSocket::RawFrame(0x14, ""));
  EXPECT_TRUE(PollUntil(service, [&] { return monitor.closes == 1; }));
}

}  // namespace
