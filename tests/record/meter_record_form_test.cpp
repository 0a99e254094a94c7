// SPDX-License-Identifier: Apache-2.0
// The record form of a reading: written in its order, and read back with every fault named.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/record/meter_record_fixture.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/trace_level.h>

using namespace meter_record_fixture;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(MeterRecordForm, TheRecordFormIsInItsOrder) {
  EXPECT_THAT(Parameters(Full().ToRecord()),
              ElementsAre("version uint=1", "driver text=ehzif", "meterID text=4711", "addr text=12",
                          "manufactor text=EMH", "medium text=E", "status text=ok", "timestamp uint=1393675200",
                          "time-source text=Meter UTC", "osc uint=99", "learning bool=true", "rssi int=-70",
                          "store-osc uint=0", "store-utc uint=0", "interface-name text=RS485-1",
                          "interface-protocol text=SML", "interface-options text=baud=9600,Learn,",
                          "measurement record={entry record={name text=1-0:1.8.0, value text=12345.6, unit text=Wh, "
                          "timestamp uint=1393675200, time-source text=Meter}, entry record={name text=1-0:2.8.0, "
                          "value text=7, unit text=Wh, timestamp uint=1393675200, time-source text=Meter, "
                          "signature data=73 69 67}}",
                          "raw data=1B 1B", "event-raster uint=900"));
}

TEST(MeterRecordForm, TheRecordFormOfAnEmptyReadingHoldsTheNumbersOnly) {
  EXPECT_THAT(Parameters(cMeterRecord().ToRecord()),
              ElementsAre("version uint=1", "timestamp uint=0", "time-source text=Unknown", "osc uint=0",
                          "learning bool=false", "rssi int=0", "store-osc uint=0", "store-utc uint=0"));
}

TEST(MeterRecordForm, WritesTheVersionItWasGiven) {
  cMeterRecord record;
  record.SetVersion(2);
  EXPECT_EQ(record.ToRecord().GetUIntPar("version"), 2u);
}

TEST(MeterRecordForm, WritesATimeSourceOutOfRangeAsUndefined) {
  cMeterRecord record;
  record.SetTimesource(static_cast<cMeterTav::eTimeSource>(77), false);
  EXPECT_EQ(record.ToRecord().GetTextPar("time-source"), "Undefined");
}

TEST(MeterRecordForm, SurvivesTheRoundTrip) {
  const cMeterRecord record = Full();
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(record.ToRecord()));
  EXPECT_TRUE(read.IsValid());
  EXPECT_EQ(read.GetError(), "");
  EXPECT_EQ(read.ToRecord(), record.ToRecord());
  EXPECT_EQ(read.ToString(), record.ToString());
  EXPECT_EQ(read.GetMeasurementEntries().back().GetSignature(), Bytes("sig"));
}

TEST(MeterRecordForm, CarriesTheStorageTimesUnchanged) {
  vorn::cRecord form = Form();
  form.AppendUIntPar("store-utc", 11);
  form.AppendUIntPar("store-osc", 12);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetStoreUtc(), 11u);
  EXPECT_EQ(read.GetStoreOsc(), 12u);
  EXPECT_EQ(read.ToRecord().GetUIntPar("store-utc"), 11u);
  EXPECT_EQ(read.ToRecord().GetUIntPar("store-osc"), 12u);
}

TEST(MeterRecordForm, ReadsTheLeastThatIsARecord) {
  cMeterRecord read = Full();
  ASSERT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(read.GetMeterID(), "4711");
  EXPECT_EQ(read.GetDriver() + read.GetAddr() + read.GetManufactor() + read.GetMedium() + read.GetStatus(), "");
  EXPECT_EQ(read.GetTimestamp(), 0u);
  EXPECT_EQ(read.GetOSC(), 0u);
  EXPECT_EQ(read.GetTimesource(), cMeterTav::eTsUndefined) << "the empty text is none of the sources'";
  EXPECT_FALSE(read.GetLearning());
  EXPECT_EQ(read.GetRSSI(), 0);
  EXPECT_EQ(read.GetEventRaster(), 0u);
  EXPECT_EQ(read.GetInterfaceName() + read.GetInterfaceProtocol() + read.GetInterfaceOptions(), "");
}

