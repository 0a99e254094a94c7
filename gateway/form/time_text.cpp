// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/time_text.h>

#include <charconv>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>

#include <tav/framework/time.h>

namespace tav::form {

namespace {

using Seconds = std::optional<std::int64_t>;

constexpr std::int64_t kMinute = 60, kHour = 60 * kMinute, kDay = 24 * kHour, kWeek = 7 * kDay;
constexpr std::int64_t kLatest = 0xFFFFFFFF;

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// A number of exactly so many digits, taken off the text.
std::optional<int> TakeDigits(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return std::nullopt;
  int number = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    if (!IsDigit(text[i])) return std::nullopt;
    number = number * 10 + (text[i] - '0');
  }
  text.remove_prefix(digits);
  return number;
}

bool TakeCharacter(std::string_view& text, char character) {
  if (text.empty() || text.front() != character) return false;
  text.remove_prefix(1);
  return true;
}

// ---- words and numbers

std::int64_t LocalSeconds(std::chrono::year_month_day day, std::int64_t secondOfDay) {
  std::tm broken{};
  broken.tm_year = static_cast<int>(day.year()) - 1900;
  broken.tm_mon = static_cast<int>(static_cast<unsigned int>(day.month())) - 1;
  broken.tm_mday = static_cast<int>(static_cast<unsigned int>(day.day()));
  broken.tm_sec = static_cast<int>(secondOfDay % kMinute);
  broken.tm_min = static_cast<int>(secondOfDay / kMinute % 60);
  broken.tm_hour = static_cast<int>(secondOfDay / kHour);
  broken.tm_isdst = -1;
  return std::mktime(&broken);
}

std::int64_t BeginningOfDay(unsigned int now, int daysBefore) {
  const std::time_t time = now;
  std::tm broken{};
  localtime_r(&time, &broken);
  broken.tm_mday -= daysBefore;
  broken.tm_hour = broken.tm_min = broken.tm_sec = 0;
  broken.tm_isdst = -1;
  return std::mktime(&broken);
}

Seconds ParseWord(std::string_view text, unsigned int now) {
  if (text == "now") return now;
  if (text == "today") return BeginningOfDay(now, 0);
  if (text == "yesterday") return BeginningOfDay(now, 1);
  return std::nullopt;
}

Seconds TakeNumber(std::string_view& text) {
  std::int64_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || number < 0 || number > kLatest || !IsDigit(text.front())) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

Seconds ParseSeconds(std::string_view text) {
  const Seconds number = text.empty() ? std::nullopt : TakeNumber(text);
  return text.empty() ? number : std::nullopt;
}

std::int64_t UnitSeconds(char unit) {
  switch (unit) {
    case 's':
      return 1;
    case 'm':
      return kMinute;
    case 'h':
      return kHour;
    case 'd':
      return kDay;
    case 'w':
      return kWeek;
    default:
      return 0;
  }
}

Seconds ParseRelative(std::string_view text, unsigned int now) {
  const bool back = TakeCharacter(text, '-');
  if ((!back && !TakeCharacter(text, '+')) || text.empty()) return std::nullopt;
  std::int64_t distance = 0;
  while (!text.empty()) {
    const Seconds number = TakeNumber(text);
    const std::int64_t unit = text.empty() ? 0 : UnitSeconds(text.front());
    if (!number || unit == 0) return std::nullopt;
    distance += *number * unit;
    text.remove_prefix(1);
    if (distance > kLatest) return back ? -1 : kLatest + 1;
  }
  return back ? now - distance : now + distance;
}

// ---- ISO 8601

std::optional<std::chrono::year_month_day> TakeDay(std::string_view& text) {
  const auto year = TakeDigits(text, 4);
  if (!year || !TakeCharacter(text, '-')) return std::nullopt;
  const auto month = TakeDigits(text, 2);
  if (!month || !TakeCharacter(text, '-')) return std::nullopt;
  const auto day = TakeDigits(text, 2);
  if (!day) return std::nullopt;
  return std::chrono::year_month_day(std::chrono::year(*year), std::chrono::month(static_cast<unsigned int>(*month)),
                                     std::chrono::day(static_cast<unsigned int>(*day)));
}

// hh:mm or hh:mm:ss, as the second of its day.
Seconds TakeTimeOfDay(std::string_view& text) {
  const auto hour = TakeDigits(text, 2);
  if (!hour || *hour > 23 || !TakeCharacter(text, ':')) return std::nullopt;
  const auto minute = TakeDigits(text, 2);
  if (!minute || *minute > 59) return std::nullopt;
  const bool hasSecond = TakeCharacter(text, ':');
  const auto second = hasSecond ? TakeDigits(text, 2) : 0;
  if (!second || *second > 59) return std::nullopt;
  return *hour * kHour + *minute * kMinute + *second;
}

// "Z", "+01:00", "+0100" or "+01", whole.
Seconds ParseOffset(std::string_view text) {
  if (text == "Z" || text == "z") return 0;
  const bool west = TakeCharacter(text, '-');
  if (!west && !TakeCharacter(text, '+')) return std::nullopt;
  const auto hours = TakeDigits(text, 2);
  if (!hours || *hours > 23) return std::nullopt;
  int minutes = 0;
  if (!text.empty()) {
    TakeCharacter(text, ':');
    const auto taken = TakeDigits(text, 2);
    if (!taken || *taken > 59 || !text.empty()) return std::nullopt;
    minutes = *taken;
  }
  const std::int64_t offset = *hours * kHour + minutes * kMinute;
  return west ? -offset : offset;
}

Seconds ParseIso(std::string_view text) {
  const auto day = TakeDay(text);
  if (!day || !day->ok()) return std::nullopt;
  if (text.empty()) return LocalSeconds(*day, 0);
  if (!TakeCharacter(text, 'T') && !TakeCharacter(text, ' ')) return std::nullopt;
  const Seconds secondOfDay = TakeTimeOfDay(text);
  if (!secondOfDay) return std::nullopt;
  if (text.empty()) return LocalSeconds(*day, *secondOfDay);
  const Seconds offset = ParseOffset(text);
  if (!offset) return std::nullopt;
  const std::int64_t days = std::chrono::sys_days(*day).time_since_epoch().count();
  return days * kDay + *secondOfDay - *offset;
}

}  // namespace

bool ParseTime(std::string_view text, unsigned int now, unsigned int& seconds, std::string& error) {
  Seconds parsed = ParseWord(text, now);
  if (!parsed) parsed = ParseSeconds(text);
  if (!parsed) parsed = ParseRelative(text, now);
  if (!parsed) parsed = ParseIso(text);
  const std::string found = "\"" + std::string(text) + "\"";
  if (!parsed) {
    error = "expected " + std::string(kTimeForms) + ", found " + found;
    return false;
  }
  if (*parsed < 0 || *parsed > kLatest) {
    error = "expected a time from 1970 to 2106, found " + found;
    return false;
  }
  seconds = static_cast<unsigned int>(*parsed);
  return true;
}

std::string FormatTime(unsigned int seconds) { return vorn::cTime::FromSeconds(seconds, false).ToISO8601String(); }

}  // namespace tav::form
