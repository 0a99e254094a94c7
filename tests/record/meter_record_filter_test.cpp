// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/obis/obis_map.h>
#include <tav/record/meter_record.h>
#include <tests/support/captured_trace.h>

using tav::cMeasurementEntry;
using tav::cMeterRecord;
using tav::cMeterTav;
using tav::cObisMap;
using tav::cObisMapEntry;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A reading of the named values, filtered through a map of the named rules.
class MeterRecordFilter : public testing::Test {
 protected:
  void Read(const std::vector<std::string>& names) {
    unsigned int value = 0;
    for (const std::string& name : names)
      m_source.AddMeasurementEntry({name, std::to_string(++value), "Wh", 1, cMeterTav::eTsRtc});
  }
  void Know(const std::vector<std::string>& names) {
    unsigned long long id = 0;
    for (const std::string& name : names) m_map.Set(cObisMapEntry(++id, "rule", name, ""));
  }
  static std::vector<std::string> Values(const cMeterRecord& record) {
    std::vector<std::string> values;
    for (const cMeasurementEntry& entry : record.GetMeasurementEntries())
      values.push_back(entry.GetName() + "=" + entry.GetValue());
    return values;
  }

  cMeterRecord m_source{"ehzif", "EMH", "E", "4711", "12", "ok", 1393675200, cMeterTav::eTsMeter, 99};
  cMeterRecord m_out;
  cObisMap m_map;
};

}  // namespace

TEST_F(MeterRecordFilter, KeepsWhatTheMapKnowsUnderItsNames) {
  Read({"1-1:1.8.0*255", "1-0:2.8.0", "1-0:99.9.9"});
  Know({"1-2:1.8.0", "1-0:2.8.0"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(Values(m_out), ElementsAre("1-0:1.8.0=1", "1-0:2.8.0=2"));
}

TEST_F(MeterRecordFilter, RenamesTheSourceToo) {
  Read({"1-1:1.8.0*255", "1-0:99.9.9"});
  Know({"1-2:1.8.0"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(Values(m_source), ElementsAre("1-0:1.8.0=1", "1-0:99.9.9=2"));
}

TEST_F(MeterRecordFilter, CarriesTheFGroupOfTheReading) {
  Read({"1-1:1.8.0*3"});
  Know({"1-2:1.8.0*7"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(Values(m_out), ElementsAre("1-0:1.8.0*3=1"));
}

TEST_F(MeterRecordFilter, KeepsTheNamesWhenAsked) {
  Read({"1-1:1.8.0*255", "1-0:99.9.9"});
  Know({"1-2:1.8.0"});
  m_source.ProcessFilter(m_map, m_out, true);
  EXPECT_THAT(Values(m_out), ElementsAre("1-1:1.8.0*255=1"));
  EXPECT_THAT(Values(m_source), ElementsAre("1-1:1.8.0*255=1", "1-0:99.9.9=2"));
}

TEST_F(MeterRecordFilter, AnEmptyMapLeavesThreeOfTheFourReservedNames) {
  Read({"1-0:1.8.0", "0-0:0.0.0", "0-0:0.0.1", "0-0:0.0.253", "0-0:0.0.254", "0-0:0.0.254"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(Values(m_out), ElementsAre("0-0:0.0.0=2", "0-0:0.0.1=3", "0-0:0.0.254=5", "0-0:0.0.254=6"));
}

TEST_F(MeterRecordFilter, AReservedNameThatTheMapKnowsIsAnOrdinaryOne) {
  Read({"0-1:0.0.253"});
  Know({"0-0:0.0.253"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(Values(m_out), ElementsAre("0-0:0.0.253=1"));
}

TEST_F(MeterRecordFilter, TwoValuesOfOneRuleGiveTheFirstAndATrace) {
  const cCapturedTrace trace;
  Read({"1-1:1.8.0", "1-2:1.8.0"});
  Know({"1-0:1.8.0"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(Values(m_out), ElementsAre("1-0:1.8.0=1"));
  EXPECT_THAT(Values(m_source), ElementsAre("1-0:1.8.0=1", "1-0:1.8.0=2")) << "renamed before it was refused";
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 4 AddMeasurementEntry: duplicate obis-id in "
                                            "{obis=1-0:1.8.0) time=1970-01-01T00:00:01Z(RTC) value=2 Wh}"));
}

TEST_F(MeterRecordFilter, SaysInItsTextWhenAllIsFiltered) {
  Read({"1-0:1.8.0"});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_THAT(m_out.ToString(), testing::HasSubstr(", no measurement entries (all filtered)"));
}

TEST_F(MeterRecordFilter, CopiesEveryOtherField) {
  m_source.SetRSSI(-70);
  m_source.SetRaw(std::string("raw"));
  m_source.SetLearning(true);
  m_source.SetEventRaster(900);
  m_source.SetInterfaceInfo("n", "p", "o");
  m_source.SetVersion(3);
  m_source.GetMeterStatus().SetMeterInfos("4711", "12", "E", "EMH", "v", "k");
  const std::string text = m_source.ToString();
  m_out.SetRaw(std::string("old"));
  m_out.AddMeasurementEntry({"old", "1", "", 0, cMeterTav::eTsRtc});
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_EQ(m_out.ToString(), text);
  EXPECT_TRUE(m_out.IsValid());
  EXPECT_EQ(m_out.GetVersion(), 3u);
  EXPECT_EQ(m_out.GetEventRaster(), 900u);
  EXPECT_EQ(m_out.GetMeterStatus().GetVendor(), "v");
}

TEST_F(MeterRecordFilter, CopiesErrorAndStorageTimes) {
  m_source.FromRecord(m_source.ToRecord());
  ASSERT_EQ(m_source.GetError(), "measurement invalid");
  Read({"1-0:1.8.0"});
  vorn::cRecord form = m_source.ToRecord();
  form.SetTextPar("meterID", "4711");
  form.SetUIntPar("store-utc", 11);
  form.SetUIntPar("store-osc", 12);
  ASSERT_TRUE(m_source.FromRecord(form));
  m_source.ProcessFilter(m_map, m_out, false);
  EXPECT_EQ(m_out.GetError(), "measurement invalid");
  EXPECT_EQ(m_out.GetStoreUtc(), 11u);
  EXPECT_EQ(m_out.GetStoreOsc(), 12u);
}

TEST_F(MeterRecordFilter, AReadingFilteredIntoItselfEndsEmpty) {
  Read({"1-0:1.8.0"});
  Know({"1-0:1.8.0"});
  m_source.ProcessFilter(m_map, m_source, false);
  EXPECT_THAT(Values(m_source), IsEmpty());
}
