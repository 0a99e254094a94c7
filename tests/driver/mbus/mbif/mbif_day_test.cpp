// SPDX-License-Identifier: Apache-2.0
// A day on a bus where everything goes wrong now and then, in moved time: every reading that was due is stored, or told
// as missing with the cause.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <set>

#include <tests/driver/mbus/mbif/mbif_world.h>

namespace tav::mbus {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::Not;

using enum eMeterKind;

class MbifDay : public MbifWorld {
 protected:
  static constexpr std::int64_t kDay = 86400 * kSecond;
  static constexpr unsigned int kInterval = 900;

  void Spoil(double probability) {
    for (const eBusFault fault : {eBusFault::Noise, eBusFault::Truncation, eBusFault::Collision, eBusFault::Silence,
                                  eBusFault::Slow, eBusFault::Checksum})
      m_bus.SetProbability(fault, probability);
  }
  // Time jumps to the next thing to do: between two slots nothing happens on the bus.
  void LiveADay(const std::function<void(std::uint32_t second)>& onSlot) {
    for (std::uint32_t second = 0; second < 86400; second += kInterval) {
      onSlot(second);
      Elapse(second * kSecond - m_clock->Now(), 1000);
      Elapse(60 * kSecond, 20);
    }
    Elapse(kDay - m_clock->Now() - kSecond, 1000);
  }
  // Readings of different slots: what was not acknowledged when the service went is handed over again.
  std::size_t StoredCount() const {
    std::set<std::pair<std::string, std::uint32_t>> slots;
    for (const cMeterRecord& reading : m_readings)
      slots.emplace(reading.GetAddr(), (reading.GetTimestamp() - kBegin) / kInterval);
    return slots.size();
  }
  std::uint64_t CountDropped() const {
    std::uint64_t count = 0;
    for (const std::string& reason : Reasons("readings dropped")) count += std::stoull(reason);
    return count;
  }
};

TEST_F(MbifDay, AccountsForEveryReading) {
  AddMeters({Heat, WarmWater, ColdWater, Gas, Electricity, HeatCost, Months, Fixed});
  m_options.intervalSeconds = kInterval;
  Spoil(0.05);
  Drive();
  LiveADay([this](std::uint32_t second) {
    if (second == 8 * 3600) m_data.reset();  // the service is away for three hours
    if (second == 11 * 3600) ServeData();
    m_bus.SetPresent(2, second < 6 * 3600 || second >= 14 * 3600);  // taken off for eight hours
    m_bus.SetPresent(5, second < 20 * 3600);                        // and for good
  });

  const cMBusCounts counts = m_driver->GetCounts();
  EXPECT_EQ(counts.due, 8u * 96u);
  EXPECT_EQ(counts.delivered + counts.missing, counts.due);
  EXPECT_EQ(StoredCount() + CountDropped(), counts.delivered);
  EXPECT_GT(CountDropped(), 0u);
  EXPECT_GT(counts.missing, 40u);
  EXPECT_GT(counts.delivered, 650u);
  ::raise(SIGTERM);  // what is counted is told at the latest now
  Elapse(3 * kSecond);
  EXPECT_EQ(CountTold(), counts.missing);
  for (const std::string& reason : Reasons("readings missing"))
    EXPECT_GT(reason.size(), reason.find("Z: ") + 5) << "it has a cause: " << reason;
}

TEST_F(MbifDay, HasEveryReadingOfABusInOrder) {
  AddMeters({Heat, Electricity, Months, Fixed});
  m_options.intervalSeconds = kInterval;
  Drive();
  LiveADay([](std::uint32_t) {});
  EXPECT_EQ(m_readings.size(), 4u * 96u);
  EXPECT_TRUE(m_events.empty()) << m_events.front().ToString();
}

}  // namespace
}  // namespace tav::mbus
