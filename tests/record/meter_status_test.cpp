// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_status.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/record/meter_record.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/trace_level.h>

using tav::cMeterRecord;
using tav::cMeterStatus;
using tav::cMeterTav;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

cMeterStatus Full() {
  cMeterStatus status;
  status.SetMeterInfos("4711", "12", "E", "EMH", "vendor", "00112233");
  status.SetStatus("ok");
  status.SetRSSI(-70);
  status.SetLastReplyReceived(1393675200, cMeterTav::eTsRtc);
  status.SetInterfaceInfo("RS485-1", "SML", "baud=9600");
  status.SetLostPackets(3);
  status.SetEncryption("aes");
  status.SetSoftwareVersion("1.2");
  status.SetHardwareVersion("B");
  return status;
}

cMeterRecord Reading() {
  cMeterRecord record("ehzif", "EMH", "E", "4711", "12", "ok", 1, cMeterTav::eTsRtc, 2);
  record.AddMeasurementEntry({"1-0:1.8.0", "1", "Wh", 1, cMeterTav::eTsRtc});
  return record;
}

vorn::cRecord Form() {
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("meterID", "4711");
  return form;
}

// Every field beside error and the stored record.
std::string Dump(const cMeterStatus& s) {
  return (s.IsValid() ? "valid " : "invalid ") + std::to_string(s.GetVersion()) +
         (s.GetActivation() ? " active " : " - ") + std::to_string(s.GetLastReplyReceived()) + " " +
         std::to_string(s.GetLastReplyTimesource()) + " " + std::to_string(s.GetLostPackets()) + " " + s.GetMeterID() +
         "|" + s.GetAddr() + "|" + s.GetManufactor() + "|" + s.GetMedium() + "|" + s.GetVendor() + "|" + s.GetKey() +
         "|" + std::to_string(s.GetRSSI()) + "|" + s.GetInterfaceName() + "|" + s.GetInterfaceProtocol() + "|" +
         s.GetInterfaceOptions() + "|" + s.GetStatus() + "|" + s.GetEncryption() + "|" + s.GetSoftwareVersion() + "|" +
         s.GetHardwareVersion();
}

}  // namespace

TEST(MeterStatus, StartsInvalidWithItsDefaults) {
  EXPECT_EQ(Dump(cMeterStatus()), "invalid 1 active 0 0 0 ||||||0|||||||");
  EXPECT_TRUE(cMeterStatus().ToRecord().IsEmpty());
  EXPECT_EQ(cMeterStatus().ToString(), "invalid");
}

TEST(MeterStatus, IsBuiltValidWithItsIdentity) {
  const cMeterStatus status("4711", "12", "E", "EMH");
  EXPECT_EQ(Dump(status), "valid 1 active 0 0 0 4711|12|EMH|E|||0|||||||");
  EXPECT_EQ(status.ToString(), "meterID=4711 (12) status=");
}

TEST(MeterStatus, EverySetterSetsItsField) {
  EXPECT_EQ(Dump(Full()),
            "valid 1 active 1393675200 6 3 4711|12|EMH|E|vendor|00112233|-70|RS485-1|SML|baud=9600|ok|aes|1.2|B");
}

TEST(MeterStatus, OnlyTheIdentityMakesItValid) {
  cMeterStatus status;
  status.SetStatus("ok");
  status.SetActivation(false);
  status.SetRSSI(1);
  status.SetLastReplyReceived(1, cMeterTav::eTsRtc);
  status.SetInterfaceInfo("n", "p", "o");
  EXPECT_FALSE(status.IsValid());
  status.SetMeterInfos("", "", "", "", "", "");
  EXPECT_TRUE(status.IsValid());
}

TEST(MeterStatus, InitKeepsTextsAndTheTimeSource) {
  cMeterStatus status = Full();
  status.SetActivation(false);
  status.Init();
  EXPECT_EQ(Dump(status), "invalid 1 active 0 6 0 4711|12|EMH|E|||0|RS485-1|SML|baud=9600|ok|aes|1.2|B");
}

