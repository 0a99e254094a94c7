// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/obis_code.h>

#include <cstdio>

namespace tav::sml {

namespace {

struct cObisName {
  std::uint64_t obis;
  const char* name;
};

// IEC 62056-61, table of electricity quantities; identifiers of group A 129 are those of the German meter makers.
constexpr cObisName kNames[] = {
    {PackObis(0, 0, 96, 1, 255), "serial number"},
    {PackObis(1, 0, 0, 0, 0), "serial number"},
    {PackObis(1, 0, 0, 0, 9), "server id"},
    {PackObis(1, 0, 0, 2, 0, 0), "firmware version"},
    {PackObis(1, 0, 1, 7, 0), "active power import"},
    {PackObis(1, 0, 1, 7, 1), "active power import, phase L1"},
    {PackObis(1, 0, 1, 8, 0), "active energy import, total"},
    {PackObis(1, 0, 1, 8, 1), "active energy import, tariff 1"},
    {PackObis(1, 0, 1, 8, 2), "active energy import, tariff 2"},
    {PackObis(1, 0, 1, 8, 0, 96), "active energy import, last day"},
    {PackObis(1, 0, 1, 8, 0, 97), "active energy import, last 7 days"},
    {PackObis(1, 0, 1, 8, 0, 98), "active energy import, last 30 days"},
    {PackObis(1, 0, 1, 8, 0, 99), "active energy import, last 365 days"},
    {PackObis(1, 0, 1, 8, 0, 100), "active energy import, since last reset"},
    {PackObis(1, 0, 2, 7, 0), "active power export"},
    {PackObis(1, 0, 2, 8, 0), "active energy export, total"},
    {PackObis(1, 0, 2, 8, 1), "active energy export, tariff 1"},
    {PackObis(1, 0, 2, 8, 2), "active energy export, tariff 2"},
    {PackObis(1, 0, 2, 8, 0, 96), "active energy export, last day"},
    {PackObis(1, 0, 2, 8, 0, 97), "active energy export, last 7 days"},
    {PackObis(1, 0, 2, 8, 0, 98), "active energy export, last 30 days"},
    {PackObis(1, 0, 2, 8, 0, 99), "active energy export, last 365 days"},
    {PackObis(1, 0, 2, 8, 0, 100), "active energy export, since last reset"},
    {PackObis(1, 0, 13, 7, 0), "power factor"},
    {PackObis(1, 0, 14, 7, 0), "frequency"},
    {PackObis(1, 0, 15, 7, 0), "active power, absolute"},
    {PackObis(1, 0, 16, 7, 0), "active power, import less export"},
    {PackObis(1, 0, 31, 7, 0), "current, phase L1"},
    {PackObis(1, 0, 32, 7, 0), "voltage, phase L1"},
    {PackObis(1, 0, 36, 7, 0), "active power, phase L1"},
    {PackObis(1, 0, 51, 7, 0), "current, phase L2"},
    {PackObis(1, 0, 52, 7, 0), "voltage, phase L2"},
    {PackObis(1, 0, 56, 7, 0), "active power, phase L2"},
    {PackObis(1, 0, 71, 7, 0), "current, phase L3"},
    {PackObis(1, 0, 72, 7, 0), "voltage, phase L3"},
    {PackObis(1, 0, 76, 7, 0), "active power, phase L3"},
    {PackObis(1, 0, 81, 7, 1), "phase angle, voltage L2 to voltage L1"},
    {PackObis(1, 0, 81, 7, 2), "phase angle, voltage L3 to voltage L1"},
    {PackObis(1, 0, 81, 7, 4), "phase angle, current L1 to voltage L1"},
    {PackObis(1, 0, 81, 7, 15), "phase angle, current L2 to voltage L2"},
    {PackObis(1, 0, 81, 7, 26), "phase angle, current L3 to voltage L3"},
    {PackObis(1, 0, 96, 1, 0), "server id"},
    {PackObis(1, 0, 96, 5, 0), "status word"},
    {PackObis(1, 0, 96, 5, 5), "status word"},
    {PackObis(1, 0, 96, 50, 1, 1), "manufacturer"},
    {PackObis(1, 0, 96, 50, 1, 4), "hardware version"},
    {PackObis(1, 0, 96, 50, 4, 4), "parameter version"},
    {PackObis(1, 0, 96, 90, 2, 1), "firmware checksum"},
    {PackObis(1, 0, 97, 97, 0, 0), "error word"},
    {PackObis(129, 129, 199, 130, 3), "manufacturer"},
    {PackObis(129, 129, 199, 130, 5), "public key"},
};

constexpr bool NamesAreOnce() {
  for (const cObisName& one : kNames)
    for (const cObisName& other : kNames)
      if (&one != &other && one.obis == other.obis) return false;
  return true;
}
static_assert(NamesAreOnce(), "an identifier has one name");

}  // namespace

std::string ObisText(std::uint64_t obis) {
  const auto group = [obis](int shift) { return static_cast<unsigned int>(obis >> shift & 0xFF); };
  char text[32];
  std::snprintf(text, sizeof text, "%u-%u:%u.%u.%u*%u", group(40), group(32), group(24), group(16), group(8), group(0));
  return text;
}

const char* ObisCommonName(std::uint64_t obis) {
  for (const cObisName& row : kNames)
    if (row.obis == obis) return row.name;
  return nullptr;
}

}  // namespace tav::sml
