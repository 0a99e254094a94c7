// SPDX-License-Identifier: Apache-2.0
// A real gateway in a fresh directory, the real driver, and what the gateway says it has stored.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <compare>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_message.h>
#include <gateway/driver/sml/sml_simulator.h>
#include <gateway/driver/sml/sml_writer.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>
#include <tests/support/test_client.h>

namespace tav::sml {

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

// One value of a telegram to be written.
struct cSent {
  std::uint64_t obis;
  std::uint8_t unit;
  int scaler;
  std::int64_t value;
};

class EhzifProcess : public testing::Test {
 protected:
  static constexpr std::uint32_t kBegin = 1'750'000'000;
  static inline const std::string kMeter = "0A015441560000000001";  // the simulation's first

  void TearDown() override {
    m_client.reset();
    m_service.reset();
  }

  // ---- the gateway
  void StartGateway() {
    m_gateway = std::make_unique<cChildProcess>(std::vector<std::string>{TAV_GATEWAY, "data", "--dir", Directory()},
                                                std::vector<std::string>{}, m_folder.File("gateway.said"));
    if (!m_client) {
      m_service = std::make_unique<vorn::cScmService>("ehzif-test", Directory());
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
    std::vector<std::string> command = {EHZIF, "--dir", Directory()};
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
    const std::size_t at = said.find(" " + name + "=", said.find("ehzif: frames "));
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
  static std::string Telegram(const std::vector<cSent>& values) {
    cSmlWriter to;
    to.BeginMessage("1", 0, eSmlGetListResponse);
    to.List(7);
    to.Absent();
    to.Octets(std::string_view("\x0A\x01TAV\0\0\0\0\x01", 10));
    to.Absent();
    to.Absent();
    to.List(values.size());
    for (const cSent& sent : values) {
      to.List(7);
      to.Obis(sent.obis);
      to.Absent();
      to.Absent();
      to.Unsigned(sent.unit, 1);
      to.Signed(sent.scaler, 1);
      to.Signed(sent.value, 8);
      to.Absent();
    }
    to.Absent();
    to.Absent();
    to.EndMessage();
    return to.Frame();
  }
  static std::string Energy(std::int64_t value) { return Telegram({{PackObis(1, 0, 1, 8, 0), 30, -1, value}}); }
  static std::string Telegrams(unsigned int count) {
    cSmlSimulator simulator({});
    std::string all;
    for (unsigned int i = 0; i < count; ++i) all += simulator.Telegram(kBegin + 10 * i);
    return all;
  }

  // ---- what is stored
  std::vector<std::string> Meters() {
    std::vector<std::string> meters;
    for (const vorn::cRecord& row : Rows(db_ctrl::eListMeters, {})) meters.push_back(row.GetTextPar("meterID"));
    return meters;
  }
  std::vector<cStored> Stored(const std::string& meter = kMeter, const std::string& obis = {}) {
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
  std::vector<std::string> StoredTexts(const std::string& meter = kMeter) {
    std::vector<std::string> texts;
    for (const cStored& stored : Stored(meter)) texts.push_back(Text(stored));
    return texts;
  }
  // Waits until there are so many values of the meter's energy.
  bool AwaitStored(std::size_t count) {
    for (int tries = 0; tries < 20'000; ++tries) {
      if (Stored(kMeter, "1-0:1.8.0").size() >= count) return true;
      if (m_driver->Wait(1)) return Stored(kMeter, "1-0:1.8.0").size() >= count;
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
  // That the simulation's rounds are stored, each once and whole.
  void ExpectRounds(std::size_t rounds, unsigned int period) {
    cSmlSimulator simulator({});
    std::map<std::string, std::vector<unsigned int>> times;
    for (const cStored& stored : Stored()) times[stored.obis].push_back(stored.time);
    EXPECT_EQ(times.size(), 10u);  // values with a unit of a telegram
    std::vector<unsigned int> expected;
    for (std::size_t i = 0; i < rounds; ++i) expected.push_back(static_cast<unsigned int>(kBegin + i * period));
    for (const auto& [obis, found] : times) EXPECT_EQ(found, expected) << obis;
  }

  cTempFolder m_folder;
  std::unique_ptr<cChildProcess> m_gateway;
  std::unique_ptr<cChildProcess> m_driver;
  std::unique_ptr<vorn::cScmService> m_service;
  std::unique_ptr<cTestClient> m_client;
};

}  // namespace tav::sml
