// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/attempt_delay.h>

#include <gtest/gtest.h>

namespace tav::pages {
namespace {

class AttemptDelay : public testing::Test {
 protected:
  static constexpr const char* kAddress = "192.0.2.1";

  void Advance(unsigned int seconds) { m_clock.Advance(std::int64_t{seconds} * 1000); }
  static std::string Numbered(std::size_t i) {
    return "10.0." + std::to_string(i / 256) + "." + std::to_string(i % 256);
  }

  vorn::cManualClock m_clock;
  cAttemptDelay m_delay{m_clock};
};

TEST_F(AttemptDelay, DoublesBehindEveryWrongPasswordUpToAMost) {
  EXPECT_EQ(m_delay.GetWait(kAddress), 0u);
  for (const unsigned int seconds : {1, 2, 4, 8, 16, 32, 64, 128, 256, 300, 300}) {
    m_delay.Failed(kAddress);
    EXPECT_EQ(m_delay.GetWait(kAddress), seconds);
    Advance(seconds);
  }
}

TEST_F(AttemptDelay, EndsToTheMillisecond) {
  m_delay.Failed(kAddress);
  m_clock.Advance(999);
  EXPECT_EQ(m_delay.GetWait(kAddress), 1u);
  m_clock.Advance(1);
  EXPECT_EQ(m_delay.GetWait(kAddress), 0u);
}

TEST_F(AttemptDelay, ARightPasswordStartsAnew) {
  m_delay.Failed(kAddress);
  m_delay.Failed(kAddress);
  m_delay.Succeeded(kAddress);
  EXPECT_EQ(m_delay.GetWait(kAddress), 0u);
  m_delay.Failed(kAddress);
  EXPECT_EQ(m_delay.GetWait(kAddress), 1u);
}

TEST_F(AttemptDelay, IsForgottenAfterAWhile) {
  m_delay.Failed(kAddress);
  Advance(cAttemptDelay::kForgetSeconds + 1);
  m_delay.Failed(kAddress);
  EXPECT_EQ(m_delay.GetWait(kAddress), 2u) << "counted from the end of the wait";
  Advance(cAttemptDelay::kForgetSeconds + 2 + 1);
  m_delay.Failed(kAddress);
  EXPECT_EQ(m_delay.GetWait(kAddress), 1u);
}

TEST_F(AttemptDelay, IsOfOneNetworkOnly) {
  m_delay.Failed("2001:db8:1:2::1");
  EXPECT_EQ(m_delay.GetWait("2001:db8:1:2:ffff:ffff:ffff:ffff"), 1u) << "an attacker has all of these";
  EXPECT_EQ(m_delay.GetWait("2001:db8:1:3::1"), 0u);
  m_delay.Failed(kAddress);
  EXPECT_EQ(m_delay.GetWait("192.0.2.2"), 0u);
  m_delay.Failed("nonsense");
  EXPECT_EQ(m_delay.GetWait("other nonsense"), 0u);
}

TEST_F(AttemptDelay, AddressesOfTheOlderProtocolAreDifferentOnOneSocketForBoth) {
  m_delay.Failed("::ffff:192.0.2.1");
  EXPECT_EQ(m_delay.GetWait("::ffff:192.0.2.1"), 1u);
  EXPECT_EQ(m_delay.GetWait("::ffff:192.0.2.2"), 0u);
  EXPECT_EQ(m_delay.GetWait("::1"), 0u);
}

TEST_F(AttemptDelay, OneAddressMoreThanIsRememberedDropsTheOneThatIsLetInSoonest) {
  m_delay.Failed("first");
  m_clock.Advance(1);
  for (std::size_t i = 1; i < cAttemptDelay::kMaxAddresses; ++i) m_delay.Failed(Numbered(i));
  EXPECT_EQ(m_delay.GetWait("first"), 1u) << "as many as are remembered";
  m_delay.Failed("one more");
  EXPECT_EQ(m_delay.GetWait("first"), 0u);
  EXPECT_EQ(m_delay.GetWait("one more"), 1u);
  EXPECT_EQ(m_delay.GetWait(Numbered(1)), 1u);
}

TEST_F(AttemptDelay, AnAddressThatIsRememberedDropsNone) {
  m_delay.Failed("first");
  m_clock.Advance(1);
  for (std::size_t i = 1; i < cAttemptDelay::kMaxAddresses; ++i) m_delay.Failed(Numbered(i));
  m_delay.Failed("first");
  EXPECT_EQ(m_delay.GetWait("first"), 2u) << "its own count least of all";
  for (std::size_t i = 1; i < cAttemptDelay::kMaxAddresses; ++i) ASSERT_EQ(m_delay.GetWait(Numbered(i)), 1u) << i;
}

}  // namespace
}  // namespace tav::pages
