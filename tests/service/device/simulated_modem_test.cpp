// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/simulated_modem.h>

#include <tests/service/device/device_world.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SimulatedModem : public DeviceWorld {
 protected:
  void SetUp() override {
    m_modem.SetOnConnected([this] { m_said.emplace_back("connected"); });
    m_modem.SetOnFailed([this](const std::string& reason) { m_said.push_back("failed: " + reason); });
  }
  void Connect(const std::string& apn) {
    m_modem.Connect({"", apn, "", ""}, [this](const std::string& fault) { m_said.push_back("begun" + fault); });
  }

  cSimulatedModem m_modem{&m_host};
  std::vector<std::string> m_said;
};

TEST_F(SimulatedModem, ConnectsAfterAWhile) {
  Connect("internet");
  Advance(cSimulatedModem::kConnectMs - 1);
  EXPECT_THAT(m_said, ElementsAre("begun"));
  Advance(1);
  EXPECT_THAT(m_said, ElementsAre("begun", "connected"));
  EXPECT_EQ(m_modem.GetPlace(), "simulated");
}

TEST_F(SimulatedModem, FailsAtTheAccessPointThatIsThereForThat) {
  Connect("fail");
  Advance(cSimulatedModem::kConnectMs);
  EXPECT_THAT(m_said, ElementsAre("begun", "failed: the access point \"fail\" of the simulated modem always fails"));
}

TEST_F(SimulatedModem, SaysNothingOfAConnectionThatWasEndedMeanwhile) {
  Connect("internet");
  m_said.clear();
  m_modem.Disconnect([this](const std::string& fault) { m_said.push_back("ended" + fault); });
  EXPECT_THAT(m_said, IsEmpty());
  Advance(cSimulatedModem::kDisconnectMs);
  EXPECT_THAT(m_said, ElementsAre("ended"));
  Advance(cSimulatedModem::kConnectMs);
  EXPECT_THAT(m_said, ElementsAre("ended"));
}

}  // namespace
}  // namespace tav::gateway
