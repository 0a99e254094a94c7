// SPDX-License-Identifier: Apache-2.0
// The service side: its socket file, who may connect, and who may watch.
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "tests/support/captured_trace.h"
#include "tests/support/raw_socket.h"
#include "tests/support/scm_world.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

class ScmServer : public testing::Test {
 protected:
  cTempFolder directory;
  cRecordingService service{"test", directory.GetPath()};
  cCapturedTrace trace;
};

TEST_F(ScmServer, ListensOnASocketOfMode0660) {
  cRecordingServer server(&service, "data");
  EXPECT_TRUE(server.IsListening());
  EXPECT_EQ(server.GetError(), "");
  struct stat info {};
  ASSERT_EQ(stat(service.GetSocketPath("data").c_str(), &info), 0);
  EXPECT_TRUE(S_ISSOCK(info.st_mode));
  EXPECT_EQ(info.st_mode & 07777, 0660u);
}

TEST_F(ScmServer, MakesItsDirectoryButNotThoseAbove) {
  cRecordingService below("test", directory.File("run"));
  cRecordingServer server(&below, "data");
  EXPECT_TRUE(server.IsListening());
  cRecordingService deep("test", directory.File("a/b"));
  cRecordingServer refused(&deep, "data");
  EXPECT_FALSE(refused.IsListening());
  EXPECT_THAT(refused.GetError(), HasSubstr("cannot make directory " + (directory.File("a/b"))));
}

TEST_F(ScmServer, RefusesASecondServerOfTheSameName) {
  cRecordingServer first(&service, "data");
  cRecordingServer second(&service, "data");
  EXPECT_TRUE(first.IsListening());
  EXPECT_FALSE(second.IsListening());
  EXPECT_THAT(second.GetError(), HasSubstr("service 'data': another server of this name is running"));
  EXPECT_THAT(second.GetError(), HasSubstr("[" + std::to_string(getpid()) + "]")) << "names who holds the place";
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("another server of this name")));
  cRecordingClient client(&service, "data");
  EXPECT_TRUE(PollUntil(service, [&] { return first.connects == 1; })) << "the first one is not disturbed";
}

TEST_F(ScmServer, TheNameIsFreeAgainWhenItsServerEnds) {
  std::make_unique<cRecordingServer>(&service, "data");
  EXPECT_FALSE(std::filesystem::exists(service.GetSocketPath("data")));
  cRecordingServer second(&service, "data");
  EXPECT_TRUE(second.IsListening());
}

TEST_F(ScmServer, ReplacesTheSocketOfAServerThatWasKilled) {
  const pid_t child = fork();
  if (child == 0) {
    cRecordingServer server(&service, "data");
    _exit(server.IsListening() ? 0 : 1);  // no destructor: as after SIGKILL
  }
  int status = 1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  ASSERT_TRUE(std::filesystem::exists(service.GetSocketPath("data")));
  cRecordingServer server(&service, "data");
  EXPECT_TRUE(server.IsListening()) << server.GetError();
  cRecordingClient client(&service, "data");
  EXPECT_TRUE(PollUntil(service, [&] { return server.connects == 1; }));
}

TEST_F(ScmServer, DoesNotReplaceWhatIsNoSocket) {
  std::ofstream(service.GetSocketPath("data")) << "precious";
  cRecordingServer server(&service, "data");
  EXPECT_FALSE(server.IsListening());
  EXPECT_THAT(server.GetError(), HasSubstr("is in the way, it is no socket"));
  EXPECT_TRUE(std::filesystem::is_regular_file(service.GetSocketPath("data")));
}

TEST_F(ScmServer, RefusesNamesThatAreNone) {
  for (const char* name : {"", "Data", "a/b", "..", "a b", "d\xC3\xA4ta"}) {
    cRecordingServer server(&service, name);
    EXPECT_FALSE(server.IsListening());
    EXPECT_THAT(server.GetError(), HasSubstr("[a-z0-9-]+"));
  }
  cRecordingServer server(&service, "time-service-2");
  EXPECT_TRUE(server.IsListening());
}

TEST_F(ScmServer, SaysWhenItsPathIsTooLong) {
  cRecordingService deep("test", directory.File(std::string(100, 'x')));
  cRecordingServer server(&deep, "data");
  EXPECT_FALSE(server.IsListening());
  EXPECT_THAT(server.GetError(), HasSubstr("longer than 107 bytes"));
}

TEST_F(ScmServer, ListsItsChannelsWhileTheyLive) {
  cRecordingServer server(&service, "data");
  auto first = std::make_unique<cRecordingClient>(&service, "data");
  cRecordingClient second(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 2; }));
  EXPECT_EQ(server.GetChannels().size(), 2u);
  first.reset();
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes == 1; }));
  EXPECT_EQ(server.GetChannels().size(), 1u);
}

TEST_F(ScmServer, TurnsAwayWhomItsPolicyDoesNotKnow) {
  cRecordingServer server(&service, "data");
  vorn::cScmPeer asked;
  server.SetPolicy([&](const vorn::cScmPeer& peer) {
    asked = peer;
    return false;
  });
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return asked.pid == getpid(); }));
  PollUntilIdle(service);
  EXPECT_EQ(client.connects, 0);
  EXPECT_EQ(server.connects, 0);
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("refused, not permitted")));
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("refused by its peer, not permitted"))) << "the client learns why";
}