TEST(MeterRecordForm, AReadingWithoutEntriesIsWrittenAndNotReadBack) {
  const cMeterRecord record = Bare();
  EXPECT_FALSE(record.ToRecord().GetPar("measurement").IsValid());
  cMeterRecord read;
  EXPECT_FALSE(read.FromRecord(record.ToRecord()));
  EXPECT_EQ(read.GetError(), "measurement invalid");
}

TEST(MeterRecordForm, RefusesAnEmptyFormWithoutAWord) {
  const cTraceLevel level("UnitTAV", 16);
  const cCapturedTrace trace;
  cMeterRecord read = Full();
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(read.GetError(), "");
  EXPECT_FALSE(read.IsValid());
  EXPECT_THAT(read.GetMeasurementEntries(), IsEmpty()) << "it was reset first";
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterRecordForm, AnEmptyFormLeavesAnEarlierErrorText) {
  cMeterRecord read;
  read.FromRecord(Bare().ToRecord());
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(read.GetError(), "measurement invalid");
}

TEST(MeterRecordForm, RefusesAnotherVersion) {
  const cCapturedTrace trace;
  vorn::cRecord form = Form();
  form.SetUIntPar("version", 2);
  cMeterRecord read;
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_EQ(read.GetError(), "unknown message version");
  EXPECT_EQ(read.GetVersion(), 2u);
  EXPECT_FALSE(read.IsValid());
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterRecord: unknown version"));
}

TEST(MeterRecordForm, RefusesAVersionOfAnotherTypeOrNone) {
  vorn::cRecord form;
  form.AppendTextPar("meterID", "4711");
  cMeterRecord read;
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_EQ(read.GetError(), "unknown message version");
  EXPECT_EQ(read.GetVersion(), 0u);
  form.AppendIntPar("version", 1);
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_EQ(read.GetVersion(), 0u);
}

TEST(MeterRecordForm, SaysNothingBelowTheLevelOfFailures) {
  const cTraceLevel level("UnitTAV", 1);
  const cCapturedTrace trace;
  cMeterRecord read;
  vorn::cRecord form;
  form.AppendUIntPar("version", 2);
  read.FromRecord(form);
  read.FromRecord(Bare().ToRecord());
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

namespace {

enum eFault { eAbsent, eEmpty, eBadType };

void Append(vorn::cRecord& form, const char* name, eFault fault) {
  if (fault == eEmpty && std::string(name) == "meterID") form.AppendTextPar(name, "");
  if (fault == eEmpty && std::string(name) == "measurement") form.AppendRecordPar(name, vorn::cRecord());
  if (fault == eBadType) form.AppendUIntPar(name, 5);
}

}  // namespace

TEST(MeterRecordForm, RefusesAFormWithoutMeterOrMeasurementAndNamesTheFirstFault) {
  const struct {
    eFault meterID;
    eFault measurement;
    const char* error;
  } kCases[] = {
      {eAbsent, eAbsent, "meterID invalid"},
      {eEmpty, eBadType, "meterID is empty"},
      {eBadType, eAbsent, "bad type in meterID"},
  };
  for (const auto& c : kCases) {
    const cCapturedTrace trace;
    vorn::cRecord form;
    form.AppendUIntPar("version", 1);
    Append(form, "meterID", c.meterID);
    Append(form, "measurement", c.measurement);
    cMeterRecord read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.GetError(), c.error);
    EXPECT_FALSE(read.IsValid());
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterRecord: syntax error (" + std::string(c.error) + ")"));
  }
}

