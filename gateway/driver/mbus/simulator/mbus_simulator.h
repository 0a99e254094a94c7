// SPDX-License-Identifier: Apache-2.0
// cMBusSimulatedMeter: a meter with M-Bus, simulated down to its bytes. What it tells is a matter of its kind, its
// number, a seed and the time; the same of them give the same bytes on every machine.
//
// It has no clock and no state: the caller says what time it is. Counters are exactly the sum of what flowed since
// 2025-01-01; every day is like the other.
#pragma once

#include <cstdint>
#include <string>

#include <gateway/driver/mbus/simulator/mbus_writer.h>

namespace tav::mbus {

enum class eMeterKind : std::uint8_t {
  Heat,
  WarmWater,
  ColdWater,
  Gas,
  Electricity,
  HeatCost,
  Months,  // a heat meter that tells the ends of many months, in several telegrams
  Fixed,   // a water meter of the fixed data structure
};
inline constexpr unsigned int kMeterKinds = 8;

// "heat", "warm water" ...
const char* MeterKindText(eMeterKind kind);

class cMBusSimulatedMeter {
 public:
  // number: what tells the meters of one seed apart.
  cMBusSimulatedMeter(eMeterKind kind, unsigned int number, std::uint32_t seed);

  eMeterKind GetKind() const { return m_kind; }
  const cMBusHeader& GetHeader() const { return m_header; }
  // Another identity, such as one that another meter has as well.
  void SetHeader(const cMBusHeader& header) { m_header = header; }
  unsigned int CountTelegrams() const;
  // The telegram of that index, a whole frame. access: of the answer; now: seconds since 1970-01-01 UTC.
  std::string Telegram(unsigned int index, std::uint8_t address, std::uint8_t access, std::uint32_t now) const;

  // What flows at a time, in thousandths of the kind's unit an hour, and what has flowed up to it, in thousandths of
  // the unit.
  std::uint64_t FlowAt(std::uint32_t now) const;
  std::uint64_t CounterAt(std::uint32_t now) const;

 private:
  std::uint32_t Random(std::uint32_t what, std::uint32_t below) const;
  void WriteHeat(cMBusWriter& to, std::uint32_t now) const;
  void WriteWater(cMBusWriter& to, std::uint32_t now) const;
  void WriteGas(cMBusWriter& to, std::uint32_t now) const;
  void WriteElectricity(cMBusWriter& to, std::uint32_t now) const;
  void WriteHeatCost(cMBusWriter& to, std::uint32_t now) const;
  void WriteMonths(cMBusWriter& to, unsigned int index, std::uint32_t now) const;
  std::string WriteFixed(std::uint8_t address, std::uint8_t access, std::uint32_t now) const;

  eMeterKind m_kind;
  std::uint32_t m_seed;
  cMBusHeader m_header;
  std::uint64_t m_mean;  // of what flows in an hour, in thousandths of the unit
  unsigned int m_shift;  // hours by which its day is late
};

}  // namespace tav::mbus
