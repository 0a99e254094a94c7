// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/list_reading.h>

#include <algorithm>
#include <span>
#include <vector>

#include <gateway/driver/sml/get_list_record.h>
#include <gateway/driver/sml/obis_code.h>

namespace tav::sml {

namespace {

constexpr std::uint64_t kNoGroupF = 255;

bool HasGroupF(const cSmlEntry& entry) { return (entry.obis & 0xFF) != kNoGroupF; }

// Whether the import takes it for one of those before it.
bool IsConfused(const cSmlEntry& entry, std::span<const cSmlEntry> before) {
  return HasGroupF(entry) && std::any_of(before.begin(), before.end(), [&](const cSmlEntry& other) {
           return HasGroupF(other) && other.obis >> 8 == entry.obis >> 8;
         });
}

}  // namespace

bool ToReading(const cSmlList& list, const std::string& driver, const std::string& medium,
               cMeterTav::eTimeSource timesource, unsigned int timestamp, cMeterRecord& reading) {
  const auto import = [&](std::span<const cSmlEntry> entries, cMeterRecord& to) {
    cSmlList part = list;
    part.entries = entries;
    return to.FromSmlGetListRes(driver, medium, timesource, timestamp, ToGetListRecord(part));
  };
  std::vector<cSmlEntry> clear, confused;
  for (std::size_t i = 0; i < list.entries.size(); ++i)
    (IsConfused(list.entries[i], list.entries.first(i)) ? confused : clear).push_back(list.entries[i]);
  if (!import(clear, reading)) return false;
  for (const cSmlEntry& entry : confused) {
    cMeterRecord single;
    if (!import({&entry, 1}, single) || single.GetMeasurementEntries().empty()) continue;
    cMeasurementEntry measurement = single.GetMeasurementEntries().front();
    measurement.SetName(ObisText(entry.obis));
    reading.AddMeasurementEntry(measurement);
  }
  return !reading.GetMeasurementEntries().empty();
}

}  // namespace tav::sml
