// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/framework/helper.h>
#include <tav/record/meter_record.h>
#include <tests/support/captured_trace.h>

using tav::cMeasurementEntry;
using tav::cMeterRecord;
using tav::cMeterTav;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr unsigned long long kEnergy = 0x0100010800FF;        // 1-0:1.8.0*255
constexpr unsigned long long kManufacturer = 0x8181C78203FF;  // 129-129:199.130.3*255
constexpr unsigned long long kStatusWord = 0x0100600505FF;    // 1-0:96.5.5*255
constexpr unsigned int kWattHours = 30;

vorn::cData Bytes(const std::string& bytes) { return vorn::cData(bytes); }

vorn::cRecord Object(unsigned long long obis) {
  vorn::cRecord entry;
  entry.AppendUInt64Par("objName", obis);
  return entry;
}

vorn::cRecord Value(unsigned long long obis, unsigned int value, int scaler, unsigned int unit) {
  vorn::cRecord entry = Object(obis);
  entry.AppendUIntPar("value", value);
  entry.AppendIntPar("scaler", scaler);
  entry.AppendUIntPar("unit", unit);
  return entry;
}

vorn::cRecord Text(const std::string& value, int scaler) {
  vorn::cRecord entry = Object(kEnergy);
  entry.AppendTextPar("value", value);
  entry.AppendIntPar("scaler", scaler);
  entry.AppendUIntPar("unit", kWattHours);
  return entry;
}

vorn::cRecord WithStatus(vorn::cRecord entry, unsigned int status) {
  entry.AppendUIntPar("status", status);
  return entry;
}

vorn::cRecord List(const std::vector<vorn::cRecord>& entries) {
  vorn::cRecord list;
  for (const vorn::cRecord& entry : entries) list.AppendRecordPar("valListEntry", entry);
  return list;
}

vorn::cRecord Response(const std::vector<vorn::cRecord>& entries) {
  vorn::cRecord response;
  response.AppendDataPar("serverId", Bytes("4711"));
  response.AppendRecordPar("valList", List(entries));
  return response;
}

bool Import(cMeterRecord& record, const vorn::cRecord& response) {
  return record.FromSmlGetListRes("ehzif", "E", cMeterTav::eTsMeter, 1393675200, response);
}

cMeterRecord Imported(const std::vector<vorn::cRecord>& entries) {
  cMeterRecord record;
  EXPECT_TRUE(Import(record, Response(entries)));
  return record;
}

std::vector<std::string> Values(const cMeterRecord& record) {
  std::vector<std::string> values;
  for (const cMeasurementEntry& entry : record.GetMeasurementEntries())
    values.push_back(entry.GetName() + "=" + entry.GetValue() + " " + entry.GetUnit());
  return values;
}

// Of a list without any entry, which a response may carry only as a record with something else in it.
vorn::cRecord EmptyList() {
  vorn::cRecord list;
  list.AppendUIntPar("other", 1);
  return list;
}

}  // namespace

TEST(MeterRecordSml, TakesItsArgumentsAndTheCounter) {
  cMeterRecord record;
  record.SetRSSI(5);
  const unsigned int before = vorn::GetOSC();
  ASSERT_TRUE(Import(record, Response({Value(kEnergy, 1, 0, kWattHours)})));
  EXPECT_TRUE(record.IsValid());
  EXPECT_EQ(record.GetDriver(), "ehzif");
  EXPECT_EQ(record.GetMedium(), "E");
  EXPECT_EQ(record.GetTimesource(), cMeterTav::eTsMeter);
  EXPECT_EQ(record.GetTimestamp(), 1393675200u);
  EXPECT_EQ(record.GetRSSI(), 0);
  EXPECT_GE(record.GetOSC(), before);
  EXPECT_LE(record.GetOSC(), vorn::GetOSC());
}

TEST(MeterRecordSml, APrintableServerIdIsTheMeterIdAsText) {
  const cMeterRecord record = Imported({Value(kEnergy, 1, 0, kWattHours)});
  EXPECT_EQ(record.GetMeterID(), "4711");
  EXPECT_EQ(record.GetAddr(), "4711");
}

