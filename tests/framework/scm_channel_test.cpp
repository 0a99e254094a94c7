// SPDX-License-Identifier: Apache-2.0
// Messages over a channel: what arrives, in which order, what is refused, and what a broken peer can do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>

#include "tests/support/captured_trace.h"
#include "tests/support/raw_socket.h"
#include "tests/support/scm_world.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr unsigned int kType = 0x51009;

class ScmChannel : public testing::Test {
 protected:
  bool ConnectClient() {
    client = std::make_unique<cRecordingClient>(&service, "data");
    return PollUntil(service, [&] { return client->IsConnected() && server.connects > 0; });
  }
  static vorn::cMsg Numbered(unsigned int number) {
    vorn::cMsg msg(kType);
    msg.Record().AppendUIntPar("number", number);
    return msg;
  }
  // A message whose frame has exactly that size.
  static vorn::cMsg Sized(std::size_t frameSize) {
    vorn::cMsg msg(kType);
    const std::size_t headSize = frameSize > 65536 ? 5 : 3;
    const std::string bytes(frameSize - 24 - 3 - headSize, 'x');  // header, then "d" and its type
    msg.Record().AppendDataPar("d", vorn::cData(bytes));
    EXPECT_EQ(msg.Record().GetBytes().size() + 24, frameSize);
    return msg;
  }

  cTempFolder directory;
  cRecordingService service{"test", directory.GetPath()};
  cRecordingServer server{&service, "data"};
  std::unique_ptr<cRecordingClient> client;
};

TEST_F(ScmChannel, CarriesTypeIdentifierAndRecord) {
  ASSERT_TRUE(ConnectClient());
  vorn::cMsg msg = Numbered(7);
  vorn::cUuid id;
  id.Create();
  msg.SetId(id);
  EXPECT_EQ(client->Send(msg), 1);
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
  EXPECT_EQ(server.messages[0].GetType(), kType);
  EXPECT_EQ(server.messages[0].GetId(), id);
  EXPECT_EQ(server.messages[0].Record(), msg.Record());
  EXPECT_EQ(server.messages[0].ToString(), msg.ToString());
}

TEST_F(ScmChannel, LeavesANilIdentifierNil) {
  ASSERT_TRUE(ConnectClient());
  client->Send(Numbered(1));
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
  EXPECT_FALSE(server.messages[0].GetId().IsValid());
}

TEST_F(ScmChannel, CarriesAnEmptyRecord) {
  ASSERT_TRUE(ConnectClient());
  client->Send(vorn::cMsg(kType));
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
  EXPECT_TRUE(server.messages[0].Record().IsEmpty());
}

TEST_F(ScmChannel, KeepsTheOrderOfMessages) {
  ASSERT_TRUE(ConnectClient());
  constexpr unsigned int kCount = 5000;
  for (unsigned int i = 0; i < kCount; ++i) ASSERT_EQ(client->Send(Numbered(i)), 1);
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == kCount; }));
  for (unsigned int i = 0; i < kCount; ++i) ASSERT_EQ(server.messages[i].Record().GetUIntPar("number"), i);
}

TEST_F(ScmChannel, AnswersGoToTheClientThatAsked) {
  ASSERT_TRUE(ConnectClient());
  cRecordingClient other(&service, "data");
  ASSERT_TRUE(PollUntil(service, [&] { return other.IsConnected(); }));
  server.onMessage = [](const vorn::cMsg& msg) { EXPECT_EQ(msg.GetReplyChannel()->Send(vorn::cMsg(kType + 1)), 1); };
  other.Send(Numbered(1));
  ASSERT_TRUE(PollUntil(service, [&] { return other.messages.size() == 1; }));
  PollUntilIdle(service);
  EXPECT_TRUE(client->messages.empty());
}

TEST_F(ScmChannel, RefusesTypesOfTheFramework) {
  ASSERT_TRUE(ConnectClient());
  cCapturedTrace trace;
  EXPECT_EQ(client->Send(vorn::cMsg(0xFF)), 0);
  EXPECT_EQ(client->Send(vorn::cMsg(0)), 0);
  EXPECT_EQ(client->Send(vorn::cMsg(0x100)), 1);
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("message type 255 refused")));
}

TEST_F(ScmChannel, CarriesAFrameOfTheLimitAndRefusesALargerOne) {
  ASSERT_TRUE(ConnectClient());
  EXPECT_EQ(client->Send(Sized(vorn::kMaxFrameSize - 1)), 1);
  EXPECT_EQ(client->Send(Sized(vorn::kMaxFrameSize)), 1);
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 2; }));
  cCapturedTrace trace;
  EXPECT_EQ(client->Send(Sized(vorn::kMaxFrameSize + 1)), 0);
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("over the limit of 4194304")));
  EXPECT_EQ(client->Send(Numbered(3)), 1);
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 3; }));
  EXPECT_EQ(client->closes, 0);
}

