// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/wall_clock.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>
#include <vector>

namespace tav::gateway {
namespace {

using testing::HasSubstr;

std::int64_t MachineTime() { return std::time(nullptr); }

TEST(SimulatedClock, GoesAsTheMachinesUntilItIsSetAndLeavesThatAlone) {
  const std::int64_t before = MachineTime();
  cSimulatedClock clock;
  EXPECT_EQ(clock.GetKind(), "simulated");
  EXPECT_GE(clock.Now(), before);
  EXPECT_LE(clock.Now(), MachineTime());
  EXPECT_EQ(clock.Set(2'000'000'000), "");
  EXPECT_GE(clock.Now(), 2'000'000'000);
  EXPECT_LE(clock.Now(), 2'000'000'000 + MachineTime() - before);
  EXPECT_GE(MachineTime(), before);
  EXPECT_LT(MachineTime(), before + 1000);
}

TEST(KernelClock, HandsTheTimeToTheKernel) {
  std::vector<std::int64_t> steps;
  cKernelClock clock([&](std::int64_t seconds) {
    steps.push_back(seconds);
    return 0;
  });
  EXPECT_EQ(clock.GetKind(), "kernel");
  EXPECT_EQ(clock.Set(1'709'294'400), "");
  EXPECT_EQ(steps, std::vector<std::int64_t>{1'709'294'400});
  EXPECT_NEAR(static_cast<double>(clock.Now()), static_cast<double>(MachineTime()), 2);
}

TEST(KernelClock, NamesTheRightThatIsMissing) {
  cKernelClock clock([](std::int64_t) { return EPERM; });
  const std::string fault = clock.Set(1'709'294'400);
  EXPECT_THAT(fault, HasSubstr("needs the right CAP_SYS_TIME"));
  EXPECT_THAT(fault, HasSubstr("unit file gives it with AmbientCapabilities=CAP_SYS_TIME"));
}

TEST(KernelClock, SaysWhyElseItFailed) {
  cKernelClock clock([](std::int64_t) { return EINVAL; });
  EXPECT_EQ(clock.Set(1), "the machine's clock cannot be set: Invalid argument");
}

}  // namespace
}  // namespace tav::gateway
