// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_text.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include <gateway/driver/mbus/reader/exact_number.h>
#include <tav/framework/data.h>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kBinary = 0xE0;  // variable length from here on is a number

// Units of the helper that have another one as their base: by code, what one of it is, a factor and a scaler of that.
struct cBaseRow {
  unsigned int unit;
  unsigned int base;
  std::uint32_t factor;
  int scaler;
};

// clang-format off
constexpr cBaseRow kBases[] = {
  {eMBusWeek,                       eMBusSecond,            604800,  0},
  {eMBusDay,                        eMBusSecond,             86400,  0},
  {eMBusHour,                       eMBusSecond,              3600,  0},
  {eMBusMinute,                     eMBusSecond,                60,  0},
  {eMBusCorrectedCubicMetre,        eMBusCubicMetre,             1,  0},
  {eMBusCorrectedCubicMetrePerHour, eMBusCubicMetrePerHour,      1,  0},
  {eMBusCubicMetrePerMinute,        eMBusCubicMetrePerHour,     60,  0},
  {eMBusCubicMetrePerSecond,        eMBusCubicMetrePerHour,   3600,  0},
  {eMBusLitre,                      eMBusCubicMetre,             1, -3},
  {eMBusPascal,                     eMBusBar,                    1, -5},
};
// clang-format on

// Meters send the last character first.
std::string Reversed(cBytes text) { return {text.rbegin(), text.rend()}; }

// The unit in letters; not when a VIFE made the value one of another unit.
std::string PlainUnit(const cMBusRecord& record) {
  if (record.meaning.unit != eMBusNoUnit) return {};
  std::string letters = Reversed(record.plainUnit);
  for (char& letter : letters)
    if (!IsPrintable(static_cast<std::uint8_t>(letter))) letter = '?';
  return letters;
}

std::string OctetText(const cMBusRecord& record) {
  const bool isNumber = !record.dib.empty() && (record.dib[0] & 0x0F) == eFieldVariable && record.length >= kBinary;
  if (!isNumber) return "hex:" + HexText(record.data);
  const std::vector<std::uint8_t> bytes(record.data.rbegin(), record.data.rend());
  return "hex:" + HexText(bytes);
}

// A magnitude of 24 bits with a factor of 20 has room in one of 64.
std::string Real(const cMBusValue& value, int scaler, std::uint32_t factor) {
  std::uint64_t magnitude = value.magnitude * factor;
  int power = magnitude == 0 ? 0 : value.power;
  for (; power < 0 && magnitude % 2 == 0; ++power) magnitude /= 2;
  cExactNumber number(magnitude);
  if (power >= 0) {
    number.MultiplyByPower(2, static_cast<unsigned int>(power));
    return number.ToDecimal(value.negative, scaler).ToString();
  }
  number.MultiplyByPower(5, static_cast<unsigned int>(-power));
  return number.ToDecimal(value.negative, scaler + power).ToString();
}

std::string Number(const cMBusValue& value, int scaler, std::uint32_t factor) {
  if (value.kind == eValueReal) return Real(value, scaler, factor);
  if (factor == 1) return cDecimalText(value.negative, value.magnitude, scaler).ToString();
  cExactNumber number(value.magnitude);
  number.MultiplyBy(factor);
  return number.ToDecimal(value.negative, scaler).ToString();
}

}  // namespace

std::string HexText(cBytes bytes, const char* separator) {
  vorn::cData data(bytes.data(), bytes.size());
  data.SetSeparator(separator);
  return data.ToString(0);
}

std::string UnitText(const cMBusRecord& record) {
  return PlainUnit(record) + UnitText(record.meaning.unit, record.meaning.per);
}

std::string RawText(const cMBusRecord& record) {
  if (record.value.kind == eValueNone) return {};
  return record.value.IsNumber() ? Number(record.value, 0, 1) : "hex:" + HexText(record.data);
}

std::string ValueText(const cMBusRecord& record) {
  switch (record.value.kind) {
    case eValueNumber:
    case eValueReal:
      return Number(record.value, record.meaning.scaler, 1);
    case eValueText:
      return Reversed(record.data);
    case eValueTime:
      return record.value.time.ToString();
    case eValueOctets:
      return OctetText(record);
    default:
      return {};
  }
}

cBaseValue BaseValue(const cMBusRecord& record) {
  if (!record.value.IsNumber()) return {};
  const int scaler = record.meaning.scaler;
  const auto* const row = std::find_if(std::begin(kBases), std::end(kBases),
                                       [&](const cBaseRow& each) { return each.unit == record.meaning.unit; });
  if (row == std::end(kBases)) return {Number(record.value, scaler, 1), UnitText(record)};
  return {Number(record.value, scaler + row->scaler, row->factor), UnitText(row->base, record.meaning.per)};
}

}  // namespace tav::mbus