TEST_F(ScmChannel, RefusesWhenASlowPeerLeavesTwoFramesWaitingAndAcceptsAgainLater) {
  cRawSocket slow;
  ASSERT_TRUE(slow.Connect(service.GetSocketPath("data")));
  slow.Write(cRawSocket::Hello());
  ASSERT_TRUE(PollUntil(service, [&] { return server.GetChannels().size() == 1; }));
  const auto channel = server.GetChannels()[0];
  cCapturedTrace trace;
  // Nothing is written before the loop turns, so the buffer alone counts.
  EXPECT_EQ(channel->Send(Sized(vorn::kMaxFrameSize)), 1);
  EXPECT_EQ(channel->Send(Sized(vorn::kMaxFrameSize - 49)), 1);  // the hello may wait there as well
  EXPECT_EQ(channel->Send(Sized(4096)), 0);
  EXPECT_EQ(channel->Send(Sized(4096)), 0);
  EXPECT_TRUE(channel->IsOpen());
  ASSERT_EQ(trace.GetLines().size(), 1u) << "only the first refusal is traced";
  EXPECT_THAT(trace.GetLines()[0], HasSubstr("output full"));
  ASSERT_TRUE(PollUntil(service, [&] {
    slow.Read();
    return channel->Send(Sized(4096)) == 1;
  }));
}

TEST_F(ScmChannel, AChannelThatIsHeldAfterItsPeerIsGoneRefuses) {
  ASSERT_TRUE(ConnectClient());
  client->Send(Numbered(1));
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
  const std::shared_ptr<vorn::cScmChannel> held = server.messages[0].GetReplyChannel();
  client.reset();
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes == 1; }));
  EXPECT_FALSE(held->IsOpen());
  EXPECT_EQ(held->Send(Numbered(2)), 0);
  held->Close();
  EXPECT_EQ(held->GetPeer().pid, getpid());
}

TEST_F(ScmChannel, AChannelMayOutliveItsService) {
  std::shared_ptr<vorn::cScmChannel> held;
  {
    cTempFolder otherDirectory;
    cRecordingService other("other", otherDirectory.GetPath());
    cRecordingServer otherServer(&other, "data");
    cRecordingClient otherClient(&other, "data");
    ASSERT_TRUE(PollUntil(other, [&] { return otherClient.IsConnected(); }));
    held = otherClient.GetChannel();
  }
  EXPECT_EQ(held->Send(Numbered(1)), 0);
  EXPECT_FALSE(held->IsOpen());
}

TEST_F(ScmChannel, WhatWasSentBeforeCloseStillArrives) {
  ASSERT_TRUE(ConnectClient());
  client->Send(Numbered(1));
  client->GetChannel()->Close();
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes == 1; }));
  EXPECT_EQ(server.messages.size(), 1u);
}

TEST_F(ScmChannel, AMessageSentJustBeforeItsSenderDiesArrivesBeforeOnClose) {
  server.onConnect = [](vorn::cScmChannel& channel) { channel.Send(Numbered(0)); };
  cRawSocket dying;
  ASSERT_TRUE(dying.Connect(service.GetSocketPath("data")));
  dying.Write(cRawSocket::Hello() + cRawSocket::Frame(kType, Numbered(1).Record()) +
              cRawSocket::Frame(kType, Numbered(2).Record()));
  dying.Close();
  server.onMessage = [&](const vorn::cMsg&) { EXPECT_EQ(server.closes, 0); };
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes == 1; }));
  EXPECT_EQ(server.messages.size(), 2u);
}

TEST_F(ScmChannel, KnowsItsPeerFromTheKernel) {
  ASSERT_TRUE(ConnectClient());
  const vorn::cScmPeer& peer = server.GetChannels().at(0)->GetPeer();
  EXPECT_EQ(peer.pid, getpid());
  EXPECT_EQ(peer.uid, getuid());
  EXPECT_EQ(peer.gid, getgid());
  EXPECT_EQ(peer.processName, std::string("framework_test"));
  EXPECT_THAT(peer.ToString(), HasSubstr("framework_test["));
}

// ---- hostile peers

struct cHostile {
  const char* name;
  std::string bytes;
  const char* reason;
};

class HostilePeer : public ScmChannel, public testing::WithParamInterface<cHostile> {};

TEST_P(HostilePeer, IsClosedWithALineOfTraceAndTheServiceLivesOn) {
  cCapturedTrace trace;
  cRawSocket hostile;
  ASSERT_TRUE(hostile.Connect(service.GetSocketPath("data")));
  ASSERT_TRUE(hostile.Write(GetParam().bytes));
  ASSERT_TRUE(PollUntil(service, [&] { return hostile.Read().empty() && hostile.IsClosedByPeer(); }));
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr(GetParam().reason)));
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("framework_test["))) << "the line names the peer";
  EXPECT_TRUE(ConnectClient());
}

