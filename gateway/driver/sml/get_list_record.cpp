// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/get_list_record.h>

#include <limits>
#include <optional>

#include <gateway/driver/sml/dlms_units.h>
#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_decimal.h>

namespace tav::sml {

namespace {

vorn::cData ToData(cBytes bytes) { return {bytes.data(), bytes.size()}; }

// The import knows status words of 32 bits; of a wider one the half that says something.
std::uint32_t Fold(std::uint64_t word) {
  const auto low = static_cast<std::uint32_t>(word);
  return low != 0 ? low : static_cast<std::uint32_t>(word >> 32);
}

// A status word, whether sent as a number, a boolean or up to eight octets.
std::optional<std::uint32_t> StatusWord(const cSmlValue& value) {
  if (value.IsNumber() || value.type == eSmlBool) return Fold(value.bits);
  if (value.type != eSmlOctets || value.octets.empty() || value.octets.size() > 8) return std::nullopt;
  std::uint64_t word = 0;
  for (const std::uint8_t byte : value.octets) word = word << 8 | byte;
  return Fold(word);
}

const cSmlEntry* Find(const cSmlList& list, std::uint64_t obis) {
  for (const cSmlEntry& entry : list.entries)
    if (entry.obis == obis) return &entry;
  return nullptr;
}

// The status word that speaks for the list; none when the meter sends 1-0:96.5.5 itself, or nothing of the kind.
std::optional<std::uint32_t> StatusOfList(const cSmlList& list) {
  if (Find(list, kObisStatusWord) != nullptr) return std::nullopt;
  for (const cSmlEntry& entry : list.entries)
    if (IsStatusWord(entry.obis))
      if (const std::optional<std::uint32_t> word = StatusWord(entry.value)) return word;
  for (const cSmlEntry& entry : list.entries)
    if (entry.status) return Fold(*entry.status);
  return std::nullopt;
}

// Whether shifting the point in the digits, sign and all, gives the right text.
bool ShiftsRight(const cSmlValue& value, std::int8_t scaler) {
  if (scaler > 0) return value.bits != 0;
  const std::size_t digits = cDecimalText(false, value.Magnitude(), 0).View().size();
  return !value.IsNegative() || static_cast<std::size_t>(-scaler) < digits;
}

// False when the text given is final, whatever the scaler.
bool AppendNumber(vorn::cRecord& record, const cSmlValue& value, std::int8_t scaler) {
  constexpr std::int64_t kMinInt = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kMaxInt = std::numeric_limits<std::int32_t>::max();
  if (!ShiftsRight(value, scaler)) {
    record.AppendTextPar("value", DecimalText(value, scaler).View());
    return false;
  }
  if (value.type == eSmlInt && value.Signed() >= kMinInt && value.Signed() <= kMaxInt)
    record.AppendIntPar("value", static_cast<int>(value.Signed()));
  else if (value.IsNegative())
    record.AppendTextPar("value", DecimalText(value, 0).View());
  else if (value.bits <= std::numeric_limits<std::uint32_t>::max())
    record.AppendUIntPar("value", static_cast<unsigned int>(value.bits));
  else
    record.AppendUInt64Par("value", value.bits);
  return true;
}

void AppendValue(vorn::cRecord& record, const cSmlEntry& entry, std::int8_t& scaler) {
  const cSmlValue& value = entry.value;
  if (entry.obis == kObisStatusWord) {
    if (const std::optional<std::uint32_t> word = StatusWord(value)) {
      record.AppendUIntPar("value", *word);
      return;
    }
  }
  if (value.IsNumber()) {
    if (!AppendNumber(record, value, scaler)) scaler = 0;
  } else if (value.type == eSmlBool) {
    record.AppendBoolPar("value", value.bits != 0);
  } else if (value.type != eSmlAbsent) {
    record.AppendDataPar("value", ToData(value.octets));
  }
}

// 0 for none.
std::uint8_t UnitOf(const cSmlEntry& entry) {
  if (!entry.value.IsNumber()) return 0;
  const std::uint8_t sent = entry.unit.value_or(0);
  return sent == 0 && !IsStatusWord(entry.obis) ? kDlmsCount : sent;
}

vorn::cRecord ToRecord(const cSmlEntry& entry) {
  vorn::cRecord record;
  std::int8_t scaler = entry.scaler.value_or(0);
  record.AppendUInt64Par("objName", entry.obis);
  AppendValue(record, entry, scaler);
  if (entry.status) record.AppendUIntPar("status", Fold(*entry.status));
  if (entry.scaler) record.AppendIntPar("scaler", scaler);
  if (const std::uint8_t unit = UnitOf(entry)) record.AppendUIntPar("unit", unit);
  if (!entry.signature.empty()) record.AppendDataPar("signature", ToData(entry.signature));
  return record;
}

vorn::cRecord StatusEntry(std::uint32_t word) {
  vorn::cRecord record;
  record.AppendUInt64Par("objName", kObisStatusWord);
  record.AppendUIntPar("value", word);
  return record;
}

vorn::cRecord ManufacturerEntry(const cSmlEntry& entry) {
  vorn::cRecord record;
  record.AppendUInt64Par("objName", kObisManufacturer);
  record.AppendDataPar("value", ToData(entry.value.octets));
  return record;
}

}  // namespace

vorn::cRecord ToGetListRecord(const cSmlList& list) {
  vorn::cRecord values;
  if (const std::optional<std::uint32_t> word = StatusOfList(list))
    values.AppendRecordPar("valListEntry", StatusEntry(*word));
  const cSmlEntry* const maker = Find(list, kObisManufacturerNew);
  if (maker != nullptr && maker->value.type == eSmlOctets && Find(list, kObisManufacturer) == nullptr)
    values.AppendRecordPar("valListEntry", ManufacturerEntry(*maker));
  for (const cSmlEntry& entry : list.entries) values.AppendRecordPar("valListEntry", ToRecord(entry));
  vorn::cRecord record;
  record.AppendDataPar("serverId", ToData(list.serverId));
  record.AppendRecordPar("valList", values);
  return record;
}

}  // namespace tav::sml
