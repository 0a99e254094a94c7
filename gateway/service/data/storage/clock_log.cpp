// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/clock_log.h>

#include <SQLiteCpp/Database.h>

#include <cstdlib>
#include <fstream>

#include <gateway/database/statement.h>
#include <tav/framework/helper.h>
#include <tav/framework/time.h>
#include <tav/framework/trace.h>
#include <tav/record/meter_tav.h>

namespace tav::data {

namespace {

std::string ReadBootName() {
  std::string name;
  std::ifstream("/proc/sys/kernel/random/boot_id") >> name;
  return name.empty() ? "unknown" : name;
}

std::string TimeText(std::int64_t utc) {
  return vorn::cTime::FromSeconds(static_cast<unsigned int>(utc), true).ToISO8601String();
}

}  // namespace

cMoment cMoment::Now() {
  static const std::string boot = ReadBootName();
  return {vorn::cTime::Now().GetSeconds(), vorn::GetOSC(), boot};
}

cClockLog::cClockLog(SQLite::Database& database)
    : m_boots(database, "boot", {"name"}),
      m_last(database, "SELECT utc_offset FROM clock WHERE boot=? ORDER BY osc DESC LIMIT 1"),
      m_insert(database, "INSERT OR REPLACE INTO clock(boot, osc, utc_offset) VALUES(?,?,?)") {}

void cClockLog::Note(const cMoment& now) {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  if (m_boot == 0 || now.boot != m_bootName) Begin(now);
  m_osc = now.osc;
  const std::int64_t offset = now.utc - now.osc;
  if (m_offset && std::abs(offset - *m_offset) <= kTolerance) return;
  if (m_offset)
    vorn::Trace(
        unit, 8, "the clock was set: it is ", [&] { return TimeText(now.utc); }, ", it would have been ",
        [&] { return TimeText(now.osc + *m_offset); });
  Run(m_insert, m_boot, now.osc, offset);
  m_offset = offset;
}

void cClockLog::Begin(const cMoment& now) {
  m_bootName = now.boot;
  m_boot = m_boots.Id({now.boot});
  m_offset.reset();
  ForEach(
      m_last, [this](SQLite::Statement& row) { m_offset = row.getColumn(0).getInt64(); }, m_boot);
}

std::int64_t cClockLog::BootOf(unsigned int timeSource, std::int64_t osc) const {
  const bool isGateways = timeSource == cMeterTav::eTsRtc || timeSource == cMeterTav::eTsNetworkTime;
  return isGateways && osc > 0 && osc <= m_osc + kTolerance ? m_boot : 0;
}

}  // namespace tav::data
