// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/mbus_vib_helper.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <limits>
#include <string_view>

#include <tav/obis/mbus_vif_tables.h>
#include <tav/obis/mbus_vife_table.h>

namespace tav {

namespace {

using namespace mbus;

constexpr std::size_t kCodes = 0x80;

// ---- the tables, one array access a code

constexpr eMBusUnit kTimes[] = {eMBusSecond, eMBusMinute, eMBusHour, eMBusDay};
constexpr eMBusUnit kLongTimes[] = {eMBusHour, eMBusDay, eMBusMonth, eMBusYear};

// What a row says for one of its codes.
constexpr cVifRow Of(cVifRow row, std::size_t code) {
  if (row.form == eTime) row.unit = kTimes[code % 4];
  if (row.form == eLongTime) row.unit = kLongTimes[code % 4];
  if (row.form == eScaled) row.scaler += static_cast<int>(code - row.first);
  return row;
}

constexpr cVifeRow Of(const cVifeRow& row, std::size_t) { return row; }

// Whether each row begins where the one before it ended, from the first code to the last.
template <typename Row, std::size_t count>
constexpr bool HaveEachCodeOnce(const Row (&rows)[count]) {
  std::size_t next = 0;
  for (const Row& row : rows) {
    if (row.first != next || row.last < row.first) return false;
    next = row.last + std::size_t{1};
  }
  return next == kCodes;
}

static_assert(HaveEachCodeOnce(kPrimaryRows));
static_assert(HaveEachCodeOnce(kFBRows));
static_assert(HaveEachCodeOnce(kFDRows));
static_assert(HaveEachCodeOnce(kVifeRows));

template <typename Row, std::size_t count>
constexpr std::array<Row, kCodes> ByCode(const Row (&rows)[count]) {
  std::array<Row, kCodes> all{};
  for (const Row& row : rows)
    for (std::size_t code = row.first; code <= row.last; ++code) all[code] = Of(row, code);
  return all;
}

constexpr auto kPrimary = ByCode(kPrimaryRows);
constexpr auto kFB = ByCode(kFBRows);
constexpr auto kFD = ByCode(kFDRows);
constexpr auto kVife = ByCode(kVifeRows);

// ---- unit texts

struct cUnitText {
  eMBusUnit unit;
  std::string_view text;  // ISO 8859-1
};

// clang-format off
constexpr cUnitText kUnitTexts[] = {
  {eMBusYear,                       "a"},
  {eMBusMonth,                      "mo"},
  {eMBusWeek,                       "wk"},
  {eMBusDay,                        "d"},
  {eMBusHour,                       "h"},
  {eMBusMinute,                     "min."},
  {eMBusSecond,                     "s"},
  {eMBusDegree,                     "\xB0"},
  {eMBusCelsius,                    "\xB0" "C"},
  {eMBusFahrenheit,                 "F"},
  {eMBusCurrency,                   "currency"},
  {eMBusMetre,                      "m"},
  {eMBusMetrePerSecond,             "m/s"},
  {eMBusCubicMetre,                 "m\xB3"},
  {eMBusCubicFoot,                  "feet\xB3"},
  {eMBusUsGallon,                   "USgallon"},
  {eMBusCorrectedCubicMetre,        "m\xB3"},
  {eMBusCubicMetrePerHour,          "m\xB3/h"},
  {eMBusCorrectedCubicMetrePerHour, "m\xB3/h"},
  {eMBusCubicMetrePerMinute,        "m\xB3/min"},
  {eMBusCubicMetrePerSecond,        "m\xB3/s"},
  {eMBusCubicMetrePerDay,           "m\xB3/d"},
  {eMBusCorrectedCubicMetrePerDay,  "m\xB3/d"},
  {eMBusUsGallonPerMinute,          "USgallon/min"},
  {eMBusUsGallonPerHour,            "USgallon/h"},
  {eMBusLitre,                      "l"},
  {eMBusKilogram,                   "kg"},
  {eMBusNewton,                     "N"},
  {eMBusNewtonMetre,                "Nm"},
  {eMBusPascal,                     "Pa"},
  {eMBusBar,                        "bar"},
  {eMBusJoule,                      "J"},
  {eMBusJoulePerHour,               "J/h"},
  {eMBusWatt,                       "W"},
  {eMBusVoltAmpere,                 "VA"},
  {eMBusVar,                        "var"},
  {eMBusWattHour,                   "Wh"},
  {eMBusVoltAmpereHour,             "VAh"},
  {eMBusVarHour,                    "varh"},
  {eMBusAmpere,                     "A"},
  {eMBusCoulomb,                    "C"},
  {eMBusVolt,                       "V"},
  {eMBusVoltPerMetre,               "V/m"},
  {eMBusFarad,                      "F"},
  {eMBusOhm,                        "Ohm"},
  {eMBusOhmMetre,                   "Ohm m\xB2/m"},
  {eMBusWeber,                      "Wb"},
  {eMBusTesla,                      "T"},
  {eMBusAmperePerMetre,             "A/m"},
  {eMBusHenry,                      "H"},
  {eMBusHertz,                      "Hz"},
  {eMBusPerWattHour,                "1/(Wh)"},
  {eMBusPerVarHour,                 "1/(varh)"},
  {eMBusPerVoltAmpereHour,          "1/(VAh)"},
  {eMBusVoltSquareHour,             "V\xB2h"},
  {eMBusAmpereSquareHour,           "A\xB2h"},
  {eMBusKilogramPerSecond,          "kg/s"},
  {eMBusKilogramPerHour,            "kg/h"},
  {eMBusSiemens,                    "S"},
  {eMBusKelvin,                     "K"},
  {eMBusPerVoltSquareHour,          "1/(V\xB2h)"},
  {eMBusPerAmpereSquareHour,        "1/(A\xB2h)"},
  {eMBusPerCubicMetre,              "1/m\xB3"},
  {eMBusPercent,                    "%"},
  {eMBusAmpereHour,                 "Ah"},
  {eMBusWattHourPerCubicMetre,      "Wh/m\xB3"},
  {eMBusJoulePerCubicMetre,         "J/m\xB3"},
  {eMBusMolPercent,                 "Mol %"},
  {eMBusGramPerCubicMetre,          "g/m\xB3"},
  {eMBusPascalSecond,               "Pa s"},
  {eMBusNoUnit,                     ""},
  {eMBusManufacturerSpecific,       ""},
  {eMBusCountOrTimePoint,           ""},
};
// clang-format on

constexpr bool TextsStandAtTheirCodes() {
  for (std::size_t at = 0; at < std::size(kUnitTexts); ++at)
    if (kUnitTexts[at].unit != at) return false;
  return std::size(kUnitTexts) == eMBusCountOrTimePoint + 1;
}

static_assert(TextsStandAtTheirCodes());

// ---- decoding

std::size_t CodeAt(const vorn::cData& vib, std::size_t at) { return vib[at] % kCodes; }

// A caller may preset any scaler: the sum ends where an int does.
int Sum(int scaler, int added) {
  using cLimits = std::numeric_limits<int>;
  return static_cast<int>(
      std::clamp<long long>(scaler + static_cast<long long>(added), cLimits::min(), cLimits::max()));
}

void Take(const cVifRow& vif, cMBusVIBHelper& helper) {
  if (vif.form == eKeep) return;
  if (vif.form != eKeepUnit) helper.unit = vif.unit;
  helper.scaler = vif.scaler;
}

}  // namespace

void cMBusVIBHelper::GetUnitScaler() {
  if (VIB.IsEmpty()) return;
  const cVifRow& vif = kPrimary[CodeAt(VIB, 0)];
  switch (vif.form) {
    case eByFB:
      return GetUnitScalerFromFBVif();
    case eByFD:
      return GetUnitScalerFromFDVif();
    // What is no VIF may still be followed by VIFEs.
    case eNoRow:
      return GetUnitScalerExtension();
    default:
      return Take(vif, *this);
  }
}

void cMBusVIBHelper::GetUnitScalerFromFBVif() {
  if (VIB.GetSize() > 1) Take(kFB[CodeAt(VIB, 1)], *this);
}

void cMBusVIBHelper::GetUnitScalerFromFDVif() {
  if (VIB.GetSize() > 1) Take(kFD[CodeAt(VIB, 1)], *this);
}

void cMBusVIBHelper::GetUnitScalerExtension() {
  for (std::size_t at = 1; at < VIB.GetSize(); ++at) {
    const cVifeRow& vife = kVife[CodeAt(VIB, at)];
    scaler = Sum(scaler, vife.scaler);
    extensions.push_back(vife.extension);
    if (vife.form == eAndNotRecognised) extensions.push_back(eVifeNotRecognised);
  }
}

std::string cMBusVIBHelper::GetUnitString() const {
  return unit < std::size(kUnitTexts) ? std::string(kUnitTexts[unit].text) : std::string();
}

}  // namespace tav
