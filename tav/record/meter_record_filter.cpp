// SPDX-License-Identifier: Apache-2.0
// Filtering a reading through the OBIS map; a source of its own, so that the record's files need nothing of the map.
#include <algorithm>
#include <array>
#include <list>
#include <string_view>

#include <tav/obis/obis_map.h>
#include <tav/record/meter_record.h>

namespace tav {

namespace {

// Kept although the map does not know them. Unlike them, 0-0:0.0.253 (unknown DLMS mapping) is dropped.
constexpr std::array<std::string_view, 3> kKept = {"0-0:0.0.0", "0-0:0.0.1", "0-0:0.0.254"};

bool IsKept(const std::string& name) { return std::find(kKept.begin(), kKept.end(), name) != kKept.end(); }

}  // namespace

void cMeterRecord::ProcessFilter(const cObisMap& map, cMeterRecord& out, bool keepNames) {
  out.Init();
  std::list<cMeasurementEntry> entries;
  entries.swap(m_entries);
  out = *this;  // all but the entries
  m_entries.swap(entries);
  for (cMeasurementEntry& entry : m_entries) {
    cObisMapEntry rule;
    const bool found = map.GetEntryByObisId(entry.GetName(), rule, true);
    if (!found && !IsKept(entry.GetName())) continue;
    if (found && !keepNames) entry.SetName(rule.GetObisIDWithoutChannel());
    out.AddMeasurementEntry(entry);
  }
}

}  // namespace tav
