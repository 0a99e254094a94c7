// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_scan.h>

#include <algorithm>

#include <tests/driver/mbus/mbus_world.h>

namespace tav::mbus {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAreArray;

class MBusScan : public MBusWorld {
 protected:
  MBusScan() {
    m_tickMs = 50;
    m_settings.retries = 0;
  }
  void Scan(const cMBusScanOptions& options) {
    m_found.clear();
    m_progress.clear();
    m_ended.reset();
    m_scan = std::make_unique<cMBusScan>(*m_master, options);
    m_scan->onFound = [this](const cMBusFound& found) { m_found.push_back(found); };
    m_scan->onProgress = [this](const cMBusScanProgress& progress) { m_progress.push_back(progress); };
    m_scan->onEnd = [this](const std::string& why) {
      m_ended = why;
      m_scan.reset();  // as a driver may do
    };
    m_scan->Start();
    EXPECT_TRUE(Await([this] { return m_ended.has_value(); }));
  }
  void ScanSecondary(const std::string& mask = {}) {
    cMBusScanOptions options;
    options.secondary = true;
    std::string error;
    const bool isRead = mask.empty() || cMBusAddress::Parse(mask, options.mask, error);
    EXPECT_TRUE(isRead) << error;
    Scan(options);
    ExpectSteadyProgress();
  }
  void ScanPrimary(std::uint8_t first, std::uint8_t last) {
    cMBusScanOptions options;
    options.first = first;
    options.last = last;
    Scan(options);
  }
  void ExpectSteadyProgress() {
    ASSERT_FALSE(m_progress.empty());
    EXPECT_EQ(m_progress.front().done, 0);
    EXPECT_EQ(m_progress.back().done, 1);
    EXPECT_EQ(m_progress.back().found, m_found.size());
    EXPECT_TRUE(std::ranges::is_sorted(m_progress, {}, &cMBusScanProgress::done));
  }
  // Each as "address" or "address: note".
  std::vector<std::string> Found() const {
    std::vector<std::string> texts;
    for (const cMBusFound& found : m_found)
      texts.push_back(found.address.ToString() + (found.note.empty() ? "" : ": " + found.note));
    return texts;
  }
  // The whole secondary addresses of all meters.
  std::vector<std::string> All() const {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < m_bus.CountMeters(); ++i)
      texts.push_back(cMBusAddress::Of(m_bus.GetSlave(i).GetMeter().GetHeader()).ToString());
    return texts;
  }

  std::unique_ptr<cMBusScan> m_scan;
  std::vector<cMBusFound> m_found;
  std::vector<cMBusScanProgress> m_progress;
  std::optional<std::string> m_ended;
};

// ---- by primary address

TEST_F(MBusScan, FindsTheMetersAtTheirPrimaryAddresses) {
  for (const int primary : {0, 1, 7, 8, 250}) AddMeter(eMeterKind::Gas, static_cast<std::uint8_t>(primary));
  Connect();
  Scan({});
  EXPECT_EQ(*m_ended, "");
  EXPECT_THAT(Found(), ElementsAre("0", "1", "7", "8", "250"));
  for (std::size_t i = 0; i < m_found.size(); ++i) {
    EXPECT_TRUE(m_found[i].header.hasMeter);
    EXPECT_EQ(m_found[i].header.id, IdOf(i));
  }
  EXPECT_THAT(m_progress, SizeIs(252));
  ExpectSteadyProgress();
}

TEST_F(MBusScan, KeepsToItsRange) {
  for (std::uint8_t primary = 0; primary < 20; ++primary) AddMeter(eMeterKind::Gas, static_cast<std::uint8_t>(primary));
  Connect();
  ScanPrimary(3, 5);
  EXPECT_THAT(Found(), ElementsAre("3", "4", "5"));
  EXPECT_EQ(m_progress[0].asking, "3");
  ScanPrimary(249, 255);
  EXPECT_THAT(Found(), IsEmpty());
  EXPECT_EQ(m_progress.size(), 3u);
  ScanPrimary(5, 4);
  EXPECT_THAT(Found(), IsEmpty());
  EXPECT_EQ(*m_ended, "");
}

TEST_F(MBusScan, NotesWhatIsNotAsItShouldBe) {
  AddMeter(eMeterKind::Gas, 1);
  AddMeter(eMeterKind::Heat, 2);
  AddMeter(eMeterKind::Gas, 2);
  AddMeter(eMeterKind::Gas, 3);
  m_bus.SetProbability(eBusFault::Checksum, 1, 3);
  Connect();
  ScanPrimary(1, 3);
  ASSERT_THAT(m_found, SizeIs(3));
  EXPECT_EQ(m_found[0].note, "");
  EXPECT_NE(m_found[1].note, "");
  EXPECT_THAT(m_found[2].note, HasSubstr("the answer cannot be read: byte"));
  EXPECT_FALSE(m_found[2].header.hasMeter);
}

TEST_F(MBusScan, NotesAMeterThatTellsNothing) {
  AddMeter(eMeterKind::Gas, 1);
  Connect();
  m_line->onRequest = [&](cBytes, const std::string&) { m_bus.SetPresent(0, false); };
  ScanPrimary(1, 1);
  EXPECT_THAT(Found(), ElementsAre("1: the meter acknowledges, but tells nothing"));
}

TEST_F(MBusScan, EndsWithTheLine) {
  AddMeter(eMeterKind::Gas, 1);
  Connect();
  m_scan = std::make_unique<cMBusScan>(*m_master, cMBusScanOptions());
  m_scan->onEnd = [this](const std::string& why) { m_ended = why; };
  m_scan->Start();
  Pass(100);
  PullOut();
  ASSERT_TRUE(Await([this] { return m_ended.has_value(); }));
  EXPECT_NE(*m_ended, "");
}

