// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/reading_view.h>

#include <gtest/gtest.h>

#include <random>

#include <tav/record/meter_record.h>
#include <tests/service/data/store_fixture.h>
#include <tests/support/captured_trace.h>

namespace tav::data {
namespace {

vorn::cRecord Entry(const std::string& name, const std::string& value) {
  return cMeasurementEntry(name, value, "Wh", kNoon, cMeterTav::eTsRtc).ToRecord();
}

void ExpectSameEntries(const cReadingView& view, const cMeterRecord& record) {
  ASSERT_EQ(view.entries.size(), record.GetMeasurementEntries().size());
  std::size_t at = 0;
  for (const cMeasurementEntry& expected : record.GetMeasurementEntries()) {
    const cEntryView& found = view.entries[at++];
    EXPECT_EQ(found.name, expected.GetName());
    EXPECT_EQ(found.value, expected.GetValue());
    EXPECT_EQ(found.unit, expected.GetUnit());
    EXPECT_EQ(found.timestamp, expected.GetTimestamp());
    EXPECT_EQ(cMeterTav::GetTimeSourceText(static_cast<cMeterTav::eTimeSource>(found.timeSource)),
              expected.GetTimesourceText());
    EXPECT_EQ(found.signature, expected.GetSignature().AsText());
  }
}

void ExpectSameFields(const cReadingView& view, const cMeterRecord& record) {
  EXPECT_EQ(view.driver, record.GetDriver());
  EXPECT_EQ(view.meterId, record.GetMeterID());
  EXPECT_EQ(view.addr, record.GetAddr());
  EXPECT_EQ(view.manufactor, record.GetManufactor());
  EXPECT_EQ(view.medium, record.GetMedium());
  EXPECT_EQ(view.status, record.GetStatus());
  EXPECT_EQ(view.interfaceName, record.GetInterfaceName());
  EXPECT_EQ(view.interfaceProtocol, record.GetInterfaceProtocol());
  EXPECT_EQ(view.interfaceOptions, record.GetInterfaceOptions());
  EXPECT_EQ(view.raw, record.GetRaw().AsText());
  EXPECT_EQ(view.timestamp, record.GetTimestamp());
  EXPECT_EQ(view.timeSource, record.GetTimesource());
  EXPECT_EQ(view.osc, record.GetOSC());
  EXPECT_EQ(view.storeUtc, record.GetStoreUtc());
  EXPECT_EQ(view.storeOsc, record.GetStoreOsc());
  EXPECT_EQ(view.eventRaster, record.GetEventRaster());
  EXPECT_EQ(view.rssi, record.GetRSSI());
  EXPECT_EQ(view.learning, record.GetLearning());
}

// What the record class says of a form, the view says too.
void ExpectSame(const vorn::cRecord& form) {
  SCOPED_TRACE(form.ToString());
  cMeterRecord record;
  cReadingView view;
  const bool accepted = record.FromRecord(form);
  ASSERT_EQ(view.Read(form), accepted);
  if (!accepted) {
    EXPECT_EQ(view.GetError(), form.IsEmpty() ? "record is empty" : record.GetError());
    return;
  }
  EXPECT_EQ(view.GetError(), "");
  ExpectSameFields(view, record);
  ExpectSameEntries(view, record);
}

TEST(ReadingView, ReadsEveryFieldOfAReading) {
  cMeterRecord reading = Reading("1EMH00123", kNoon, {{"1-0:1.8.0", "12.5"}, {"1-0:2.8.0", "0"}});
  reading.SetRSSI(-70);
  reading.SetLearning(true);
  reading.SetEventRaster(900);
  reading.SetRaw(std::string("\x1B\0\x1B", 3));
  vorn::cRecord form = reading.ToRecord();
  form.SetUIntPar("store-utc", 17);
  form.SetUIntPar("store-osc", 18);
  ExpectSame(form);
}

TEST(ReadingView, RefusesInTheWordsOfTheRecordClass) {
  const cCapturedTrace quiet;
  vorn::cRecord form;
  ExpectSame(form);
  form.AppendUIntPar("version", 2);
  ExpectSame(form);
  form.SetUIntPar("version", 1);
  ExpectSame(form);
  form.AppendTextPar("meterID", "");
  ExpectSame(form);
  form.SetUIntPar("meterID", 3);
  ExpectSame(form);
  form.SetTextPar("meterID", "M");
  ExpectSame(form);
  form.AppendRecordPar("measurement", {});
  ExpectSame(form);
  form.SetTextPar("measurement", "M");
  ExpectSame(form);
}

TEST(ReadingView, ReadsAgainAfterARefusal) {
  cReadingView view;
  EXPECT_FALSE(view.Read({}));
  EXPECT_TRUE(view.Read(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}).ToRecord()));
  EXPECT_EQ(view.GetError(), "");
  EXPECT_EQ(view.entries.size(), 1u);
}

