// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_reading.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <tests/driver/mbus/mbif/mbif_frames.h>

namespace tav::mbus {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MBusReading : public testing::Test {
 protected:
  MBusReading() {
    std::string error;
    EXPECT_TRUE(cMBusAddress::Parse("5", m_meter.address, error));
  }
  void Rule(unsigned int id, const std::string& obis, const std::string& map) {
    cObisMapEntry entry(id, "a rule", obis, "protocol=mbus," + map);
    ASSERT_TRUE(m_rules.Add(entry));
    m_naming.rules = &m_rules;
  }
  // The entries of the reading, "name=value unit".
  std::vector<std::string> Make(const std::vector<std::string>& frames) {
    m_reading = cMeterRecord();
    m_made = m_maker.Make(frames, m_meter, m_naming, {1'750'000'000, cMeterTav::eTsNetworkTime}, m_reading);
    return Entries(m_reading);
  }

  cMBusMeter m_meter;
  cObisMap m_rules;
  cMBusNaming m_naming;
  cMBusReadingMaker m_maker;
  cMeterRecord m_reading;
  bool m_made = false;
};

TEST_F(MBusReading, TellsWhoseItIs) {
  Make({HeatFrame("0406CE860000")});
  ASSERT_TRUE(m_made);
  EXPECT_EQ(m_reading.GetDriver(), "mbif");
  EXPECT_EQ(m_reading.GetMeterID(), "77447744");
  EXPECT_EQ(m_reading.GetAddr(), "5");
  EXPECT_EQ(m_reading.GetManufactor(), "KAM");
  EXPECT_EQ(m_reading.GetMedium(), "h");
  EXPECT_EQ(m_reading.GetStatus(), "ok");
  EXPECT_EQ(m_reading.GetTimestamp(), 1'750'000'000u);
  EXPECT_EQ(m_reading.GetTimesourceText(), "Network Time");
  EXPECT_NE(m_reading.GetOSC(), 0u);
  EXPECT_TRUE(m_reading.GetRaw().IsEmpty());
}

TEST_F(MBusReading, HasTheStatusOfTheMeter) {
  Make({MakeFrame("72 44774477 2D2C 34 04 06 1A 0000 0406CE860000")});
  EXPECT_EQ(m_reading.GetStatus(), "error: 1a");
}

TEST_F(MBusReading, TakesIdentifierAndMediumOfTheConfigurationFirst) {
  m_meter.id = "house 7";
  m_meter.medium = "C";
  Rule(1, "5-0:1.0.0", "medium=C,dif=04,vif=06");
  EXPECT_THAT(Make({HeatFrame("0406CE860000")}), ElementsAre("5-0:1.0.0=34510000 Wh"));
  EXPECT_EQ(m_reading.GetMeterID(), "house 7");
  EXPECT_EQ(m_reading.GetMedium(), "C");
}

TEST_F(MBusReading, IsNamedByTheRulesOfBlocksMediumAndAddress) {
  Rule(5, "6-0:1.0.0", "medium=h,dif=04,vif=06");
  Rule(6, "6-0:10.0.0", "meteraddr=5,dif=02,vif=59");
  Rule(7, "6-0:11.0.0", "meteraddr=6,dif=02,vif=5D");
  Rule(8, "6-0:9.0.0", "medium=W,dif=04,vif=3B");
  EXPECT_THAT(Make({HeatFrame("0406CE860000 02593C19 025DA411 043B0F020000")}), ElementsAre("6-0:1.0.0=34510000 Wh",
                                                                                            "6-0:10.0.0=64.60 \xB0"
                                                                                            "C"));
  EXPECT_EQ(m_maker.GetCounts().unmapped, 2u);
  EXPECT_EQ(m_maker.GetCounts().values, 2u);
}

TEST_F(MBusReading, KeepsWhatNoRuleNamesWhenItIsTo) {
  Rule(5, "6-0:1.0.0", "dif=04,vif=06");
  m_naming.keepUnmapped = true;
  EXPECT_THAT(Make({HeatFrame("0406CE860000 8C1004 78563412")}),
              ElementsAre("6-0:1.0.0=34510000 Wh", "mbus:8C10/04=123456780 Wh"));
}

TEST_F(MBusReading, KeepsEverythingWithoutRules) {
  EXPECT_THAT(Make({HeatFrame("0406CE860000 0414116803 00")}),
              ElementsAre("mbus:04/06=34510000 Wh", "mbus:04/14=2232.49 m\xB3"));
}

TEST_F(MBusReading, KeepsTheBlocksWhereNamesAreToBeKept) {
  Rule(5, "6-0:1.0.0", "dif=04,vif=06");
  m_naming.keepNames = true;
  EXPECT_THAT(Make({HeatFrame("0406CE860000 02593C19")}), ElementsAre("mbus:04/06=34510000 Wh"));
}

TEST_F(MBusReading, LosesNoneOfTwoValuesOfOneName) {
  Rule(5, "6-0:1.0.0", "dif=04,vif=06");
  Rule(6, "6-0:1.0.0", "dif=04,vif=07");
  EXPECT_THAT(Make({HeatFrame("0406 01000000 0407 02000000 0406 03000000 0406 04000000")}),
              ElementsAre("6-0:1.0.0=1000 Wh", "mbus:04/07=20000 Wh", "mbus:04/06=3000 Wh", "mbus:04/06#2=4000 Wh"));
}

TEST_F(MBusReading, PassesOnWhatCannotBeReadAsItsBytes) {
  Rule(5, "6-0:1.0.0", "dif=0C,vif=06");
  EXPECT_THAT(Make({HeatFrame("0C06 0000BB00")}), ElementsAre("6-0:1.0.0=hex:0000BB00 "));
  EXPECT_EQ(m_maker.GetCounts().unreadable, 1u);
}

TEST_F(MBusReading, KeepsWhatStandsBeforeTheRecordThatCannotBeFollowed) {
  EXPECT_THAT(Make({HeatFrame("0406CE860000 3F0102")}), ElementsAre("mbus:04/06=34510000 Wh", "mbus:/=hex:3F0102 "));
  EXPECT_EQ(m_maker.GetFault(), "byte 25: a DIF of a reserved function (3F)");
  Make({HeatFrame("0406CE860000")});
  EXPECT_EQ(m_maker.GetFault(), "");
}

TEST_F(MBusReading, SaysThatATelegramIsEncrypted) {
  m_naming.keepUnmapped = true;
  EXPECT_THAT(Make({MakeFrame("72 44774477 2D2C 34 04 06 00 1005 00112233445566778899AABBCCDDEEFF")}),
              ElementsAre("mbus:/=hex:00112233445566778899AABBCCDDEEFF "));
  EXPECT_EQ(m_maker.GetFault(), "the telegram is encrypted");
}

TEST_F(MBusReading, HasTheValuesOfAllTelegrams) {
  m_meter.raw = true;
  const std::vector<std::string> frames = {HeatFrame("0406CE860000 1F"), HeatFrame("02593C19 0F0102")};
  EXPECT_THAT(Make(frames), ElementsAre("mbus:04/06=34510000 Wh",
                                        "mbus:02/59=64.60 \xB0"
                                        "C"));
  EXPECT_EQ(m_reading.GetRaw().AsText(), frames[0] + frames[1]);
  EXPECT_EQ(m_maker.GetCounts().telegrams, 2u);
}

TEST_F(MBusReading, TellsTextsAndTimesWithoutAUnit) {
  EXPECT_THAT(Make({HeatFrame("0DFD0C 03 434241 426C BF1C 046D 0D 0B 38 11")}),
              ElementsAre("mbus:0D/FD0C=ABC ", "mbus:42/6C=2013-12-31 ", "mbus:04/6D=2009-01-24T11:13:00 "));
}

TEST_F(MBusReading, NamesTheCountersOfTheFixedStructureAsRecords) {
  Rule(5, "8-0:1.0.0", "dif=0C,vif=13");
  Rule(6, "8-0:1.2.0", "dif=4C,vif=13");
  EXPECT_THAT(Make({MakeFrame("73 78563412 0A 00 E9 7E 01000000 35010000")}),
              ElementsAre("8-0:1.0.0=0.001 m\xB3", "8-0:1.2.0=0.135 m\xB3"));
  EXPECT_EQ(m_reading.GetMedium(), "w");
  EXPECT_EQ(m_reading.GetManufactor(), "");
}

TEST_F(MBusReading, IsMadeOfNothingButTelegramsWithRecords) {
  Make({});
  EXPECT_FALSE(m_made);
  Make({"no frame", MakeFrame("70 05"), MakeShortFrame(eReqUd2, 5)});
  EXPECT_FALSE(m_made);
  EXPECT_THAT(Make({MakeFrame("70 05"), HeatFrame("0406CE860000")}), ElementsAre("mbus:04/06=34510000 Wh"));
}

TEST_F(MBusReading, HasItsAddressForAnIdentifierWhereTheMeterTellsNone) {
  Make({MakeFrame("78 0406CE860000")});
  EXPECT_EQ(m_reading.GetMeterID(), "5");
  EXPECT_EQ(m_reading.GetMedium(), "Z");
}

}  // namespace
}  // namespace tav::mbus
