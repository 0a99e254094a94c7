// SPDX-License-Identifier: Apache-2.0
// The texts of time sources, without copying them. Internal: records are read and written by the thousand.
#pragma once

#include <string_view>

#include <tav/framework/record.h>
#include <tav/record/meter_tav.h>

namespace tav {

// In the order of their values.
constexpr std::string_view kTimeSources[] = {
    "Unknown", "Network Time", "Meter", "Meter UTC", "Meter DS", "Meter NonDS", "RTC", "Undefined",
};

constexpr std::string_view TimeSourceText(cMeterTav::eTimeSource source) {
  return kTimeSources[source < cMeterTav::eTsUndefined ? source : cMeterTav::eTsUndefined];
}

constexpr cMeterTav::eTimeSource TimeSourceOf(std::string_view text) {
  unsigned int value = 0;
  while (value < cMeterTav::eTsUndefined && text != kTimeSources[value]) ++value;
  return static_cast<cMeterTav::eTimeSource>(value);
}

// "Undefined" for a missing one, as for any text that is none of the above.
inline cMeterTav::eTimeSource ReadTimeSource(const vorn::cRecordPar& par) {
  return par.IsText() ? TimeSourceOf(par.GetBytesView()) : TimeSourceOf(par.GetText());
}

}  // namespace tav
