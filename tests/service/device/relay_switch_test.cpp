// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/relay_switch.h>

#include <tests/service/device/device_world.h>

namespace tav::gateway {
namespace {

struct cRelayLog {
  bool closed = true;
  std::string fault;
};

class cLoggedRelay final : public cRelay {
 public:
  explicit cLoggedRelay(cRelayLog* log) : m_log(log) {}
  std::string Switch(bool closed) override {
    if (m_log->fault.empty()) m_log->closed = closed;
    return m_log->fault;
  }
  std::string GetPlace() const override { return "here"; }

 private:
  cRelayLog* m_log;
};

class RelaySwitch : public DeviceWorld {
 protected:
  cRelayLog m_relay;
  int m_backs = 0;
  cRelaySwitch m_switch{&m_host, std::make_unique<cLoggedRelay>(&m_relay), [this] { ++m_backs; }};
};

TEST_F(RelaySwitch, IsOpenAtFirst) {
  EXPECT_FALSE(m_relay.closed);
  EXPECT_FALSE(m_switch.IsClosed());
  EXPECT_EQ(m_switch.GetPlace(), "here");
}

TEST_F(RelaySwitch, StaysWithoutATime) {
  EXPECT_EQ(m_switch.Switch(true, 0), "");
  Advance(100'000'000);
  EXPECT_TRUE(m_relay.closed);
  EXPECT_EQ(m_switch.GetSecondsLeft(), 0u);
  EXPECT_EQ(m_backs, 0);
}

TEST_F(RelaySwitch, GoesBackWhenItsTimeIsOver) {
  m_switch.Switch(true, 10);
  EXPECT_EQ(m_switch.GetSecondsLeft(), 10u);
  Advance(9'999);
  EXPECT_TRUE(m_relay.closed);
  EXPECT_EQ(m_switch.GetSecondsLeft(), 1u);
  Advance(1);
  EXPECT_FALSE(m_relay.closed);
  EXPECT_FALSE(m_switch.IsClosed());
  EXPECT_EQ(m_switch.GetSecondsLeft(), 0u);
  EXPECT_EQ(m_backs, 1);
}

TEST_F(RelaySwitch, GoesBackToClosedToo) {
  m_switch.Switch(true, 0);
  m_switch.Switch(false, 5);
  EXPECT_FALSE(m_relay.closed);
  Advance(5'000);
  EXPECT_TRUE(m_relay.closed);
}

TEST_F(RelaySwitch, ForgetsARunningTimeForANewSwitch) {
  m_switch.Switch(true, 10);
  m_switch.Switch(true, 0);
  Advance(20'000);
  EXPECT_TRUE(m_relay.closed);
  EXPECT_EQ(m_backs, 0);
}

TEST_F(RelaySwitch, IsNotLeftClosedByATimeThatIsMadeLonger) {
  m_switch.Switch(true, 10);
  Advance(8'000);
  m_switch.Switch(true, 10);
  Advance(8'000);
  EXPECT_TRUE(m_relay.closed);
  Advance(2'000);
  EXPECT_FALSE(m_relay.closed);
}

TEST_F(RelaySwitch, BoundsTheTime) {
  constexpr unsigned int kMax = cRelaySwitch::kMaxSeconds;
  EXPECT_EQ(m_switch.Switch(true, kMax - 1), "");
  EXPECT_EQ(m_switch.Switch(true, kMax), "");
  EXPECT_EQ(m_switch.GetSecondsLeft(), kMax);
  EXPECT_EQ(m_switch.Switch(false, kMax + 1), "parameter \"timeout\": expected at most 2592000 seconds, found 2592001");
  EXPECT_TRUE(m_relay.closed);
  Advance(std::int64_t{kMax} * 1000);
  EXPECT_FALSE(m_relay.closed);
}

TEST_F(RelaySwitch, StaysAsItWasWhenTheHardwareDoesNotObey) {
  m_switch.Switch(true, 10);
  m_relay.fault = "no such chip";
  EXPECT_EQ(m_switch.Switch(false, 0), "no such chip");
  EXPECT_TRUE(m_switch.IsClosed());
  EXPECT_EQ(m_switch.GetFault(), "no such chip");
  EXPECT_EQ(m_switch.GetSecondsLeft(), 10u);
}

TEST_F(RelaySwitch, TriesToGoBackUntilItCan) {
  m_switch.Switch(true, 10);
  m_relay.fault = "pulled out";
  Advance(10'000);
  Advance(3'000);
  EXPECT_TRUE(m_relay.closed);
  EXPECT_EQ(m_switch.GetSecondsLeft(), 1u);
  EXPECT_EQ(m_trace.GetLines(), std::vector<std::string>{"UnitGateway 4 relay: pulled out"});
  m_relay.fault.clear();
  Advance(1'000);
  EXPECT_FALSE(m_relay.closed);
  EXPECT_EQ(m_backs, 1);
}

}  // namespace
}  // namespace tav::gateway
