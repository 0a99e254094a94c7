// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/simulated_input.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/framework/time.h>
#include <tests/support/scm_world.h>

namespace tav::sml {
namespace {

using testing::IsEmpty;

constexpr unsigned int kTimer = 0x77;
constexpr std::uint32_t kBegin = 1'750'000'000;

class cOwner : public vorn::cService {
 public:
  using vorn::cService::cService;
  bool DispatchMessage(const vorn::cMsg& msg) override {
    EXPECT_EQ(msg.GetType(), kTimer);
    input->OnTimer();
    return true;
  }

  std::unique_ptr<cSimulatedInput> input;
};

class SimulatedInput : public testing::Test {
 protected:
  void Simulate(const cSimulatedInputOptions& options) {
    cInputEvents events;
    events.onBytes = [this](const unsigned char* bytes, std::size_t size) {
      m_telegrams.emplace_back(reinterpret_cast<const char*>(bytes), size);
      m_times.push_back(m_owner.input->GetTime().value_or(0));
      if (onBytes) onBytes();
    };
    events.onEnd = [this](const std::string& why) {
      EXPECT_EQ(why, "");
      ++m_ends;
    };
    m_owner.input = std::make_unique<cSimulatedInput>(&m_owner, options, events, kTimer);
    EXPECT_THAT(m_telegrams, IsEmpty());
  }
  void Pass(unsigned int milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(m_owner);
  }
  bool Await(const std::function<bool()>& holds) { return PollUntil(m_owner, holds); }

  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cOwner m_owner{m_clock};
  std::vector<std::string> m_telegrams;
  std::vector<std::uint32_t> m_times;
  int m_ends = 0;
  std::function<void()> onBytes;
};

TEST_F(SimulatedInput, SendsATelegramEveryPeriodByTheWallClock) {
  cSimulatedInputOptions options;
  options.periodSeconds = 3;
  Simulate(options);
  EXPECT_FALSE(m_owner.input->CanWait());
  Pass(0);
  EXPECT_EQ(m_telegrams.size(), 1u);
  Pass(2999);
  EXPECT_EQ(m_telegrams.size(), 1u);
  Pass(1);
  EXPECT_EQ(m_telegrams.size(), 2u);
  Pass(3000);
  EXPECT_EQ(m_telegrams.size(), 3u);
  EXPECT_FALSE(m_owner.input->GetTime().has_value());  // the machine's clock tells it
}

TEST_F(SimulatedInput, SendsOfEveryMeterInEveryRound) {
  cSimulatedInputOptions options;
  options.simulator.meters = 3;
  options.rounds = 2;
  options.begin = kBegin;
  Simulate(options);
  ASSERT_TRUE(Await([this] { return m_ends == 1; }));
  cSmlSimulator same(options.simulator);
  std::vector<std::string> expected;
  for (const std::uint32_t time : {kBegin, kBegin, kBegin, kBegin + 2, kBegin + 2, kBegin + 2})
    expected.push_back(same.Telegram(time));
  EXPECT_EQ(m_telegrams, expected);
  EXPECT_EQ(m_times, (std::vector<std::uint32_t>{kBegin, kBegin, kBegin, kBegin + 2, kBegin + 2, kBegin + 2}));
}

TEST_F(SimulatedInput, RunsAsFastAsItIsTakenWithABeginOfItsOwn) {
  cSimulatedInputOptions options;
  options.periodSeconds = 900;
  options.rounds = 1000;
  options.begin = kBegin;
  Simulate(options);
  EXPECT_TRUE(m_owner.input->CanWait());
  ASSERT_TRUE(Await([this] { return m_ends == 1; }));
  EXPECT_EQ(m_telegrams.size(), 1000u);
  EXPECT_EQ(m_times.back(), kBegin + 999 * 900);
}

TEST_F(SimulatedInput, WaitsWhilePaused) {
  cSimulatedInputOptions options;
  options.begin = kBegin;
  options.rounds = 5;
  onBytes = [this] { m_owner.input->Pause(); };
  Simulate(options);
  for (std::size_t round = 1; round <= 5; ++round) {
    Pass(60'000);
    Pass(60'000);
    EXPECT_EQ(m_telegrams.size(), round);
    EXPECT_EQ(m_times.back(), kBegin + 2 * (round - 1));
    m_owner.input->Resume();
  }
}

TEST_F(SimulatedInput, EndsWithItsLastRoundOnce) {
  for (const bool waits : {false, true}) {
    m_telegrams.clear();
    m_ends = 0;
    cSimulatedInputOptions options;
    options.rounds = 2;
    if (waits) options.begin = kBegin;
    Simulate(options);
    Pass(0);
    Pass(2000);
    EXPECT_EQ(m_telegrams.size(), 2u);
    EXPECT_EQ(m_ends, 1);  // without waiting for another period
    m_owner.input->Resume();
    Pass(60'000);
    EXPECT_EQ(m_telegrams.size(), 2u);
    EXPECT_EQ(m_ends, 1);
  }
}

TEST_F(SimulatedInput, EndsWithItsOwner) {
  Simulate({});
  m_owner.input.reset();
  Pass(60'000);
  EXPECT_THAT(m_telegrams, IsEmpty());
}

}  // namespace
}  // namespace tav::sml
