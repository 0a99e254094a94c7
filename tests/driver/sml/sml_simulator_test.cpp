// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_simulator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

constexpr std::uint32_t kNoon = 1750240800 + 3600;  // 2025-06-18, a Wednesday, noon in Central European Time
constexpr std::uint32_t kHour = 3600, kDay = 24 * kHour;
constexpr std::uint64_t kImport = PackObis(1, 0, 1, 8, 0), kExport = PackObis(1, 0, 2, 8, 0);
constexpr std::uint64_t kPower = PackObis(1, 0, 16, 7, 0);

// What one telegram says, as the reader reads it.
struct cTold : cSmlSink {
  explicit cTold(const std::string& telegram) {
    const auto reader = std::make_unique<cSmlReader>(*this);
    reader->Feed(telegram.data(), telegram.size());
    reader->Finish();
    frames = reader->GetFrameCounts();
    messages = reader->GetMessageCounts();
  }
  void OnList(const cSmlFrame&, const cSmlList& list) override {
    server.assign(list.serverId.begin(), list.serverId.end());
    seconds = list.sensorTime.seconds;
    for (const cSmlEntry& entry : list.entries) {
      numbers[entry.obis] = entry.value.Signed();
      if (entry.status) status[entry.obis] = *entry.status;
      octets[entry.obis].assign(entry.value.octets.begin(), entry.value.octets.end());
    }
  }

  std::string server;
  std::uint32_t seconds = 0;
  std::map<std::uint64_t, std::int64_t> numbers;
  std::map<std::uint64_t, std::uint64_t> status;
  std::map<std::uint64_t, std::string> octets;
  cSmlCounts frames;
  cSmlMessageCounts messages;
};

cSmlSimulatorOptions Options(bool solar = false) {
  cSmlSimulatorOptions options;
  options.seed = 7;
  options.serial = 0x01020304;
  options.solar = solar;
  return options;
}

}  // namespace

TEST(SmlSimulator, SendsWhatTheReaderReads) {
  cSmlSimulatorOptions options = Options();
  options.publicKey = true;
  options.status = 0x1C0104;
  cSmlSimulator simulator(options);
  const cTold told(simulator.Telegram(kNoon));
  EXPECT_EQ(told.frames.good, 1u);
  EXPECT_EQ(told.frames.skippedBytes, 0u);
  EXPECT_EQ(told.messages.messages, 3u);
  EXPECT_EQ(told.messages.lists, 1u);
  EXPECT_EQ(told.messages.faults, 0u);
  EXPECT_EQ(told.server, Bytes("0A01544156 00 01020304"));
  EXPECT_EQ(told.server, simulator.GetServerId(0));
  EXPECT_EQ(told.octets.at(kObisManufacturer), "TAV");
  EXPECT_EQ(told.octets.at(kObisServerId), told.server);
  EXPECT_EQ(told.octets.at(kObisPublicKey).size(), 48u);
  EXPECT_EQ(told.status.at(kImport), 0x1C0104u);
  EXPECT_EQ(told.seconds, kNoon - options.begin);
  EXPECT_EQ(told.numbers.size(), 13u);
}

TEST(SmlSimulator, IsTheSameForTheSameSeedAndTimes) {
  cSmlSimulator one(Options()), other(Options());
  for (std::uint32_t i = 0; i < 20; ++i) EXPECT_EQ(one.Telegram(kNoon + 7 * i), other.Telegram(kNoon + 7 * i));
  cSmlSimulatorOptions options = Options();
  options.seed = 8;
  cSmlSimulator stranger(options);
  EXPECT_NE(stranger.Telegram(kNoon), cSmlSimulator(Options()).Telegram(kNoon));
}

TEST(SmlSimulator, CountsTheEnergyOfItsPower) {
  for (const bool solar : {false, true}) {
    cSmlSimulator simulator(Options(solar));
    const cTold before(simulator.Telegram(kNoon));
    std::int64_t imported = 0, exported = 0;  // milliwatt seconds
    for (std::uint32_t second = 0; second < kDay; ++second) {
      const std::int64_t load = simulator.LoadAt(0, kNoon + second).Total();
      (load >= 0 ? imported : exported) += load >= 0 ? load : -load;
    }
    const cTold after(simulator.Telegram(kNoon + kDay));
    EXPECT_NEAR(static_cast<double>(after.numbers.at(kImport) - before.numbers.at(kImport)),
                static_cast<double>(imported) / 360000, 1);
    EXPECT_NEAR(static_cast<double>(after.numbers.at(kExport) - before.numbers.at(kExport)),
                static_cast<double>(exported) / 360000, 1);
    EXPECT_EQ(exported != 0, solar);
  }
}

