// SPDX-License-Identifier: Apache-2.0
// Answers written in hexadecimal digits, and readings as texts.
#pragma once

#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <tav/framework/data.h>
#include <tav/record/meter_record.h>

namespace tav::mbus {

inline vorn::cData FromDigits(std::string digits) {
  std::erase(digits, ' ');
  vorn::cData bytes;
  if (!vorn::cData::FromHex(digits, bytes)) throw std::invalid_argument(digits);
  return bytes;
}

// An answer of the meter at 5, from its control information on.
inline std::string MakeFrame(const std::string& digits) {
  const vorn::cData bytes = FromDigits(digits);
  return MakeLongFrame(eRspUd, 5, bytes[0], {bytes.GetBytes() + 1, bytes.GetSize() - 1});
}
// Of a heat meter, from its first record on.
inline std::string HeatFrame(const std::string& digits) {
  return MakeFrame("72 44774477 2D2C 34 04 06 00 0000" + digits);
}

// "name=value unit".
inline std::vector<std::string> Entries(const cMeterRecord& reading) {
  std::vector<std::string> texts;
  for (const cMeasurementEntry& entry : reading.GetMeasurementEntries())
    texts.push_back(entry.GetName() + "=" + entry.GetValue() + " " + entry.GetUnit());
  return texts;
}

}  // namespace tav::mbus
