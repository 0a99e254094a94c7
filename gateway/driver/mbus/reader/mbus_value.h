// SPDX-License-Identifier: Apache-2.0
// The data of one record by its data field (EN 13757-3, coding of the data field): whole numbers, BCD, real numbers,
// texts, octets. Numbers stay what was sent, without rounding: a sign, a magnitude and, of a real number, a power of
// two.
#pragma once

#include <cstddef>
#include <cstdint>

#include <gateway/driver/mbus/reader/mbus_time.h>
#include <gateway/driver/mbus/reader/mbus_types.h>

namespace tav::mbus {

enum eValueKind : std::uint8_t { eValueNone, eValueNumber, eValueReal, eValueText, eValueTime, eValueOctets };

struct cMBusValue {
  eValueKind kind = eValueNone;
  bool negative = false;
  std::uint64_t magnitude = 0;
  std::int16_t power = 0;  // of two, of a real number
  cMBusTime time = {};

  bool IsNumber() const { return kind == eValueNumber || kind == eValueReal; }
};

// A character of ISO 8859-1, and no control character.
bool IsPrintable(std::uint8_t byte);

// How the data are coded: the low four bits of the DIF, and of variable length the byte before them.
enum eDataField : std::uint8_t {
  eFieldNone = 0x0,
  eFieldReal = 0x5,
  eFieldSelection = 0x8,
  eFieldVariable = 0xD,
  eFieldSpecial = 0xF,
};

// The bytes of data behind the VIB, without the length byte of variable length.
struct cMBusDataSize {
  std::size_t lengthBytes = 0;  // 1 of variable length
  std::size_t bytes = 0;
  bool known = true;  // false: a length that is reserved
};
// length: the byte behind the VIB; of use for variable length only.
cMBusDataSize DataSize(std::uint8_t field, std::uint8_t length);

// field and length as above, data of the size they say. isUnsigned: a whole number has no sign. Null, or why the data
// are no value: they stay octets then.
const char* ReadValue(std::uint8_t field, std::uint8_t length, cBytes data, bool isUnsigned, cMBusValue& value);

}  // namespace tav::mbus
