// SPDX-License-Identifier: Apache-2.0
#include <tav/record/measurement_entry.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include <tests/support/parameters.h>

using tav::cMeasurementEntry;
using tav::cMeterTav;
using testing::ElementsAre;

namespace {

constexpr unsigned int kNoon = 1393675200;  // 2014-03-01T12:00:00Z

cMeasurementEntry Energy() { return {"1-0:1.8.0", "12345.6", "Wh", kNoon, cMeterTav::eTsMeter}; }

vorn::cData Bytes(const std::string& bytes) { return vorn::cData(bytes); }

}  // namespace

TEST(MeasurementEntry, StartsEmpty) {
  const cMeasurementEntry entry;
  EXPECT_EQ(entry.GetName(), "");
  EXPECT_EQ(entry.GetValue(), "");
  EXPECT_EQ(entry.GetUnit(), "");
  EXPECT_EQ(entry.GetTimestamp(), 0u);
  EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsUnknown);
  EXPECT_TRUE(entry.GetSignature().IsEmpty());
}

TEST(MeasurementEntry, IsBuiltWithItsFieldsAndNoSignature) {
  const cMeasurementEntry entry = Energy();
  EXPECT_EQ(entry.GetName(), "1-0:1.8.0");
  EXPECT_EQ(entry.GetValue(), "12345.6");
  EXPECT_EQ(entry.GetUnit(), "Wh");
  EXPECT_EQ(entry.GetTimestamp(), kNoon);
  EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsMeter);
  EXPECT_EQ(entry.GetTimesourceText(), "Meter");
  EXPECT_TRUE(entry.GetSignature().IsEmpty());
}

TEST(MeasurementEntry, SetLeavesTheSignature) {
  cMeasurementEntry entry;
  entry.SetSignature(Bytes("sig"));
  entry.Set("n", "v", "u", 7, cMeterTav::eTsRtc);
  EXPECT_EQ(entry.GetName(), "n");
  EXPECT_EQ(entry.GetValue(), "v");
  EXPECT_EQ(entry.GetUnit(), "u");
  EXPECT_EQ(entry.GetTimestamp(), 7u);
  EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsRtc);
  EXPECT_EQ(entry.GetSignature(), Bytes("sig"));
}

TEST(MeasurementEntry, EverySetterSetsItsField) {
  cMeasurementEntry entry = Energy();
  entry.SetName("name");
  entry.SetTimeStamp(1);
  entry.SetTimesource(cMeterTav::eTsMeterUtc);
  EXPECT_EQ(entry.ToString(), "{obis=name) time=1970-01-01T00:00:01Z(Meter UTC) value=12345.6 Wh}");
}

TEST(MeasurementEntry, ACopyHoldsItsOwnSignature) {
  cMeasurementEntry entry = Energy();
  entry.SetSignature(Bytes("sig"));
  const cMeasurementEntry copy = entry;
  cMeasurementEntry assigned;
  assigned = entry;
  entry.SetSignature(Bytes("other"));
  EXPECT_EQ(copy.GetSignature(), Bytes("sig"));
  EXPECT_EQ(assigned.GetSignature(), Bytes("sig"));
  EXPECT_EQ(assigned.ToString(), copy.ToString());
}

TEST(MeasurementEntry, AssigningToItselfChangesNothing) {
  cMeasurementEntry entry = Energy();
  entry.SetSignature(Bytes("sig"));
  const vorn::cRecord before = entry.ToRecord();
  const cMeasurementEntry& same = entry;
  entry = same;
  EXPECT_EQ(entry.ToRecord(), before);
}

TEST(MeasurementEntry, IsDestroyedThroughItsBase) {
  struct cDerived : cMeasurementEntry {
    explicit cDerived(bool& gone) : m_gone(gone) {}
    ~cDerived() override { m_gone = true; }
    bool& m_gone;
  };
  bool gone = false;
  std::unique_ptr<cMeasurementEntry>(std::make_unique<cDerived>(gone)).reset();
  EXPECT_TRUE(gone);
}

TEST(MeasurementEntry, TheRecordFormIsInItsOrder) {
  cMeasurementEntry entry = Energy();
  entry.SetSignature(Bytes("\x01\x02"));
  EXPECT_THAT(Parameters(entry.ToRecord()),
              ElementsAre("name text=1-0:1.8.0", "value text=12345.6", "unit text=Wh", "timestamp uint=1393675200",
                          "time-source text=Meter", "signature data=01 02"));
}

TEST(MeasurementEntry, TheRecordFormLeavesOutAnEmptyUnitAndSignature) {
  const cMeasurementEntry entry("1-0:96.1.0", "", "", 0, cMeterTav::eTsUnknown);
  EXPECT_THAT(Parameters(entry.ToRecord()),
              ElementsAre("name text=1-0:96.1.0", "value text=", "timestamp uint=0", "time-source text=Unknown"));
}

TEST(MeasurementEntry, ATimeSourceOutOfRangeIsWrittenAsUndefined) {
  const cMeasurementEntry entry("n", "v", "", 0, static_cast<cMeterTav::eTimeSource>(9));
  EXPECT_EQ(entry.ToRecord().GetTextPar("time-source"), "Undefined");
}

TEST(MeasurementEntry, AUnitInAnotherEncodingIsCarriedAsItIs) {
  const cMeasurementEntry entry("n", "v", "m\xB3", 0, cMeterTav::eTsRtc);
  EXPECT_EQ(entry.ToRecord().GetTextPar("unit"), "m\xB3");
}

TEST(MeasurementEntry, TheTextFormKeepsItsUnbalancedBracket) {
  EXPECT_EQ(Energy().ToString(), "{obis=1-0:1.8.0) time=2014-03-01T12:00:00Z(Meter) value=12345.6 Wh}");
}

TEST(MeasurementEntry, TheTextFormWithoutUnitEndsInABlank) {
  const cMeasurementEntry entry("1-0:1.8.0", "1", "", kNoon, cMeterTav::eTsMeter);
  EXPECT_EQ(entry.ToString(), "{obis=1-0:1.8.0) time=2014-03-01T12:00:00Z(Meter) value=1 }");
}
