// SPDX-License-Identifier: Apache-2.0
#include <tav/service/ui_ctrl_io.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include <tests/support/proxy_fixture.h>

using tav::cUiCtrlIO;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A loop on a thread of its own while the object lives: a question that is waited for needs another loop to answer it.
class cLoopThread {
 public:
  explicit cLoopThread(vorn::cService& service)
      : m_thread([this, &service] {
          while (!m_end) service.Poll(10);
        }) {}
  ~cLoopThread() {
    m_end = true;
    m_thread.join();
  }
  cLoopThread(const cLoopThread&) = delete;
  cLoopThread& operator=(const cLoopThread&) = delete;

 private:
  std::atomic<bool> m_end = false;
  std::thread m_thread;
};

class UiCtrlIO : public cProxyFixture<cUiCtrlIO> {
 protected:
  UiCtrlIO() : cProxyFixture("ui") {}

  // The service answers the question for the relay's mode with these messages.
  void AnswerRelayWith(const std::vector<vorn::cMsg>& answers) {
    m_server->onMessage = [answers](const vorn::cMsg& msg) {
      for (const vorn::cMsg& answer : answers) msg.GetReplyChannel()->Send(answer);
    };
  }
  static vorn::cMsg RelayMode(unsigned int mode) {
    vorn::cMsg msg(0x53008);
    msg.Record().AppendUIntPar("mode", mode);
    return msg;
  }
  bool GetRelayMode(cUiCtrlIO::Relay_Mode* mode) {
    const cLoopThread service(m_far);
    m_error = "before";
    return m_io->GetRelayMode(mode, m_error);
  }
  // The mode that an answer gives.
  unsigned int ModeOf(const vorn::cMsg& answer) {
    AnswerRelayWith({answer});
    cUiCtrlIO::Relay_Mode mode{99};
    EXPECT_TRUE(GetRelayMode(&mode));
    return mode;
  }

  std::string m_error;
};

constexpr auto kNoLed = static_cast<cUiCtrlIO::LED_No>(7);
constexpr auto kNoLedMode = static_cast<cUiCtrlIO::LED_Mode>(4294967295u);
constexpr auto kOtherRelayMode = static_cast<cUiCtrlIO::Relay_Mode>(17);

}  // namespace

// ---- the channel

