// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_record.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <tests/record/meter_record_fixture.h>
#include <tests/support/captured_trace.h>
#include <tests/support/trace_level.h>

using namespace meter_record_fixture;
using testing::ElementsAre;
using testing::IsEmpty;

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
  vorn::cRecord form = record.ToRecord();
  form.SetUIntPar("store-utc", 11);
  form.SetUIntPar("store-osc", 12);
  ASSERT_TRUE(record.FromRecord(form));
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
  EXPECT_EQ(record.GetStoreUtc(), 0u);
  EXPECT_EQ(record.GetStoreOsc(), 0u);
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
