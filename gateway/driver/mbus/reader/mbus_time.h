// SPDX-License-Identifier: Apache-2.0
// Points in time as meters send them (EN 13757-3, data types F, G, I and J). They are the meter's local time; a due
// date may come back every year or every month.
#pragma once

#include <cstdint>
#include <string>

#include <gateway/driver/mbus/reader/mbus_types.h>

namespace tav::mbus {

struct cMBusTime {
  static constexpr std::uint16_t kEveryYear = 0;
  static constexpr std::uint8_t kEveryMonth = 15;

  bool hasDate = false;
  bool hasTime = false;
  bool hasSeconds = false;
  std::uint16_t year = kEveryYear;
  std::uint8_t month = 0;  // 0 as it was sent: not set
  std::uint8_t day = 0;
  std::uint8_t hour = 0;
  std::uint8_t minute = 0;
  std::uint8_t second = 0;

  // "2012-01-24T13:29:00", "2014-12-31", "--12-31" of every year, "---31" of every month, "13:29:30".
  std::string ToString() const;
};

// By the number of bytes: 2 is a date (G), 3 a time of day (J), 4 date and time (F), 6 the same with seconds (I). False
// for any other number, and for a time that its meter calls invalid or that is none; mark says which.
bool ReadTime(cBytes bytes, cMBusTime& time, const char*& mark);

}  // namespace tav::mbus
