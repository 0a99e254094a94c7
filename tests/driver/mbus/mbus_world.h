// SPDX-License-Identifier: Apache-2.0
// A master and simulated meters on one line, a pseudo terminal, and on one loop. Time stands still until it is moved.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_master.h>
#include <gateway/driver/mbus/master/mbus_requests.h>
#include <gateway/driver/mbus/simulator/simulated_bus.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>

#include <tests/driver/mbus/mbus_digits.h>

namespace tav::mbus {

class MBusWorld : public testing::Test {
 protected:
  static constexpr std::uint32_t kNow = 1'750'000'000;

  MBusWorld() {
    m_settings.input.kind = eInputKind::Serial;
    m_settings.input.path = m_folder.File("bus");
    m_options.link = m_settings.input.path;
    m_options.instant = true;
  }

  // ---- the bus
  std::size_t AddMeter(eMeterKind kind, std::uint8_t primary) {
    const auto number = static_cast<unsigned int>(m_bus.CountMeters());
    m_bus.Add({cMBusSimulatedMeter(kind, number, 1), primary});
    return number;
  }
  // With an identity of its own.
  std::size_t AddMeter(std::uint32_t id, const std::string& maker, std::uint8_t version, std::uint8_t medium,
                       std::uint8_t primary = 0) {
    cMBusSimulatedMeter meter(eMeterKind::ColdWater, static_cast<unsigned int>(m_bus.CountMeters()), 1);
    cMBusHeader header = meter.GetHeader();
    header.id = id;
    header.manufacturer = ManufacturerCode(maker);
    header.version = version;
    header.medium = medium;
    meter.SetHeader(header);
    m_bus.Add({meter, primary});
    return m_bus.CountMeters() - 1;
  }
  std::uint32_t IdOf(std::size_t meter) const { return m_bus.GetSlave(meter).GetMeter().GetHeader().id; }
  void PlugIn() {
    m_line = std::make_unique<cSimulatedBus>(&m_host, m_bus, m_options);
    ASSERT_EQ(m_line->GetError(), "");
    m_asked = m_heardBytes = 0;
    m_line->now = [] { return kNow; };
    m_line->onRequest = [this](cBytes request, const std::string&) {
      m_requests.push_back(Hex({request.begin(), request.end()}));
    };
  }
  void PullOut() { m_line.reset(); }

  // ---- the master
  void Connect() {
    if (!m_line) PlugIn();
    MakeMaster();
    ASSERT_TRUE(Await([this] { return m_master->IsOpen(); }));
  }
  void MakeMaster() {
    m_master = std::make_unique<cMBusMaster>(&m_host, m_settings);
    m_master->onOpen = [this] { m_told.push_back("open"); };
    m_asked = m_line ? m_line->CountTaken() : 0;
    m_heardBytes = m_line ? m_line->CountGiven() : 0;
    m_master->onBytes = [this](bool sent, cBytes bytes) { Count(sent, bytes.size()); };
    m_master->onLost = [this](const std::string& why) { m_told.push_back("lost: " + why); };
  }
  // Turns the loop, and moves time when nothing is on its way any more.
  bool Await(const std::function<bool()>& holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
      Settle();
      if (holds()) return true;
      m_clock->Advance(m_tickMs);
    }
    return false;
  }
  void Settle() {
    PollUntilIdle(m_host);
    for (int turn = 0; IsOnTheWay() && turn < 1000; ++turn)
      if (m_host.Poll(1)) PollUntilIdle(m_host);
  }
  // Written by one end of the line, and not read by the other.
  bool IsOnTheWay() const {
    return m_line != nullptr && m_master != nullptr && m_master->IsOpen() &&
           (m_line->CountTaken() != m_asked || m_line->CountGiven() != m_heardBytes);
  }
  // The counts of both ends begin anew with the line.
  void Count(bool sent, std::size_t size) { (sent ? m_asked : m_heardBytes) += size; }
  void Pass(std::int64_t milliseconds) {
    m_clock->Advance(milliseconds);
    Settle();
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  gateway::cServiceHost m_host{"mbus-test", m_folder.GetPath(), m_clock};
  cMBusBus m_bus;
  cSimulatedBusOptions m_options;
  cMBusLineSettings m_settings;
  std::unique_ptr<cSimulatedBus> m_line;
  std::unique_ptr<cMBusMaster> m_master;
  std::vector<std::string> m_told;
  std::vector<std::string> m_requests;  // that the meters heard
  std::uint64_t m_asked = 0, m_heardBytes = 0;
  std::int64_t m_tickMs = 1;
};

}  // namespace tav::mbus