TEST(MeterRecordSml, ABinaryServerIdIsTheMeterIdInHexadecimalDigits) {
  vorn::cRecord response = Response({Value(kEnergy, 1, 0, kWattHours)});
  response.SetDataPar("serverId", Bytes("\x09\x01\x45MH"));
  cMeterRecord record;
  ASSERT_TRUE(Import(record, response));
  EXPECT_EQ(record.GetMeterID(), "0901454D48");
  EXPECT_EQ(record.GetAddr(), "0901454D48");
}

TEST(MeterRecordSml, RefusesAResponseWithoutServerOrListButKeepsTheArguments) {
  const struct {
    const char* what;
    void (*spoil)(vorn::cRecord&);
  } kCases[] = {
      {"server missing", [](vorn::cRecord& r) { r = vorn::cRecord(), r.AppendRecordPar("valList", EmptyList()); }},
      {"server empty", [](vorn::cRecord& r) { r.SetDataPar("serverId", vorn::cData()); }},
      {"server a text", [](vorn::cRecord& r) { r.SetTextPar("serverId", "4711"); }},
      {"list missing", [](vorn::cRecord& r) { r = vorn::cRecord(), r.AppendDataPar("serverId", Bytes("1")); }},
      {"list empty", [](vorn::cRecord& r) { r.SetRecordPar("valList", vorn::cRecord()); }},
      {"list a text", [](vorn::cRecord& r) { r.SetTextPar("valList", "list"); }},
  };
  for (const auto& c : kCases) {
    vorn::cRecord response = Response({Value(kEnergy, 1, 0, kWattHours)});
    c.spoil(response);
    cMeterRecord record;
    EXPECT_FALSE(Import(record, response)) << c.what;
    EXPECT_FALSE(record.IsValid());
    EXPECT_EQ(record.GetDriver(), "ehzif");
    EXPECT_EQ(record.GetTimestamp(), 1393675200u);
    EXPECT_EQ(record.GetMeterID(), "");
    EXPECT_EQ(record.GetError(), "");
  }
}

TEST(MeterRecordSml, RefusesAnEmptyResponse) {
  cMeterRecord record;
  EXPECT_FALSE(Import(record, vorn::cRecord()));
}

TEST(MeterRecordSml, AListWithoutEntriesIsAReadingWithoutValues) {
  vorn::cRecord response = Response({});
  response.SetRecordPar("valList", EmptyList());
  cMeterRecord record;
  EXPECT_TRUE(Import(record, response));
  EXPECT_TRUE(record.IsValid());
  EXPECT_THAT(Values(record), IsEmpty());
}

TEST(MeterRecordSml, MovesTheDecimalPointByTheScaler) {
  const struct {
    unsigned int value;
    int scaler;
    const char* text;
  } kCases[] = {
      {123456, -1, "12345.6"},  {123456, 2, "12345600"}, {123456, 0, "123456"}, {123456, -5, "1.23456"},
      {123456, -6, "0.123456"}, {12, -3, "0.012"},       {5, -1, "0.5"},        {5, -3, "0.005"},
      {0, -1, "0.0"},           {0, 2, "000"},
  };
  for (const auto& c : kCases)
    EXPECT_THAT(Values(Imported({Value(kEnergy, c.value, c.scaler, kWattHours)})),
                ElementsAre("1-0:1.8.0=" + std::string(c.text) + " Wh"));
}

TEST(MeterRecordSml, ASignCountsAsADigit) {
  EXPECT_THAT(Values(Imported({Text("-12", -1)})), ElementsAre("1-0:1.8.0=-1.2 Wh"));
  EXPECT_THAT(Values(Imported({Text("-12", -2)})), ElementsAre("1-0:1.8.0=-.12 Wh"));
  EXPECT_THAT(Values(Imported({Text("-12", -3)})), ElementsAre("1-0:1.8.0=0.-12 Wh"));
}

