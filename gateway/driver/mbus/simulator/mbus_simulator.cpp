// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbus_simulator.h>

#include <algorithm>
#include <chrono>
#include <iterator>

#include <gateway/driver/mix_bits.h>

namespace tav::mbus {

namespace {

constexpr std::uint32_t kHour = 3600, kDay = 24 * kHour;
constexpr std::uint32_t kZone = kHour;                // meters keep Central European Time, also in summer
constexpr std::uint32_t kBegin = 1735689600 - kZone;  // 2025-01-01
constexpr unsigned int kMonthsTelegrams = 3;
constexpr unsigned int kMonthsEach = 5;  // of one telegram

// By the hour of the day, in percent of the mean.
constexpr std::uint64_t kDayShares[] = {40,  40,  40, 40, 40, 80,  150, 200, 180, 120, 100, 100,
                                        120, 110, 90, 80, 90, 120, 180, 190, 150, 90,  30,  20};

struct cKindRow {
  const char* text;
  std::uint8_t medium;
  std::uint8_t version;
  std::uint32_t leastMean;  // in thousandths of the unit an hour
};

// clang-format off
// In the order of eMeterKind. Units: kWh, litre, litre, litre, kWh, units of allocation, kWh, litre.
constexpr cKindRow kKinds[] = {
  {"heat",                 0x04, 0x0B, 2500},
  {"warm water",           0x06, 0x02, 4000},
  {"cold water",           0x07, 0x02, 9000},
  {"gas",                  0x03, 0x05, 150000},
  {"electricity",          0x02, 0x20, 350},
  {"heat cost allocator",  0x08, 0x11, 300},
  {"heat, many months",    0x04, 0x0C, 3000},
  {"water, fixed",         0x07, 0x00, 8000},
};
// clang-format on
static_assert(std::size(kKinds) == kMeterKinds);

// What a random number is for.
enum eDraw : std::uint32_t { eMean, eShift, eIdentity, eVoltage };

const cKindRow& Row(eMeterKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

std::int64_t Signed(std::uint64_t value) { return static_cast<std::int64_t>(value); }

std::chrono::year_month_day LocalDate(std::uint32_t now) {
  return std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(now + kZone)));
}

std::uint32_t Midnight(const std::chrono::year_month_day& date) {
  const auto seconds = std::chrono::sys_seconds(std::chrono::sys_days(date)).time_since_epoch().count();
  return std::max(kBegin, static_cast<std::uint32_t>(seconds) - kZone);
}

cMBusTime DateOf(std::uint32_t now) {
  const std::chrono::year_month_day date = LocalDate(now);
  cMBusTime time;
  time.hasDate = true;
  time.year = static_cast<std::uint16_t>(static_cast<int>(date.year()));
  time.month = static_cast<std::uint8_t>(static_cast<unsigned int>(date.month()));
  time.day = static_cast<std::uint8_t>(static_cast<unsigned int>(date.day()));
  return time;
}

cMBusTime TimeOf(std::uint32_t now) {
  cMBusTime time = DateOf(now);
  time.hasTime = true;
  time.hour = static_cast<std::uint8_t>((now + kZone) % kDay / kHour);
  time.minute = static_cast<std::uint8_t>(now % kHour / 60);
  return time;
}

// The last midnight at which a month, or with it a year, ended, so many months back.
std::uint32_t MonthEnd(std::uint32_t now, unsigned int back) {
  const std::chrono::year_month_day date = LocalDate(now);
  const auto month = date.year() / date.month() - std::chrono::months(back);
  return Midnight(month / std::chrono::day(1));
}

std::uint32_t YearEnd(std::uint32_t now) {
  return Midnight(LocalDate(now).year() / std::chrono::January / std::chrono::day(1));
}

// That of the day that a counter is set on: its last.
cMBusTime LastDayBefore(std::uint32_t midnight) { return DateOf(midnight - 1); }

}  // namespace

const char* MeterKindText(eMeterKind kind) { return Row(kind).text; }