// Connects as another user; 0 when the server let it in.
int ConnectAs(uid_t uid, gid_t gid, const std::string& path) {
  if (setgroups(0, nullptr) != 0 || setgid(gid) != 0 || setuid(uid) != 0) return 2;
  cRawSocket socket;
  if (!socket.Connect(path)) return 3;
  socket.Write(cRawSocket::Hello());  // too late when it was turned away already
  for (int i = 0; i < 500; ++i) {
    const std::string bytes = socket.Read(8);
    if (bytes.size() == 8) return bytes[7] == 1 ? 0 : 1;  // hello or refused
    pollfd ready{socket.Get(), POLLIN, 0};
    poll(&ready, 1, 20);
  }
  return 4;
}

TEST_F(ScmServer, ByDefaultLetsInRootItsOwnUserAndItsGroup) {
  if (getuid() != 0) GTEST_SKIP() << "needs root to become other users";
  cRecordingServer server(&service, "data");
  const std::string path = service.GetSocketPath("data");
  std::filesystem::permissions(directory.GetPath(), std::filesystem::perms::all);
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);  // so that the kernel lets everybody through to the policy
  struct {
    uid_t uid;
    gid_t gid;
    int result;
  } const cases[] = {{0, 0, 0}, {4711, 0, 0}, {4711, 4711, 1}};
  for (const auto& each : cases) {
    const pid_t child = fork();
    if (child == 0) _exit(ConnectAs(each.uid, each.gid, path));
    int status = 0;
    ASSERT_TRUE(PollUntil(service, [&] { return waitpid(child, &status, WNOHANG) == child; }));
    EXPECT_EQ(WEXITSTATUS(status), each.result) << "uid " << each.uid << " gid " << each.gid;
  }
}

TEST_F(ScmServer, MayBeDestroyedWithinItsOwnCallbacks) {
  auto server = std::make_unique<cRecordingServer>(&service, "data");
  cRecordingClient client(&service, "data");
  client.onConnect = [&] {
    client.Send(vorn::cMsg(0x1000));
    client.Send(vorn::cMsg(0x1001));
  };
  server->onMessage = [&](const vorn::cMsg&) { server.reset(); };
  ASSERT_TRUE(PollUntil(service, [&] { return client.closes == 1; }));
}

TEST_F(ScmServer, ClosingAChannelInOnConnectIsFine) {
  cRecordingServer server(&service, "data");
  server.onConnect = [](vorn::cScmChannel& channel) { channel.Close(); };
  cRecordingClient client(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes >= 1; }));
}

// ---- watching

constexpr unsigned int kMonitor = 0x10, kMonitorOn = 0x11, kMirrored = 0x13;

std::vector<vorn::cMsg> Frames(const std::string& bytes) {
  std::vector<vorn::cMsg> frames;
  const auto number = [&](std::size_t at) {
    return static_cast<unsigned int>(
        static_cast<unsigned char>(bytes[at]) << 24 | static_cast<unsigned char>(bytes[at + 1]) << 16 |
        static_cast<unsigned char>(bytes[at + 2]) << 8 | static_cast<unsigned char>(bytes[at + 3]));
  };
  for (std::size_t at = 0; at + 24 <= bytes.size() && at + number(at) <= bytes.size(); at += number(at)) {
    frames.emplace_back(number(at + 4));
    EXPECT_TRUE(vorn::cRecord::FromBytes(bytes.data() + at + 24, number(at) - 24, frames.back().Record()));
  }
  return frames;
}

TEST_F(ScmServer, MirrorsBothDirectionsToAMonitor) {
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  server.onMessage = [](const vorn::cMsg&) {};
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 1; }));
  cRawSocket monitor;
  ASSERT_TRUE(monitor.Connect(service.GetSocketPath("data")));
  monitor.Write(cRawSocket::Hello() + cRawSocket::RawFrame(kMonitor, ""));
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 2; }));
  PollUntilIdle(service);

  server.onMessage = [](const vorn::cMsg& msg) {
    if (msg.GetType() == 0x1000) msg.GetReplyChannel()->Send(vorn::cMsg(0x1001));
  };
  vorn::cMsg request(0x1000);
  request.Record().AppendTextPar("driver", "ehzif");
  client.Send(request);
  ASSERT_TRUE(PollUntil(service, [&] { return client.messages.size() == 1; }));
  PollUntilIdle(service);
  const std::vector<vorn::cMsg> seen = Frames(monitor.Read());
  ASSERT_EQ(seen.size(), 4u);
  EXPECT_EQ(seen[0].GetType(), 1u);
  EXPECT_EQ(seen[1].GetType(), kMonitorOn);
  EXPECT_EQ(seen[2].GetType(), kMirrored);
  EXPECT_EQ(seen[2].Record().GetTextPar("direction"), "in");
  EXPECT_EQ(seen[2].Record().GetUIntPar("type"), 0x1000u);
  EXPECT_EQ(seen[2].Record().GetUIntPar("pid"), static_cast<unsigned int>(getpid()));
  EXPECT_EQ(seen[2].Record().GetRecordPar("record"), request.Record());
  EXPECT_EQ(seen[3].Record().GetTextPar("direction"), "out");
  EXPECT_EQ(seen[3].Record().GetUIntPar("type"), 0x1001u);
}

TEST_F(ScmServer, AMonitorThatLeavesEndsTheMirroring) {
  cRecordingServer server(&service, "data");
  cRecordingClient client(&service, "data");
  cRawSocket monitor;
  ASSERT_TRUE(monitor.Connect(service.GetSocketPath("data")));
  monitor.Write(cRawSocket::Hello() + cRawSocket::RawFrame(kMonitor, ""));
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 2; }));
  monitor.Close();
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes == 1; }));
  client.Send(vorn::cMsg(0x1000));
  EXPECT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
}

}  // namespace
