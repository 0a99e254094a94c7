// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_vif_names.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <gateway/driver/mbus/reader/mbus_vib.h>

namespace tav::mbus {

namespace {

struct cNameRow {
  std::uint8_t first;
  std::uint8_t last;
  const char* name;
};

// clang-format off

// EN 13757-3, primary VIF codes.
constexpr cNameRow kPrimary[] = {
  {0x00, 0x0F, "Energy"},
  {0x10, 0x17, "Volume"},
  {0x18, 0x1F, "Mass"},
  {0x20, 0x23, "On time"},
  {0x24, 0x27, "Operating time"},
  {0x28, 0x37, "Power"},
  {0x38, 0x4F, "Volume flow"},
  {0x50, 0x57, "Mass flow"},
  {0x58, 0x5B, "Flow temperature"},
  {0x5C, 0x5F, "Return temperature"},
  {0x60, 0x63, "Temperature difference"},
  {0x64, 0x67, "External temperature"},
  {0x68, 0x6B, "Pressure"},
  {0x6C, 0x6C, "Date"},
  {0x6D, 0x6D, "Date and time"},
  {0x6E, 0x6E, "Units for H.C.A."},
  {0x6F, 0x6F, "reserved"},
  {0x70, 0x73, "Averaging duration"},
  {0x74, 0x77, "Actuality duration"},
  {0x78, 0x78, "Fabrication number"},
  {0x79, 0x79, "Enhanced identification"},
  {0x7A, 0x7A, "Address"},
  {0x7B, 0x7B, "Extension of VIF codes, table FB"},
  {0x7C, 0x7C, "VIF in following string"},
  {0x7D, 0x7D, "Extension of VIF codes, table FD"},
  {0x7E, 0x7E, "Any VIF"},
  {0x7F, 0x7F, "Manufacturer specific"},
};

// EN 13757-3, alternate VIF codes by FB.
constexpr cNameRow kAlternate[] = {
  {0x00, 0x01, "Energy"},
  {0x02, 0x03, "Reactive energy"},
  {0x04, 0x05, "Apparent energy"},
  {0x06, 0x07, "reserved"},
  {0x08, 0x09, "Energy"},
  {0x0A, 0x0B, "reserved"},
  {0x0C, 0x0F, "Energy"},
  {0x10, 0x11, "Volume"},
  {0x12, 0x13, "reserved"},
  {0x14, 0x17, "Reactive power"},
  {0x18, 0x19, "Mass"},
  {0x1A, 0x1B, "Relative humidity"},
  {0x1C, 0x1F, "reserved"},
  {0x20, 0x23, "Volume"},
  {0x24, 0x26, "Volume flow"},
  {0x27, 0x27, "reserved"},
  {0x28, 0x29, "Power"},
  {0x2A, 0x2A, "Phase U-U, volt to volt"},
  {0x2B, 0x2B, "Phase U-I, volt to current"},
  {0x2C, 0x2F, "Frequency"},
  {0x30, 0x31, "Power"},
  {0x32, 0x33, "reserved"},
  {0x34, 0x37, "Apparent power"},
  {0x38, 0x57, "reserved"},
  {0x58, 0x5B, "Flow temperature"},
  {0x5C, 0x5F, "Return temperature"},
  {0x60, 0x63, "Temperature difference"},
  {0x64, 0x67, "External temperature"},
  {0x68, 0x6F, "reserved"},
  {0x70, 0x77, "Cold or warm temperature limit"},
  {0x78, 0x7F, "Cumulative maximum of active power"},
};

// EN 13757-3, main VIFE-code extension by FD.
constexpr cNameRow kMain[] = {
  {0x00, 0x03, "Credit"},
  {0x04, 0x07, "Debit"},
  {0x08, 0x08, "Unique message identification"},
  {0x09, 0x09, "Device type"},
  {0x0A, 0x0A, "Manufacturer"},
  {0x0B, 0x0B, "Parameter set identification"},
  {0x0C, 0x0C, "Model/version"},
  {0x0D, 0x0D, "Hardware version"},
  {0x0E, 0x0E, "Metrology firmware version"},
  {0x0F, 0x0F, "Other software version"},
  {0x10, 0x10, "Customer location"},
  {0x11, 0x11, "Customer"},
  {0x12, 0x12, "Access code, user"},
  {0x13, 0x13, "Access code, operator"},
  {0x14, 0x14, "Access code, system operator"},
  {0x15, 0x15, "Access code, developer"},
  {0x16, 0x16, "Password"},
  {0x17, 0x17, "Error flags"},
  {0x18, 0x18, "Error mask"},
  {0x19, 0x19, "Security key"},
  {0x1A, 0x1A, "Digital output"},
  {0x1B, 0x1B, "Digital input"},
  {0x1C, 0x1C, "Baud rate"},
  {0x1D, 0x1D, "Response delay time"},
  {0x1E, 0x1E, "Retry"},
  {0x1F, 0x1F, "Remote control"},
  {0x20, 0x20, "First storage number of cyclic storage"},
  {0x21, 0x21, "Last storage number of cyclic storage"},
  {0x22, 0x22, "Size of storage block"},
  {0x23, 0x23, "Descriptor for tariff and subunit"},
  {0x24, 0x29, "Storage interval"},
  {0x2A, 0x2A, "Operator specific data"},
  {0x2B, 0x2B, "Time point, second"},
  {0x2C, 0x2F, "Duration since last readout"},
  {0x30, 0x30, "Start of tariff"},
  {0x31, 0x33, "Duration of tariff"},
  {0x34, 0x39, "Period of tariff"},
  {0x3A, 0x3A, "Dimensionless"},
  {0x3B, 0x3B, "Data container of a wireless M-Bus protocol"},
  {0x3C, 0x3F, "Period of nominal data transmissions"},
  {0x40, 0x4F, "Voltage"},
  {0x50, 0x5F, "Current"},
  {0x60, 0x60, "Reset counter"},
  {0x61, 0x61, "Cumulation counter"},
  {0x62, 0x62, "Control signal"},
  {0x63, 0x63, "Day of week"},
  {0x64, 0x64, "Week number"},
  {0x65, 0x65, "Time point of day change"},
  {0x66, 0x66, "State of parameter activation"},
  {0x67, 0x67, "Special supplier information"},
  {0x68, 0x6B, "Duration since last cumulation"},
  {0x6C, 0x6F, "Operating time of the battery"},
  {0x70, 0x70, "Date and time of battery change"},
  {0x71, 0x71, "RF level"},
  {0x72, 0x72, "Daylight saving"},
  {0x73, 0x73, "Listening window management"},
  {0x74, 0x74, "Remaining battery life time"},
  {0x75, 0x75, "Number of times the meter was stopped"},
  {0x76, 0x76, "Data container of a manufacturer specific protocol"},
  {0x77, 0x7F, "reserved"},
};

// EN 13757-3, combinable (orthogonal) VIFE codes. What is below 20 are the codes for record errors: a meter sends no
// object actions.
constexpr cNameRow kCombinable[] = {
  {0x00, 0x00, "no error"},
  {0x01, 0x01, "error: too many DIFE"},
  {0x02, 0x02, "error: storage number not implemented"},
  {0x03, 0x03, "error: subunit not implemented"},
  {0x04, 0x04, "error: tariff not implemented"},
  {0x05, 0x05, "error: function not implemented"},
  {0x06, 0x06, "error: data class not implemented"},
  {0x07, 0x07, "error: data size not implemented"},
  {0x08, 0x0A, "reserved"},
  {0x0B, 0x0B, "error: too many VIFE"},
  {0x0C, 0x0C, "error: illegal VIF group"},
  {0x0D, 0x0D, "error: illegal VIF exponent"},
  {0x0E, 0x0E, "error: VIF and DIF do not match"},
  {0x0F, 0x0F, "error: unimplemented action"},
  {0x10, 0x14, "reserved"},
  {0x15, 0x15, "error: no data available"},
  {0x16, 0x16, "error: data overflow"},
  {0x17, 0x17, "error: data underflow"},
  {0x18, 0x18, "error: data error"},
  {0x19, 0x1B, "reserved"},
  {0x1C, 0x1C, "error: premature end of record"},
  {0x1D, 0x1F, "reserved"},
  {0x20, 0x20, "per second"},
  {0x21, 0x21, "per minute"},
  {0x22, 0x22, "per hour"},
  {0x23, 0x23, "per day"},
  {0x24, 0x24, "per week"},
  {0x25, 0x25, "per month"},
  {0x26, 0x26, "per year"},
  {0x27, 0x27, "per revolution or measurement"},
  {0x28, 0x29, "increment per input pulse"},
  {0x2A, 0x2B, "increment per output pulse"},
  {0x2C, 0x2C, "per litre"},
  {0x2D, 0x2D, "per cubic metre"},
  {0x2E, 0x2E, "per kilogram"},
  {0x2F, 0x2F, "per kelvin"},
  {0x30, 0x30, "per kWh"},
  {0x31, 0x31, "per GJ"},
  {0x32, 0x32, "per kW"},
  {0x33, 0x33, "per kelvin and litre"},
  {0x34, 0x34, "per volt"},
  {0x35, 0x35, "per ampere"},
  {0x36, 0x36, "multiplied by seconds"},
  {0x37, 0x37, "multiplied by seconds per volt"},
  {0x38, 0x38, "multiplied by seconds per ampere"},
  {0x39, 0x39, "start date and time of"},
  {0x3A, 0x3A, "uncorrected"},
  {0x3B, 0x3B, "accumulation only of positive contributions"},
  {0x3C, 0x3C, "accumulation of the absolute value of negative contributions"},
  {0x3D, 0x3D, "alternate non-metric unit system"},
  {0x3E, 0x3E, "value at base conditions"},
  {0x3F, 0x3F, "OBIS declaration"},
  {0x40, 0x40, "lower limit value"},
  {0x41, 0x41, "number of times below the lower limit"},
  {0x42, 0x42, "begin of the first time below the lower limit"},
  {0x43, 0x43, "end of the first time below the lower limit"},
  {0x44, 0x45, "reserved"},
  {0x46, 0x46, "begin of the last time below the lower limit"},
  {0x47, 0x47, "end of the last time below the lower limit"},
  {0x48, 0x48, "upper limit value"},
  {0x49, 0x49, "number of times above the upper limit"},
  {0x4A, 0x4A, "begin of the first time above the upper limit"},
  {0x4B, 0x4B, "end of the first time above the upper limit"},
  {0x4C, 0x4D, "reserved"},
  {0x4E, 0x4E, "begin of the last time above the upper limit"},
  {0x4F, 0x4F, "end of the last time above the upper limit"},
  {0x50, 0x53, "duration of the first time below the lower limit"},
  {0x54, 0x57, "duration of the last time below the lower limit"},
  {0x58, 0x5B, "duration of the first time above the upper limit"},
  {0x5C, 0x5F, "duration of the last time above the upper limit"},
  {0x60, 0x63, "duration of the first"},
  {0x64, 0x67, "duration of the last"},
  {0x68, 0x68, "value during a time below the lower limit"},
  {0x69, 0x69, "leakage values"},
  {0x6A, 0x6A, "begin of the first"},
  {0x6B, 0x6B, "end of the first"},
  {0x6C, 0x6C, "value during a time above the upper limit"},
  {0x6D, 0x6D, "overflow values"},
  {0x6E, 0x6E, "begin of the last"},
  {0x6F, 0x6F, "end of the last"},
  {0x70, 0x77, "multiplicative correction by a power of ten"},
  {0x78, 0x7B, "additive correction constant"},
  {0x7C, 0x7C, "extension of combinable VIFE codes"},
  {0x7D, 0x7D, "multiplicative correction by 1000"},
  {0x7E, 0x7E, "future value"},
  {0x7F, 0x7F, "manufacturer specific from here on"},
};

// EN 13757-3, extension of combinable (orthogonal) VIFE codes, by VIFE 7C.
constexpr cNameRow kSecond[] = {
  {0x00, 0x00, "reserved"},
  {0x01, 0x01, "at phase L1"},
  {0x02, 0x02, "at phase L2"},
  {0x03, 0x03, "at phase L3"},
  {0x04, 0x04, "at neutral"},
  {0x05, 0x05, "between phases L1 and L2"},
  {0x06, 0x06, "between phases L2 and L3"},
  {0x07, 0x07, "between phases L3 and L1"},
  {0x08, 0x08, "at quadrant Q1"},
  {0x09, 0x09, "at quadrant Q2"},
  {0x0A, 0x0A, "at quadrant Q3"},
  {0x0B, 0x0B, "at quadrant Q4"},
  {0x0C, 0x0C, "delta between import and export"},
  {0x0D, 0x0F, "reserved"},
  {0x10, 0x10, "accumulation of the absolute value of both contributions"},
  {0x11, 0x11, "data presented with type C"},
  {0x12, 0x12, "data presented with type D"},
  {0x13, 0x13, "from the communication partner to the meter"},
  {0x14, 0x14, "from the meter to the communication partner"},
  {0x15, 0x7F, "reserved"},
};

// clang-format on

template <std::size_t N>
constexpr bool HasEveryCode(const cNameRow (&rows)[N]) {
  int next = 0;
  for (const cNameRow& row : rows) {
    if (row.first != next || row.last < row.first) return false;
    next = row.last + 1;
  }
  return next == 0x80;
}
static_assert(HasEveryCode(kPrimary) && HasEveryCode(kAlternate) && HasEveryCode(kMain));
static_assert(HasEveryCode(kCombinable) && HasEveryCode(kSecond));

template <std::size_t N>
const char* NameIn(const cNameRow (&rows)[N], std::uint8_t code) {
  const std::uint8_t wanted = code & 0x7F;
  return std::find_if(std::begin(rows), std::end(rows), [=](const cNameRow& row) { return wanted <= row.last; })->name;
}

}  // namespace

const char* VifName(cBytes codes) {
  if (codes.empty()) return nullptr;
  if (CodeSize(codes) != 2) return NameIn(kPrimary, codes[0]);
  return (codes[0] & 0x7F) == 0x7B ? NameIn(kAlternate, codes[1]) : NameIn(kMain, codes[1]);
}

const char* VifeName(std::uint8_t code) { return NameIn(kCombinable, code); }
const char* SecondVifeName(std::uint8_t code) { return NameIn(kSecond, code); }

}  // namespace tav::mbus
