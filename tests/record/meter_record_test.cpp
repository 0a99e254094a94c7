// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_record.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/trace_level.h>

using tav::cMeasurementEntry;
using tav::cMeterRecord;
using tav::cMeterTav;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr unsigned int kNoon = 1393675200;  // 2014-03-01T12:00:00Z

cMeasurementEntry Entry(const std::string& name, const std::string& value = "1") {
  return {name, value, "Wh", kNoon, cMeterTav::eTsMeter};
}

vorn::cData Bytes(const std::string& bytes) { return vorn::cData(bytes); }

cMeterRecord Bare() { return {"ehzif", "EMH", "E", "4711", "12", "ok", kNoon, cMeterTav::eTsMeterUtc, 99}; }

// Every field that a driver can set has a value.
cMeterRecord Full() {
  cMeterRecord record = Bare();
  record.SetRSSI(-70);
  record.SetRaw(Bytes("\x1B\x1B"));
  record.SetLearning(true);
  record.SetEventRaster(900);
  record.SetInterfaceInfo("RS485-1", "SML", "baud=9600,Learn,");
  record.AddMeasurementEntry(Entry("1-0:1.8.0", "12345.6"));
  cMeasurementEntry second = Entry("1-0:2.8.0", "7");
  second.SetSignature(Bytes("sig"));
  record.AddMeasurementEntry(second);
  return record;
}

// The least that is read.
vorn::cRecord Form(const std::vector<vorn::cRecord>& entries) {
  vorn::cRecord measurement;
  for (const vorn::cRecord& entry : entries) measurement.AppendRecordPar("entry", entry);
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("meterID", "4711");
  form.AppendRecordPar("measurement", measurement);
  return form;
}
vorn::cRecord Form() { return Form({Entry("1-0:1.8.0").ToRecord()}); }

std::vector<std::string> Names(const cMeterRecord& record) {
  std::vector<std::string> names;
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries()) names.push_back(entry.GetName());
  return names;
}

}  // namespace

// ---- building

TEST(MeterRecord, StartsWithItsDefaults) {
  const cMeterRecord record;
  EXPECT_FALSE(record.IsValid());
  EXPECT_EQ(record.GetVersion(), 1u);
  EXPECT_EQ(record.GetDriver() + record.GetMeterID() + record.GetAddr() + record.GetManufactor() + record.GetMedium(),
            "");
  EXPECT_EQ(record.GetStatus() + record.GetError(), "");
  EXPECT_EQ(record.GetRSSI(), 0);
  EXPECT_EQ(record.GetTimestamp(), 0u);
  EXPECT_EQ(record.GetTimesource(), cMeterTav::eTsUnknown);
  EXPECT_EQ(record.GetOSC(), 0u);
  EXPECT_TRUE(record.GetRaw().IsEmpty());
  EXPECT_FALSE(record.GetLearning());
  EXPECT_EQ(record.GetEventRaster(), 0u);
  EXPECT_EQ(record.GetInterfaceName() + record.GetInterfaceProtocol() + record.GetInterfaceOptions(), "");
  EXPECT_EQ(record.GetStoreUtc(), 0u);
  EXPECT_EQ(record.GetStoreOsc(), 0u);
  EXPECT_THAT(record.GetMeasurementEntries(), IsEmpty());
}

TEST(MeterRecord, IsBuiltValidWithItsNineFields) {
  const cMeterRecord record = Bare();
  EXPECT_TRUE(record.IsValid());
  EXPECT_EQ(record.GetDriver(), "ehzif");
  EXPECT_EQ(record.GetManufactor(), "EMH");
  EXPECT_EQ(record.GetMedium(), "E");
  EXPECT_EQ(record.GetMeterID(), "4711");
  EXPECT_EQ(record.GetAddr(), "12");
  EXPECT_EQ(record.GetStatus(), "ok");
  EXPECT_EQ(record.GetTimestamp(), kNoon);
  EXPECT_EQ(record.GetTimesource(), cMeterTav::eTsMeterUtc);
  EXPECT_EQ(record.GetTimesourceText(), "Meter UTC");
  EXPECT_EQ(record.GetOSC(), 99u);
}