TEST(MeterStatus, AssignmentLeavesActivationAndTheStoredRecord) {
  cMeterStatus source = Full();
  source.SetActivation(false);
  cMeterStatus target;
  vorn::cRecord form = Form();
  form.AppendRecordPar("meter-rec", Reading().ToRecord());
  ASSERT_TRUE(target.FromRecord(form));
  target.SetActivation(true);
  target = source;
  EXPECT_TRUE(target.GetActivation());
  EXPECT_EQ(target.GetMeterRec(), Reading().ToRecord());
  EXPECT_EQ(Dump(target), Dump(Full())) << "and copies all else";
}

TEST(MeterStatus, AssignmentCopiesTheErrorText) {
  cMeterStatus source;
  source.FromRecord(vorn::cRecord());
  cMeterStatus target;
  target = source;
  EXPECT_EQ(target.GetError(), "unknown message version");
  EXPECT_EQ(target.GetVersion(), 0u);
}

TEST(MeterStatus, ACopyHasActivationAndTheStoredRecordToo) {
  cMeterStatus source;
  source.FromRecord(Full().ToRecordWithMeterRec(Reading()));
  source.SetActivation(false);
  const cMeterStatus copy = source;
  EXPECT_FALSE(copy.GetActivation());
  EXPECT_EQ(copy.GetMeterRec(), Reading().ToRecord());
  EXPECT_EQ(Dump(copy), Dump(source));
}

TEST(MeterStatus, AssigningToItselfChangesNothing) {
  cMeterStatus status = Full();
  const cMeterStatus& same = status;
  status = same;
  EXPECT_EQ(Dump(status), Dump(Full()));
}

TEST(MeterStatus, TheRecordFormIsInItsOrder) {
  EXPECT_THAT(
      Parameters(Full().ToRecord()),
      ElementsAre("version uint=1", "last-reply-received uint=1393675200", "last-reply-received-timesource text=RTC",
                  "lost-packets uint=3", "meterID text=4711", "addr text=12", "manufactor text=EMH", "medium text=E",
                  "status text=ok", "rssi int=-70", "interface-name text=RS485-1", "interface-protocol text=SML",
                  "interface-options text=baud=9600", "vendor text=vendor", "key text=00112233", "encryption text=aes",
                  "software-version text=1.2", "hardware-version text=B", "activation bool=true"));
}

TEST(MeterStatus, TheRecordFormLeavesOutEmptyTexts) {
  cMeterStatus status;
  status.SetMeterInfos("", "", "", "", "", "");
  status.SetActivation(false);
  EXPECT_THAT(Parameters(status.ToRecord()),
              ElementsAre("version uint=1", "last-reply-received uint=0", "last-reply-received-timesource text=Unknown",
                          "lost-packets uint=0", "rssi int=0", "activation bool=false"));
}

TEST(MeterStatus, CarriesTheReadingWhenAsked) {
  const vorn::cRecord form = Full().ToRecordWithMeterRec(Reading());
  EXPECT_EQ(form.GetCount(), Full().ToRecord().GetCount() + 1);
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(form.GetRecordPar("meter-rec")));
  EXPECT_EQ(read.ToRecord(), Reading().ToRecord());
  cMeterStatus status;
  ASSERT_TRUE(status.FromRecord(form));
  EXPECT_EQ(status.GetMeterRec(), Reading().ToRecord());
  EXPECT_FALSE(status.ToRecord().GetPar("meter-rec").IsValid()) << "the stored one is not written";
}

TEST(MeterStatus, AnInvalidOneIsEmptyWithAReadingToo) {
  EXPECT_TRUE(cMeterStatus().ToRecordWithMeterRec(Reading()).IsEmpty());
}

TEST(MeterStatus, SurvivesTheRoundTripButForEncryption) {
  cMeterStatus read;
  ASSERT_TRUE(read.FromRecord(Full().ToRecord()));
  cMeterStatus expected = Full();
  expected.SetEncryption("");
  EXPECT_EQ(Dump(read), Dump(expected));
  EXPECT_EQ(read.GetError(), "");
}

TEST(MeterStatus, ReadingEmptiesAnEarlierEncryption) {
  cMeterStatus read = Full();
  ASSERT_TRUE(read.FromRecord(Full().ToRecord()));
  EXPECT_EQ(read.GetEncryption(), "");
}

