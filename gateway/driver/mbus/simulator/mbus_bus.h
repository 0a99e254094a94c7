// SPDX-License-Identifier: Apache-2.0
// cMBusBus: simulated meters on one bus. What several answer at once is garbled, but for the single character, which is
// the same of all. Faults happen on demand: the next answers, or by probability, of one meter or of all.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <gateway/driver/mbus/simulator/mbus_slave.h>

namespace tav::mbus {

// What happens to an answer.
enum class eBusFault : std::uint8_t { None, Noise, Truncation, Collision, Silence, Slow, Checksum };
inline constexpr std::size_t kBusFaults = 7;

struct cBusAnswer {
  std::string bytes;         // none: nobody answers
  unsigned int delayMs = 0;  // from the request's last byte
};

class cMBusBus {
 public:
  static constexpr unsigned int kAnswerMs = 30;  // of a meter in order
  static constexpr unsigned int kSlowMs = 2000;  // more, of a slow answer
  static constexpr std::size_t kAll = ~std::size_t{0};

  explicit cMBusBus(std::uint32_t seed = 1) : m_draws(seed) {}

  void Add(const cMBusSlave& slave) { m_meters.push_back({slave, {}, {}, true}); }
  std::size_t CountMeters() const { return m_meters.size(); }
  const cMBusSlave& GetSlave(std::size_t meter) const { return m_meters[meter].slave; }

  // The next so many answers more; of several faults those that come first in their list.
  void Inject(eBusFault fault, unsigned int answers, std::size_t meter = kAll);
  // 0 to 1 of all answers.
  void SetProbability(eBusFault fault, double probability, std::size_t meter = kAll);
  // Taken off the bus, or put back.
  void SetPresent(std::size_t meter, bool present) { m_meters[meter].isPresent = present; }

  // The request as a whole frame, at that rate. now: seconds since 1970-01-01 UTC.
  cBusAnswer Take(const cMBusFrame& request, unsigned int baud, std::uint32_t now);
  // Requests that were taken.
  unsigned int CountRequests() const { return m_requests; }

 private:
  struct cMeter {
    cMBusSlave slave;
    std::array<double, kBusFaults> probabilities{};
    std::array<unsigned int, kBusFaults> injected{};
    bool isPresent = true;
  };

  eBusFault DrawFault(cMeter& meter);
  void Spoil(eBusFault fault, cBusAnswer& answer);
  std::uint32_t Draw(std::uint32_t below);

  std::vector<cMeter> m_meters;
  std::uint64_t m_draws;
  unsigned int m_requests = 0;
};

// Meters of each kind in turn, at primary addresses from 1 on, all at one rate.
cMBusBus MakeHouse(unsigned int meters, std::uint32_t seed, unsigned int baud);

}  // namespace tav::mbus
