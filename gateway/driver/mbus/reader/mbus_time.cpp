// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_time.h>

#include <algorithm>

#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

constexpr unsigned int kEveryYearSent = 127;
constexpr unsigned int kLastYearOf2000 = 80;  // 81 to 99 without a century are those of 1900

std::uint16_t Year(unsigned int sent, unsigned int century) {
  if (sent == kEveryYearSent) return cMBusTime::kEveryYear;
  if (century == 0 && sent <= kLastYearOf2000) return static_cast<std::uint16_t>(2000 + sent);
  return static_cast<std::uint16_t>(1900 + 100 * century + sent);
}

// Day and month with the two parts of the year, which all types with a date share.
void TakeDate(std::uint8_t dayByte, std::uint8_t monthByte, unsigned int century, cMBusTime& time) {
  time.hasDate = true;
  time.day = dayByte & 0x1F;
  time.month = monthByte & 0x0F;
  time.year = Year(static_cast<unsigned int>(dayByte >> 5 | monthByte >> 4 << 3), century);
}

void TakeTime(std::uint8_t hourByte, std::uint8_t minuteByte, cMBusTime& time) {
  time.hasTime = true;
  time.hour = hourByte & 0x1F;
  time.minute = minuteByte & 0x3F;
}

void TakeSeconds(std::uint8_t secondByte, cMBusTime& time) {
  time.hasSeconds = true;
  time.second = secondByte & 0x3F;
}

bool IsPossible(const cMBusTime& time) {
  return (time.month <= 12 || time.month == cMBusTime::kEveryMonth) && time.hour <= 23 && time.minute <= 59 &&
         time.second <= 59;
}

bool SaysInvalid(cBytes bytes) {
  if (std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0xFF; })) return true;
  return (bytes.size() == 4 && (bytes[0] & 0x80) != 0) || (bytes.size() == 6 && (bytes[1] & 0x80) != 0);
}

}  // namespace

bool ReadTime(cBytes bytes, cMBusTime& time, const char*& mark) {
  time = {};
  switch (bytes.size()) {
    case 2:
      TakeDate(bytes[0], bytes[1], 0, time);
      break;
    case 3:
      TakeSeconds(bytes[0], time);
      TakeTime(bytes[2], bytes[1], time);
      break;
    case 4:
      TakeTime(bytes[1], bytes[0], time);
      TakeDate(bytes[2], bytes[3], bytes[1] >> 5 & 0x03, time);
      break;
    case 6:
      TakeSeconds(bytes[0], time);
      TakeTime(bytes[2], bytes[1], time);
      TakeDate(bytes[3], bytes[4], 0, time);
      break;
    default:
      mark = "a time of a length that no type has";
      return false;
  }
  mark = SaysInvalid(bytes) ? "a time that the meter calls invalid" : IsPossible(time) ? nullptr : "no point in time";
  return mark == nullptr;
}

std::string cMBusTime::ToString() const {
  std::string text;
  if (hasDate && month == kEveryMonth)
    text = vorn::FormatString("---%02u", day);
  else if (hasDate)
    text = (year == kEveryYear ? "-" : vorn::FormatString("%04u", year)) + vorn::FormatString("-%02u-%02u", month, day);
  if (hasTime) text += vorn::FormatString("%s%02u:%02u:%02u", hasDate ? "T" : "", hour, minute, second);
  return text;
}

}  // namespace tav::mbus
