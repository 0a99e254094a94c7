// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/time.h>

#include <ctime>

#include <tav/framework/helper.h>

namespace vorn {

cTime cTime::FromSeconds(unsigned int seconds, bool utc) {
  cTime time;
  time.m_seconds = seconds;
  time.m_utc = utc;
  return time;
}

cTime cTime::Now() { return FromSeconds(static_cast<unsigned int>(std::time(nullptr)), true); }

std::string cTime::ToISO8601String() const {
  const auto seconds = static_cast<std::time_t>(m_seconds);
  std::tm parts{};
  if (m_utc)
    gmtime_r(&seconds, &parts);
  else
    localtime_r(&seconds, &parts);
  const std::string text = FormatString("%04d-%02d-%02dT%02d:%02d:%02d", parts.tm_year + 1900, parts.tm_mon + 1,
                                        parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
  if (m_utc) return text + "Z";
  const long minutes = (parts.tm_gmtoff < 0 ? -parts.tm_gmtoff : parts.tm_gmtoff) / 60;
  return text + FormatString("%c%02ld:%02ld", parts.tm_gmtoff < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

}  // namespace vorn