TEST(MeterStatus, ReadsTheLeastThatIsAStatusAsNotActivated) {
  cMeterStatus read = Full();
  ASSERT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(Dump(read), "valid 1 - 0 0 0 4711||||||0|||||||");
}

TEST(MeterStatus, KeepsTheStoredRecordWhenNoneComes) {
  cMeterStatus read;
  read.FromRecord(Full().ToRecordWithMeterRec(Reading()));
  vorn::cRecord form = Form();
  form.AppendTextPar("meter-rec", "no record");
  ASSERT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(read.GetMeterRec(), Reading().ToRecord());
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetMeterRec(), Reading().ToRecord());
  form.SetRecordPar("meter-rec", vorn::cRecord());
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.GetMeterRec(), Reading().ToRecord());
}

TEST(MeterStatus, TakesValuesOfAnyType) {
  vorn::cRecord form = Form();
  form.AppendUInt64Par("last-reply-received", 5);
  form.AppendIntPar("lost-packets", 6);
  form.AppendUIntPar("rssi", 7);
  form.AppendUIntPar("addr", 8);
  form.AppendUIntPar("activation", 1);
  cMeterStatus read;
  ASSERT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), "valid 1 - 5 0 6 4711|8|||||7|||||||");
}

TEST(MeterStatus, TellsAMissingTimeSourceFromAnUnknownText) {
  vorn::cRecord form = Form();
  cMeterStatus read;
  read.FromRecord(form);
  EXPECT_EQ(read.GetLastReplyTimesource(), cMeterTav::eTsUnknown);
  form.AppendTextPar("last-reply-received-timesource", "");
  read.FromRecord(form);
  EXPECT_EQ(read.GetLastReplyTimesource(), cMeterTav::eTsUnknown);
  form.SetTextPar("last-reply-received-timesource", "sundial");
  read.FromRecord(form);
  EXPECT_EQ(read.GetLastReplyTimesource(), cMeterTav::eTsUndefined);
}

TEST(MeterStatus, RefusesAnotherVersionWithTheLineOfTheMeterRecord) {
  for (const unsigned int version : {0u, 2u}) {
    const cCapturedTrace trace;
    vorn::cRecord form = Form();
    form.SetUIntPar("version", version);
    cMeterStatus read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.GetError(), "unknown message version");
    EXPECT_EQ(read.GetVersion(), version);
    EXPECT_FALSE(read.IsValid());
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterRecord: unknown version"));
  }
}

TEST(MeterStatus, AnEmptyRecordHasNoVersion) {
  cMeterStatus read;
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(read.GetError(), "unknown message version");
}

TEST(MeterStatus, AMissingOrBadMeterIdGivesTrueAndStaysInvalid) {
  vorn::cRecord missing, empty, mistyped;
  for (vorn::cRecord* form : {&missing, &empty, &mistyped}) form->AppendUIntPar("version", 1);
  empty.AppendTextPar("meterID", "");
  mistyped.AppendUIntPar("meterID", 4711);
  const struct {
    const vorn::cRecord& form;
    std::string error;
  } kCases[] = {
      {missing, "meterID invalid"},
      {empty, "meterID is empty"},
      {mistyped, "bad type in meterID"},
  };
  for (const auto& c : kCases) {
    const cCapturedTrace trace;
    cMeterStatus read = Full();
    EXPECT_TRUE(read.FromRecord(c.form));
    EXPECT_FALSE(read.IsValid());
    EXPECT_EQ(read.GetError(), c.error);
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterStatus: syntax error (" + c.error + ")"));
  }
}

TEST(MeterStatus, SaysNothingBelowTheLevelOfFailures) {
  const cTraceLevel level("UnitTAV", 1);
  const cCapturedTrace trace;
  cMeterStatus read;
  read.FromRecord(vorn::cRecord());
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  read.FromRecord(form);
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterStatus, KeepsItsErrorTextAfterASuccess) {
  cMeterStatus read;
  read.FromRecord(vorn::cRecord());
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_TRUE(read.IsValid());
  EXPECT_EQ(read.GetError(), "unknown message version");
}
