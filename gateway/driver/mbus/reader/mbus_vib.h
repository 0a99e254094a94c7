// SPDX-License-Identifier: Apache-2.0
// What the value information block of a record says about its data: the unit and scaler of cMBusVIBHelper, and what
// combinable VIFE turn the value into (EN 13757-3, value information block).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include <gateway/driver/mbus/reader/mbus_types.h>
#include <tav/obis/mbus_vib_helper.h>

namespace tav::mbus {

struct cVibMeaning {
  unsigned int unit = eMBusNoUnit;
  int scaler = 0;
  std::uint8_t per = 0;         // VIFE 20 to 38: the value is one for each of something, or times something; else 0
  bool isTime = false;          // a point in time, when the data have the length of one
  bool isUnsigned = false;      // a whole number is one without a sign, flags or an identification
  bool isMakers = false;        // what it means is the maker's own
  const char* error = nullptr;  // the meter says that there is no value, and why
};

// Meters send the same few blocks again and again: what a block means is remembered.
class cMBusVib {
 public:
  // codes: VIF and VIFE, without the text of a plain text VIF. Allocates nothing but what it keeps for the next call.
  cVibMeaning Decode(cBytes codes);

 private:
  struct cKnown {
    std::uint64_t codes = 0;  // with a 1 before the first; 0: nothing is known yet
    cVibMeaning meaning;
  };
  static constexpr std::size_t kLongestKnown = 7;
  static constexpr unsigned int kKnownBits = 7;

  cVibMeaning Ask(cBytes codes);
  void TakeMain(cBytes codes, cVibMeaning& meaning);
  void TakeExtension(std::uint8_t code, cVibMeaning& meaning);
  void AddScaler(std::uint8_t code, cVibMeaning& meaning);

  cMBusVIBHelper m_helper;
  std::array<cKnown, std::size_t{1} << kKnownBits> m_known;
};

// "Wh", "m³/h", "Wh/h": the helper's text and what the value is for each of, as ISO 8859-1.
std::string UnitText(unsigned int unit, std::uint8_t per);

// How many of the VIB's first bytes select a code of the main table: 1, or 2 where the first selects a table.
std::size_t CodeSize(cBytes codes);

}  // namespace tav::mbus