TEST(SmlSimulator, CountsTheSameWhetherAskedOftenOrOnce) {
  cSmlSimulator often(Options(true)), once(Options(true));
  for (std::uint32_t at = 0; at < 15 * kDay; at += 17 * 60 + 13) often.Telegram(kNoon + at);
  const cTold often15(often.Telegram(kNoon + 15 * kDay)), once15(once.Telegram(kNoon + 15 * kDay));
  EXPECT_EQ(often15.numbers.at(kImport), once15.numbers.at(kImport));
  EXPECT_EQ(often15.numbers.at(kExport), once15.numbers.at(kExport));
}

TEST(SmlSimulator, NeverCountsBackwards) {
  cSmlSimulator simulator(Options());
  const cTold before(simulator.Telegram(kNoon)), earlier(simulator.Telegram(kNoon - kDay));
  EXPECT_EQ(earlier.numbers.at(kImport), before.numbers.at(kImport));
  EXPECT_EQ(earlier.seconds, before.seconds);
  cSmlSimulator fresh(Options());
  EXPECT_EQ(cTold(fresh.Telegram(0)).numbers.at(kImport), 0) << "before it was installed";
}

TEST(SmlSimulator, TellsThePowerOfTheMomentAndItsPhases) {
  cSmlSimulator simulator(Options(true));
  for (std::uint32_t at = 0; at < kDay; at += 613) {
    const cTold told(simulator.Telegram(kNoon + at));
    EXPECT_EQ(told.numbers.at(kPower), simulator.LoadAt(0, kNoon + at).Total() / 100);
    EXPECT_EQ(told.numbers.at(kPower), told.numbers.at(PackObis(1, 0, 36, 7, 0)) +
                                           told.numbers.at(PackObis(1, 0, 56, 7, 0)) +
                                           told.numbers.at(PackObis(1, 0, 76, 7, 0)));
    for (const unsigned int c : {32u, 52u, 72u}) {
      EXPECT_GE(told.numbers.at(PackObis(1, 0, c, 7, 0)), 2200);
      EXPECT_LE(told.numbers.at(PackObis(1, 0, c, 7, 0)), 2400);
    }
    EXPECT_NEAR(static_cast<double>(told.numbers.at(PackObis(1, 0, 14, 7, 0))), 5000, 10);
  }
}

TEST(SmlSimulator, LivesLikeAHousehold) {
  const cSmlSimulator simulator(Options());
  const auto mean = [&](std::uint32_t from, std::uint32_t hours) {
    std::int64_t sum = 0;
    for (std::uint32_t at = 0; at < hours * kHour; at += cSmlSimulator::kStep)
      sum += simulator.LoadAt(0, from + at).Total();
    return sum * cSmlSimulator::kStep / (hours * kHour) / 1000;  // watts
  };
  const std::int64_t night = mean(kNoon - 11 * kHour, 4), lunch = mean(kNoon - kHour / 2, 1),
                     dinner = mean(kNoon + 6 * kHour, 2);
  EXPECT_GT(night, 100);
  EXPECT_LT(night, 350);
  EXPECT_GT(lunch, 2 * night);
  EXPECT_GT(dinner, 3 * night);
}

TEST(SmlSimulator, ExportsAtNoonOnlyWithPanels) {
  EXPECT_LT(cSmlSimulator(Options(true)).LoadAt(0, kNoon - kHour).Total(), 0);
  EXPECT_GT(cSmlSimulator(Options(false)).LoadAt(0, kNoon - kHour).Total(), 0);
  EXPECT_GT(cSmlSimulator(Options(true)).LoadAt(0, kNoon + 12 * kHour).Total(), 0);
}

TEST(SmlSimulator, LetsSeveralMetersTakeTurns) {
  cSmlSimulatorOptions options = Options();
  options.meters = 3;
  cSmlSimulator simulator(options);
  std::vector<std::string> servers;
  for (int i = 0; i < 6; ++i) servers.push_back(cTold(simulator.Telegram(kNoon)).server);
  EXPECT_EQ(servers[0], Bytes("0A01544156 00 01020304"));
  EXPECT_EQ(servers[1], Bytes("0A01544156 00 01020305"));
  EXPECT_EQ(servers[2], Bytes("0A01544156 00 01020306"));
  EXPECT_TRUE(std::equal(servers.begin(), servers.begin() + 3, servers.begin() + 3));
}

TEST(SmlSimulator, HasOneMeterAtLeast) {
  cSmlSimulatorOptions options = Options();
  options.meters = 0;
  EXPECT_EQ(cTold(cSmlSimulator(options).Telegram(kNoon)).messages.lists, 1u);
}