cMBusSimulatedMeter::cMBusSimulatedMeter(eMeterKind kind, unsigned int number, std::uint32_t seed)
    : m_kind(kind), m_seed(seed ^ (number + 1) * 0x9E3779B9u) {
  m_mean = Row(kind).leastMean + Random(eMean, Row(kind).leastMean);
  m_shift = Random(eShift, 3);
  const std::uint32_t digits = 10'000'000 + Random(eIdentity, 80'000) * 1000 + number % 1000;
  for (std::uint32_t i = 0, rest = digits; i < 8; ++i, rest /= 10) m_header.id |= rest % 10 << 4 * i;
  m_header.hasMeter = true;
  m_header.manufacturer = kind == eMeterKind::Fixed ? std::uint16_t{0} : ManufacturerCode("TAV");
  m_header.version = Row(kind).version;
  m_header.medium = Row(kind).medium;
}

std::uint32_t cMBusSimulatedMeter::Random(std::uint32_t what, std::uint32_t below) const {
  const std::uint64_t x = (std::uint64_t{m_seed} << 32 | what) * kMixStep;
  return static_cast<std::uint32_t>((MixBits(MixBits(x)) >> 32) % below);
}

std::uint64_t cMBusSimulatedMeter::FlowAt(std::uint32_t now) const {
  const unsigned int hour = (now + kZone) % kDay / kHour;
  return m_mean * kDayShares[(hour + 24 - m_shift) % 24] / 100;
}

// Whole days at once: they are alike.
std::uint64_t cMBusSimulatedMeter::CounterAt(std::uint32_t now) const {
  if (now <= kBegin) return 0;
  std::uint64_t day = 0, today = 0;
  for (std::uint32_t hour = 0; hour < 24; ++hour) day += FlowAt(kBegin + hour * kHour);
  const std::uint32_t since = (now - kBegin) % kDay;
  for (std::uint32_t begin = 0; begin < since; begin += kHour)
    today += FlowAt(kBegin + begin) * std::min(kHour, since - begin) / kHour;
  return (now - kBegin) / kDay * day + today;
}

unsigned int cMBusSimulatedMeter::CountTelegrams() const { return m_kind == eMeterKind::Months ? kMonthsTelegrams : 1; }

std::string cMBusSimulatedMeter::Telegram(unsigned int index, std::uint8_t address, std::uint8_t access,
                                          std::uint32_t now) const {
  cMBusWriter to;
  switch (m_kind) {
    case eMeterKind::Heat:
      WriteHeat(to, now);
      break;
    case eMeterKind::WarmWater:
    case eMeterKind::ColdWater:
      WriteWater(to, now);
      break;
    case eMeterKind::Gas:
      WriteGas(to, now);
      break;
    case eMeterKind::Electricity:
      WriteElectricity(to, now);
      break;
    case eMeterKind::HeatCost:
      WriteHeatCost(to, now);
      break;
    case eMeterKind::Months:
      WriteMonths(to, index, now);
      break;
    case eMeterKind::Fixed:
      return WriteFixed(address, access, now);
  }
  cMBusHeader header = m_header;
  header.access = access;
  return to.Telegram(address, header);
}

// The water gives 30 K more or less at so much power: a litre an hour carries 1.163 W/K.
void cMBusSimulatedMeter::WriteHeat(cMBusWriter& to, std::uint32_t now) const {
  const std::uint64_t watts = FlowAt(now);
  const std::int64_t forward = 6500 + Signed(watts / 10), spread = 3000;
  to.Bcd({0x06}, Signed(CounterAt(now) / 1000), 8);  // kWh
  to.Bcd({0x06}, Signed(CounterAt(YearEnd(now)) / 1000), 8, {eInstantaneous, 1});
  to.Time({0x6C}, LastDayBefore(YearEnd(now)), {eInstantaneous, 1});
  to.Bcd({0x13}, Signed(CounterAt(now) / 35), 8);  // litre
  to.Integer({0x2B}, Signed(watts), 4);
  to.Integer({0x2B}, Signed(m_mean * 2), 4, {eMaximum});
  to.Bcd({0x3B}, Signed(watts * 1000 / 34890), 6);  // litre an hour
  to.Bcd({0x59}, forward, 4);                       // hundredths of a degree
  to.Bcd({0x5D}, forward - spread, 4);
  to.Bcd({0x61}, spread, 4);
  to.Time({0x6D}, TimeOf(now));
  to.Integer({0x27}, (now - std::min(now, kBegin)) / kDay, 2);  // days of operation
}

void cMBusSimulatedMeter::WriteWater(cMBusWriter& to, std::uint32_t now) const {
  to.Bcd({0x13}, Signed(CounterAt(now) / 1000), 8);
  to.Bcd({0x13}, Signed(CounterAt(YearEnd(now)) / 1000), 8, {eInstantaneous, 1});
  to.Time({0x6C}, LastDayBefore(YearEnd(now)), {eInstantaneous, 1});
  to.Integer({0x3B}, Signed(FlowAt(now) / 1000), 2);
  if (m_kind == eMeterKind::WarmWater) to.Integer({0x5A}, 480 + Signed(FlowAt(now) % 90), 2);  // tenths of a degree
  to.Time({0x6D}, TimeOf(now));
}

void cMBusSimulatedMeter::WriteGas(cMBusWriter& to, std::uint32_t now) const {
  to.Bcd({0x14}, Signed(CounterAt(now) / 10'000), 8);  // hundredths of a cubic metre
  to.Integer({0x3B}, Signed(FlowAt(now) / 1000), 4);
  to.Text({0xFD, 0x0C}, "TAV-G4");
  to.Time({0x6D}, TimeOf(now));
}

// Tariff 2 is that of the night, a quarter of all.
void cMBusSimulatedMeter::WriteElectricity(cMBusWriter& to, std::uint32_t now) const {
  const std::uint64_t energy = CounterAt(now), watts = FlowAt(now);
  to.Integer({0x03}, Signed(energy), 6);  // Wh
  to.Integer({0x03}, Signed(energy - energy / 4), 6, {eInstantaneous, 0, 1});
  to.Integer({0x03}, Signed(energy / 4), 6, {eInstantaneous, 0, 2});
  to.Integer({0x2B}, Signed(watts), 4);
  for (std::uint16_t phase = 1; phase <= 3; ++phase) {
    const std::int64_t tenths = 2280 + Random(eVoltage + now / 60 * 3 + phase, 60);
    to.Integer({0xFD, 0x48}, tenths, 2, {eInstantaneous, 0, 0, phase});                               // V
    to.Integer({0xFD, 0x59}, Signed(watts) * 10'000 / 3 / tenths, 4, {eInstantaneous, 0, 0, phase});  // mA
  }
  to.Real({0xFB, 0x2F}, 50.0F + static_cast<float>(Random(eVoltage + now / 60, 40)) / 1000.0F);  // Hz
}

void cMBusSimulatedMeter::WriteHeatCost(cMBusWriter& to, std::uint32_t now) const {
  to.Integer({0x6E}, Signed(CounterAt(now) / 1000), 4);
  to.Integer({0x6E}, Signed(CounterAt(YearEnd(now)) / 1000), 4, {eInstantaneous, 1});
  to.Time({0x6C}, LastDayBefore(YearEnd(now)), {eInstantaneous, 1});
  to.Integer({0x65}, 1900 + Signed(FlowAt(now) % 600), 2);  // of the room, hundredths of a degree
}

// The first telegram has the present, the others the ends of five months each.
void cMBusSimulatedMeter::WriteMonths(cMBusWriter& to, unsigned int index, std::uint32_t now) const {
  if (index == 0) {
    WriteHeat(to, now);
  } else {
    for (unsigned int i = 0; i < kMonthsEach; ++i) {
      const unsigned int storage = (index - 1) * kMonthsEach + i + 2;
      const std::uint32_t end = MonthEnd(now, storage - 2);
      to.Time({0x6C}, LastDayBefore(end), {eInstantaneous, storage});
      to.Bcd({0x06}, Signed(CounterAt(end) / 1000), 8, {eInstantaneous, storage});
    }
  }
  if (index + 1 < CountTelegrams()) to.MakersData({}, true);
}

// Litres, and those at the end of the year.
std::string cMBusSimulatedMeter::WriteFixed(std::uint8_t address, std::uint8_t access, std::uint32_t now) const {
  cMBusCounters counters;
  counters.id = m_header.id;
  counters.access = access;
  counters.medium = m_header.medium;
  counters.units[0] = 0x29;
  counters.units[1] = 0x3E;
  counters.values[0] = static_cast<std::uint32_t>(CounterAt(now) / 1000);
  counters.values[1] = static_cast<std::uint32_t>(CounterAt(YearEnd(now)) / 1000);
  return WriteCounters(address, counters);
}

}  // namespace tav::mbus
