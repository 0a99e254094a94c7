// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbus_bus.h>

#include <algorithm>
#include <utility>

#include <gateway/driver/mix_bits.h>

namespace tav::mbus {

namespace {

constexpr std::uint32_t kParts = 1'000'000;  // of a probability

bool IsLongFrame(const std::string& bytes) {
  cMBusFrame frame;
  cMBusFault fault;
  return ReadFrame(BytesOf(bytes), frame, fault) == eFrameWhole && frame.kind == eFrameLong;
}

// The bus is pulled down by whoever sends a zero; where one has ended the other is heard alone. A frame that is right
// by chance has wrong parity bits in it, which nobody sees here.
std::string Overlay(std::string first, std::string second) {
  if (first.size() < second.size()) std::swap(first, second);
  const bool differ = first != second;
  for (std::size_t i = 0; i < second.size(); ++i) first[i] = static_cast<char>(first[i] & second[i]);
  if (differ && IsLongFrame(first)) first[first.size() - 2] = static_cast<char>(~first[first.size() - 2]);
  return first;
}

void Combine(cBusAnswer& answer, const cBusAnswer& other) {
  if (other.bytes.empty()) return;
  answer.bytes = answer.bytes.empty() ? other.bytes : Overlay(answer.bytes, other.bytes);
  answer.delayMs = std::max(answer.delayMs, other.delayMs);
}

}  // namespace

void cMBusBus::Inject(eBusFault fault, unsigned int answers, std::size_t meter) {
  for (std::size_t i = 0; i < m_meters.size(); ++i)
    if (meter == kAll || meter == i) m_meters[i].injected[static_cast<std::size_t>(fault)] += answers;
}

void cMBusBus::SetProbability(eBusFault fault, double probability, std::size_t meter) {
  for (std::size_t i = 0; i < m_meters.size(); ++i)
    if (meter == kAll || meter == i) m_meters[i].probabilities[static_cast<std::size_t>(fault)] = probability;
}

cBusAnswer cMBusBus::Take(const cMBusFrame& request, unsigned int baud, std::uint32_t now) {
  ++m_requests;
  cBusAnswer all;
  for (cMeter& meter : m_meters) {
    if (!meter.isPresent) continue;
    const std::optional<std::string> bytes = meter.slave.Answer(request, baud, now);
    if (!bytes) continue;
    cBusAnswer answer{*bytes, kAnswerMs};
    Spoil(DrawFault(meter), answer);
    Combine(all, answer);
  }
  return all;
}

std::uint32_t cMBusBus::Draw(std::uint32_t below) {
  m_draws += kMixStep;
  return static_cast<std::uint32_t>((MixBits(m_draws) >> 32) % below);
}

eBusFault cMBusBus::DrawFault(cMeter& meter) {
  for (std::size_t fault = 0; fault < kBusFaults; ++fault) {
    if (meter.injected[fault] == 0) continue;
    --meter.injected[fault];
    return static_cast<eBusFault>(fault);
  }
  for (std::size_t fault = 0; fault < kBusFaults; ++fault)
    if (meter.probabilities[fault] > 0 && Draw(kParts) < meter.probabilities[fault] * kParts)
      return static_cast<eBusFault>(fault);
  return eBusFault::None;
}

void cMBusBus::Spoil(eBusFault fault, cBusAnswer& answer) {
  std::string& bytes = answer.bytes;
  switch (fault) {
    case eBusFault::None:
      break;
    case eBusFault::Noise: {
      char& hit = bytes[Draw(static_cast<std::uint32_t>(bytes.size()))];
      hit = static_cast<char>(hit ^ static_cast<char>(1 + Draw(255)));
      break;
    }
    case eBusFault::Truncation:
      bytes.resize(bytes.size() / 2);
      break;
    case eBusFault::Collision:
      bytes = Overlay(bytes, std::string(bytes.size(), '\x2A'));
      break;
    case eBusFault::Silence:
      bytes.clear();
      break;
    case eBusFault::Slow:
      answer.delayMs += kSlowMs;
      break;
    case eBusFault::Checksum:
      if (bytes.size() > 1) bytes[bytes.size() - 2] = static_cast<char>(bytes[bytes.size() - 2] + 1);
  }
}

cMBusBus MakeHouse(unsigned int meters, std::uint32_t seed, unsigned int baud) {
  cMBusBus bus(seed);
  for (unsigned int i = 0; i < meters; ++i) {
    const cMBusSimulatedMeter meter(static_cast<eMeterKind>(i % kMeterKinds), i, seed);
    bus.Add({meter, static_cast<std::uint8_t>(i + 1), baud});
  }
  return bus;
}

}  // namespace tav::mbus
