// SPDX-License-Identifier: Apache-2.0
// cTime: a point in time, in seconds since 1970-01-01 UTC.
//
// Whether it prints in UTC or in local time is state of the object: copied, but neither compared nor sent.
#pragma once

#include <string>

#include <tav/framework/export.h>

namespace vorn {

class VORN_API cTime {
 public:
  // 1970-01-01T00:00:00Z.
  cTime() = default;

  // utc: print in UTC ("Z"), otherwise in local time with its offset.
  static cTime FromSeconds(unsigned int seconds, bool utc);
  static cTime Now();

  unsigned int GetSeconds() const { return m_seconds; }
  // "2014-03-01T12:00:00Z", local "2014-03-01T13:00:00+01:00".
  std::string ToISO8601String() const;

  friend bool operator==(const cTime& a, const cTime& b) { return a.m_seconds == b.m_seconds; }
  friend bool operator!=(const cTime& a, const cTime& b) { return !(a == b); }
  friend bool operator<(const cTime& a, const cTime& b) { return a.m_seconds < b.m_seconds; }

 private:
  unsigned int m_seconds = 0;
  bool m_utc = true;
};

}  // namespace vorn