std::string AfterHello(const std::string& bytes) { return cRawSocket::Hello() + bytes; }

std::string Nested(int depth) {
  vorn::cRecord record;
  record.AppendUIntPar("n", 1);
  std::string bytes(record.GetBytes());
  for (int i = 1; i < depth; ++i) {
    std::string outer = "\x61r\x06";
    if (bytes.size() < 24)
      outer += static_cast<char>(0x40 + bytes.size());
    else
      outer += std::string("\x58") + static_cast<char>(bytes.size());
    bytes = outer + bytes;
  }
  return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Of, HostilePeer,
    testing::Values(cHostile{"AFrameShorterThanItsHeader", cRawSocket::BigEndian(23), "a frame of 23 bytes"},
                    cHostile{"AFrameOfNothing", cRawSocket::BigEndian(0), "a frame of 0 bytes"},
                    cHostile{"AFrameOverTheLimit", cRawSocket::BigEndian(4194305), "a frame of 4194305 bytes"},
                    cHostile{"AnotherProtocol", "GET / HTTP/1.1\r\n\r\n", "a frame of"},
                    cHostile{"NoHelloFirst", cRawSocket::RawFrame(kType, ""), "unexpected message of type 0x51009"},
                    cHostile{"APingBeforeTheHello", cRawSocket::RawFrame(4, ""), "unexpected message of type 0x4"},
                    cHostile{"AnUnknownVersion", cRawSocket::Hello(2), "unknown handshake version 2"},
                    cHostile{"AHelloWithoutVersion", cRawSocket::RawFrame(1, ""), "unknown handshake version 0"},
                    cHostile{"TwoHellos", AfterHello(cRawSocket::Hello()), "unexpected message of type 0x1"},
                    cHostile{"AnUnknownFrameworkType", AfterHello(cRawSocket::RawFrame(0x7F, "")),
                             "unexpected message of type 0x7f"},
                    cHostile{"ABrokenRecord", AfterHello(cRawSocket::RawFrame(kType, "\xFF")),
                             "malformed record in a message of type 0x51009, byte 0"},
                    cHostile{"ARecordThatEndsEarly",
                             AfterHello(cRawSocket::RawFrame(kType,
                                                             "\x61x\x01\x65"
                                                             "abc")),
                             "value ends early"},
                    cHostile{"ANestingTooDeep", AfterHello(cRawSocket::RawFrame(kType, Nested(17))),
                             "nest deeper than 16"}),
    [](const auto& parameter) { return parameter.param.name; });

TEST_F(ScmChannel, TakesANestingOfSixteen) {
  cRawSocket peer;
  ASSERT_TRUE(peer.Connect(service.GetSocketPath("data")));
  peer.Write(AfterHello(cRawSocket::RawFrame(kType, Nested(16))));
  ASSERT_TRUE(PollUntil(service, [&] { return server.messages.size() == 1; }));
}

TEST_F(ScmChannel, TakesFramesThatComeByteByByte) {
  cRawSocket peer;
  ASSERT_TRUE(peer.Connect(service.GetSocketPath("data")));
  const std::string bytes = AfterHello(cRawSocket::Frame(kType, Numbered(42).Record()));
  for (const char byte : bytes) {
    ASSERT_TRUE(peer.Write(std::string(1, byte)));
    PollUntilIdle(service);
  }
  ASSERT_EQ(server.messages.size(), 1u);
  EXPECT_EQ(server.messages[0].Record().GetUIntPar("number"), 42u);
}

TEST_F(ScmChannel, APeerThatEndsInTheMiddleOfAFrameIsTraced) {
  cCapturedTrace trace;
  cRawSocket peer;
  ASSERT_TRUE(peer.Connect(service.GetSocketPath("data")));
  peer.Write(AfterHello(cRawSocket::Frame(kType, Numbered(1).Record()).substr(0, 20)));
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 1; }));
  peer.Close();
  ASSERT_TRUE(PollUntil(service, [&] { return server.closes == 1; }));
  EXPECT_TRUE(server.messages.empty());
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("in the middle of a frame")));
}

TEST_F(ScmChannel, EverySingleDamagedByteOfAConversationIsSurvived) {
  const std::string good = AfterHello(cRawSocket::Frame(kType, Numbered(42).Record()));
  cCapturedTrace trace;  // keeps the output readable
  for (std::size_t at = 0; at < good.size(); ++at) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 0x55);
    cRawSocket peer;
    ASSERT_TRUE(peer.Connect(service.GetSocketPath("data")));
    ASSERT_TRUE(peer.Write(bad));
    PollUntilIdle(service);
  }
  EXPECT_TRUE(ConnectClient());
}

}  // namespace
