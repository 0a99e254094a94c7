// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <tav/framework/timer.h>

#include <memory>

#include "tests/support/scm_world.h"

namespace {

class Timer : public testing::Test {
 protected:
  std::size_t Fired() {
    PollUntilIdle(service);
    return service.messages.size();
  }

  cTempFolder directory;
  std::shared_ptr<vorn::cManualClock> clock = std::make_shared<vorn::cManualClock>();
  cRecordingService service{"test", directory.GetPath(), clock};
  vorn::cTimer timer{&service};
};

TEST_F(Timer, PostsOneMessageWhenItsTimeIsOver) {
  vorn::cUuid id;
  id.Create();
  timer.SetId(id);
  timer.GetMsg().Record().AppendUIntPar("n", 3);
  timer.Start(1000, 0x52014);
  EXPECT_TRUE(timer.IsRunning());
  clock->Advance(999);
  EXPECT_EQ(Fired(), 0u);
  clock->Advance(1);
  ASSERT_EQ(Fired(), 1u);
  EXPECT_FALSE(timer.IsRunning());
  EXPECT_EQ(service.messages[0].GetType(), 0x52014u);
  EXPECT_EQ(service.messages[0].GetId(), id);
  EXPECT_EQ(service.messages[0].Record().GetUIntPar("n"), 3u);
  EXPECT_EQ(service.messages[0].GetReplyChannel(), nullptr);
  clock->Advance(10000);
  EXPECT_EQ(Fired(), 1u) << "one shot";
}

TEST_F(Timer, PostsItsMessageAsItIsAtExpiry) {
  timer.Start(10, 1);
  timer.GetMsg().Record().SetUIntPar("n", 1);
  clock->Advance(10);
  ASSERT_EQ(Fired(), 1u);
  EXPECT_EQ(service.messages[0].Record().GetUIntPar("n"), 1u);
}

TEST_F(Timer, StartRestartsAndKeepsRecordAndIdentifier) {
  vorn::cUuid id;
  id.Create();
  timer.SetId(id);
  timer.GetMsg().Record().AppendUIntPar("n", 3);
  timer.Start(10, 1);
  clock->Advance(9);
  timer.Start(10, 2);
  clock->Advance(9);
  EXPECT_EQ(Fired(), 0u);
  clock->Advance(1);
  ASSERT_EQ(Fired(), 1u);
  EXPECT_EQ(service.messages[0].GetType(), 2u);
  EXPECT_EQ(service.messages[0].GetId(), id);
  EXPECT_EQ(service.messages[0].Record().GetUIntPar("n"), 3u);
}

TEST_F(Timer, MayBeStartedAgainFromItsOwnMessage) {
  service.onMessage = [&](const vorn::cMsg&) {
    if (service.messages.size() < 3) timer.Start(0, 1);
  };
  timer.Start(0, 1);
  EXPECT_EQ(Fired(), 3u);
}

TEST_F(Timer, StopWithdrawsEvenWhatIsPostedAlready) {
  vorn::cTimer other(&service);
  service.onMessage = [&](const vorn::cMsg&) { other.Stop(); };
  timer.Start(5, 1);
  other.Start(5, 2);
  clock->Advance(5);
  ASSERT_EQ(Fired(), 1u) << "the first message stops the second timer, which is due as well";
  EXPECT_EQ(service.messages[0].GetType(), 1u);
  EXPECT_FALSE(other.IsRunning());
}

TEST_F(Timer, ItsEndWithdrawsToo) {
  auto other = std::make_unique<vorn::cTimer>(&service);
  service.onMessage = [&](const vorn::cMsg&) { other.reset(); };
  timer.Start(5, 1);
  other->Start(5, 2);
  clock->Advance(5);
  EXPECT_EQ(Fired(), 1u);
}

TEST_F(Timer, SlackJoinsWakeUps) {
  vorn::cTimer patient(&service);
  patient.Start(100, 1, 500);
  timer.Start(400, 2);
  clock->Advance(400);
  EXPECT_EQ(Fired(), 2u) << "both come with the one wake-up that was needed";
  EXPECT_EQ(service.messages[0].GetType(), 1u) << "earliest due first";
}

TEST_F(Timer, SlackNeverMakesItEarly) {
  timer.Start(100, 1, 500);
  clock->Advance(99);
  EXPECT_EQ(Fired(), 0u);
}

TEST(TimerOnTheMachinesClock, Fires) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  vorn::cTimer timer(&service);
  timer.Start(5, 1);
  EXPECT_TRUE(PollUntil(service, [&] { return service.messages.size() == 1; }));
}

}  // namespace
