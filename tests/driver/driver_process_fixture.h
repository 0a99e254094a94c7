// SPDX-License-Identifier: Apache-2.0
// A real gateway in a fresh directory, a real driver, and what the gateway says it has stored.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <compare>
#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>
#include <tests/support/test_client.h>

namespace tav {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSlow = true;
#else
inline constexpr bool kSlow = false;
#endif

// A value as the gateway tells it.
struct cStored {
  std::string obis;
  std::string value;
  std::string unit;
  unsigned int time = 0;
  std::string timeSource;

  auto operator<=>(const cStored&) const = default;
};

// "obis=value unit".
inline std::string Text(const cStored& stored) { return stored.obis + "=" + stored.value + " " + stored.unit; }

class DriverProcess : public testing::Test {
 protected:
  // gateway, driver: the programs; name: the driver's, as its summary line begins.
  DriverProcess(const char* gateway, const char* driver, const char* name)
      : m_gatewayProgram(gateway), m_driverProgram(driver), m_name(name) {}

  void TearDown() override {
    m_client.reset();
    m_service.reset();
  }

  // ---- the gateway
  void StartGateway() {
    m_gateway =
        std::make_unique<cChildProcess>(std::vector<std::string>{m_gatewayProgram, "data", "--dir", Directory()},
                                        std::vector<std::string>{}, m_folder.File("gateway.said"));
    if (!m_client) {
      m_service = std::make_unique<vorn::cScmService>("driver-test", Directory());
      m_client = std::make_unique<cTestClient>(m_service.get(), "data");
    }
    ASSERT_TRUE(m_client->AwaitConnection()) << Load("gateway.said");
  }
  void KillGateway() {
    m_gateway->Signal(SIGKILL);
    ASSERT_EQ(m_gateway->Wait(), 128 + SIGKILL) << Load("gateway.said");
    ASSERT_TRUE(m_client->Await([this] { return !m_client->IsConnected(); }));
  }
  std::string Directory() const { return m_folder.File("gateway"); }

  // ---- the driver
  void Start(const std::vector<std::string>& options) {
    m_driver = std::make_unique<cChildProcess>(Command(options), std::vector<std::string>{}, m_folder.File("said"));
  }
  std::vector<std::string> Command(const std::vector<std::string>& options) const {
    std::vector<std::string> command = {m_driverProgram, "--dir", Directory()};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  }
  // To its end; the exit code, -1 when it does not come.
  int End() { return m_driver->Wait(kSlow ? 90'000 : 60'000).value_or(-1); }
  int Run(const std::vector<std::string>& options) {
    Start(options);
    return End();
  }
  std::string Said() const { return Load("said"); }
  // Waits until it says so.
  bool AwaitSaid(const std::string& text) {
    for (int tries = 0; tries < 2000; ++tries) {
      if (Said().find(text) != std::string::npos) return true;
      if (m_driver->Wait(10)) return Said().find(text) != std::string::npos;
    }
    return false;
  }
  // A number of its summary line.
  std::uint64_t Count(const std::string& name) const {
    const std::string said = Said();
    const std::size_t at = said.find(" " + name + "=", said.find(m_name + ": "));
    return at == std::string::npos ? ~0ull : std::stoull(said.substr(at + name.size() + 2));
  }

  // ---- what it reads
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(m_folder.File(name), std::ios::binary) << bytes;
    return m_folder.File(name);
  }
  std::string Load(const std::string& name) const {
    std::ifstream file(m_folder.File(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  // ---- what is stored
  std::vector<std::string> Meters() {
    std::vector<std::string> meters;
    for (const vorn::cRecord& row : Rows(db_ctrl::eListMeters, {})) meters.push_back(row.GetTextPar("meterID"));
    return meters;
  }
  std::vector<cStored> Stored(const std::string& meter, const std::string& obis = {}) {
    vorn::cRecord request;
    request.AppendTextPar("meterID", meter);
    if (!obis.empty()) request.AppendTextPar("obis-id", obis);
    request.AppendUIntPar("maxlen", 10'000);
    std::vector<cStored> all;
    for (const vorn::cRecord& row : Rows(db_ctrl::eListValues, request))
      all.push_back({row.GetTextPar("obis-id"), row.GetTextPar("value"), row.GetTextPar("unit"),
                     row.GetUIntPar("timestamp"), row.GetTextPar("time-source")});
    return all;
  }
  std::vector<std::string> StoredTexts(const std::string& meter) {
    std::vector<std::string> texts;
    for (const cStored& stored : Stored(meter)) texts.push_back(Text(stored));
    return texts;
  }
  // Waits until there are so many values of that kind.
  bool AwaitStored(const std::string& meter, const std::string& obis, std::size_t count) {
    for (int tries = 0; tries < 20'000; ++tries) {
      if (Stored(meter, obis).size() >= count) return true;
      if (m_driver->Wait(1)) return Stored(meter, obis).size() >= count;
    }
    return false;
  }
  std::vector<vorn::cRecord> Rows(unsigned int type, vorn::cRecord request) {
    std::vector<vorn::cRecord> rows;
    for (;;) {
      const vorn::cMsg page = m_client->Ask(type, request);
      if (page.GetType() != type + 1) {
        ADD_FAILURE() << "no answer: " << page.ToString();
        return rows;
      }
      vorn::cRecord row;
      for (vorn::cRecordPar at = page.Record().GetPar("row"); at.GetRecord(row); at = at.NextSame())
        rows.push_back(row);
      if (!page.Record().GetPar("next").IsValid()) return rows;
      request.SetDataPar("after", page.Record().GetDataPar("next"));
    }
  }
  std::string m_gatewayProgram, m_driverProgram, m_name;
  cTempFolder m_folder;
  std::unique_ptr<cChildProcess> m_gateway;
  std::unique_ptr<cChildProcess> m_driver;
  std::unique_ptr<vorn::cScmService> m_service;
  std::unique_ptr<cTestClient> m_client;
};

}  // namespace tav