TEST(MeterRecord, SetChangesNothingBesideItsNineFields) {
  cMeterRecord record = Full();
  record.Set("d", "m", "G", "id", "a", "s", 1, cMeterTav::eTsRtc, 2);
  EXPECT_EQ(record.GetRSSI(), -70);
  EXPECT_TRUE(record.GetLearning());
  EXPECT_EQ(record.GetEventRaster(), 900u);
  EXPECT_EQ(record.GetInterfaceName(), "RS485-1");
  EXPECT_EQ(record.GetMeasurementEntries().size(), 2u);
  EXPECT_EQ(record.GetDriver(), "d");
  EXPECT_EQ(record.GetOSC(), 2u);
}

TEST(MeterRecord, InitResetsNumbersAndEntriesAndKeepsTextsAndRaw) {
  cMeterRecord record = Full();
  record.FromRecord(Form({}));
  record = Full();
  record.SetVersion(3);
  record.GetMeterStatus().SetMeterInfos("4711", "", "", "", "", "");
  record.Init();
  EXPECT_FALSE(record.IsValid());
  EXPECT_EQ(record.GetVersion(), 1u);
  EXPECT_EQ(record.GetRSSI(), 0);
  EXPECT_EQ(record.GetTimestamp(), 0u);
  EXPECT_EQ(record.GetTimesource(), cMeterTav::eTsUnknown);
  EXPECT_EQ(record.GetOSC(), 0u);
  EXPECT_FALSE(record.GetLearning());
  EXPECT_EQ(record.GetEventRaster(), 0u);
  EXPECT_THAT(record.GetMeasurementEntries(), IsEmpty());

  EXPECT_EQ(record.GetDriver(), "ehzif");
  EXPECT_EQ(record.GetMeterID(), "4711");
  EXPECT_EQ(record.GetAddr(), "12");
  EXPECT_EQ(record.GetManufactor(), "EMH");
  EXPECT_EQ(record.GetMedium(), "E");
  EXPECT_EQ(record.GetStatus(), "ok");
  EXPECT_EQ(record.GetRaw(), Bytes("\x1B\x1B"));
  EXPECT_EQ(record.GetInterfaceProtocol(), "SML");
  EXPECT_TRUE(record.GetMeterStatus().IsValid());
}

TEST(MeterRecord, EverySetterSetsItsField) {
  cMeterRecord record;
  record.SetMeterID("id");
  record.SetStatus("error: 1a");
  record.SetVersion(2);
  record.SetOSC(3);
  record.SetEventRaster(4);
  record.SetRSSI(-5);
  record.SetLearning(true);
  EXPECT_EQ(record.GetMeterID(), "id");
  EXPECT_EQ(record.GetStatus(), "error: 1a");
  EXPECT_EQ(record.GetVersion(), 2u);
  EXPECT_EQ(record.GetOSC(), 3u);
  EXPECT_EQ(record.GetEventRaster(), 4u);
  EXPECT_EQ(record.GetRSSI(), -5);
  EXPECT_TRUE(record.GetLearning());
  EXPECT_FALSE(record.IsValid()) << "only Set and FromRecord make it valid";
}

TEST(MeterRecord, ItsMeterIdIsHandedOutAsAReference) {
  cMeterRecord record = Bare();
  record.GetMeterID() = "other";
  EXPECT_EQ(record.GetMeterID(), "other");
}

TEST(MeterRecord, RawTextIsAppendedAndRawDataReplaces) {
  cMeterRecord record;
  record.SetRaw(std::string("ab"));
  record.SetRaw(std::string("ab"));
  EXPECT_EQ(record.GetRaw(), Bytes("abab"));
  record.SetRaw(Bytes("c"));
  EXPECT_EQ(record.GetRaw(), Bytes("c"));
  record.SetRaw("d");
  EXPECT_EQ(record.GetRaw(), Bytes("cd"));
}

