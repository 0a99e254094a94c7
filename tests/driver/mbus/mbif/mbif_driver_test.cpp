// SPDX-License-Identifier: Apache-2.0
// The driver by its command line: which readings come when, and what is told of those that do not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/driver/mbus/mbif/mbif_world.h>

namespace tav::mbus {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

using enum eMeterKind;

class MbifDriver : public MbifWorld {};

TEST_F(MbifDriver, ReadsEveryMeterAtOnceAndStoresWhatItSays) {
  AddMeters({Heat, ColdWater, Electricity});
  Drive();
  ASSERT_TRUE(AwaitWithin(10 * kSecond, [this] { return m_readings.size() == 3; }));
  EXPECT_EQ(m_readings[0].GetMeterID(), IdOf(0));
  EXPECT_EQ(m_readings[0].GetAddr(), "1");
  EXPECT_EQ(m_readings[0].GetDriver(), "mbif");
  EXPECT_EQ(m_readings[0].GetManufactor(), "TAV");
  EXPECT_EQ(m_readings[1].GetMedium(), "w");
  EXPECT_EQ(m_readings[2].GetMedium(), "E");
  for (const cMeterRecord& reading : m_readings) {
    EXPECT_EQ(reading.GetStatus(), "ok");
    EXPECT_THAT(Entries(reading), Contains(StartsWith("mbus:")));
  }
  EXPECT_EQ(m_driver->GetCounts().due, 3u);
  EXPECT_EQ(m_driver->GetCounts().delivered, 3u);
}

TEST_F(MbifDriver, ReadsEachMeterOnceInEverySlotOfTheClock) {
  AddMeters({Heat, Gas});
  Drive();
  Elapse(2 * 900 * kSecond + 10 * kSecond, 100);
  EXPECT_THAT(m_readings, SizeIs(6));
  for (const cMeterRecord& reading : m_readings) EXPECT_LT((reading.GetTimestamp() - kBegin) % 900, 10u);
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(MbifDriver, MakesOneReadingOfAllTelegramsOfAMeter) {
  AddMeters({Months});
  Drive();
  ASSERT_TRUE(AwaitWithin(20 * kSecond, [this] { return m_readings.size() == 1; }));
  const unsigned int telegrams = m_bus.GetSlave(0).GetMeter().CountTelegrams();
  EXPECT_GT(telegrams, 1u);
  EXPECT_EQ(m_driver->GetCounts().content.telegrams, telegrams);
  EXPECT_GT(m_readings[0].GetMeasurementEntries().size(), 12u);
}

TEST_F(MbifDriver, ReadsAMeterByItsSecondaryAddress) {
  AddMeters({Heat, WarmWater});
  std::string error;
  m_options.meters.assign(1, {});
  ASSERT_TRUE(cMBusAddress::Parse(IdOf(1), m_options.meters[0], error));
  Drive();
  ASSERT_TRUE(AwaitWithin(10 * kSecond, [this] { return m_readings.size() == 1; }));
  EXPECT_EQ(m_readings[0].GetMeterID(), IdOf(1));
  EXPECT_EQ(m_readings[0].GetAddr(), IdOf(1));
}

TEST_F(MbifDriver, RepeatsARequestUntilTheAnswerIsGood) {
  AddMeters({Heat});
  m_bus.Inject(eBusFault::Checksum, 1);
  m_bus.Inject(eBusFault::Truncation, 1);
  Drive();
  ASSERT_TRUE(AwaitWithin(30 * kSecond, [this] { return m_readings.size() == 1; }));
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(MbifDriver, TellsAReadingThatIsMissingWithTheCause) {
  AddMeters({Heat, Gas});
  m_bus.SetPresent(0, false);
  Drive();
  ASSERT_TRUE(AwaitWithin(30 * kSecond, [this] { return m_readings.size() == 1 && m_events.size() == 1; }));
  EXPECT_EQ(m_readings[0].GetMeterID(), IdOf(1));
  const vorn::cRecord& event = m_events[0];
  EXPECT_EQ(event.GetTextPar("driver"), "mbif");
  EXPECT_EQ(event.GetTextPar("interface-name"), "MBUS");
  EXPECT_EQ(event.GetTextPar("event"), "readings missing");
  EXPECT_THAT(event.GetTextPar("reason"), StartsWith("1 reading of meter at 1, 2025-06-15T00:00:00Z: "));
  EXPECT_EQ(m_driver->GetCounts().missing, 1u);
}

TEST_F(MbifDriver, TellsTheMissingOfASilentMeterTogetherWhenItAnswersAgain) {
  m_options.intervalSeconds = 60;
  AddMeters({Heat});
  m_bus.SetPresent(0, false);
  Drive();
  Elapse(600 * kSecond, 100);
  m_bus.SetPresent(0, true);
  ASSERT_TRUE(AwaitWithin(
      7200 * kSecond, [this] { return m_readings.size() >= 2; }, 500));
  const cMBusCounts counts = m_driver->GetCounts();
  EXPECT_EQ(counts.due, counts.delivered + counts.missing);
  EXPECT_EQ(CountTold(), counts.missing);
  EXPECT_LT(Reasons("readings missing").size(), counts.missing);
  EXPECT_THAT(Reasons("readings missing"), Contains(HasSubstr("not asked, as it has not answered since")));
}

TEST_F(MbifDriver, LosesNothingWhenTheLineIsLost) {
  AddMeters({Heat});
  m_options.intervalSeconds = 60;
  Drive();
  ASSERT_TRUE(AwaitWithin(10 * kSecond, [this] { return m_readings.size() == 1; }));
  m_line.reset();
  Elapse(180 * kSecond, 100);
  EXPECT_THAT(Reasons("input lost"), SizeIs(1));
  EXPECT_THAT(Reasons("readings missing"), Contains(HasSubstr("the line is not there")));
  m_driver->Post(vorn::cMsg(0));
  const cMBusCounts counts = m_driver->GetCounts();
  EXPECT_EQ(counts.delivered, 1u);
  EXPECT_EQ(counts.due, counts.delivered + counts.missing);
}

TEST_F(MbifDriver, TellsAnAnswerOfWhichOnlyAPartCanBeReadOnceForACause) {
  AddMeters({Months});
  OpenLine();
  // The first telegram of each reading comes, the next one never: a reading begins with an initialisation.
  bool begins = false;
  m_line->onRequest = [&](cBytes request, const std::string&) {
    if (begins) m_bus.Inject(eBusFault::Silence, 3);
    begins = request[1] == eSndNke;
  };
  Drive();
  ASSERT_TRUE(AwaitWithin(20 * kSecond, [this] { return m_readings.size() == 1; }));
  EXPECT_THAT(Reasons("reading incomplete"), ElementsAre("meter at 1: no answer"));
  EXPECT_THAT(Entries(m_readings[0]), Contains(StartsWith("mbus:0C/06=")));
  Elapse(1800 * kSecond, 100);
  EXPECT_EQ(m_driver->GetCounts().incomplete, m_readings.size());
  EXPECT_THAT(Reasons("reading incomplete"), SizeIs(1));
  EXPECT_THAT(Reasons("readings missing"), IsEmpty());
}

TEST_F(MbifDriver, ReadsEachMeterOnceWhenItIsTo) {
  AddMeters({Heat, Gas, Fixed});
  m_options.once = true;
  Drive();
  ASSERT_TRUE(AwaitWithin(30 * kSecond, [this] { return m_readings.size() == 3; }));
  Elapse(3600 * kSecond, 500);
  EXPECT_THAT(m_readings, SizeIs(3));
  EXPECT_THAT(m_driver->Summary(),
              StartsWith("mbif: readings due=3 read=3 missing=0 incomplete=0 filtered=0; telegrams=3 values="));
  EXPECT_THAT(m_driver->Summary(), HasSubstr("; readings delivered=3 acknowledged=3 refused=0 dropped=0"));
}

TEST_F(MbifDriver, TellsHowItAndItsMetersAre) {
  AddMeters({Heat, Gas});
  m_bus.SetPresent(1, false);
  Drive();
  ASSERT_TRUE(AwaitWithin(60 * kSecond, [this] { return Value("mbif-MBUS.MBUS.2.silent-since") != "none"; }));
  EXPECT_EQ(Value("mbif-MBUS.connection"), "connected");
  EXPECT_EQ(Value("mbif-MBUS.MBUS.input"), "open");
  EXPECT_EQ(Value("mbif-MBUS.MBUS.readings-due"), "2");
  EXPECT_EQ(Value("mbif-MBUS.MBUS.readings-missing"), "1");
  EXPECT_EQ(Value("mbif-MBUS.MBUS.readings-incomplete"), "0");
  EXPECT_EQ(Value("mbif-MBUS.MBUS.1.last-reading"),
            "2025-06-15T00:00:0" + Value("mbif-MBUS.MBUS.1.last-reading").substr(18));
  EXPECT_EQ(Value("mbif-MBUS.MBUS.1.silent-since"), "none");
  EXPECT_EQ(Value("mbif-MBUS.MBUS.2.last-reading"), "none");
  EXPECT_GT(std::stoi(Value("mbif-MBUS.MBUS.1.answer-ms")), 0);
  EXPECT_THAT(Flashes(), ElementsAre(1u));
}

}  // namespace
}  // namespace tav::mbus