// ---- by secondary address

TEST_F(MBusScan, FindsNobodyOnAnEmptyBus) {
  Connect();
  ScanSecondary();
  EXPECT_THAT(Found(), IsEmpty());
  EXPECT_THAT(m_progress, SizeIs(2));
}

TEST_F(MBusScan, FindsASingleMeterAtOnce) {
  AddMeter(eMeterKind::Heat, 0);
  Connect();
  ScanSecondary();
  EXPECT_THAT(Found(), UnorderedElementsAreArray(All()));
  EXPECT_THAT(m_requests, SizeIs(4));
}

TEST_F(MBusScan, FindsEveryMeterOnce) {
  for (unsigned int i = 0; i < 6; ++i) AddMeter(static_cast<eMeterKind>(i), 0);
  for (std::uint32_t i = 0; i < 15; ++i) AddMeter(0x44950140 + i % 10 + i / 10 * 0x10000, "TAV", 1, 7);
  AddMeter(0x00000000, "TAV", 1, 7);
  AddMeter(0x99999999, "TAV", 1, 7);
  AddMeter(0x7735A002, "TAV", 1, 7);  // not decimal
  // Alike but for one thing each, and for a maker that is in no list but on the bus.
  AddMeter(0x55555555, "TAV", 1, 7);
  AddMeter(0x55555555, "TAV", 2, 7);
  AddMeter(0x55555555, "TAV", 2, 6);
  AddMeter(0x66666666, "TAV", 3, 4);
  AddMeter(0x66666666, "SIE", 3, 4);
  AddMeter(0x66666666, "KAM", 3, 4);
  ASSERT_EQ(m_bus.CountMeters(), 30u);
  Connect();
  ScanSecondary();
  EXPECT_EQ(*m_ended, "");
  EXPECT_THAT(Found(), UnorderedElementsAreArray(All()));
}

TEST_F(MBusScan, KeepsToItsMask) {
  AddMeter(0x44950146, "TAV", 1, 7);
  AddMeter(0x44950147, "TAV", 1, 4);
  AddMeter(0x44960147, "SIE", 1, 7);
  Connect();
  const std::pair<const char*, std::vector<std::string>> kCases[] = {
      {"4495FFFF", {All()[0], All()[1]}},
      {"FFFFFFFFFFFFFF07", {All()[0], All()[2]}},
      {"FFFFFFF7", {All()[1], All()[2]}},
      {"44960147", {All()[2]}},
      {"11FFFFFF", {}},
  };
  for (const auto& [mask, found] : kCases) {
    ScanSecondary(mask);
    EXPECT_THAT(Found(), UnorderedElementsAreArray(found)) << mask;
  }
}

TEST_F(MBusScan, FindsAMeterOfTheFixedStructureByItsIdentification) {
  AddMeter(eMeterKind::Fixed, 0);
  AddMeter(eMeterKind::Heat, 0);
  Connect();
  ScanSecondary();
  EXPECT_THAT(Found(), testing::UnorderedElementsAre(IdText(IdOf(0)), All()[1]));
}

TEST_F(MBusScan, TellsOfMetersThatCannotBeToldApart) {
  AddMeter(0x11111111, "QQQ", 1, 7);  // makers that nobody knows
  AddMeter(0x11111111, "QQZ", 1, 7);
  AddMeter(0x11111112, "TAV", 1, 7);
  Connect();
  ScanSecondary();
  EXPECT_THAT(Found(), testing::UnorderedElementsAre(
                           All()[2], "11111111FFFF0107: meters answer that cannot be told apart, or cannot be read"));
}

TEST_F(MBusScan, TellsOfAMeterThatCannotBeRead) {
  AddMeter(0x11111111, "TAV", 1, 7);
  AddMeter(0x11111112, "TAV", 1, 7);
  m_bus.SetProbability(eBusFault::Checksum, 1, 0);
  Connect();
  ScanSecondary();
  ASSERT_THAT(m_found, SizeIs(2));
  EXPECT_THAT(Found(), testing::UnorderedElementsAre(
                           All()[1], "11111111FFFF0107: meters answer that cannot be told apart, or cannot be read"));
}

TEST_F(MBusScan, IsNotHarmedByMetersThatVanish) {
  for (std::uint32_t i = 0; i < 10; ++i) AddMeter(0x44950140 + i, "TAV", 1, 7);
  Connect();
  const auto count = m_line->onRequest;
  m_line->onRequest = [&](cBytes request, const std::string& answer) {
    count(request, answer);
    if (m_requests.size() > 10) m_bus.SetPresent(m_requests.size() % 5, false);
  };
  ScanSecondary();
  EXPECT_EQ(*m_ended, "");
  for (std::size_t i = 5; i < 10; ++i) EXPECT_THAT(Found(), testing::Contains(All()[i]));
}

TEST_F(MBusScan, FindsEveryMeterInSpiteOfFaults) {
  for (std::uint32_t i = 0; i < 8; ++i) AddMeter(0x10000000 * (i + 1) + i, "TAV", 1, 7);
  for (const eBusFault fault : {eBusFault::Silence, eBusFault::Noise}) m_bus.SetProbability(fault, 0.05);
  m_settings.retries = 4;
  Connect();
  ScanSecondary();
  EXPECT_THAT(Found(), testing::IsSupersetOf(All()));
}

}  // namespace
}  // namespace tav::mbus