TEST(MeterRecord, TheTimeIsSetOnEveryEntryOnlyWhenAsked) {
  cMeterRecord record = Full();
  record.SetTimeStamp(1, false);
  EXPECT_EQ(record.GetTimestamp(), 1u);
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries()) EXPECT_EQ(entry.GetTimestamp(), kNoon);
  record.SetTimeStamp(2, true);
  EXPECT_EQ(record.GetTimestamp(), 2u);
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries()) EXPECT_EQ(entry.GetTimestamp(), 2u);
}

TEST(MeterRecord, TheTimeSourceIsSetOnEveryEntryOnlyWhenAsked) {
  cMeterRecord record = Full();
  record.SetTimesource(cMeterTav::eTsRtc, false);
  EXPECT_EQ(record.GetTimesource(), cMeterTav::eTsRtc);
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries())
    EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsMeter);
  record.SetTimesource(cMeterTav::eTsNetworkTime, true);
  EXPECT_EQ(record.GetTimesource(), cMeterTav::eTsNetworkTime);
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries())
    EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsNetworkTime);
}

TEST(MeterRecord, InterfaceOptionsAreStoredExactlyAsGiven) {
  cMeterRecord record;
  record.SetInterfaceInfo("n", "p", "a=1,Learn,Learn,b=2,Learn");
  EXPECT_EQ(record.GetInterfaceName(), "n");
  EXPECT_EQ(record.GetInterfaceProtocol(), "p");
  EXPECT_EQ(record.GetInterfaceOptions(), "a=1,Learn,Learn,b=2,Learn");
}

// ---- entries

TEST(MeterRecord, KeepsEntriesInTheOrderTheyCame) {
  cMeterRecord record;
  for (const char* name : {"1-0:2.8.0", "1-0:1.8.0", "any key"}) EXPECT_TRUE(record.AddMeasurementEntry(Entry(name)));
  EXPECT_THAT(Names(record), ElementsAre("1-0:2.8.0", "1-0:1.8.0", "any key"));
}

TEST(MeterRecord, RejectsASecondEntryOfANameAndSaysSo) {
  const cCapturedTrace trace;
  cMeterRecord record;
  EXPECT_TRUE(record.AddMeasurementEntry(Entry("1-0:1.8.0", "1")));
  EXPECT_FALSE(record.AddMeasurementEntry(Entry("1-0:1.8.0", "2")));
  ASSERT_EQ(record.GetMeasurementEntries().size(), 1u);
  EXPECT_EQ(record.GetMeasurementEntries().front().GetValue(), "1");
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 4 AddMeasurementEntry: duplicate obis-id in "
                                            "{obis=1-0:1.8.0) time=2014-03-01T12:00:00Z(Meter) value=2 Wh}"));
}

TEST(MeterRecord, SaysNothingOfADuplicateBelowTheLevelOfWarnings) {
  const cTraceLevel level("UnitTAV", 3);
  const cCapturedTrace trace;
  cMeterRecord record;
  record.AddMeasurementEntry(Entry("1-0:1.8.0"));
  EXPECT_FALSE(record.AddMeasurementEntry(Entry("1-0:1.8.0")));
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterRecord, ComparesNamesExactly) {
  cMeterRecord record;
  EXPECT_TRUE(record.AddMeasurementEntry(Entry("1-0:1.8.0")));
  EXPECT_TRUE(record.AddMeasurementEntry(Entry("1-0:1.8.0*255")));
  EXPECT_TRUE(record.AddMeasurementEntry(Entry("")));
  EXPECT_FALSE(record.AddMeasurementEntry(Entry("")));
}

