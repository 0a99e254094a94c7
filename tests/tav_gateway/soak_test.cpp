// SPDX-License-Identifier: Apache-2.0
#include <tests/support/soak_world.h>

#include <fstream>

#include <tests/tav_gateway/process_fixture.h>

namespace tav::gateway {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr unsigned int kClients = 50;  // as much work as four times as many without the sanitizers
#else
constexpr unsigned int kClients = 200;
#endif

class Soak : public GatewayProcess {
 protected:
  // KiB.
  long Resident() const {
    std::ifstream status("/proc/" + std::to_string(m_process->GetPid()) + "/status");
    for (std::string word; status >> word;)
      if (word == "VmRSS:") return status >> word ? std::stol(word) : -1;
    return -1;
  }
};

TEST_F(Soak, VeryManyClientsKnowTheSameInTheEndAndMemoryStaysFlat) {
  Start({"run", "--dir", Directory(), "--trace", "2"});
  Connect();
  cSoakWorld world(Directory(), kClients, 4711);
  ASSERT_TRUE(world.Connect());
  ASSERT_TRUE(world.WarmUp());
  [[maybe_unused]] const long warm = Resident();
  for (int round = 0; round < 3; ++round) {
    world.Churn(std::chrono::seconds(1), 200);
    ASSERT_TRUE(world.Converge()) << "round " << round;
  }
  EXPECT_GT(world.GetCounts().breaks, 20u);
#if !defined(__SANITIZE_ADDRESS__)
  EXPECT_LT(Resident(), warm + 8 * 1024);
#endif
}

}  // namespace
}  // namespace tav::gateway
