// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_value.h>

#include <algorithm>

namespace tav::mbus {

namespace {

// How the data field of a record is coded, in the order of EN 13757-3, coding of the data field.
enum eCoding : std::uint8_t { eNothing, eInteger, eReal, eBcd, eVariable };

struct cFieldRow {
  eCoding coding;
  std::uint8_t bytes;
};

// clang-format off
constexpr cFieldRow kFields[16] = {
  {eNothing,  0},  // 0: no data
  {eInteger,  1},  // 1
  {eInteger,  2},  // 2
  {eInteger,  3},  // 3
  {eInteger,  4},  // 4
  {eReal,     4},  // 5: IEEE 754
  {eInteger,  6},  // 6
  {eInteger,  8},  // 7
  {eNothing,  0},  // 8: selection for readout
  {eBcd,      1},  // 9
  {eBcd,      2},  // A
  {eBcd,      3},  // B
  {eBcd,      4},  // C
  {eVariable, 0},  // D
  {eBcd,      6},  // E
  {eNothing,  0},  // F: special functions have no data of their own
};
// clang-format on

// Variable length: the byte before the data (EN 13757-3, LVAR).
enum eVariableLength : std::uint8_t {
  eText = 0x00,         // to BF: so many characters
  eBcdPositive = 0xC0,  // to C9: twice so many digits
  eBcdNegative = 0xD0,  // to D9
  eBinary = 0xE0,       // to EF: so many bytes
  eBinaryLong = 0xF0,   // to F4: four bytes each from 16 on
  eBinary48 = 0xF5,
  eBinary64 = 0xF6,
};

constexpr std::size_t kMostNumber = 8;

const char* Number(bool negative, std::uint64_t magnitude, cMBusValue& value) {
  value.kind = eValueNumber;
  value.negative = negative && magnitude != 0;
  value.magnitude = magnitude;
  return nullptr;
}

std::uint64_t LittleEndian(cBytes data) {
  std::uint64_t bits = 0;
  for (std::size_t i = data.size(); i-- > 0;) bits = bits << 8 | data[i];
  return bits;
}

// Type B (two's complement) and C (unsigned). Of type B the most negative number says that there is none.
const char* ReadInteger(cBytes data, bool isUnsigned, cMBusValue& value) {
  const std::uint64_t bits = LittleEndian(data);
  if (isUnsigned || (data.back() & 0x80) == 0) return Number(false, bits, value);
  const std::uint64_t sign = std::uint64_t{1} << (8 * data.size() - 1);
  if (bits == sign) return "the number that says: none";
  return Number(true, 2 * sign - bits, value);
}

// Type A. F as the first digit is a minus sign; any other digit that is none tells that the value is in error.
const char* ReadBcd(cBytes data, bool isNegative, cMBusValue& value) {
  std::uint64_t magnitude = 0;
  for (std::size_t i = data.size(); i-- > 0;) {
    const bool isMinus = i + 1 == data.size() && data[i] >> 4 == 0xF && !isNegative;
    const unsigned int high = isMinus ? 0 : data[i] >> 4;
    const unsigned int low = data[i] & 0x0F;
    if (high > 9 || low > 9) return "BCD with an error digit";
    if (isMinus) value.negative = true;
    magnitude = magnitude * 100 + high * 10 + low;
  }
  return Number(value.negative || isNegative, magnitude, value);
}

// Type H, IEEE 754 with 32 bits: magnitude times a power of two, exactly.
const char* ReadReal(cBytes data, cMBusValue& value) {
  const auto bits = static_cast<std::uint32_t>(LittleEndian(data));
  const std::uint32_t exponent = bits >> 23 & 0xFF;
  const std::uint32_t fraction = bits & 0x7FFFFF;
  if (exponent == 0xFF) return "a real number that is none";
  value.kind = eValueReal;
  value.magnitude = exponent == 0 ? fraction : fraction | 0x800000;
  value.negative = bits >> 31 != 0 && value.magnitude != 0;
  value.power = static_cast<std::int16_t>((exponent == 0 ? 1 : static_cast<int>(exponent)) - 150);
  return nullptr;
}

const char* ReadVariable(std::uint8_t length, cBytes data, bool isUnsigned, cMBusValue& value) {
  if (length < eBcdPositive) {
    value.kind = eValueText;
    return std::all_of(data.begin(), data.end(), IsPrintable) ? nullptr : "a text with characters that are none";
  }
  if (data.empty()) return nullptr;
  if (length < eBcdNegative) return ReadBcd(data, false, value);
  if (length < eBinary) return ReadBcd(data, true, value);
  if (data.size() <= kMostNumber) return ReadInteger(data, isUnsigned, value);
  value.kind = eValueOctets;
  return nullptr;
}

cMBusDataSize VariableSize(std::uint8_t length) {
  if (length < eBcdPositive) return {1, length, true};
  if (length < eBcdPositive + 10) return {1, static_cast<std::size_t>(length - eBcdPositive), true};
  if (length >= eBcdNegative && length < eBcdNegative + 10)
    return {1, static_cast<std::size_t>(length - eBcdNegative), true};
  if (length >= eBinary && length < eBinaryLong) return {1, static_cast<std::size_t>(length - eBinary), true};
  if (length >= eBinaryLong && length < eBinary48)
    return {1, 4 * static_cast<std::size_t>(length - eBinaryLong + 4), true};
  if (length == eBinary48) return {1, 48, true};
  if (length == eBinary64) return {1, 64, true};
  return {1, 0, false};
}

const char* Read(std::uint8_t field, std::uint8_t length, cBytes data, bool isUnsigned, cMBusValue& value) {
  switch (kFields[field & 0x0F].coding) {
    case eInteger:
      return ReadInteger(data, isUnsigned, value);
    case eReal:
      return ReadReal(data, value);
    case eBcd:
      return ReadBcd(data, false, value);
    case eVariable:
      return ReadVariable(length, data, isUnsigned, value);
    default:
      return nullptr;
  }
}

}  // namespace

bool IsPrintable(std::uint8_t byte) { return (byte >= 0x20 && byte < 0x7F) || byte >= 0xA0; }

cMBusDataSize DataSize(std::uint8_t field, std::uint8_t length) {
  const cFieldRow& row = kFields[field & 0x0F];
  return row.coding == eVariable ? VariableSize(length) : cMBusDataSize{0, row.bytes, true};
}

const char* ReadValue(std::uint8_t field, std::uint8_t length, cBytes data, bool isUnsigned, cMBusValue& value) {
  value = {};
  const char* const mark = Read(field, length, data, isUnsigned, value);
  if (mark != nullptr) value = {eValueOctets};
  return mark;
}

}  // namespace tav::mbus