TEST(MeterRecord, AnyNumberOfUnknownWirelessMappingsMayCome) {
  cMeterRecord record;
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(record.AddMeasurementEntry(Entry("0-0:0.0.254")));
  EXPECT_EQ(record.GetMeasurementEntries().size(), 3u);
}

TEST(MeterRecord, TheOtherReservedNamesAreOrdinaryNames) {
  for (const char* name : {"0-0:0.0.0", "0-0:0.0.1", "0-0:0.0.253"}) {
    cMeterRecord record;
    EXPECT_TRUE(record.AddMeasurementEntry(Entry(name)));
    EXPECT_FALSE(record.AddMeasurementEntry(Entry(name))) << name;
  }
}

TEST(MeterRecord, AListReplacesTheEntriesUnchecked) {
  cMeterRecord record = Full();
  std::list<cMeasurementEntry> entries = {Entry("a"), Entry("a"), Entry("b")};
  record.AddMeasurementList(entries);
  EXPECT_THAT(Names(record), ElementsAre("a", "a", "b"));
  entries.clear();
  EXPECT_EQ(record.GetMeasurementEntries().size(), 3u) << "it is a copy";
}

// ---- copying

TEST(MeterRecord, ACopyHasEveryField) {
  cMeterRecord record = Full();
  record.GetMeterStatus().SetMeterInfos("4711", "12", "E", "EMH", "v", "k");
  record.GetMeterStatus().SetActivation(false);
  cMeterRecord copy = record;
  EXPECT_EQ(copy.ToString(), record.ToString());
  EXPECT_EQ(copy.ToRecord(), record.ToRecord());
  EXPECT_TRUE(copy.IsValid());
  EXPECT_EQ(copy.GetMeterStatus().ToRecord(), record.GetMeterStatus().ToRecord());
}

TEST(MeterRecord, AssignmentCopiesAllButTheStatusActivation) {
  cMeterRecord record = Full();
  record.GetMeterStatus().SetMeterInfos("4711", "12", "E", "EMH", "v", "k");
  record.GetMeterStatus().SetActivation(false);
  record.FromRecord(Form({}));  // leaves an error text
  record.AddMeasurementEntry(Entry("x"));
  cMeterRecord assigned;
  assigned = record;
  EXPECT_EQ(assigned.ToRecord(), record.ToRecord());
  EXPECT_EQ(assigned.GetError(), "measurement is empty");
  EXPECT_EQ(assigned.GetMeterStatus().GetVendor(), "v");
  EXPECT_TRUE(assigned.GetMeterStatus().GetActivation());
}

TEST(MeterRecord, AssigningToItselfChangesNothing) {
  cMeterRecord record = Full();
  const cMeterRecord& same = record;
  record = same;
  EXPECT_EQ(record.ToRecord(), Full().ToRecord());
}

TEST(MeterRecord, IsDestroyedThroughItsBase) {
  struct cDerived : cMeterRecord {
    explicit cDerived(bool& gone) : m_gone(gone) {}
    ~cDerived() override { m_gone = true; }
    bool& m_gone;
  };
  bool gone = false;
  std::unique_ptr<cMeterRecord>(std::make_unique<cDerived>(gone)).reset();
  EXPECT_TRUE(gone);
}

// ---- the record form

