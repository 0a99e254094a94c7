// SPDX-License-Identifier: Apache-2.0
// Bytes of M-Bus tests as hexadecimal digits.
#pragma once

#include <string>

#include <gateway/driver/mbus/reader/mbus_types.h>
#include <tav/framework/data.h>

// "10 40 05 45 16".
inline std::string Hex(const std::string& bytes) { return vorn::cData(bytes).ToString(0); }

inline std::string FromHex(const std::string& digits) {
  vorn::cData data;
  if (!vorn::cData::FromHex(digits, data)) return "no hexadecimal digits: " + digits;
  return data.AsText();
}

inline tav::mbus::cBytes View(const std::string& bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}
