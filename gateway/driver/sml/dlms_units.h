// SPDX-License-Identifier: Apache-2.0
// The physical units of DLMS/COSEM, which SML uses as well (IEC 62056-62, interface class Register, enumeration of
// scaler_unit; codes 58, 59, 68, 69 and 73 to 253 are reserved there).
#pragma once

#include <cstdint>

namespace tav::sml {

struct cDlmsUnit {
  std::uint8_t code;
  const char* text;  // UTF-8
};

inline constexpr std::uint8_t kDlmsWatt = 27;
inline constexpr std::uint8_t kDlmsWattHour = 30;
inline constexpr std::uint8_t kDlmsAmpere = 33;
inline constexpr std::uint8_t kDlmsVolt = 35;
inline constexpr std::uint8_t kDlmsHertz = 44;
inline constexpr std::uint8_t kDlmsCount = 255;

inline constexpr cDlmsUnit kDlmsUnits[] = {
    {1, "a"},          // year
    {2, "mo"},         // month
    {3, "wk"},         // week
    {4, "d"},          // day
    {5, "h"},          // hour
    {6, "min"},        // minute
    {7, "s"},          // second
    {8, "°"},          // phase angle
    {9, "°C"},         // temperature
    {10, "currency"},  // local currency
    {11, "m"},         // length
    {12, "m/s"},       // speed
    {13, "m³"},        // volume
    {14, "m³"},        // corrected volume
    {15, "m³/h"},      // volume flux
    {16, "m³/h"},      // corrected volume flux
    {17, "m³/d"},      // volume flux
    {18, "m³/d"},      // corrected volume flux
    {19, "l"},         // volume
    {20, "kg"},        // mass
    {21, "N"},         // force
    {22, "Nm"},        // energy
    {23, "Pa"},        // pressure
    {24, "bar"},       // pressure
    {25, "J"},         // energy
    {26, "J/h"},       // thermal power
    {27, "W"},         // active power
    {28, "VA"},        // apparent power
    {29, "var"},       // reactive power
    {30, "Wh"},        // active energy
    {31, "VAh"},       // apparent energy
    {32, "varh"},      // reactive energy
    {33, "A"},         // current
    {34, "C"},         // electrical charge
    {35, "V"},         // voltage
    {36, "V/m"},       // electric field strength
    {37, "F"},         // capacitance
    {38, "Ω"},         // resistance
    {39, "Ωm²/m"},     // resistivity
    {40, "Wb"},        // magnetic flux
    {41, "T"},         // magnetic flux density
    {42, "A/m"},       // magnetic field strength
    {43, "H"},         // inductance
    {44, "Hz"},        // frequency
    {45, "1/Wh"},      // meter constant, active energy
    {46, "1/varh"},    // meter constant, reactive energy
    {47, "1/VAh"},     // meter constant, apparent energy
    {48, "V²h"},       // volt-squared hours
    {49, "A²h"},       // ampere-squared hours
    {50, "kg/s"},      // mass flux
    {51, "S"},         // conductance
    {52, "K"},         // temperature
    {53, "1/(V²h)"},   // meter constant, volt-squared hours
    {54, "1/(A²h)"},   // meter constant, ampere-squared hours
    {55, "1/m³"},      // meter constant, volume
    {56, "%"},         // percentage
    {57, "Ah"},        // ampere hours
    {60, "Wh/m³"},     // energy per volume
    {61, "J/m³"},      // calorific value
    {62, "Mol %"},     // molar fraction of gas
    {63, "g/m³"},      // mass density
    {64, "Pa s"},      // dynamic viscosity
    {65, "J/kg"},      // specific energy
    {66, "g/cm²"},     // pressure, gram-force per square centimetre
    {67, "atm"},       // pressure
    {70, "dBm"},       // signal strength
    {71, "dBµV"},      // signal strength
    {72, "dB"},        // logarithmic ratio
    {254, "other"},    // a unit that this list does not have
    {255, "count"},    // no unit
};

// The text of a unit code, null when the list does not have it.
constexpr const char* DlmsUnitText(unsigned int code) {
  for (const cDlmsUnit& unit : kDlmsUnits)
    if (unit.code == code) return unit.text;
  return nullptr;
}

constexpr bool DlmsUnitsAscend() {
  unsigned int before = 0;
  for (const cDlmsUnit& unit : kDlmsUnits) {
    if (unit.code <= before || *unit.text == '\0') return false;
    before = unit.code;
  }
  return true;
}
static_assert(DlmsUnitsAscend(), "codes ascend, no text is empty");

// Adds the units that the library's table (tav::_obisUnits) lacks; its own rows stay as they are. Call it when the
// process starts, before the first reading is imported.
void AddDlmsUnits();

}  // namespace tav::sml