TEST(MeterRecordForm, RefusesAFormWithoutMeasurements) {
  const struct {
    eFault measurement;
    const char* error;
  } kCases[] = {
      {eAbsent, "measurement invalid"},
      {eEmpty, "measurement is empty"},
      {eBadType, "bad type in measurement"},
  };
  for (const auto& c : kCases) {
    const cCapturedTrace trace;
    vorn::cRecord form;
    form.AppendUIntPar("version", 1);
    form.AppendTextPar("meterID", "4711");
    Append(form, "measurement", c.measurement);
    cMeterRecord read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.GetError(), c.error);
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterRecord: syntax error (" + std::string(c.error) + ")"));
  }
}

TEST(MeterRecordForm, AMeterIdWithoutTextCountsAsEmpty) {
  vorn::cRecord form = Form();
  form.SetTextPar("meterID", nullptr);
  cMeterRecord read;
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_EQ(read.GetError(), "meterID is empty");
}

TEST(MeterRecordForm, AFailureKeepsTheTextsOfBefore) {
  cMeterRecord read = Full();
  EXPECT_FALSE(read.FromRecord(Form({})));
  EXPECT_EQ(read.GetDriver(), "ehzif");
  EXPECT_FALSE(read.IsValid());
}

TEST(MeterRecordForm, AReusedRecordKeepsItsRawBytesAndItsError) {
  cMeterRecord read;
  read.SetRaw(std::string("raw"));
  EXPECT_FALSE(read.FromRecord(Form({})));
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(read.GetRaw(), Bytes("raw"));
  EXPECT_EQ(read.GetError(), "measurement is empty");
}

TEST(MeterRecordForm, EmptyOrMistypedRawLeavesTheRawBytes) {
  vorn::cRecord form = Form();
  form.AppendDataPar("raw", vorn::cData());
  cMeterRecord read;
  read.SetRaw(std::string("raw"));
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetRaw(), Bytes("raw"));
  form.SetTextPar("raw", "text");
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetRaw(), Bytes("raw"));
}

TEST(MeterRecordForm, TakesTheTextFormOfAnyTypeForItsPlainTexts) {
  vorn::cRecord form = Form();
  for (const char* name : {"driver", "addr", "manufactor", "medium", "status"}) form.AppendUIntPar(name, 7);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetDriver() + read.GetAddr() + read.GetManufactor() + read.GetMedium() + read.GetStatus(), "77777");
}

TEST(MeterRecordForm, TakesAnyIntegerForTimestampAndOsc) {
  vorn::cRecord form = Form();
  form.AppendIntPar("timestamp", 5);
  form.AppendUInt64Par("osc", 6);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetTimestamp(), 5u);
  EXPECT_EQ(read.GetOSC(), 6u);
}

TEST(MeterRecordForm, TakesItsOptionalFieldsOnlyInTheirOwnType) {
  vorn::cRecord form = Form();
  form.AppendUIntPar("learning", 1);
  form.AppendUIntPar("rssi", 2);
  form.AppendIntPar("event-raster", 3);
  form.AppendIntPar("store-osc", 4);
  form.AppendUInt64Par("store-utc", 5);
  for (const char* name : {"interface-name", "interface-protocol", "interface-options"}) form.AppendUIntPar(name, 6);
  cMeterRecord read = Full();
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_FALSE(read.GetLearning());
  EXPECT_EQ(read.GetRSSI(), 0);
  EXPECT_EQ(read.GetEventRaster(), 0u);
  EXPECT_EQ(read.GetStoreOsc(), 0u);
  EXPECT_EQ(read.GetStoreUtc(), 0u);
  EXPECT_EQ(read.GetInterfaceName() + read.GetInterfaceProtocol() + read.GetInterfaceOptions(), "");
}

