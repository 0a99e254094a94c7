// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbus_text.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include <gateway/driver/mbus/exact_number.h>
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

std::string OctetText(const cMBusRecord& record) {
  const bool isNumber = !record.dib.empty() && (record.dib[0] & 0x0F) == eFieldVariable && record.length >= kBinary;
  if (!isNumber) return "hex:" + HexText(record.data);
  const std::vector<std::uint8_t> bytes(record.data.rbegin(), record.data.rend());
  return "hex:" + HexText(bytes);
}

std::string Number(const cMBusValue& value, int scaler, std::uint32_t factor) {
  if (value.kind == eValueNumber && factor == 1)
    return cDecimalText(value.negative, value.magnitude, scaler).ToString();
  std::uint64_t magnitude = value.magnitude;
  int power = value.power;
  for (; power < 0 && magnitude != 0 && magnitude % 2 == 0; ++power) magnitude /= 2;
  cExactNumber number(magnitude);
  number.MultiplyBy(factor);
  if (magnitude != 0 && power > 0) number.MultiplyByPower(2, static_cast<unsigned int>(power));
  if (magnitude == 0 || power >= 0) return number.ToDecimal(value.negative, scaler).ToString();
  number.MultiplyByPower(5, static_cast<unsigned int>(-power));
  return number.ToDecimal(value.negative, scaler + power).ToString();
}

}  // namespace

std::string HexText(cBytes bytes, const char* separator) {
  vorn::cData data(bytes.data(), bytes.size());
  data.SetSeparator(separator);
  return data.ToString(0);
}

std::string UnitText(const cMBusRecord& record) {
  return record.plainUnit.empty() ? UnitText(record.meaning.unit, record.meaning.per) : Reversed(record.plainUnit);
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
  if (row == std::end(kBases) || !record.plainUnit.empty()) return {Number(record.value, scaler, 1), UnitText(record)};
  return {Number(record.value, scaler + row->scaler, row->factor), UnitText(row->base, record.meaning.per)};
}

}  // namespace tav::mbus
