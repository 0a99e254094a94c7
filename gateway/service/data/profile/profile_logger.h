// SPDX-License-Identifier: Apache-2.0
// cProfileLogger: lets the collectors log when their events come, and catches up with what was missed. It wakes on the
// host's clock and asks the wall clock what time it is.
#pragma once

#include <cstdint>
#include <functional>

#include <gateway/host/task.h>
#include <gateway/service/data/data_store.h>

namespace tav::data {

class cProfileLogger {
 public:
  // Seconds UTC.
  using WallClock = std::function<std::int64_t()>;

  // The longest sleep while anything is logged, so that a wall clock that was set is seen; and how soon a fault of the
  // database is tried again. In milliseconds.
  static constexpr unsigned int kLongest = 60'000;
  static constexpr unsigned int kRetry = 1'000;

  // No wall clock: the machine's.
  cProfileLogger(gateway::cServiceHost* host, cDataStore* store, WallClock wallClock = {});

  // The configuration of collectors may have changed.
  void Wake();

 private:
  void Run();
  void Sleep(std::int64_t now, std::optional<std::int64_t> next);

  cDataStore* m_store;
  WallClock m_wallClock;
  gateway::cTask m_run;
  bool m_changed = true;
  eFault m_lastFault = eFault::None;
};

}  // namespace tav::data