TEST_F(UiCtrlIO, SaysNothingOfItsConnection) {
  Connect();
  EXPECT_EQ(m_io->GetName(), "ui");
  EXPECT_THAT(Received(), IsEmpty());
  CutWire();
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(UiCtrlIO, LeavesAnIdleServiceInPeace) {
  Connect();
  EXPECT_FALSE(PingsAnIdleService());
}

TEST_F(UiCtrlIO, SwallowsWhateverComes) {
  Connect();
  for (const unsigned int type : {0x53000u, 0x53001u, 0x53002u, 0x53006u, 0x53008u, 0x51031u, 0xFFFFFFFFu})
    Answer(type);
  EXPECT_THAT(m_near.messages, IsEmpty());
  EXPECT_TRUE(m_io->DispatchMessage(vorn::cMsg(0)));
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- lights and relay

TEST_F(UiCtrlIO, SwitchLedSendsLightAndMode) {
  Connect();
  EXPECT_EQ(m_io->SwitchLed(cUiCtrlIO::eLedWan, cUiCtrlIO::eLedOn), 1);
  EXPECT_EQ(m_io->SwitchLed(cUiCtrlIO::eLedMeter2, cUiCtrlIO::eLedBlink), 1);
  EXPECT_EQ(m_io->SwitchLed(kNoLed, kNoLedMode), 1) << "what a number means is the service's";
  EXPECT_THAT(Received(), ElementsAre("53000 led uint=0 mode uint=0", "53000 led uint=2 mode uint=2",
                                      "53000 led uint=7 mode uint=4294967295"));
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(UiCtrlIO, SwitchRelaySendsModeAndTimeout) {
  Connect();
  EXPECT_EQ(m_io->SwitchRelay(cUiCtrlIO::eRelayClosed, 0), 1);
  EXPECT_EQ(m_io->SwitchRelay(cUiCtrlIO::eRelayOpen, 60), 1);
  EXPECT_EQ(m_io->SwitchRelay(kOtherRelayMode, 4294967295u), 1);
  EXPECT_THAT(Received(), ElementsAre("53005 mode uint=1 timeout uint=0", "53005 mode uint=0 timeout uint=60",
                                      "53005 mode uint=17 timeout uint=4294967295"));
}

TEST_F(UiCtrlIO, WanStatesAreModesOfTheFirstLight) {
  Connect();
  EXPECT_EQ(m_io->WAN_On(), 1);
  EXPECT_EQ(m_io->WAN_Off(), 1);
  EXPECT_EQ(m_io->WAN_Try(), 1);
  EXPECT_EQ(m_io->WAN_Error(), 1);
  EXPECT_THAT(Received(), ElementsAre("53000 led uint=0 mode uint=0", "53000 led uint=0 mode uint=1",
                                      "53000 led uint=0 mode uint=3", "53000 led uint=0 mode uint=4"));
}

TEST_F(UiCtrlIO, MeterDataIsAFlashOfItsLight) {
  Connect();
  EXPECT_EQ(m_io->MeterDataRecv(cUiCtrlIO::eMeter1), 1);
  EXPECT_EQ(m_io->MeterDataRecv(cUiCtrlIO::eMeter2), 1);
  EXPECT_THAT(Received(), ElementsAre("53000 led uint=1 mode uint=5", "53000 led uint=2 mode uint=5"));
}

TEST_F(UiCtrlIO, ThereIsNoLightForFurtherMeters) {
  Connect();
  for (const unsigned int meter : {2u, 3u, 4294967295u})
    EXPECT_EQ(m_io->MeterDataRecv(static_cast<cUiCtrlIO::Meter_Mode>(meter)), 0) << meter;
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(UiCtrlIO, WithoutAServiceNothingIsTakenAndNothingSaid) {
  Start();
  EXPECT_EQ(m_io->SwitchLed(cUiCtrlIO::eLedWan, cUiCtrlIO::eLedOn), 0);
  EXPECT_EQ(m_io->SwitchRelay(cUiCtrlIO::eRelayClosed, 1), 0);
  EXPECT_EQ(m_io->MeterDataRecv(cUiCtrlIO::eMeter1), 0);
  EXPECT_EQ(m_io->MeterDataRecv(cUiCtrlIO::eMeter2), 0);
  EXPECT_EQ(m_io->WAN_On() + m_io->WAN_Off() + m_io->WAN_Try() + m_io->WAN_Error(), 0);
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- the mode of the relay

TEST_F(UiCtrlIO, GetRelayModeAsksAndWaitsForTheAnswer) {
  Connect();
  AnswerRelayWith({RelayMode(1)});
  cUiCtrlIO::Relay_Mode mode = cUiCtrlIO::eRelayOpen;
  EXPECT_TRUE(GetRelayMode(&mode));
  EXPECT_EQ(mode, cUiCtrlIO::eRelayClosed);
  EXPECT_EQ(m_error, "") << "what was there before is gone";
  EXPECT_THAT(Received(), ElementsAre("53007"));
  EXPECT_THAT(m_near.messages, IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(UiCtrlIO, TheModeMayBeLeftAside) {
  Connect();
  AnswerRelayWith({RelayMode(1)});
  EXPECT_TRUE(GetRelayMode(nullptr));
  EXPECT_EQ(m_error, "");
  EXPECT_THAT(Received(), ElementsAre("53007"));
}

TEST_F(UiCtrlIO, TheModeIsTheFirstNumberOfThatName) {
  Connect();
  vorn::cMsg two = RelayMode(17), text(0x53008), wide(0x53008);
  two.Record().AppendUIntPar("mode", 1);
  text.Record().AppendTextPar("mode", "1");
  wide.Record().AppendUInt64Par("mode", 1);
  EXPECT_EQ(ModeOf(two), 17u);
  EXPECT_EQ(ModeOf(RelayMode(4294967295u)), 4294967295u);
  EXPECT_EQ(ModeOf(wide), 1u);
  EXPECT_EQ(ModeOf(text), 0u);
  EXPECT_EQ(ModeOf(vorn::cMsg(0x53008)), 0u);
}

TEST_F(UiCtrlIO, OtherMessagesMeanwhileAreNoAnswer) {
  Connect();
  AnswerRelayWith({vorn::cMsg(0x53001), vorn::cMsg(0x53009), RelayMode(1)});
  cUiCtrlIO::Relay_Mode mode = cUiCtrlIO::eRelayOpen;
  EXPECT_TRUE(GetRelayMode(&mode));
  EXPECT_EQ(mode, cUiCtrlIO::eRelayClosed);
  Settle();
  EXPECT_THAT(m_near.messages, IsEmpty()) << "swallowed later";
}

TEST_F(UiCtrlIO, WithoutAnAnswerTheQuestionIsGivenUp) {
  Connect();
  cUiCtrlIO::Relay_Mode mode = kOtherRelayMode;
  const auto begin = std::chrono::steady_clock::now();
  std::string error = "before";
  EXPECT_FALSE(m_io->GetRelayMode(&mode, error));  // the service gets no turn
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(cUiCtrlIO::kRelayPatienceMs - 1));
  EXPECT_EQ(cUiCtrlIO::kRelayPatienceMs, 1000u);
  EXPECT_EQ(error, "timout");
  EXPECT_EQ(mode, kOtherRelayMode) << "left alone";
  EXPECT_THAT(Traced(), ElementsAre("2 GetRelayMode failed, timeout"));
  EXPECT_TRUE(m_io->IsConnected());

  AnswerRelayWith({RelayMode(1)});
  Settle();
  EXPECT_THAT(Received(), ElementsAre("53007"));
  EXPECT_THAT(m_near.messages, IsEmpty()) << "an answer that comes late is swallowed";
}

TEST_F(UiCtrlIO, AChannelThatBreaksMeanwhileIsATimeOut) {
  Connect();
  m_server->onMessage = [](const vorn::cMsg& msg) { msg.GetReplyChannel()->Close(); };
  cUiCtrlIO::Relay_Mode mode = kOtherRelayMode;
  EXPECT_FALSE(GetRelayMode(&mode));
  EXPECT_EQ(m_error, "timout");
  EXPECT_EQ(mode, kOtherRelayMode);
  EXPECT_THAT(Traced(), ElementsAre("2 GetRelayMode failed, timeout"));
}

TEST_F(UiCtrlIO, WithoutAServiceTheQuestionTimesOutAtOnce) {
  Start();
  std::string error;
  EXPECT_FALSE(m_io->GetRelayMode(nullptr, error));
  EXPECT_EQ(error, "timout");
  EXPECT_THAT(Traced(), ElementsAre("2 GetRelayMode failed, timeout"));
}

TEST_F(UiCtrlIO, ATimeOutIsTracedFromLevelTwoOn) {
  Start();
  std::string error;
  const cTraceLevel two("UnitTAV", 2);
  m_io->GetRelayMode(nullptr, error);
  EXPECT_THAT(Traced(), ElementsAre("2 GetRelayMode failed, timeout"));
  const cTraceLevel one("UnitTAV", 1);
  m_io->GetRelayMode(nullptr, error);
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- deriving

namespace {

class DerivedUiCtrlIO : public cProxyFixture<cOverriding<cUiCtrlIO>> {
 protected:
  DerivedUiCtrlIO() : cProxyFixture("ui") {}
};

}  // namespace

TEST_F(DerivedUiCtrlIO, MayOverrideEveryCallback) {
  Connect();
  Answer(0x53001);
  CutWire();
  EXPECT_THAT(m_io->calls, ElementsAre("OnConnect", "DispatchMessage", "OnClose"));
}
