// SPDX-License-Identifier: Apache-2.0
// cClockLog: what the gateway's clock has said, boot by boot, so that a clock that was wrong costs no order.
//
// The seconds since boot (OSC) of a reading never jump, its time may: so readings that were timed by the gateway's own
// clock follow each other by boot and OSC, whatever the clock said. A step of the clock is noted with the OSC at which
// it was seen; what the clock says last in a boot is taken to be right for all of it.
//
// Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <optional>
#include <string>

#include <gateway/service/data/storage/dictionary.h>

namespace tav::data {

// One moment by both clocks.
struct cMoment {
  std::int64_t utc = 0;  // seconds since 1970
  std::int64_t osc = 0;  // seconds since boot
  std::string boot;      // names the boot

  // The machine's, now.
  static cMoment Now();
};

class cClockLog {
 public:
  // Both clocks count whole seconds, and not at the same time.
  static constexpr std::int64_t kTolerance = 2;

  explicit cClockLog(SQLite::Database& database);

  // Call before readings are stored.
  void Note(const cMoment& now);

  // The boot of a reading, or of one of its values; 0 when its time is not by the gateway's clock, or its OSC cannot be
  // of this boot.
  std::int64_t BootOf(unsigned int timeSource, std::int64_t osc) const;
  // Its place in the order of such readings; 0 for boot 0.
  static std::int64_t OrderOf(std::int64_t boot, std::int64_t osc) { return boot == 0 ? 0 : boot << 32 | osc; }

 private:
  void Begin(const cMoment& now);

  cDictionary m_boots;
  SQLite::Statement m_last;
  SQLite::Statement m_insert;
  std::string m_bootName;
  std::int64_t m_boot = 0;
  std::int64_t m_osc = 0;                // at the last note
  std::optional<std::int64_t> m_offset;  // UTC less OSC, as it was noted last
};

}  // namespace tav::data