TEST(ReadingView, DropsTheSecondEntryOfANameHoweverMany) {
  const cCapturedTrace quiet;
  for (const int count : {2, 23, 24, 25, 26, 200}) {
    vorn::cRecord measurement;
    for (int i = 0; i < count; ++i) {
      measurement.AppendRecordPar("entry", Entry("1-0:" + std::to_string(i * 7 % 50) + ".8.0", std::to_string(i)));
      measurement.AppendRecordPar("entry", Entry("0-0:0.0.254", std::to_string(i)));
    }
    vorn::cRecord form;
    form.AppendUIntPar("version", 1);
    form.AppendTextPar("meterID", "M");
    form.AppendRecordPar("measurement", measurement);
    ExpectSame(form);
  }
}

// A parameter of any type under any of the names, so that most of them are wrong somewhere.
void AppendAny(vorn::cRecord& to, const std::string& name, std::mt19937& random) {
  static const char* const kTexts[] = {"", "M1", "Meter UTC", "RTC", "0-0:0.0.254", "1-0:1.8.0", "12.5", "\xB5"};
  const vorn::cRecord nested = Entry(kTexts[random() % std::size(kTexts)], "1");
  switch (random() % 12) {
    case 0:
      return to.AppendUIntPar(name, static_cast<unsigned int>(random() % 3));
    case 1:
      return to.AppendIntPar(name, static_cast<int>(random() % 5) - 2);
    case 2:
      return to.AppendUInt64Par(name, random() % 3 == 0 ? 1ull << 40 : random());
    case 3:
      return to.AppendBoolPar(name, random() % 2 == 0);
    case 4:
      return to.AppendTimePar(name, vorn::cTime::FromSeconds(kNoon, true));
    case 5:
      return to.AppendUuidPar(name, {});
    case 6:
      return to.AppendDataPar(name, vorn::cData("abc", random() % 4));
    case 7:
      return to.AppendTextPar(name, nullptr);
    case 8:
      return to.AppendRecordPar(name, random() % 2 == 0 ? vorn::cRecord() : nested);
    default:
      return to.AppendTextPar(name, kTexts[random() % std::size(kTexts)]);
  }
}

vorn::cRecord RandomMeasurement(std::mt19937& random) {
  vorn::cRecord measurement;
  for (std::size_t count = random() % 8; count-- != 0;) {
    vorn::cRecord entry;
    for (const char* name : {"name", "value", "unit", "timestamp", "time-source", "signature"})
      if (random() % 5 != 0) AppendAny(entry, name, random);
    measurement.AppendRecordPar(random() % 6 != 0 ? "entry" : "other", entry);
    if (random() % 6 == 0) AppendAny(measurement, "entry", random);
  }
  return measurement;
}

TEST(ReadingView, AgreesWithTheRecordClassOnAnyForm) {
  const cCapturedTrace quiet;
  std::mt19937 random(7);
  for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
    vorn::cRecord form;
    if (random() % 10 != 0) form.AppendUIntPar("version", 1);
    if (random() % 10 != 0) form.AppendTextPar("meterID", "M");
    for (const char* name : {"version", "driver", "meterID", "addr", "manufactor", "medium", "status", "timestamp",
                             "time-source", "osc", "learning", "rssi", "store-osc", "store-utc", "interface-name",
                             "interface-protocol", "interface-options", "raw", "event-raster"})
      if (random() % 3 != 0) AppendAny(form, name, random);
    if (random() % 10 != 0) form.AppendRecordPar("measurement", RandomMeasurement(random));
    if (random() % 4 == 0) AppendAny(form, "measurement", random);
    ExpectSame(form);
  }
}

}  // namespace
}  // namespace tav::data