TEST(MeterRecord, TheRecordFormIsInItsOrder) {
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

TEST(MeterRecord, TheRecordFormOfAnEmptyReadingHoldsTheNumbersOnly) {
  EXPECT_THAT(Parameters(cMeterRecord().ToRecord()),
              ElementsAre("version uint=1", "timestamp uint=0", "time-source text=Unknown", "osc uint=0",
                          "learning bool=false", "rssi int=0", "store-osc uint=0", "store-utc uint=0"));
}

TEST(MeterRecord, WritesTheVersionItWasGiven) {
  cMeterRecord record;
  record.SetVersion(2);
  EXPECT_EQ(record.ToRecord().GetUIntPar("version"), 2u);
}

TEST(MeterRecord, WritesATimeSourceOutOfRangeAsUndefined) {
  cMeterRecord record;
  record.SetTimesource(static_cast<cMeterTav::eTimeSource>(77), false);
  EXPECT_EQ(record.ToRecord().GetTextPar("time-source"), "Undefined");
}

TEST(MeterRecord, SurvivesTheRoundTrip) {
  const cMeterRecord record = Full();
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(record.ToRecord()));
  EXPECT_TRUE(read.IsValid());
  EXPECT_EQ(read.GetError(), "");
  EXPECT_EQ(read.ToRecord(), record.ToRecord());
  EXPECT_EQ(read.ToString(), record.ToString());
  EXPECT_EQ(read.GetMeasurementEntries().back().GetSignature(), Bytes("sig"));
}

TEST(MeterRecord, CarriesTheStorageTimesUnchanged) {
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

TEST(MeterRecord, ReadsTheLeastThatIsARecord) {
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

TEST(MeterRecord, AReadingWithoutEntriesIsWrittenAndNotReadBack) {
  const cMeterRecord record = Bare();
  EXPECT_FALSE(record.ToRecord().GetPar("measurement").IsValid());
  cMeterRecord read;
  EXPECT_FALSE(read.FromRecord(record.ToRecord()));
  EXPECT_EQ(read.GetError(), "measurement invalid");
}

TEST(MeterRecord, RefusesAnEmptyFormWithoutAWord) {
  const cTraceLevel level("UnitTAV", 16);
  const cCapturedTrace trace;
  cMeterRecord read = Full();
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(read.GetError(), "");
  EXPECT_FALSE(read.IsValid());
  EXPECT_THAT(read.GetMeasurementEntries(), IsEmpty()) << "it was reset first";
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterRecord, AnEmptyFormLeavesAnEarlierErrorText) {
  cMeterRecord read;
  read.FromRecord(Bare().ToRecord());
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(read.GetError(), "measurement invalid");
}

TEST(MeterRecord, RefusesAnotherVersion) {
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

TEST(MeterRecord, RefusesAVersionOfAnotherTypeOrNone) {
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

TEST(MeterRecord, SaysNothingBelowTheLevelOfFailures) {
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

TEST(MeterRecord, RefusesAFormWithoutMeterOrMeasurementAndNamesTheFirstFault) {
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

TEST(MeterRecord, RefusesAFormWithoutMeasurements) {
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

TEST(MeterRecord, AMeterIdWithoutTextCountsAsEmpty) {
  vorn::cRecord form = Form();
  form.SetTextPar("meterID", nullptr);
  cMeterRecord read;
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_EQ(read.GetError(), "meterID is empty");
}

TEST(MeterRecord, AFailureKeepsTheTextsOfBefore) {
  cMeterRecord read = Full();
  EXPECT_FALSE(read.FromRecord(Form({})));
  EXPECT_EQ(read.GetDriver(), "ehzif");
  EXPECT_FALSE(read.IsValid());
}

TEST(MeterRecord, AReusedRecordKeepsItsRawBytesAndItsError) {
  cMeterRecord read;
  read.SetRaw(std::string("raw"));
  EXPECT_FALSE(read.FromRecord(Form({})));
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(read.GetRaw(), Bytes("raw"));
  EXPECT_EQ(read.GetError(), "measurement is empty");
}

TEST(MeterRecord, EmptyOrMistypedRawLeavesTheRawBytes) {
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

TEST(MeterRecord, TakesTheTextFormOfAnyTypeForItsPlainTexts) {
  vorn::cRecord form = Form();
  for (const char* name : {"driver", "addr", "manufactor", "medium", "status"}) form.AppendUIntPar(name, 7);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetDriver() + read.GetAddr() + read.GetManufactor() + read.GetMedium() + read.GetStatus(), "77777");
}

TEST(MeterRecord, TakesAnyIntegerForTimestampAndOsc) {
  vorn::cRecord form = Form();
  form.AppendIntPar("timestamp", 5);
  form.AppendUInt64Par("osc", 6);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetTimestamp(), 5u);
  EXPECT_EQ(read.GetOSC(), 6u);
}

TEST(MeterRecord, TakesItsOptionalFieldsOnlyInTheirOwnType) {
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

TEST(MeterRecord, IgnoresAnInterfaceConfig) {
  vorn::cRecord form = Form();
  form.AppendTextPar("interface-config", "x");
  cMeterRecord read, plain;
  ASSERT_TRUE(read.FromRecord(form));
  ASSERT_TRUE(plain.FromRecord(Form()));
  EXPECT_EQ(read.ToRecord(), plain.ToRecord());
}

TEST(MeterRecord, DropsDuplicateEntriesOfAForm) {
  const cCapturedTrace trace;
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form({Entry("a", "1").ToRecord(), Entry("a", "2").ToRecord(), Entry("b").ToRecord(),
                                    Entry("0-0:0.0.254").ToRecord(), Entry("0-0:0.0.254").ToRecord()})));
  EXPECT_THAT(Names(read), ElementsAre("a", "b", "0-0:0.0.254", "0-0:0.0.254"));
  EXPECT_EQ(read.GetMeasurementEntries().front().GetValue(), "1");
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 4 AddMeasurementEntry: duplicate obis-id in "
                                            "{obis=a) time=2014-03-01T12:00:00Z(Meter) value=2 Wh}"));
}

TEST(MeterRecord, DropsDuplicatesOfALongListToo) {
  const cTraceLevel level("UnitTAV", 0);
  std::vector<vorn::cRecord> entries;
  for (int round = 0; round < 2; ++round)
    for (int i = 0; i < 40; ++i) entries.push_back(Entry(std::to_string(i), std::to_string(round)).ToRecord());
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form(entries)));
  ASSERT_EQ(read.GetMeasurementEntries().size(), 40u);
  for (const cMeasurementEntry& entry : read.GetMeasurementEntries()) EXPECT_EQ(entry.GetValue(), "0");
}

TEST(MeterRecord, SkipsEntriesThatAreNoRecordsAndOtherParameters) {
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

TEST(MeterRecord, NoFieldOfAnEntryIsMandatory) {
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Form({vorn::cRecord()})));
  ASSERT_EQ(read.GetMeasurementEntries().size(), 1u);
  const cMeasurementEntry& entry = read.GetMeasurementEntries().front();
  EXPECT_EQ(entry.GetName() + entry.GetValue() + entry.GetUnit(), "");
  EXPECT_EQ(entry.GetTimestamp(), 0u);
  EXPECT_EQ(entry.GetTimesource(), cMeterTav::eTsUndefined);
  EXPECT_TRUE(entry.GetSignature().IsEmpty());
}

