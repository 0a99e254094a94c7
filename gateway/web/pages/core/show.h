// SPDX-License-Identifier: Apache-2.0
// How values are shown to people: numbers with their unit, times in local time, names by the OBIS map.
#pragma once

#include <string>

#include <gateway/web/pages/core/html.h>
#include <tav/framework/record.h>
#include <tav/obis/obis_map.h>

namespace tav::pages {

// A value's row as the database control service gives it.
struct cShownValue {
  cShownValue() = default;
  explicit cShownValue(const vorn::cRecord& row);

  std::string meterId;
  std::string obisId;
  std::string value;  // exactly as it is stored
  std::string unit;   // UTF-8
  unsigned int utc = 0;
  std::string when;  // local time, to the second
  std::string timeSource;
};

// "2024-03-01 13:00:00", local time; empty for 0.
std::string ShowTime(unsigned int utc);
// The time for programs and as a tooltip: <time datetime="2024-03-01T12:00:00Z">2024-03-01 13:00:00</time>.
cHtml TimeElement(unsigned int utc);
// What an identifier means: its rule's name, else the identifier.
std::string ObisText(const std::string& obisId, const cObisMap& map);

}  // namespace tav::pages
