// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbus_simulator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <gateway/driver/mbus/reader/mbus_text.h>
#include <gateway/driver/mbus/simulator/mbus_slave.h>

#include <tests/driver/mbus/mbus_digits.h>

namespace tav::mbus {
namespace {

using testing::Contains;
using testing::IsEmpty;

constexpr std::uint32_t kNow = 1'750'000'000;  // 2025-06-15T15:06:40Z

// Each value as "text unit", its place before it where it is not the present one.
std::vector<std::string> Values(const std::string& bytes, bool& hasMore) {
  cMBusFrame frame;
  cMBusFault fault;
  cMBusTelegram telegram;
  EXPECT_EQ(ReadFrame(View(bytes), frame, fault), eFrameWhole) << fault.ToString();
  EXPECT_TRUE(ReadTelegram(frame, telegram, fault)) << fault.ToString();
  cMBusReader reader;
  reader.Begin(telegram);
  std::vector<std::string> values;
  for (cMBusRecord record; reader.Next(record);) {
    EXPECT_EQ(record.mark, nullptr) << record.mark << " " << HexText(record.bytes, " ");
    if (record.HasValue()) values.push_back(ValueText(record) + " " + UnitText(record));
  }
  EXPECT_FALSE(reader.HasFault()) << reader.GetFault().ToString();
  hasMore = reader.HasMore();
  return values;
}

TEST(MBusSimulator, TellsOnlyWhatTheReaderReads) {
  for (unsigned int kind = 0; kind < kMeterKinds; ++kind) {
    const cMBusSimulatedMeter meter(static_cast<eMeterKind>(kind), kind, 1);
    for (const std::uint32_t now : {0u, 1735689600u, kNow, 4'000'000'000u})
      for (unsigned int i = 0; i < meter.CountTelegrams(); ++i) {
        bool hasMore = false;
        EXPECT_GE(Values(meter.Telegram(i, 5, 1, now), hasMore).size(), 2u) << MeterKindText(meter.GetKind());
        EXPECT_EQ(hasMore, i + 1 < meter.CountTelegrams());
      }
  }
}

TEST(MBusSimulator, TellsWhatItsKindHas) {
  bool hasMore = false;
  const cMBusSimulatedMeter heat(eMeterKind::Heat, 0, 1);
  const std::vector<std::string> values = Values(heat.Telegram(0, 5, 1, kNow), hasMore);
  EXPECT_THAT(values, Contains(std::to_string(heat.CounterAt(kNow) / 1000) + "000 Wh"));
  EXPECT_THAT(values, Contains(std::to_string(heat.FlowAt(kNow)) + " W"));
  EXPECT_THAT(values, Contains("2024-12-31 "));
  EXPECT_THAT(values, Contains("2025-06-15T16:06:00 "));
  EXPECT_THAT(values, Contains("30.00 K"));
}

TEST(MBusSimulator, IsTheSameForTheSameSeed) {
  for (unsigned int kind = 0; kind < kMeterKinds; ++kind) {
    const auto telegram = [&](unsigned int number, std::uint32_t seed) {
      return cMBusSimulatedMeter(static_cast<eMeterKind>(kind), number, seed).Telegram(0, 5, 1, kNow);
    };
    EXPECT_EQ(telegram(1, 1), telegram(1, 1));
    EXPECT_NE(telegram(1, 1), telegram(1, 2));
    EXPECT_NE(telegram(1, 1), telegram(2, 1));
  }
}

TEST(MBusSimulator, CountsWhatFlows) {
  const cMBusSimulatedMeter meter(eMeterKind::Heat, 0, 1);
  EXPECT_EQ(meter.CounterAt(0), 0u);
  std::uint64_t before = 0;
  for (std::uint32_t now = kNow; now < kNow + 3 * 86400; now += 777) {
    EXPECT_GT(meter.CounterAt(now), before);
    before = meter.CounterAt(now);
  }
  const std::uint32_t hour = kNow - kNow % 3600;
  EXPECT_EQ(meter.CounterAt(hour + 3600) - meter.CounterAt(hour), meter.FlowAt(hour));
}

TEST(MBusSimulator, TellsItsMetersApart) {
  std::set<std::uint32_t> ids;
  for (unsigned int i = 0; i < 250; ++i) {
    const cMBusSimulatedMeter meter(static_cast<eMeterKind>(i % kMeterKinds), i, 7);
    EXPECT_TRUE(ids.insert(meter.GetHeader().id).second);
    EXPECT_EQ(IdText(meter.GetHeader().id).find_first_not_of("0123456789"), std::string::npos);
  }
}

// ---- the link of a meter

class MBusSlave : public testing::Test {
 protected:
  std::string Ask(const std::string& request, unsigned int baud = 2400) {
    cMBusFrame frame;
    cMBusFault fault;
    EXPECT_EQ(ReadFrame(View(request), frame, fault), eFrameWhole);
    const std::optional<std::string> answer = m_slave.Answer(frame, baud, kNow);
    if (!answer) return "nothing";
    return answer->size() == 1 ? Hex(*answer) : "telegram " + std::to_string((*answer)[15]);
  }

  cMBusSlave m_slave{cMBusSimulatedMeter(eMeterKind::Months, 0, 1), 5};
};

TEST_F(MBusSlave, AnswersRequestsForItself) {
  EXPECT_EQ(Ask(MakeInitialise(5)), "E5");
  EXPECT_EQ(Ask(MakeInitialise(6)), "nothing");
  EXPECT_EQ(Ask(MakeInitialise(kBroadcastReply)), "E5");
  EXPECT_EQ(Ask(MakeInitialise(kBroadcast)), "nothing");
  EXPECT_EQ(Ask(MakeInitialise(kSecondary)), "nothing");
  EXPECT_EQ(Ask(MakeReadoutRequest(kSecondary, true)), "nothing");
}

TEST_F(MBusSlave, RepeatsItsAnswerUntilTheBitToggles) {
  EXPECT_EQ(Ask(MakeReadoutRequest(5, true)), "telegram 1");
  EXPECT_EQ(Ask(MakeReadoutRequest(5, true)), "telegram 1");
  EXPECT_EQ(Ask(MakeReadoutRequest(5, false)), "telegram 2");
  EXPECT_EQ(Ask(MakeReadoutRequest(5, false)), "telegram 2");
  EXPECT_EQ(Ask(MakeInitialise(5)), "E5");
  EXPECT_EQ(Ask(MakeReadoutRequest(5, false)), "telegram 3");  // the link has begun anew
}

TEST_F(MBusSlave, IsSelectedByWhatMatches) {
  cMBusAddress address = cMBusAddress::Of(m_slave.GetMeter().GetHeader());
  for (const cMBusAddress& mask : {address, cMBusAddress(), cMBusAddress{kSecondary, address.id | 0xFFFF}}) {
    EXPECT_EQ(Ask(MakeSelection(mask)), "E5");
    EXPECT_THAT(Ask(MakeReadoutRequest(kSecondary, true)), testing::StartsWith("telegram"));
    EXPECT_EQ(Ask(MakeInitialise(kSecondary)), "E5");
    EXPECT_EQ(Ask(MakeReadoutRequest(kSecondary, true)), "nothing");
  }
  EXPECT_EQ(Ask(MakeSelection({})), "E5");
  address.version = static_cast<std::uint8_t>(address.version + 1);
  EXPECT_EQ(Ask(MakeSelection(address)), "nothing");
  EXPECT_FALSE(m_slave.IsSelected());  // another one is
}

TEST_F(MBusSlave, TakesItsSettings) {
  EXPECT_EQ(Ask(MakeSetAddress(5, 9)), "E5");
  EXPECT_EQ(m_slave.GetPrimary(), 9);
  EXPECT_EQ(Ask(MakeInitialise(5)), "nothing");
  EXPECT_EQ(Ask(MakeSetBaud(9, 9600)), "E5");
  EXPECT_EQ(Ask(MakeInitialise(9)), "nothing");
  EXPECT_EQ(Ask(MakeInitialise(9), 9600), "E5");
  EXPECT_EQ(Ask(MakeReadoutRequest(9, true), 9600), "telegram 1");
  EXPECT_EQ(Ask(MakeApplicationReset(9, -1), 9600), "E5");
  EXPECT_EQ(Ask(MakeReadoutRequest(9, true), 9600), "telegram 2");
}

}  // namespace
}  // namespace tav::mbus