TEST(MeterRecord, TakesAnEntrysFieldsInAnyTypeButItsSignatureOnlyAsData) {
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

TEST(MeterRecord, NoCutOfTheBytesReadsAsTheWholeReading) {
  const std::string bytes(Full().ToRecord().GetBytes());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    vorn::cRecord cut;
    cMeterRecord read;
    if (vorn::cRecord::FromBytes(bytes.data(), size, cut)) read.FromRecord(cut);
    EXPECT_NE(read.ToRecord(), Full().ToRecord()) << size << " bytes";
  }
}

// ---- the text form

TEST(MeterRecord, TheTextFormShowsEveryField) {
  EXPECT_EQ(
      Full().ToString(),
      "{meterID=4711(12)/E/EMH, timestamp=2014-03-01T12:00:00Z(Meter UTC), driver=ehzif, status=ok, RSSI=-70 osc=99"
      ", learn=true, intfName=RS485-1, intfProtocol=SML, intfOptions=baud=9600,Learn,"
      ", entry={obis=1-0:1.8.0) time=2014-03-01T12:00:00Z(Meter) value=12345.6 Wh}"
      ", entry={obis=1-0:2.8.0) time=2014-03-01T12:00:00Z(Meter) value=7 Wh}, raw[2]=1B 1B}");
}

