// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <tav/framework/watch.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <optional>

#include "tests/support/scm_world.h"

namespace {

class Watch : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0); }
  void TearDown() override {
    close(ends[0]);
    close(ends[1]);
  }

  cTempFolder directory;
  cRecordingService service{"test", directory.GetPath()};
  int ends[2] = {-1, -1};
};

TEST_F(Watch, CallsWheneverThereIsSomethingToRead) {
  int calls = 0;
  char byte = 0;
  vorn::cWatch watch(&service, ends[0], vorn::cWatch::eEvent::Read, [&] { calls += read(ends[0], &byte, 1) == 1; });
  EXPECT_FALSE(service.Poll(0));
  ASSERT_EQ(write(ends[1], "ab", 2), 2);
  ASSERT_TRUE(PollUntil(service, [&] { return calls == 2; })) << "asked again while something is left";
  ASSERT_EQ(write(ends[1], "c", 1), 1);
  ASSERT_TRUE(PollUntil(service, [&] { return calls == 3; }));
}

TEST_F(Watch, CallsWhenThereIsRoomToWrite) {
  std::optional<vorn::cWatch> watch;
  int calls = 0;
  watch.emplace(&service, ends[1], vorn::cWatch::eEvent::Write, [&] {
    ++calls;
    watch.reset();  // ends itself from within
  });
  ASSERT_TRUE(PollUntil(service, [&] { return calls == 1; }));
  PollUntilIdle(service);
  EXPECT_EQ(calls, 1);
}

TEST_F(Watch, EndsWithItsObject) {
  int calls = 0;
  auto watch = std::make_unique<vorn::cWatch>(&service, ends[0], vorn::cWatch::eEvent::Read, [&] { ++calls; });
  ASSERT_EQ(write(ends[1], "a", 1), 1);
  watch.reset();
  PollUntilIdle(service);
  EXPECT_EQ(calls, 0);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 1) << "the descriptor stays open";
}

TEST_F(Watch, ARegularFileIsAlwaysReady) {
  std::ofstream(directory.File("file")) << "abc";
  const int file = open(directory.File("file").c_str(), O_RDONLY | O_CLOEXEC);
  std::string text;
  std::optional<vorn::cWatch> watch;
  watch.emplace(&service, file, vorn::cWatch::eEvent::Read, [&] {
    char byte = 0;
    if (read(file, &byte, 1) == 1)
      text += byte;
    else
      watch.reset();
  });
  EXPECT_TRUE(PollUntil(service, [&] { return !watch.has_value(); }));
  EXPECT_EQ(text, "abc");
  close(file);
}

TEST_F(Watch, TwoWatchesOfOneDescriptorDoNotMeet) {
  int reads = 0, writes = 0;
  vorn::cWatch reading(&service, ends[0], vorn::cWatch::eEvent::Read, [&] { ++reads; });
  vorn::cWatch again(&service, ends[0], vorn::cWatch::eEvent::Read, [&] { ++writes; });
  ASSERT_EQ(write(ends[1], "a", 1), 1);
  EXPECT_TRUE(PollUntil(service, [&] { return reads > 0 && writes > 0; }));
}

TEST_F(Watch, SignalsArriveThroughTheLoop) {
  int seen = 0;
  {
    vorn::cSignalWatch watch(&service, {SIGTERM, SIGINT}, [&](int signal) {
      seen = signal;
      service.Stop();
    });
    kill(getpid(), SIGTERM);
    EXPECT_EQ(seen, 0);
    service.Run();
    EXPECT_EQ(seen, SIGTERM);
  }
  sigset_t mask;
  sigprocmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_FALSE(sigismember(&mask, SIGTERM)) << "the mask is restored";
}

TEST_F(Watch, SignalWatchesMayEndInAnyOrder) {
  int seen = 0;
  auto first = std::make_unique<vorn::cSignalWatch>(&service, std::initializer_list<int>{SIGINT}, [](int) {});
  vorn::cSignalWatch second(&service, {SIGINT}, [&](int signal) { seen = signal; });
  first.reset();
  raise(SIGINT);  // still blocked: it would end this process
  EXPECT_TRUE(PollUntil(service, [&] { return seen == SIGINT; }));
}

}  // namespace
