// SPDX-License-Identifier: Apache-2.0
// A real tav-gateway in a fresh directory, and a driver that stores into it.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gateway/tav_gateway/exit_code.h>
#include <tav/framework/clock.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>

namespace tav::gateway {

// A driver as they are, that also remembers what was acknowledged.
class cTestDriver : public cDbCtrlIO {
 public:
  explicit cTestDriver(vorn::cScmService* service) : cDbCtrlIO(service, "test-driver") {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (msg.GetType() == db_ctrl::eDriverRegistered) m_registered = true;
    if (msg.GetType() == db_ctrl::eMeterRecStored) m_acknowledged.insert(msg.GetId());
    return cDbCtrlIO::DispatchMessage(msg);
  }
  void OnClose() override {
    m_registered = false;
    cDbCtrlIO::OnClose();
  }

  // The identifier under which the acknowledgement will come.
  vorn::cUuid StoreOne(const cMeterRecord& reading) {
    vorn::cMsg msg(db_ctrl::eStoreMeterRec);
    vorn::cUuid id;
    id.Create();
    msg.SetId(id);
    msg.Record().AppendRecordPar("meter-record", reading.ToRecord());
    StoreMeterRecQueued(msg);
    return id;
  }

  bool m_registered = false;
  std::set<vorn::cUuid> m_acknowledged;
};

class GatewayProcess : public testing::Test {
 protected:
  static constexpr std::int64_t kPatienceMs = 20'000;
  static constexpr const char* kFreePort = "127.0.0.1:0";
  static constexpr unsigned int kNoon = 1'700'000'000;

  void Start(std::vector<std::string> arguments = {"run"}, const std::vector<std::string>& environment = {}) {
    arguments.insert(arguments.begin(), TAV_GATEWAY);
    if (arguments.size() == 2) arguments.insert(arguments.end(), {"--dir", Directory()});
    arguments.insert(arguments.end(), {"--web-listen", kFreePort});
    m_process = std::make_unique<cChildProcess>(arguments, environment, m_folder.File("said"));
  }
  std::string Directory() const { return m_folder.File("gateway"); }
  // Without the line that tells where web pages are.
  std::string Said() const {
    std::ifstream file(m_folder.File("said"));
    std::string said, line;
    while (std::getline(file, line))
      if (!line.starts_with("web pages at ")) said += line + "\n";
    return said;
  }

  void Connect() {
    m_service = std::make_unique<vorn::cScmService>("test-driver", Directory());
    m_driver = std::make_unique<cTestDriver>(m_service.get());
    ASSERT_TRUE(AwaitRegistration()) << Said();
  }
  bool AwaitRegistration() {
    return Await([this] {
      if (!m_driver->IsConnected()) m_driver->HealthRequest();
      return m_driver->m_registered;
    });
  }
  template <typename Holds>
  bool Await(Holds holds) {
    const auto clock = vorn::cClock::Steady();
    for (const std::int64_t end = clock->Now() + kPatienceMs; !holds();) {
      if (clock->Now() > end) return false;
      m_service->Poll(2);
    }
    return true;
  }
  bool AwaitAcknowledgement(const vorn::cUuid& id) {
    return Await([&] { return m_driver->m_acknowledged.count(id) != 0; });
  }

  // Three values that belong together.
  static cMeterRecord Reading(unsigned int number) {
    cMeterRecord reading("test-driver", "EMH", "E", "1EMH00123", "addr", "", kNoon + number, cMeterTav::eTsRtc, number);
    for (const char* obis : {"1-0:1.8.0", "1-0:2.8.0", "1-0:16.7.0"})
      reading.AddMeasurementEntry({obis, std::to_string(number) + ".5", "Wh", kNoon + number, cMeterTav::eTsRtc});
    return reading;
  }
  std::string Ask(const std::string& sql) {
    SQLite::Database database(Directory() + "/tav.db", SQLite::OPEN_READONLY);
    return database.execAndGet(sql).getString();
  }

  cTempFolder m_folder;
  std::unique_ptr<cChildProcess> m_process;
  std::unique_ptr<vorn::cScmService> m_service;
  std::unique_ptr<cTestDriver> m_driver;
};

}  // namespace tav::gateway
