// SPDX-License-Identifier: Apache-2.0
// cTimeZone: another time zone for the process while the object lives; by itself that of Central Europe.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

class cTimeZone {
 public:
  explicit cTimeZone(const std::string& name = "CET-1CEST,M3.5.0,M10.5.0/3") {
    if (const char* before = std::getenv("TZ")) m_before = before;
    setenv("TZ", name.c_str(), 1);
    tzset();
  }
  ~cTimeZone() {
    if (m_before)
      setenv("TZ", m_before->c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  cTimeZone(const cTimeZone&) = delete;
  cTimeZone& operator=(const cTimeZone&) = delete;

 private:
  std::optional<std::string> m_before;
};
