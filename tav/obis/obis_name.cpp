// SPDX-License-Identifier: Apache-2.0
// Naming an identifier needs the map; so this member of the vocabulary stands beside it.
#include <string_view>

#include <tav/obis/obis_map.h>
#include <tav/record/meter_tav.h>

namespace tav {

namespace {

struct cReservedRow {
  std::string_view obis;
  const char* name;
};

// clang-format off
constexpr cReservedRow kReserved[] = {
  {"0-0:0.0.0",   "place holder"},
  {"0-0:0.0.1",   "missing key"},
  {"0-0:0.0.254", "unknown WMBUS mapping"},
  {"0-0:0.0.253", "unknown DLMS mapping"},
};
// clang-format on

}  // namespace

std::string cMeterTav::ObisName(const std::string& obis, const cObisMap& map) {
  cObisMapEntry entry;
  if (map.GetEntryByObisId(obis, entry, true)) return entry.GetName();
  for (const cReservedRow& row : kReserved)
    if (obis == row.obis) return row.name;
  return "unknown";
}

}  // namespace tav
