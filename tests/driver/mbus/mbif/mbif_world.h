// SPDX-License-Identifier: Apache-2.0
// The M-Bus driver between the gateway's services, and a simulated bus on its line. All go by one clock that stands
// still until it is moved; the bus has the wall clock that goes with it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gateway/driver/mbus/mbif/mbus_driver.h>
#include <gateway/driver/mbus/simulator/simulated_bus.h>
#include <tests/driver/driver_world.h>
#include <tests/driver/mbus/mbif/mbif_frames.h>

namespace tav::mbus {

class MbifWorld : public DriverWorld<cMBusDriver, cMBusOptions> {
 protected:
  static constexpr std::uint32_t kBegin = 1'750'000'000 / 86400 * 86400;  // a midnight
  static constexpr std::int64_t kSecond = 1000;

  MbifWorld() {
    m_options.interfaceName = "MBUS";
    m_options.noRules = true;
    m_options.intervalSeconds = 900;
  }
  ~MbifWorld() override { m_line.reset(); }

  // ---- the bus
  // Meters at the primary addresses from 1 on.
  void AddMeters(const std::vector<eMeterKind>& kinds) {
    for (const eMeterKind kind : kinds) {
      const auto number = static_cast<unsigned int>(m_bus.CountMeters() + 1);
      m_bus.Add(cMBusSlave(cMBusSimulatedMeter(kind, number, 1), static_cast<std::uint8_t>(number)));
      m_options.meters.push_back(cMBusAddress::Primary(static_cast<std::uint8_t>(number)));
    }
  }
  void OpenLine() {
    m_lineHost = std::make_unique<gateway::cServiceHost>("line", m_folder.GetPath(), m_clock);
    m_line = std::make_unique<cSimulatedBus>(m_lineHost.get(), m_bus, m_lineOptions);
    m_line->now = [this] { return WallSeconds(); };
  }
  std::string IdOf(std::size_t meter) const { return IdText(m_bus.GetSlave(meter).GetMeter().GetHeader().id); }
  std::uint32_t WallSeconds() const { return kBegin + static_cast<std::uint32_t>(m_clock->Now() / kSecond); }

  // ---- the driver
  std::unique_ptr<cMBusDriver> MakeDriver() override {
    const auto now = [this] { return cMoment{WallSeconds(), cMeterTav::eTsNetworkTime}; };
    if (!m_line) OpenLine();
    m_options.line.input.kind = eInputKind::Serial;
    m_options.line.input.path = m_line->GetDevice();
    return std::make_unique<cMBusDriver>(m_options, m_rules, m_clock, now);
  }
  // Both loops, until neither has anything to do; bytes take their time on the way through the terminal.
  bool TurnAll() {
    const bool line = m_lineHost->Poll(0);
    return Turn() || line;
  }
  void SettleAll() {
    for (int tries = 0; tries < 100; ++tries) {
      while (TurnAll()) {
      }
      if (!IsUnderWay()) return;
      m_lineHost->Poll(1);  // the kernel hands bytes of a terminal over when it likes to
    }
  }
  // Bytes that one has written and the other has not seen.
  bool IsUnderWay() const {
    const cMBusCounts counts = m_driver->GetCounts();
    return m_line && (m_line->CountGiven() != counts.bytesReceived || m_line->CountTaken() != counts.bytesSent);
  }
  // Goes on step by step until it holds, so long at most.
  bool AwaitWithin(std::int64_t milliseconds, const std::function<bool()>& holds, std::int64_t step = 20) {
    SettleAll();
    for (std::int64_t passed = 0; !holds(); passed += step) {
      if (passed > milliseconds) return false;
      m_clock->Advance(step);
      SettleAll();
    }
    return true;
  }
  void Elapse(std::int64_t milliseconds, std::int64_t step = 20) {
    const std::int64_t end = m_clock->Now() + milliseconds;
    AwaitWithin(
        milliseconds, [&] { return m_clock->Now() >= end; }, step);
  }

  // ---- what became of it
  // The reasons of all events of that name, and their number of readings.
  std::vector<std::string> Reasons(const std::string& event) const {
    std::vector<std::string> reasons;
    for (const vorn::cRecord& each : m_events)
      if (each.GetTextPar("event") == event) reasons.push_back(each.GetTextPar("reason"));
    return reasons;
  }
  std::uint64_t CountTold() const {
    std::uint64_t count = 0;
    for (const std::string& reason : Reasons("readings missing")) count += std::stoull(reason);
    return count;
  }

  cMBusBus m_bus;
  cSimulatedBusOptions m_lineOptions;
  std::unique_ptr<gateway::cServiceHost> m_lineHost;
  std::unique_ptr<cSimulatedBus> m_line;
};

}  // namespace tav::mbus
