// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/task.h>

#include <gtest/gtest.h>

#include <memory>

#include <tests/support/temp_folder.h>

namespace tav::gateway {
namespace {

class Task : public testing::Test {
 protected:
  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cServiceHost m_host{"task-test", m_folder.GetPath(), m_clock};
  int m_runs = 0;
};

TEST_F(Task, RunsOnceForManyPosts) {
  cTask task(&m_host, [this] { ++m_runs; });
  task.Post();
  task.Post();
  EXPECT_EQ(m_runs, 0);
  m_host.Poll(0);
  EXPECT_EQ(m_runs, 1);
  task.Post();
  m_host.Poll(0);
  EXPECT_EQ(m_runs, 2);
}

TEST_F(Task, MayPostItselfAgain) {
  std::unique_ptr<cTask> task;
  task = std::make_unique<cTask>(&m_host, [&] {
    if (++m_runs < 3) task->Post();
  });
  task->Post();
  for (int i = 0; i < 5; ++i) m_host.Poll(0);
  EXPECT_EQ(m_runs, 3);
}

TEST_F(Task, RunsWhenItsTimeIsOver) {
  cTask task(&m_host, [this] { ++m_runs; });
  task.Start(100);
  m_clock->Advance(99);
  m_host.Poll(0);
  EXPECT_EQ(m_runs, 0);
  EXPECT_TRUE(task.IsStarted());
  m_clock->Advance(1);
  m_host.Poll(0);
  EXPECT_EQ(m_runs, 1);
  EXPECT_FALSE(task.IsStarted());
}

TEST_F(Task, DoesNotRunAnyMoreWhenItIsStopped) {
  cTask task(&m_host, [this] { ++m_runs; });
  task.Start(100);
  task.Stop();
  m_clock->Advance(200);
  m_host.Poll(0);
  EXPECT_EQ(m_runs, 0);
}

TEST_F(Task, DoesNotRunAnyMoreWhenItIsGone) {
  auto task = std::make_unique<cTask>(&m_host, [this] { ++m_runs; });
  task->Post();
  task->Start(1);
  task.reset();
  m_clock->Advance(10);
  m_host.Poll(0);
  EXPECT_EQ(m_runs, 0);
}

TEST_F(Task, TakesNoMessageFromOutsideForItsOwn) {
  cTask task(&m_host, [this] { ++m_runs; });
  EXPECT_FALSE(m_host.DispatchMessage(vorn::cMsg(0x51009)));
  EXPECT_EQ(m_runs, 0);
}

}  // namespace
}  // namespace tav::gateway
