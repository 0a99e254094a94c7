// SPDX-License-Identifier: Apache-2.0
#include "alarm.h"

#include <vector>

namespace vorn::detail {

std::int64_t cAlarms::GetWait() const {
  if (m_byLatest.empty()) return -1;
  const std::int64_t wait = std::get<0>(*m_byLatest.begin()) - m_clock->Now();
  return wait > 0 ? wait : 0;
}

std::size_t cAlarms::Fire() {
  if (m_byDue.empty()) return 0;
  const std::int64_t now = m_clock->Now();
  // Those due now are noted first, so that one that starts itself again with no delay does not hold the loop.
  std::vector<Entry> due;
  for (const Entry& entry : m_byDue) {
    if (std::get<0>(entry) > now) break;
    due.push_back(entry);
  }
  std::size_t fired = 0;
  for (const Entry& entry : due) {
    // An earlier one may have stopped, restarted or destroyed it.
    if (m_byDue.find(entry) == m_byDue.end()) continue;
    cAlarm* const alarm = std::get<cAlarm*>(entry);
    alarm->Stop();
    ++fired;
    const std::function<void()> onDue = alarm->m_onDue;  // a copy: the alarm may die in its own call
    onDue();
  }
  return fired;
}

void cAlarm::Start(std::int64_t milliseconds, std::int64_t slack) {
  Stop();
  m_due = m_alarms.m_clock->Now() + milliseconds;
  m_latest = m_due + slack;
  m_start = ++m_alarms.m_starts;
  m_alarms.m_byDue.emplace(m_due, m_start, this);
  m_alarms.m_byLatest.emplace(m_latest, m_start, this);
  m_running = true;
}

void cAlarm::Stop() {
  if (!m_running) return;
  m_running = false;
  m_alarms.m_byDue.erase({m_due, m_start, this});
  m_alarms.m_byLatest.erase({m_latest, m_start, this});
}

}  // namespace vorn::detail
