// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/driver/driver_registry.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/framework/msg.h>

namespace tav::data {
namespace {

using testing::ElementsAre;

class cChannel final : public vorn::cScmChannel {
 public:
  int Send(const vorn::cMsg&) override { return 0; }
  void Close() override {}
  bool IsOpen() const override { return false; }
  const vorn::cScmPeer& GetPeer() const override { return m_peer; }

 private:
  vorn::cScmPeer m_peer;
};

class DriverRegistry : public testing::Test {
 protected:
  cDriverRegistry m_drivers;
  const cDriverRegistry::Channel m_a = std::make_shared<cChannel>();
  const cDriverRegistry::Channel m_b = std::make_shared<cChannel>();
};

TEST_F(DriverRegistry, FindsTheOneThatCameLast) {
  EXPECT_EQ(m_drivers.Find("ehzif"), nullptr);
  m_drivers.Register(m_a, "ehzif");
  m_drivers.Register(m_b, "ehzif");
  EXPECT_EQ(m_drivers.Find("ehzif"), m_b);
  EXPECT_THAT(m_drivers.FindAll("ehzif"), ElementsAre(m_a, m_b));
  m_drivers.Register(m_a, "ehzif");
  EXPECT_EQ(m_drivers.Find("ehzif"), m_a);
  EXPECT_EQ(m_drivers.GetCount(), 2u);
  EXPECT_THAT(m_drivers.GetNames(), ElementsAre("ehzif"));
}

TEST_F(DriverRegistry, AChannelHasOneDriver) {
  m_drivers.Register(m_a, "ehzif");
  m_drivers.Register(m_a, "mbif");
  EXPECT_EQ(m_drivers.Find("ehzif"), nullptr);
  EXPECT_EQ(m_drivers.NameOf(m_a.get()), "mbif");
  EXPECT_EQ(m_drivers.NameOf(m_b.get()), "");
}

TEST_F(DriverRegistry, ForgetsAChannelThatIsGone) {
  m_drivers.Register(m_a, "ehzif");
  m_drivers.Remove(*m_b);
  EXPECT_EQ(m_drivers.GetCount(), 1u);
  m_drivers.Remove(*m_a);
  EXPECT_EQ(m_drivers.GetCount(), 0u);
}

TEST_F(DriverRegistry, WithoutAChannelThereIsNothingToRegister) {
  m_drivers.Register(nullptr, "ehzif");
  EXPECT_EQ(m_drivers.GetCount(), 0u);
}

}  // namespace
}  // namespace tav::data