TEST(MeterRecordSml, TakesTheTextFormOfAValueOfAnyType) {
  vorn::cRecord big = Object(kEnergy);
  big.AppendUInt64Par("value", 0xFFFFFFFFFFFFFFFFull);
  big.AppendUIntPar("unit", kWattHours);
  vorn::cRecord data = Object(0x0100020800FF);
  data.AppendDataPar("value", Bytes("\x01\x02"));
  data.AppendUIntPar("unit", 255);
  EXPECT_THAT(Values(Imported({big, data})), ElementsAre("1-0:1.8.0=18446744073709551615 Wh", "1-0:2.8.0=01 02 other"));
}

TEST(MeterRecordSml, TakesAScalerOnlyAsSignedInteger) {
  vorn::cRecord entry = Object(kEnergy);
  entry.AppendUIntPar("value", 12);
  entry.AppendUIntPar("unit", kWattHours);
  entry.AppendUIntPar("scaler", 2);
  EXPECT_THAT(Values(Imported({entry})), ElementsAre("1-0:1.8.0=12 Wh"));
}

TEST(MeterRecordSml, LeavesOutAValueWhoseScalerIsNoneAndSaysSo) {
  for (const int scaler : {1001, -1001, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
    const cCapturedTrace trace;
    EXPECT_THAT(Values(Imported({Value(kEnergy, 12, scaler, kWattHours)})), IsEmpty());
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 FromSmlGetListRes: 1-0:1.8.0 of meter 4711 left out, scaler " +
                                              std::to_string(scaler) + " is not within -1000..1000"));
  }
  EXPECT_EQ(Imported({Value(kEnergy, 1, 1000, kWattHours)}).GetMeasurementEntries().front().GetValue().size(), 1001u);
  EXPECT_EQ(Imported({Value(kEnergy, 1, -1000, kWattHours)}).GetMeasurementEntries().front().GetValue().size(), 1002u);
}

TEST(MeterRecordSml, AnEntryCarriesTheTimeOfTheReadingAndItsSignature) {
  vorn::cRecord signedEntry = Value(kEnergy, 1, 0, kWattHours);
  signedEntry.AppendDataPar("signature", Bytes("sig"));
  vorn::cRecord mistyped = Value(0x0100020800FF, 1, 0, kWattHours);
  mistyped.AppendTextPar("signature", "sig");
  const cMeterRecord record = Imported({signedEntry, mistyped});
  ASSERT_EQ(record.GetMeasurementEntries().size(), 2u);
  EXPECT_EQ(record.GetMeasurementEntries().front().GetTimestamp(), 1393675200u);
  EXPECT_EQ(record.GetMeasurementEntries().front().GetTimesource(), cMeterTav::eTsMeter);
  EXPECT_EQ(record.GetMeasurementEntries().front().GetSignature(), Bytes("sig"));
  EXPECT_TRUE(record.GetMeasurementEntries().back().GetSignature().IsEmpty());
}

TEST(MeterRecordSml, NamesAnEntryByTheLongFormOfItsObject) {
  EXPECT_THAT(Values(Imported({Value(0x0100010800FF, 1, 0, 27), Value(0x010001080001, 1, 0, 2)})),
              ElementsAre("1-0:1.8.0=1 W", "1-0:1.8.0*17301759=1 other"));
}

TEST(MeterRecordSml, AnObjectWithoutUnitOrValueGivesNoEntry) {
  vorn::cRecord noUnit = Object(kEnergy);
  noUnit.AppendUIntPar("value", 1);
  vorn::cRecord noValue = Object(kEnergy);
  noValue.AppendUIntPar("unit", kWattHours);
  EXPECT_THAT(Values(Imported({noUnit, noValue, Text("", 0)})), IsEmpty());
}

TEST(MeterRecordSml, DropsASecondValueOfAName) {
  const cCapturedTrace trace;
  EXPECT_THAT(Values(Imported({Value(kEnergy, 1, 0, kWattHours), Value(kEnergy, 2, 0, kWattHours)})),
              ElementsAre("1-0:1.8.0=1 Wh"));
  EXPECT_EQ(trace.GetLines().size(), 1u);
}

TEST(MeterRecordSml, AnEntryWithoutObjectIsSaidOnStandardOutputAndSkipped) {
  vorn::cRecord nameless;
  nameless.AppendUIntPar("value", 1);
  nameless.AppendUIntPar("unit", kWattHours);
  testing::internal::CaptureStdout();
  const cMeterRecord record = Imported({nameless, Value(kEnergy, 2, 0, kWattHours)});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "not valid\n");
  EXPECT_THAT(Values(record), ElementsAre("1-0:1.8.0=2 Wh"));
}

