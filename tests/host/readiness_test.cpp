// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/readiness.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tav::gateway {
namespace {

class Readiness : public testing::Test {
 protected:
  static bool Notify(const std::string& socket) {
    setenv("NOTIFY_SOCKET", socket.c_str(), 1);
    const bool told = NotifyManager("READY=1");
    unsetenv("NOTIFY_SOCKET");
    return told;
  }
};

TEST_F(Readiness, IsNobodysBusinessWithoutAManager) {
  unsetenv("NOTIFY_SOCKET");
  EXPECT_TRUE(NotifyManager("READY=1"));
}

TEST_F(Readiness, SaysThatNobodyListens) {
  EXPECT_FALSE(Notify("/nowhere/notify"));
  EXPECT_FALSE(Notify("@tav-nobody-is-there"));
}

TEST_F(Readiness, RefusesANameThatIsNone) {
  EXPECT_FALSE(Notify(""));
  EXPECT_FALSE(Notify("/" + std::string(200, 'x')));
}

}  // namespace
}  // namespace tav::gateway
