// SPDX-License-Identifier: Apache-2.0
// Alarms: a function called once when a time is over, on the loop's clock. Timers, back-off and health checks are made
// of them. cAlarms is the loop's queue, cAlarm one entry that leaves it when it dies.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

#include <tav/framework/clock.h>

namespace vorn::detail {

class cAlarm;

class cAlarms {
 public:
  explicit cAlarms(std::shared_ptr<const cClock> clock) : m_clock(std::move(clock)) {}

  const cClock& GetClock() const { return *m_clock; }
  bool IsEmpty() const { return m_byDue.empty(); }
  // Milliseconds until the loop has to look here again; negative: no alarm is set.
  std::int64_t GetWait() const;
  // Calls what is due, earliest first; how many there were. An alarm set meanwhile waits for the next call.
  std::size_t Fire();

 private:
  friend class cAlarm;
  // When, which start it was (those of one time come in the order they were started), whose.
  using Entry = std::tuple<std::int64_t, std::uint64_t, cAlarm*>;
  using Set = std::set<Entry>;

  std::shared_ptr<const cClock> m_clock;
  std::uint64_t m_starts = 0;
  Set m_byDue;     // when it may come
  Set m_byLatest;  // when it must: due and slack
};

class cAlarm {
 public:
  cAlarm(cAlarms& alarms, std::function<void()> onDue) : m_alarms(alarms), m_onDue(std::move(onDue)) {}
  ~cAlarm() { Stop(); }
  cAlarm(const cAlarm&) = delete;
  cAlarm& operator=(const cAlarm&) = delete;

  // Restarts a running one.
  void Start(std::int64_t milliseconds, std::int64_t slack = 0);
  void Stop();
  bool IsRunning() const { return m_running; }

 private:
  friend class cAlarms;

  cAlarms& m_alarms;
  std::function<void()> m_onDue;
  std::int64_t m_due = 0;
  std::int64_t m_latest = 0;
  std::uint64_t m_start = 0;
  bool m_running = false;
};

}  // namespace vorn::detail
