// SPDX-License-Identifier: Apache-2.0
// A driver between the gateway's services: one that stores readings, one of lights, one of status values on its own
// loop, and the real one of OBIS rules on another. Time stands still until it is moved.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gateway/host/status_publisher.h>
#include <tav/framework/clock.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/device_protocol.h>
#include <tav/service/status_protocol.h>
#include <tests/driver/rules_service.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>

namespace tav {

template <typename Driver, typename Options>
class DriverWorld : public testing::Test {
 protected:
  DriverWorld() { m_options.directory = m_folder.GetPath(); }

  // ---- the driver
  void Configure(const std::vector<vorn::cRecord>& interfaces) {
    m_options.configured = true;
    m_options.interfaceName.clear();
    m_interfaces = interfaces;
  }
  virtual std::unique_ptr<Driver> MakeDriver() { return std::make_unique<Driver>(m_options, m_rules, m_clock); }
  // With the services on its loop; connected to that of readings.
  void Drive() {
    m_begin = m_clock->Now();
    m_driver = MakeDriver();
    ServeData();
    m_lights = std::make_unique<cRecordingServer>(m_driver.get(), "ui");
    m_status = std::make_unique<cRecordingServer>(m_driver.get(), "status");
    m_status->onMessage = [this](const vorn::cMsg& msg) { OnStatus(msg); };
    ASSERT_TRUE(Await([this] { return !m_data->messages.empty() && !m_status->messages.empty(); }));
    Settle();
  }
  void ServeData() {
    m_data = std::make_unique<cRecordingServer>(m_driver.get(), "data");
    m_data->onMessage = [this](const vorn::cMsg& msg) { OnData(msg); };
  }
  bool Await(const std::function<bool()>& holds) {
    return PollUntil(*m_driver, [&] {
      if (holds()) return true;
      m_clock->Advance(10);
      Turn();
      return holds();
    });
  }
  void Settle() {
    while (Turn()) {
    }
  }
  bool Turn() {
    const bool others = m_turnsRules && m_obis.Turn();
    return m_driver->Poll(0) || others;
  }
  void Pass(std::int64_t milliseconds) {
    m_clock->Advance(milliseconds);
    Settle();
  }
  // Until so long after the start.
  void PassTo(std::int64_t milliseconds) {
    ASSERT_LE(m_clock->Now() - m_begin, milliseconds);
    Pass(m_begin + milliseconds - m_clock->Now());
  }
  // The same, looking at what is published.
  bool AwaitStatus(const std::function<bool()>& holds) {
    return PollUntil(*m_driver, [&] {
      PassToStatus();
      return holds();
    });
  }
  // Until what is published next is there.
  void PassToStatus() { Pass(gateway::cStatusPublisher::kIntervalMs + gateway::cStatusPublisher::kSlackMs); }

  // ---- the services
  void OnData(const vorn::cMsg& msg) {
    if (msg.GetType() == db_ctrl::eStoreMeterRec) {
      cMeterRecord reading;
      EXPECT_TRUE(reading.FromRecord(msg.Record().GetRecordPar("meter-record")));
      m_stored.push_back(Names(reading));
      m_readings.push_back(reading);
    }
    if (msg.GetType() == db_ctrl::eStoreEvent) m_events.push_back(msg.Record());
    vorn::cMsg answer(msg.GetType() + 1);
    answer.SetId(msg.GetId());
    if (msg.GetType() == db_ctrl::eGetInterface)
      for (const vorn::cRecord& each : m_interfaces) answer.Record().AppendRecordPar("interface-record", each);
    msg.GetReplyChannel()->Send(answer);
  }
  static std::string Names(const cMeterRecord& reading) {
    std::string names;
    for (const cMeasurementEntry& entry : reading.GetMeasurementEntries())
      names += (names.empty() ? "" : " ") + entry.GetName();
    return names;
  }
  void OnStatus(const vorn::cMsg& msg) {
    for (vorn::cRecordPar par = msg.Record().First(); par.IsValid(); par = par.Next())
      if (par.HasText())
        m_values[par.GetName()] = par.GetText();
      else
        m_values.erase(par.GetName());
    if (msg.GetType() == status::eFullSet) msg.GetReplyChannel()->Send(vorn::cMsg(status::eValues));
  }
  std::string Value(const std::string& name) const {
    const auto known = m_values.find(name);
    return known != m_values.end() ? known->second : "none";
  }
  std::vector<std::string> ValueNames() const {
    std::vector<std::string> names;
    for (const auto& [name, value] : m_values) names.push_back(name);
    return names;
  }
  // The lights that were to flash since the last look.
  std::vector<unsigned int> Flashes() {
    std::vector<unsigned int> lights;
    for (const vorn::cMsg& msg : std::exchange(m_lights->messages, {}))
      lights.push_back(msg.Record().GetUIntPar(device::kLed));
    return lights;
  }
  // The service has new configuration for the driver.
  void Notify(const vorn::cRecord& interface) {
    vorn::cMsg msg(db_ctrl::eNotifyDriver);
    vorn::cUuid id;
    id.Create();
    msg.SetId(id);
    vorn::cRecord content;
    content.AppendRecordPar("interface-record", interface);
    msg.Record().AppendTextPar("interface-name", interface.GetTextPar("name"));
    msg.Record().AppendTextPar("command", "interface-changed");
    msg.Record().AppendRecordPar("content", content);
    ASSERT_EQ(m_data->GetChannels().front()->Send(msg), 1);
    Settle();
  }

  cTempFolder m_folder;
  Options m_options;
  cObisMap m_rules;  // of the file
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  std::int64_t m_begin = 0;
  cRulesService m_obis{m_folder.GetPath()};
  bool m_turnsRules = true;  // the service of the rules gets its turns
  std::unique_ptr<Driver> m_driver;
  std::unique_ptr<cRecordingServer> m_data, m_lights, m_status;
  std::vector<vorn::cRecord> m_interfaces;
  std::vector<std::string> m_stored;            // the names of each reading's values
  std::vector<cMeterRecord> m_readings;         // the same whole
  std::vector<vorn::cRecord> m_events;          // the events that are stored
  std::map<std::string, std::string> m_values;  // what the driver has published
  cCapturedTrace m_trace;

  // The servers live on the driver's loop.
  void TearDown() override {
    m_status.reset();
    m_lights.reset();
    m_data.reset();
  }
};

}  // namespace tav
