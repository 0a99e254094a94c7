// SPDX-License-Identifier: Apache-2.0
// cProfileEvent: the event on which a collector logs, as a raster of points in time: every so many seconds, days or
// months.
//
// "15min", "hour" and a plain count of seconds ("900") lie on multiples of UTC; "day" and "month" on midnight of the
// local time (TZ), so that their periods have different lengths. A distance of n takes every n-th of them, counted from
// 1970 (months: from year 0, so that 3 gives quarters and 12 years).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tav::data {

class cProfileEvent {
 public:
  static constexpr const char* kPossible = "15min, hour, day, month, or a count of seconds";
  // The longest count of seconds: as many as a year has at most.
  static constexpr unsigned int kMaxSeconds = 366u * 86400;
  static constexpr unsigned int kMaxDistance = 1200;

  // Nothing when the text is no event, or the distance too large. A distance of 0 is one of 1.
  static std::optional<cProfileEvent> Parse(const std::string& type, unsigned int distance = 1);

  // All times in seconds UTC. The first event that is not before a time; the last one that is not behind it.
  std::int64_t Next(std::int64_t time) const;
  std::int64_t Last(std::int64_t time) const { return Start(Index(time)); }
  // The event before an event: its period begins behind it.
  std::int64_t Before(std::int64_t event) const { return Start(Index(event) - 1); }

 private:
  enum class eUnit { Second, Day, Month };

  cProfileEvent(eUnit unit, std::int64_t length) : m_unit(unit), m_length(length) {}

  // Periods are numbered; they begin with their event.
  std::int64_t Index(std::int64_t time) const;
  std::int64_t Start(std::int64_t index) const;

  eUnit m_unit;
  std::int64_t m_length;  // of a period, in units
};

}  // namespace tav::data
