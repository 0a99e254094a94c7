// SPDX-License-Identifier: Apache-2.0
// cTimeZone: another local time while the object lives. Central European by default, told without a zone file.
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

class cTimeZone {
 public:
  explicit cTimeZone(const char* zone = "CET-1CEST,M3.5.0,M10.5.0/3") {
    if (const char* before = std::getenv("TZ")) m_before = before;
    Set(zone);
  }
  ~cTimeZone() { Set(m_before.c_str()); }
  cTimeZone(const cTimeZone&) = delete;
  cTimeZone& operator=(const cTimeZone&) = delete;

 private:
  static void Set(const char* zone) {
    if (*zone != '\0')
      setenv("TZ", zone, 1);
    else
      unsetenv("TZ");
    tzset();
  }

  std::string m_before;
};