TEST(MeterRecordSml, SkipsListEntriesThatAreNoRecords) {
  vorn::cRecord list;
  list.AppendTextPar("valListEntry", "text");
  list.AppendRecordPar("other", Value(0x0100020800FF, 1, 0, kWattHours));
  list.AppendRecordPar("valListEntry", Value(kEnergy, 1, 0, kWattHours));
  vorn::cRecord response = Response({});
  response.SetRecordPar("valList", list);
  cMeterRecord record;
  ASSERT_TRUE(Import(record, response));
  EXPECT_THAT(Values(record), ElementsAre("1-0:1.8.0=1 Wh"));
}

TEST(MeterRecordSml, TheManufacturerIsTakenAsText) {
  for (const bool asText : {false, true}) {
    vorn::cRecord entry = Object(kManufacturer);
    if (asText)
      entry.AppendTextPar("value", "EMH");
    else
      entry.AppendDataPar("value", Bytes("EMH"));
    const cMeterRecord record = Imported({entry});
    EXPECT_EQ(record.GetManufactor(), "EMH");
    EXPECT_THAT(Values(record), IsEmpty());
  }
}

TEST(MeterRecordSml, TheStatusWordIsOkOrItsNumber) {
  const struct {
    unsigned int word;
    const char* status;
  } kCases[] = {{0, "ok"}, {8, "8"}, {0xFFFFFFFF, "-1"}};
  for (const auto& c : kCases) {
    vorn::cRecord entry = Object(kStatusWord);
    entry.AppendUIntPar("value", c.word);
    EXPECT_EQ(Imported({entry}).GetStatus(), c.status);
  }
}

TEST(MeterRecordSml, AnotherObjectsStatusTellsItsValueAsLongAsThereIsNoStatus) {
  EXPECT_EQ(Imported({WithStatus(Value(kEnergy, 17, 0, kWattHours), 5)}).GetStatus(), "17") << "not its status";
  EXPECT_EQ(Imported({WithStatus(Value(kEnergy, 0, 0, kWattHours), 5)}).GetStatus(), "ok");
  EXPECT_EQ(
      Imported({WithStatus(Value(kEnergy, 17, 0, kWattHours), 5), WithStatus(Value(kEnergy, 18, 0, kWattHours), 5)})
          .GetStatus(),
      "17");
  EXPECT_EQ(Imported({Value(kEnergy, 17, 0, kWattHours)}).GetStatus(), "");
}

TEST(MeterRecordSml, TheStatusWordReplacesAnEarlierStatus) {
  vorn::cRecord word = Object(kStatusWord);
  word.AppendUIntPar("value", 8);
  EXPECT_EQ(Imported({WithStatus(Value(kEnergy, 17, 0, kWattHours), 5), word}).GetStatus(), "8");
  EXPECT_EQ(Imported({word, WithStatus(Value(kEnergy, 17, 0, kWattHours), 5)}).GetStatus(), "8");
}

TEST(MeterRecordSml, AStatusOfAnotherTypeDoesNotCount) {
  vorn::cRecord entry = Value(kEnergy, 17, 0, kWattHours);
  entry.AppendIntPar("status", 5);
  EXPECT_EQ(Imported({entry}).GetStatus(), "");
}

TEST(MeterRecordSml, AReusedRecordKeepsItsStatus) {
  cMeterRecord record;
  record.SetStatus("old");
  ASSERT_TRUE(Import(record, Response({WithStatus(Value(kEnergy, 17, 0, kWattHours), 5)})));
  EXPECT_EQ(record.GetStatus(), "old");
}

TEST(MeterRecordSml, GoesOnTheWireLikeAnyReading) {
  const cMeterRecord record = Imported({Value(kEnergy, 123456, -1, kWattHours)});
  cMeterRecord read;
  ASSERT_TRUE(read.FromRecord(record.ToRecord()));
  EXPECT_EQ(read.ToString(), record.ToString());
}
