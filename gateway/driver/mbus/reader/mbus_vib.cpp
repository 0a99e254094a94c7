// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_vib.h>

#include <algorithm>
#include <iterator>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kCode = 0x7F;  // of a byte, without its extension bit
constexpr std::uint8_t kTableFb = 0x7B;
constexpr std::uint8_t kTableFd = 0x7D;
constexpr std::uint8_t kMakers = 0x7F;
constexpr std::uint8_t kSecondTable = 0x7C;  // of combinable VIFE
constexpr std::uint8_t kNoError = 0x00;
constexpr std::uint8_t kFirstPer = 0x20;
constexpr std::uint8_t kLastPer = 0x38;
constexpr std::uint64_t kSpread = 0x9E3779B97F4A7C15;  // 2^64 by the golden ratio: near numbers get far places
constexpr unsigned int kDurations[] = {eMBusSecond, eMBusMinute, eMBusHour, eMBusDay};  // by two bits

// What is put behind a unit by VIFE 20 to 38, in the order of EN 13757-3, combinable VIFE.
constexpr const char* kPer[] = {
    "/s",     "/min.",  "/h",     "/d", "/wk",    "/mo",  "/a",   "/revolution", "/pulse",
    "/pulse", "/pulse", "/pulse", "/l", "/m\xB3", "/kg",  "/K",   "/kWh",        "/GJ",
    "/kW",    "/(K l)", "/V",     "/A", " s",     " s/V", " s/A",
};
static_assert(std::size(kPer) == kLastPer - kFirstPer + 1);

// Errors of a record, sent as VIFE below 20 (EN 13757-3, codes for record errors).
constexpr const char* ErrorText(std::uint8_t code) {
  switch (code) {
    case 0x15:
      return "the meter says: no data available";
    case 0x16:
      return "the meter says: data overflow";
    case 0x17:
      return "the meter says: data underflow";
    case 0x18:
      return "the meter says: data error";
    case 0x1C:
      return "the meter says: premature end of record";
    default:
      return code < 0x10 ? "the meter refuses the record" : "the meter says: an error of a reserved kind";
  }
}

// Date and time of a limit's exceeding (begin, end, first, last), of a start, of a leakage or overflow.
constexpr bool IsTimeOf(std::uint8_t code) { return code == 0x39 || (code & 0x72) == 0x42 || (code & 0x7A) == 0x6A; }

// Flags, identifications, counts, settings of the line and numbers of storages have no sign (data types C and D).
bool HasNoSign(std::uint8_t table, std::uint8_t code) {
  if (table == kTableFd) return (code >= 0x08 && code <= 0x22) || code == 0x60 || code == 0x61;
  return table == 0 && code >= 0x78 && code <= 0x7A;
}

bool IsPointInTime(std::uint8_t table, std::uint8_t code) {
  if (table == 0) return code == 0x6C || code == 0x6D;
  return table == kTableFd && (code == 0x30 || code == 0x70);
}

// The duration of an exceeding, of a leakage or overflow.
constexpr bool IsDurationOf(std::uint8_t code) { return (code & 0x70) == 0x50 || (code & 0x78) == 0x60; }

// How often a limit was exceeded.
constexpr bool IsCountOf(std::uint8_t code) { return code == 0x41 || code == 0x49; }

// The value is about the quantity that the codes so far name, but is none of it.
void TurnInto(unsigned int unit, bool isTime, cVibMeaning& meaning) {
  meaning.unit = unit;
  meaning.scaler = 0;
  meaning.per = 0;
  meaning.isTime = isTime;
}

}  // namespace

std::size_t CodeSize(cBytes codes) {
  const std::uint8_t first = codes.empty() ? 0 : codes[0] & kCode;
  return std::min<std::size_t>(codes.size(), first == kTableFb || first == kTableFd ? 2 : 1);
}

cVibMeaning cMBusVib::Decode(cBytes codes) {
  if (codes.empty() || codes.size() > kLongestKnown) return Ask(codes);
  std::uint64_t key = 1;
  for (const std::uint8_t code : codes) key = key << 8 | code;
  cKnown& known = m_known[key * kSpread >> (64 - kKnownBits)];
  if (known.codes != key) known = {key, Ask(codes)};
  return known.meaning;
}

cVibMeaning cMBusVib::Ask(cBytes codes) {
  cVibMeaning meaning;
  if (codes.empty()) return meaning;
  const std::size_t main = CodeSize(codes);
  TakeMain(codes.first(main), meaning);
  // Behind the maker's mark the codes are the maker's. A code of the second table of extensions is passed over with the
  // one that selects it.
  if (meaning.isMakers) return meaning;
  for (std::size_t i = main; i < codes.size() && (codes[i] & kCode) != kMakers; ++i)
    if ((codes[i] & kCode) == kSecondTable)
      ++i;
    else
      TakeExtension(codes[i] & kCode, meaning);
  return meaning;
}

void cMBusVib::TakeMain(cBytes codes, cVibMeaning& meaning) {
  m_helper.unit = eMBusNoUnit;
  m_helper.scaler = 0;
  m_helper.VIB.Clear();
  m_helper.VIB.Append(codes.data(), codes.size());
  m_helper.GetUnitScaler();
  meaning.unit = m_helper.unit;
  meaning.scaler = m_helper.scaler;
  const std::uint8_t table = codes.size() == 2 ? codes[0] & kCode : std::uint8_t{0};
  const std::uint8_t code = codes.back() & kCode;
  meaning.isTime = IsPointInTime(table, code);
  meaning.isUnsigned = HasNoSign(table, code);
  meaning.isMakers = table == 0 && code == kMakers;
}

// One VIFE behind the main code.
void cMBusVib::TakeExtension(std::uint8_t code, cVibMeaning& meaning) {
  if (code == kNoError) return;
  if (code < kFirstPer)
    meaning.error = ErrorText(code);
  else if (code <= kLastPer)
    meaning.per = code;
  else if (IsTimeOf(code))
    TurnInto(eMBusCountOrTimePoint, true, meaning);
  else if (IsDurationOf(code))
    TurnInto(kDurations[code & 0x03], false, meaning);
  else if (IsCountOf(code))
    TurnInto(eMBusCountOrTimePoint, false, meaning);
  else
    AddScaler(code, meaning);
}

// The helper takes every byte but the first for an extension.
void cMBusVib::AddScaler(std::uint8_t code, cVibMeaning& meaning) {
  const std::uint8_t block[] = {0, code};
  m_helper.VIB.Clear();
  m_helper.VIB.Append(block, sizeof block);
  m_helper.extensions.clear();
  m_helper.scaler = meaning.scaler;
  m_helper.GetUnitScalerExtension();
  meaning.scaler = m_helper.scaler;
}

std::string UnitText(unsigned int unit, std::uint8_t per) {
  cMBusVIBHelper helper;
  helper.unit = unit;
  std::string text = helper.GetUnitString();
  if (per >= kFirstPer && per <= kLastPer) text += kPer[per - kFirstPer];
  return text;
}

}  // namespace tav::mbus
