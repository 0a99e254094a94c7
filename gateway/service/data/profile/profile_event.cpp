// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_event.h>

#include <charconv>
#include <chrono>
#include <ctime>

namespace tav::data {

namespace {

using std::chrono::sys_days;

constexpr std::int64_t kMinute = 60;
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kMonths = 12;

std::int64_t FloorDiv(std::int64_t number, std::int64_t by) { return number / by - (number % by < 0 ? 1 : 0); }

std::tm LocalTime(std::int64_t time) {
  const auto seconds = static_cast<std::time_t>(time);
  std::tm local{};
  localtime_r(&seconds, &local);
  return local;
}

// Days since 1970-01-01 of a local calendar day.
std::int64_t DayOf(const std::tm& local) {
  const std::chrono::year_month_day day(std::chrono::year(local.tm_year + 1900),
                                        std::chrono::month(static_cast<unsigned int>(local.tm_mon + 1)),
                                        std::chrono::day(static_cast<unsigned int>(local.tm_mday)));
  return sys_days(day).time_since_epoch().count();
}
std::int64_t DayAt(std::int64_t time) { return DayOf(LocalTime(time)); }

// The first second of a local day. Where clocks are moved at midnight there is none, or there are two.
std::int64_t StartOfDay(std::int64_t number) {
  const std::chrono::year_month_day day{sys_days(std::chrono::days(number))};
  std::tm local{};
  local.tm_year = static_cast<int>(day.year()) - 1900;
  local.tm_mon = static_cast<int>(static_cast<unsigned int>(day.month())) - 1;
  local.tm_mday = static_cast<int>(static_cast<unsigned int>(day.day()));
  local.tm_isdst = -1;
  std::int64_t time = std::mktime(&local);
  while (DayAt(time) < number) time += 15 * kMinute;
  while (DayAt(time - 15 * kMinute) == number) time -= 15 * kMinute;
  return time;
}

std::int64_t StartOfMonth(std::int64_t number) {
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(FloorDiv(number, kMonths))),
                                        std::chrono::month(static_cast<unsigned int>(number % kMonths + 1)),
                                        std::chrono::day(1));
  return StartOfDay(sys_days(day).time_since_epoch().count());
}

std::int64_t MonthAt(std::int64_t time) {
  const std::tm local = LocalTime(time);
  return (std::int64_t{local.tm_year} + 1900) * kMonths + local.tm_mon;
}

std::optional<std::int64_t> SecondsOf(const std::string& type) {
  if (type == "15min") return 15 * kMinute;
  if (type == "hour") return kHour;
  std::int64_t seconds = 0;
  const char* const end = type.data() + type.size();
  const auto [behind, error] = std::from_chars(type.data(), end, seconds);
  if (error != std::errc() || behind != end || seconds < 1 || seconds > cProfileEvent::kMaxSeconds) return std::nullopt;
  return seconds;
}

}  // namespace

std::optional<cProfileEvent> cProfileEvent::Parse(const std::string& type, unsigned int distance) {
  if (distance > kMaxDistance) return std::nullopt;
  const std::int64_t every = distance == 0 ? 1 : distance;
  if (type == "day") return cProfileEvent(eUnit::Day, every);
  if (type == "month") return cProfileEvent(eUnit::Month, every);
  const std::optional<std::int64_t> seconds = SecondsOf(type);
  if (!seconds) return std::nullopt;
  return cProfileEvent(eUnit::Second, *seconds * every);
}

std::int64_t cProfileEvent::Next(std::int64_t time) const {
  const std::int64_t index = Index(time);
  const std::int64_t start = Start(index);
  return start == time ? start : Start(index + 1);
}

std::int64_t cProfileEvent::Index(std::int64_t time) const {
  switch (m_unit) {
    case eUnit::Second:
      return FloorDiv(time, m_length);
    case eUnit::Day:
      return FloorDiv(DayAt(time), m_length);
    default:
      return FloorDiv(MonthAt(time), m_length);
  }
}

std::int64_t cProfileEvent::Start(std::int64_t index) const {
  switch (m_unit) {
    case eUnit::Second:
      return index * m_length;
    case eUnit::Day:
      return StartOfDay(index * m_length);
    default:
      return StartOfMonth(index * m_length);
  }
}

}  // namespace tav::data
