// SPDX-License-Identifier: Apache-2.0
// The SML driver with a real gateway, and what it is given to read.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_message.h>
#include <gateway/driver/sml/sml_simulator.h>
#include <gateway/driver/sml/sml_writer.h>
#include <tests/driver/driver_process_fixture.h>

namespace tav::sml {

// One value of a telegram to be written.
struct cSent {
  std::uint64_t obis;
  std::uint8_t unit;
  int scaler;
  std::int64_t value;
};

class EhzifProcess : public DriverProcess {
 protected:
  static constexpr std::uint32_t kBegin = 1'750'000'000;
  static inline const std::string kMeter = "0A015441560000000001";  // the simulation's first

  EhzifProcess() : DriverProcess(TAV_GATEWAY, EHZIF, "ehzif") {}

  // ---- what it reads
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
  std::vector<cStored> Stored(const std::string& meter = kMeter, const std::string& obis = {}) {
    return DriverProcess::Stored(meter, obis);
  }
  std::vector<std::string> StoredTexts(const std::string& meter = kMeter) { return DriverProcess::StoredTexts(meter); }
  // Waits until there are so many values of the meter's energy.
  bool AwaitStored(std::size_t count) { return DriverProcess::AwaitStored(kMeter, "1-0:1.8.0", count); }
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
};

}  // namespace tav::sml
