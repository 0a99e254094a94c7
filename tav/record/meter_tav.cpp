// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_tav.h>

#include <cctype>
#include <cstdlib>
#include <iterator>

#include <tav/framework/helper.h>
#include <tav/record/time_source.h>

namespace tav {

vorn::cMap<unsigned int, std::string> _obisUnits;

namespace {

struct cUnitRow {
  unsigned int code;
  const char* text;
};

constexpr unsigned int kOtherUnit = 254;

// clang-format off
constexpr cUnitRow kUnits[] = {
  {  1, "a"},
  { 27, "W"},
  { 30, "Wh"},
  { 31, "VAh"},
  {kOtherUnit, "other"},
};

struct cMediumRow {
  unsigned int byte;
  std::string_view letter;
  const char* text;
};

constexpr unsigned int kNoMedium = 255;

// EN 13757-3, device types; the rows of kNoMedium stand for what has no byte of its own.
constexpr cMediumRow kMedia[] = {
  {        0, "Z", "other"},
  {        1, "O", "Oil"},
  {        2, "E", "Electricity"},
  {        3, "G", "Gas"},
  {        4, "h", "Heat return"},
  {        5, "S", "Steam"},
  {        6, "W", "Warm Water"},
  {        7, "w", "Water"},
  {        8, "V", "Heat Cost Allocator"},
  {        9, "A", "Compressed Air"},
  {       10, "c", "Cooling return"},
  {       11, "C", "Cooling"},
  {       12, "H", "Heat"},
  {       15, "U", "undefined"},
  {       22, "K", "Cold Water"},
  {       24, "P", "Pressure"},
  {       27, "R", "Room sensor"},
  {kNoMedium, "Y", "System"},
  {kNoMedium, "X", "unknown"},
};
// clang-format on

constexpr const cMediumRow& kUnknownMedium = kMedia[std::size(kMedia) - 1];
static_assert(kUnknownMedium.letter == "X");

const cMediumRow& MediumOf(std::string_view letter) {
  for (const cMediumRow& row : kMedia)
    if (row.letter == letter) return row;
  return kUnknownMedium;
}

// Steps over a run of letters and digits; false when there is none.
bool SkipGroup(const char*& at) {
  const char* const begin = at;
  while (std::isalnum(static_cast<unsigned char>(*at)) != 0) ++at;
  return at != begin;
}

bool SkipChar(const char*& at, char wanted) {
  if (*at != wanted) return false;
  ++at;
  return true;
}

}  // namespace

std::string cMeterTav::ObisNormalize(const std::string& obis) {
  const std::size_t star = obis.find('*');
  if (star == std::string::npos) return obis;
  const std::string_view tail = std::string_view(obis).substr(star);
  return tail == "*FF" || tail == "*255" ? obis.substr(0, star) : obis;
}

bool cMeterTav::ObisIsValid(const std::string& obis) {
  const char* at = obis.c_str();
  for (const char separator : {'-', ':', '.', '.'})
    if (!SkipGroup(at) || !SkipChar(at, separator)) return false;
  if (!SkipGroup(at)) return false;
  if (SkipChar(at, '*') && !SkipGroup(at)) return false;
  return at == obis.c_str() + obis.size();  // a zero byte inside is a character too many
}

bool cMeterTav::ObisIsDuedate(const std::string& obis) { return obis.find('*') != std::string::npos; }

std::string cMeterTav::ObisHexform(const std::string& obis, int base) {
  constexpr char kSeparators[] = {'-', ':', '.', '.'};
  unsigned int groups[std::size(kSeparators) + 1] = {};
  const bool known = base == 0 || (base >= 2 && base <= 36);  // a radix; no number is read in any other
  const char* at = obis.c_str();
  for (std::size_t i = 0; i < std::size(groups); ++i) {
    if (i != 0 && !SkipChar(at, kSeparators[i - 1])) return {};
    if (!known) continue;
    char* end = nullptr;
    groups[i] = static_cast<unsigned int>(std::strtol(at, &end, base));
    at = end;
  }
  return vorn::FormatString("%02X%02X%02X%02X%02XFF", groups[0], groups[1], groups[2], groups[3], groups[4]);
}

std::string cMeterTav::ObisLangform(const std::string& obis) { return obis; }

std::string cMeterTav::ObisLangform(unsigned long long obis) {
  const auto group = [obis](unsigned int shift) { return static_cast<unsigned int>(obis >> shift & 0xFF); };
  std::string text = vorn::FormatString("%u-%u:%u.%u.%u", group(40), group(32), group(24), group(16), group(8));
  if (group(0) != 0xFF) text += vorn::FormatString("*%d", static_cast<int>(static_cast<unsigned int>(obis) | 0xFF));
  return text;
}

void cMeterTav::ObisUnitInit() {
  for (const cUnitRow& row : kUnits) _obisUnits.Set(row.code, row.text);
}

std::string cMeterTav::ObisUnit(unsigned int code) {
  if (_obisUnits.empty()) ObisUnitInit();
  std::string text;
  if (!_obisUnits.Get(code, text)) _obisUnits.Get(kOtherUnit, text);
  return text;
}

cMeterTav::eTimeSource cMeterTav::GetTimeSource(const std::string& text) { return TimeSourceOf(text); }

std::string cMeterTav::GetTimeSourceText(eTimeSource ts) { return std::string(TimeSourceText(ts)); }

std::string cMeterTav::GetMbusMediumText(unsigned char medium) {
  for (const cMediumRow& row : kMedia)
    if (row.byte == medium && row.byte != kNoMedium) return std::string(row.letter);
  return std::string(kUnknownMedium.letter);
}

unsigned int cMeterTav::GetMbusMediumValue(const std::string& letter) { return MediumOf(letter).byte; }

std::string cMeterTav::MediumToString(const std::string& letter) { return MediumOf(letter).text; }

std::string cMeterTav::GetMbusStatusText(unsigned char status) {
  return status == 0 ? "ok" : vorn::FormatString("error: %02x", static_cast<unsigned int>(status));
}

}  // namespace tav