TEST(MeterRecordForm, IgnoresAnInterfaceConfig) {
  vorn::cRecord form = Form();
  form.AppendTextPar("interface-config", "x");
  cMeterRecord read, plain;
  ASSERT_TRUE(read.FromRecord(form));
  ASSERT_TRUE(plain.FromRecord(Form()));
  EXPECT_EQ(read.ToRecord(), plain.ToRecord());
}

TEST(MeterRecordForm, DropsDuplicateEntriesOfAForm) {
  const cCapturedTrace trace;
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form({Entry("a", "1").ToRecord(), Entry("a", "2").ToRecord(), Entry("b").ToRecord(),
                                    Entry("0-0:0.0.254").ToRecord(), Entry("0-0:0.0.254").ToRecord()})));
  EXPECT_THAT(Names(read), ElementsAre("a", "b", "0-0:0.0.254", "0-0:0.0.254"));
  EXPECT_EQ(read.GetMeasurementEntries().front().GetValue(), "1");
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 4 AddMeasurementEntry: duplicate obis-id in "
                                            "{obis=a) time=2014-03-01T12:00:00Z(Meter) value=2 Wh}"));
}

TEST(MeterRecordForm, DropsDuplicatesOfALongListToo) {
  const cTraceLevel level("UnitTAV", 0);
  std::vector<vorn::cRecord> entries;
  for (int round = 0; round < 2; ++round)
    for (int i = 0; i < 40; ++i) entries.push_back(Entry(std::to_string(i), std::to_string(round)).ToRecord());
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form(entries)));
  ASSERT_EQ(read.GetMeasurementEntries().size(), 40u);
  for (const cMeasurementEntry& entry : read.GetMeasurementEntries()) EXPECT_EQ(entry.GetValue(), "0");
}

TEST(MeterRecordForm, SkipsEntriesThatAreNoRecordsAndOtherParameters) {
  vorn::cRecord measurement;
  measurement.AppendTextPar("entry", "no record");
  measurement.AppendRecordPar("other", Entry("x").ToRecord());
  measurement.AppendRecordPar("entry", Entry("a").ToRecord());
  measurement.AppendUIntPar("entry", 4);
  vorn::cRecord form = Form();
  form.SetRecordPar("measurement", measurement);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_THAT(Names(read), ElementsAre("a"));
}

TEST(MeterRecordForm, NoFieldOfAnEntryIsMandatory) {
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form({vorn::cRecord()})));
  ASSERT_EQ(read.GetMeasurementEntries().size(), 1u);
  const cMeasurementEntry& entry = read.GetMeasurementEntries().front();
  EXPECT_EQ(entry.GetName() + entry.GetValue() + entry.GetUnit(), "");
  EXPECT_EQ(entry.GetTimestamp(), 0u);
  EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsUndefined);
  EXPECT_TRUE(entry.GetSignature().IsEmpty());
}

TEST(MeterRecordForm, TakesAnEntrysFieldsInAnyTypeButItsSignatureOnlyAsData) {
  vorn::cRecord form;
  form.AppendUIntPar("name", 1);
  form.AppendIntPar("value", -2);
  form.AppendBoolPar("unit", true);
  form.AppendUInt64Par("timestamp", 3);
  form.AppendTextPar("signature", "sig");
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form({form})));
  const cMeasurementEntry& entry = read.GetMeasurementEntries().front();
  EXPECT_EQ(entry.ToString(), "{obis=1) time=1970-01-01T00:00:03Z(Undefined) value=-2 true}");
  EXPECT_TRUE(entry.GetSignature().IsEmpty());
}

TEST(MeterRecordForm, NoCutOfTheBytesReadsAsTheWholeReading) {
  const std::string bytes(Full().ToRecord().GetBytes());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    vorn::cRecord cut;
    cMeterRecord read;
    if (vorn::cRecord::FromBytes(bytes.data(), size, cut)) read.FromRecord(cut);
    EXPECT_NE(read.ToRecord(), Full().ToRecord()) << size << " bytes";
  }
}