TEST(MeterRecord, TheTextFormSaysWhenAllIsFiltered) {
  EXPECT_EQ(cMeterRecord().ToString(),
            "{meterID=()//, timestamp=1970-01-01T00:00:00Z(Unknown), driver=, status=, RSSI=0 osc=0, learn=false"
            ", intfName=, intfProtocol=, intfOptions=, no measurement entries (all filtered)}");
}

TEST(MeterRecord, TheTextFormShowsTheCounterSigned) {
  cMeterRecord record;
  record.SetOSC(0xFFFFFFFF);
  EXPECT_THAT(record.ToString(), testing::HasSubstr("RSSI=0 osc=-1,"));
}

// ---- the embedded status

TEST(MeterRecord, ReadingFillsTheStatusWholly) {
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(Full().ToRecord()));
  const tav::cMeterStatus& status = read.GetMeterStatus();
  EXPECT_TRUE(status.IsValid());
  EXPECT_EQ(status.GetMeterID(), "4711");
  EXPECT_EQ(status.GetAddr(), "12");
  EXPECT_EQ(status.GetMedium(), "E");
  EXPECT_EQ(status.GetManufactor(), "EMH");
  EXPECT_EQ(status.GetVendor() + status.GetKey(), "");
  EXPECT_EQ(status.GetStatus(), "ok");
  EXPECT_EQ(status.GetLastReplyReceived(), kNoon);
  EXPECT_EQ(status.GetLastReplyTimesource(), cMeterTav::eTsMeterUtc);
  EXPECT_EQ(status.GetInterfaceName(), "RS485-1");
  EXPECT_EQ(status.GetInterfaceProtocol(), "SML");
  EXPECT_EQ(status.GetInterfaceOptions(), "baud=9600,Learn,");
  EXPECT_EQ(status.GetRSSI(), -70);
}

TEST(MeterRecord, ADerivedStatusLacksTheIdentityAndStaysInvalid) {
  cMeterRecord record = Full();
  tav::cMeterStatus& status = record.GetMeterStatus();
  EXPECT_FALSE(status.IsValid());
  EXPECT_EQ(status.GetMeterID(), "");
  EXPECT_EQ(status.GetStatus(), "ok");
  EXPECT_EQ(status.GetLastReplyReceived(), kNoon);
  EXPECT_EQ(status.GetLastReplyTimesource(), cMeterTav::eTsMeterUtc);
  EXPECT_EQ(status.GetInterfaceOptions(), "baud=9600,Learn,");
  EXPECT_EQ(status.GetRSSI(), -70);
  EXPECT_TRUE(status.ToRecord().IsEmpty());
  status.SetMeterInfos("4711", "12", "E", "EMH", "", "");
  EXPECT_EQ(record.GetMeterStatus().ToRecord().GetTextPar("status"), "ok");
}

TEST(MeterRecord, AValidStatusIsHandedOutUnchanged) {
  cMeterRecord record = Full();
  record.GetMeterStatus().SetMeterInfos("4711", "12", "E", "EMH", "", "");
  record.SetStatus("late");
  record.SetRSSI(1);
  EXPECT_EQ(record.GetMeterStatus().GetStatus(), "ok");
  EXPECT_EQ(record.GetMeterStatus().GetRSSI(), -70);
}

TEST(MeterRecord, AnEmptyStatusTextKeepsTheDerivedOne) {
  cMeterRecord record = Full();
  record.GetMeterStatus();
  record.SetStatus("");
  EXPECT_EQ(record.GetMeterStatus().GetStatus(), "ok");
}
