// SPDX-License-Identifier: Apache-2.0
// The client side: when it connects, what it tells its owner, and how it finds out that a peer is dead.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "tests/support/captured_trace.h"
#include "tests/support/raw_socket.h"
#include "tests/support/scm_world.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr unsigned int kPing = 4;

class ScmServiceIO : public testing::Test {
 protected:
  // A server that keeps to the handshake and then does what the test says.
  bool AcceptRaw() {
    const bool accepted = PollUntil(service, [&] {
      const int socket = listener.Accept();
      if (socket >= 0) peer = std::make_unique<cRawSocket>(socket);
      return socket >= 0;
    });
    return accepted && peer->Write(cRawSocket::Hello());
  }
  bool IsInInput(const std::string& bytes) {
    input += peer->Read();
    return input.find(bytes) != std::string::npos;
  }
  static std::string TypeBytes(unsigned int type) { return cRawSocket::BigEndian(24) + cRawSocket::BigEndian(type); }

  cTempFolder directory;
  std::shared_ptr<vorn::cManualClock> clock = std::make_shared<vorn::cManualClock>();
  cRecordingService service{"test", directory.GetPath(), clock};
  cRawSocket listener;
  std::unique_ptr<cRawSocket> peer;
  std::string input;
};

TEST_F(ScmServiceIO, ConnectsOnceTheLoopRunsNotBefore) {
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  EXPECT_FALSE(client.IsConnected());
  EXPECT_EQ(client.connects, 0);
  EXPECT_EQ(client.Send(vorn::cMsg(0x1000)), 0);
  EXPECT_EQ(client.GetChannel(), nullptr);
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  EXPECT_TRUE(client.connectedInOnConnect);
  EXPECT_NE(client.GetChannel(), nullptr);
  EXPECT_EQ(client.ToString(), "data (connected)");
}

TEST_F(ScmServiceIO, SendWorksWithinOnConnect) {
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  client.onConnect = [&] { EXPECT_EQ(client.Send(vorn::cMsg(0x1000)), 1); };
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
}

TEST_F(ScmServiceIO, IsNotConnectedWithinOnClose) {
  auto server = std::make_unique<cRecordingServer>(&service, "data");
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  client.onClose = [&] { EXPECT_EQ(client.Send(vorn::cMsg(0x1000)), 0); };
  server.reset();
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
  EXPECT_FALSE(client.connectedInOnClose);
  EXPECT_EQ(client.ToString(), "data (not connected)");
}

TEST_F(ScmServiceIO, ReconnectsByItselfWhenItsServiceComesBack) {
  auto server = std::make_unique<cRecordingServer>(&service, "data");
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  server.reset();
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
  server = std::make_unique<cRecordingServer>(&service, "data");
  PollUntilIdle(service);
  EXPECT_EQ(client.connects, 1) << "the next attempt waits for its time";
  clock->Advance(25);
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 2; }));
}

TEST_F(ScmServiceIO, WaitsTwiceAsLongAfterEachFailureUpToASecondAndAQuarter) {
  cRecordingClient client(&service, "data");
  PollUntilIdle(service);  // the first attempt
  for (const int wait : {20, 40, 80, 160, 320, 640, 1000, 1000}) {
    clock->Advance(wait - 1);
    ASSERT_FALSE(service.Poll(0)) << "no attempt within " << wait << " ms";
    clock->Advance(1 + wait / 4);  // the jitter
    ASSERT_TRUE(service.Poll(0)) << "an attempt after " << wait << " ms";
  }
}

TEST_F(ScmServiceIO, HealthRequestWhileNotConnectedTriesAtOnce) {
  cRecordingClient client(&service, "data");
  PollUntilIdle(service);
  cRecordingServer server(&service, "data");
  client.HealthRequest();
  EXPECT_EQ(client.connects, 0) << "no callback from within HealthRequest";
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
}

TEST_F(ScmServiceIO, HealthRequestIsAnsweredByALivingPeer) {
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  client.HealthRequest();
  PollUntilIdle(service);
  clock->Advance(60000);
  PollUntilIdle(service);
  EXPECT_TRUE(client.IsConnected());
  EXPECT_TRUE(server.messages.empty()) << "pings stay within the framework";
}

TEST_F(ScmServiceIO, HealthRequestClosesTheChannelOfADeadPeerAfterFiveSeconds) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(AcceptRaw());
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  cCapturedTrace trace;
  client.HealthRequest();
  ASSERT_TRUE(PollUntil(service, [&] { return IsInInput(TypeBytes(kPing)); }));
  clock->Advance(4999);
  PollUntilIdle(service);
  EXPECT_TRUE(client.IsConnected());
  clock->Advance(1);
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("ping not answered")));
}

