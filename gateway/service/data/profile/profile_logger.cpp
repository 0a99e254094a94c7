// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_logger.h>

#include <algorithm>
#include <utility>

#include <tav/framework/time.h>
#include <tav/framework/trace.h>

namespace tav::data {

namespace {

std::int64_t MachineTime() { return vorn::cTime::Now().GetSeconds(); }

}  // namespace

cProfileLogger::cProfileLogger(gateway::cServiceHost* host, cDataStore* store, WallClock wallClock)
    : m_store(store), m_wallClock(wallClock ? std::move(wallClock) : MachineTime), m_run(host, [this] { Run(); }) {
  m_run.Post();
}

void cProfileLogger::Wake() {
  m_changed = true;
  m_run.Post();
}

void cProfileLogger::Run() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  const std::int64_t now = m_wallClock();
  bool done = false;
  std::optional<std::int64_t> next;
  const cFault fault = m_store->Write([&](cTables& tables) {
    if (m_changed) tables.profiles.TakeCollectors();
    done = tables.profiles.LogUntil(now);
    next = tables.profiles.FindNext(now);
  });
  if (fault && fault.kind != m_lastFault) vorn::Trace(unit, 2, fault.text, ": the collectors wait");
  m_lastFault = fault.kind;
  if (fault) return m_run.Start(kRetry, kRetry);
  m_changed = false;
  if (!done) return m_run.Post();
  Sleep(now, next);
}

void cProfileLogger::Sleep(std::int64_t now, std::optional<std::int64_t> next) {
  m_run.Stop();
  if (!next) return;
  constexpr std::int64_t kSecond = 1000;
  m_run.Start(static_cast<unsigned int>(std::min<std::int64_t>((*next - now) * kSecond, kLongest)));
}

}  // namespace tav::data
