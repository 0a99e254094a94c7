// SPDX-License-Identifier: Apache-2.0
// cTimeZone: the process lives in another time zone while the object does.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

class cTimeZone {
 public:
  explicit cTimeZone(const std::string& name) {
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