TEST_F(ScmServiceIO, APingWaitsFromThePeersLastProgress) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(AcceptRaw());
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  client.HealthRequest();
  PollUntilIdle(service);
  clock->Advance(4000);
  peer->Write(cRawSocket::RawFrame(0x1000, ""));  // alive, only busy
  ASSERT_TRUE(PollUntil(service, [&] { return client.messages.size() == 1; }));
  clock->Advance(4999);
  PollUntilIdle(service);
  EXPECT_TRUE(client.IsConnected());
  clock->Advance(1);
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
}

TEST_F(ScmServiceIO, KeepAlivePingsAnIdlePeer) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data", -1);  // all bits: keep alive is the only one with a meaning
  ASSERT_TRUE(AcceptRaw());
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  PollUntilIdle(service);
  clock->Advance(30000);
  PollUntilIdle(service);  // heard the hello since the last look
  clock->Advance(30000);
  ASSERT_TRUE(PollUntil(service, [&] { return IsInInput(TypeBytes(kPing)); }));
}

TEST_F(ScmServiceIO, WithoutKeepAliveAnIdlePeerIsLeftInPeace) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data", ~2);
  ASSERT_TRUE(AcceptRaw());
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  for (int i = 0; i < 10; ++i) {
    clock->Advance(60000);
    PollUntilIdle(service);
  }
  EXPECT_TRUE(client.IsConnected());
  EXPECT_FALSE(IsInInput(TypeBytes(kPing)));
}

TEST_F(ScmServiceIO, GivesUpAHandshakeAfterFiveSeconds) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] {
    const int socket = listener.Accept();
    if (socket >= 0) peer = std::make_unique<cRawSocket>(socket);
    return socket >= 0;
  }));
  cCapturedTrace trace;
  clock->Advance(5000);
  ASSERT_TRUE(PollUntil(service, [&] { return peer->Read().empty() && peer->IsClosedByPeer(); }));
  EXPECT_EQ(client.connects, 0);
  EXPECT_EQ(client.closes, 0) << "what was never connected does not close";
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("no hello within 5 s")));
}

TEST_F(ScmServiceIO, ABrokenServiceIsSurvived) {
  ASSERT_TRUE(listener.Listen(service.GetSocketPath("data")));
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(AcceptRaw());
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  cCapturedTrace trace;
  peer->Write(std::string(64, '\xFF'));
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("a frame of 4294967295 bytes")));
}

TEST_F(ScmServiceIO, LeavesToItsServiceWhatItDoesNotConsume) {
  cRecordingServer server(&service, "data");
  cRecordingServer otherServer(&service, "status");
  cRecordingClient client(&service, "data");
  cRecordingClient other(&service, "status");
  server.onConnect = [](vorn::cScmChannel& channel) {
    channel.Send(vorn::cMsg(0x1000));
    channel.Send(vorn::cMsg(0x1001));
  };
  client.consume = false;
  ASSERT_TRUE(PollUntil(service, [&] { return service.messages.size() == 2; }));
  EXPECT_EQ(client.messages.size(), 2u);
  EXPECT_TRUE(other.messages.empty()) << "a message is offered to the proxy of its channel only";
  EXPECT_EQ(service.messages[1].GetType(), 0x1001u);
  EXPECT_NE(service.messages[1].GetReplyChannel(), nullptr);
}

TEST_F(ScmServiceIO, MayBeDestroyedWithinItsOwnCallbacks) {
  cRecordingServer server(&service, "data");
  auto client = std::make_unique<cRecordingClient>(&service, "data");
  client->onConnect = [&] { client.reset(); };
  ASSERT_TRUE(PollUntil(service, [&] { return client == nullptr; }));
  PollUntilIdle(service);

  client = std::make_unique<cRecordingClient>(&service, "data");
  server.onConnect = [](vorn::cScmChannel& channel) {
    channel.Send(vorn::cMsg(0x1000));
    channel.Send(vorn::cMsg(0x1001));
  };
  client->onMessage = [&](const vorn::cMsg&) { client.reset(); };
  ASSERT_TRUE(PollUntil(service, [&] { return client == nullptr; }));
  PollUntilIdle(service);
}

TEST_F(ScmServiceIO, ClosingItsChannelLeadsToOnCloseFromTheLoop) {
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return client.connects == 1; }));
  client.GetChannel()->Close();
  EXPECT_EQ(client.closes, 0);
  EXPECT_FALSE(client.IsConnected());
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1 && server.closes == 1; }));
}

TEST(ScmServiceDirectory, ComesFromTheArgumentThenTheEnvironment) {
  setenv("XDG_RUNTIME_DIR", "/run/user/7", 1);
  unsetenv("VORN_DIR");
  EXPECT_EQ(vorn::cScmService("p", "/given").GetDirectory(), "/given");
  EXPECT_EQ(vorn::cScmService("p").GetDirectory(), "/run/user/7/vorn");
  setenv("VORN_DIR", "/elsewhere", 1);
  EXPECT_EQ(vorn::cScmService("p").GetDirectory(), "/elsewhere");
  unsetenv("VORN_DIR");
  unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(vorn::cScmService("p").GetDirectory(), "/run/vorn");
}

}  // namespace
