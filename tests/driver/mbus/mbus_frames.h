// SPDX-License-Identifier: Apache-2.0
// The words of the M-Bus tests: frames of meters put together from their fields.
#pragma once

#include <string>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <tests/driver/mbus/mbus_digits.h>

// A long frame around C, A, CI and data.
inline std::string LongFrame(const std::string& digits) {
  const std::string fields = FromHex(digits);
  const tav::mbus::cBytes bytes = View(fields);
  return tav::mbus::MakeLongFrame(bytes[0], bytes[1], bytes[2], bytes.subspan(3));
}

// An answer of the heat meter SPX 44950146 at address 5, with these records.
inline std::string Answer(const std::string& records) {
  return LongFrame("08 05 72 46 01 95 44 18 4E 34 04 54 10 00 00 " + records);
}
inline constexpr std::size_t kAnswerRecords = 19;  // where they begin

// What an ordinary meter sends: an energy, a volume at a due date, the flow's greatest, the time, an idle filler, its
// own.
inline std::string OrdinaryAnswer() {
  return Answer("0C 06 12 34 56 00 4C 13 27 04 85 02 9B 10 3B 45 23 01 04 6D 1D 0D 98 11 2F 2F 0F 01 02 03");
}
