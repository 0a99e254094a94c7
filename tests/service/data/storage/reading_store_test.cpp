// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/reading_store.h>

#include <filesystem>
#include <random>

#include <tests/service/data/store_fixture.h>

namespace tav::data {
namespace {

using eOutcome = cReadingStore::eOutcome;

class ReadingStore : public StoreFixture {
 protected:
  void SetUp() override { Open(); }
  std::vector<std::string> Values() { return Ask("SELECT value FROM reading_values ORDER BY time, obis"); }
};

TEST_F(ReadingStore, KeepsEverythingThatAReadingCarries) {
  cMeterRecord reading = Reading("1EMH00123", kNoon, {});
  cMeasurementEntry entry("1-0:1.8.0", "12345678.9", "Wh", kNoon - 60, cMeterTav::eTsMeter);
  entry.SetSignature(vorn::cData("\x01\x00\xFF", 3));
  reading.AddMeasurementEntry(entry);
  reading.SetRSSI(-70);
  reading.SetLearning(true);
  reading.SetEventRaster(900);
  reading.SetRaw(std::string("\x1B\0\x1B", 3));
  vorn::cRecord form = reading.ToRecord();
  form.SetUIntPar("store-utc", 4'000'000'000);
  form.SetUIntPar("store-osc", 18);
  Store(form);
  EXPECT_EQ(
      One("SELECT meter||'|'||time||'|'||utc||'|'||time_source||'|'||driver||'|'||addr||'|'||manufactor||'|'||medium"
          "||'|'||status||'|'||rssi||'|'||osc||'|'||learning||'|'||event_raster||'|'||interface_name||'|'||"
          "interface_protocol||'|'||interface_options||'|'||hex(raw)||'|'||store_utc||'|'||store_osc FROM readings"),
      "1EMH00123|1700000000|2023-11-14 22:13:20|3|ehzif|ttyUSB0|EMH|E|ok|-70|100000000|1|900|IR1|SML|baud=9600|"
      "1B001B|4000000000|18");
  EXPECT_EQ(
      One("SELECT meter||'|'||time||'|'||obis||'|'||value||'|'||unit||'|'||time_source||'|'||hex(signature)||'|'||"
          "reading_time||'|'||reading_seq FROM reading_values"),
      "1EMH00123|1699999940|1-0:1.8.0|12345678.9|Wh|2|0100FF|1700000000|0");
}

TEST_F(ReadingStore, ReadsAbsentFieldsAsTheirDefaults) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  EXPECT_EQ(
      One("SELECT rssi||'|'||learning||'|'||event_raster||'|'||iif(raw IS NULL,'none','some')||'|'||store_utc||'|'||"
          "store_osc FROM readings"),
      "0|0|0|none|0|0");
  EXPECT_EQ(One("SELECT count(*) FROM reading_extra"), "0");
  EXPECT_EQ(One("SELECT count(*) FROM signature"), "0");
}

TEST_F(ReadingStore, StoresTheSameValueOnce) {
  const cMeterRecord reading = Reading("M", kNoon, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}});
  Store(reading);
  EXPECT_EQ(LastOutcome(), eOutcome::Stored);
  Store(reading);
  EXPECT_EQ(LastOutcome(), eOutcome::NothingNew);
  EXPECT_EQ(Values(), (std::vector<std::string>{"1", "2"}));
  EXPECT_EQ(One("SELECT count(*) FROM reading"), "1");
}

TEST_F(ReadingStore, StoresTheSameValueOnceThoughUnitDriverOrReadingDiffer) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  cMeterRecord again = Reading("M", kNoon, {{"1-0:1.8.0", "1", "kWh"}});
  again.SetOSC(5);
  Store(again);
  EXPECT_EQ(LastOutcome(), eOutcome::NothingNew);
  EXPECT_EQ(One("SELECT unit FROM reading_values"), "Wh");
  EXPECT_EQ(One("SELECT count(*) FROM reading"), "1");
}

TEST_F(ReadingStore, KeepsDifferentValuesOfTheSameSecond) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "2"}}));
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1.0"}}));
  EXPECT_EQ(Values().size(), 3u);
}

TEST_F(ReadingStore, TellsTextsApartThatMeanTheSameNumber) {
  const std::vector<std::string> texts = {"1", "1.0", "01", "+1", "1e0", "1 ", " 1", "1.00", "0001.0"};
  for (const std::string& text : texts) Store(Reading("M", kNoon, {{"1-0:1.8.0", text}}));
  const std::vector<std::string> values = Values();
  EXPECT_EQ(std::set<std::string>(values.begin(), values.end()), std::set<std::string>(texts.begin(), texts.end()));
}

TEST_F(ReadingStore, KeepsReadingsOfOneSecondApartThatDiffer) {
  cMeterRecord reading = Reading("M", kNoon, {{"1-0:1.8.0", "1"}});
  Store(reading);
  reading = Reading("M", kNoon, {{"1-0:1.8.0", "2"}});
  reading.SetStatus("error: 04");
  Store(reading);
  EXPECT_EQ(
      Ask("SELECT r.status FROM reading_values v JOIN readings r ON r.meter=v.meter AND r.time=v.reading_time AND "
          "r.seq=v.reading_seq ORDER BY v.value"),
      (std::vector<std::string>{"ok", "error: 04"}));
}

TEST_F(ReadingStore, JoinsAReadingThatIsContinued) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  Store(Reading("M", kNoon, {{"1-0:2.8.0", "2"}}));
  EXPECT_EQ(One("SELECT count(*) FROM reading"), "1");
  EXPECT_EQ(Values().size(), 2u);
}

TEST_F(ReadingStore, KeepsRawBytesApartOfReadingsOfOneSecond) {
  for (const char* raw : {"a", "b", "a"}) {
    cMeterRecord reading = Reading("M", kNoon, {{"1-0:1.8.0", std::string("raw ") + raw}});
    reading.SetRaw(std::string(raw));
    Store(reading);
  }
  EXPECT_EQ(Ask("SELECT CAST(raw AS TEXT) FROM readings ORDER BY seq"), (std::vector<std::string>{"a", "b"}));
}

TEST_F(ReadingStore, LeavesNothingBehindOfAReadingThatBringsOnlyKnownValues) {
  cMeterRecord reading = Reading("M", kNoon, {});
  reading.AddMeasurementEntry({"1-0:1.8.0*01", "7", "Wh", kNoon - 86400, cMeterTav::eTsMeter});
  Store(reading);
  reading.SetTimeStamp(kNoon + 900, false);
  reading.SetRaw(std::string("raw"));
  Store(reading);
  EXPECT_EQ(LastOutcome(), eOutcome::NothingNew);
  EXPECT_EQ(One("SELECT time FROM readings"), std::to_string(kNoon));
  EXPECT_EQ(One("SELECT count(*) FROM reading_extra"), "0");
}

TEST_F(ReadingStore, AddsNothingForAReadingWhoseEntriesAreUnreadable) {
  vorn::cRecord measurement;
  measurement.AppendTextPar("entry", "no record");
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("meterID", "M");
  form.AppendRecordPar("measurement", measurement);
  Store(form);
  EXPECT_EQ(LastOutcome(), eOutcome::NothingNew);
  EXPECT_EQ(One("SELECT count(*) FROM meter"), "0");
}

TEST_F(ReadingStore, RefusesMoreReadingsOfOneSecondThanItCanTellApart) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  ASSERT_FALSE(m_store->Write([](cTables&) {}));
  SQLite::Database(Options().file, SQLite::OPEN_READWRITE)
      .exec("UPDATE reading SET seq=" + std::to_string(cReadingStore::kMaxSequence));
  cMeterRecord reading = Reading("M", kNoon, {{"1-0:1.8.0", "2"}});
  reading.SetStatus("takes number 0");
  Store(reading);
  EXPECT_EQ(LastOutcome(), eOutcome::Stored);
  reading = Reading("M", kNoon, {{"1-0:1.8.0", "3"}});
  reading.SetStatus("one too many");
  Store(reading);
  EXPECT_EQ(LastOutcome(), eOutcome::Refused);
  EXPECT_EQ(Values(), (std::vector<std::string>{"1", "2"}));
}

TEST_F(ReadingStore, KeepsTheTextOfEveryValueByteForByte) {
  std::mt19937 random(11);
  std::set<std::string> texts = {"", std::string("a\0b", 3), "\xB5\xFF", std::string(100'000, 'x'), "-0", "1e5"};
  while (texts.size() < 1500) {
    std::string text;
    for (std::size_t length = random() % 20; text.size() < length;)
      text += random() % 4 != 0 ? static_cast<char>('0' + random() % 10) : static_cast<char>(random() % 256);
    texts.insert(text);
  }
  for (const std::string& text : texts) ASSERT_NO_FATAL_FAILURE(Store(Reading("M", kNoon, {{"1-0:1.8.0", text}})));
  const std::vector<std::string> values = Values();
  EXPECT_EQ(std::set<std::string>(values.begin(), values.end()), texts);
}

TEST_F(ReadingStore, KeepsNamesAndUnitsByteForByte) {
  const std::string odd("\xB5\0/m", 4);
  Store(Reading(odd, kNoon, {{odd, "1", odd}}));
  EXPECT_EQ(One("SELECT meter FROM reading_values"), odd);
  EXPECT_EQ(One("SELECT obis FROM reading_values"), odd);
  EXPECT_EQ(One("SELECT unit FROM reading_values"), odd);
}

TEST_F(ReadingStore, LastValuesFollowTheTimeOfTheValueNotOfItsArrival) {
  Store(Reading("M", kNoon + 10, {{"1-0:1.8.0", "new"}}));
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "old"}}));
  EXPECT_EQ(One("SELECT value FROM last_values"), "new");
  Store(Reading("M", kNoon + 10, {{"1-0:1.8.0", "same second"}}));
  EXPECT_EQ(One("SELECT value||' '||count FROM last_values"), "same second 3");
}

TEST_F(ReadingStore, LastValuesOfOneTransactionAreItsNewest) {
  const auto form = [](unsigned int time, const char* value) {
    return Reading("M", time, {{"1-0:1.8.0", value}}).ToRecord();
  };
  ASSERT_FALSE(TryStore({form(kNoon, "1"), form(kNoon + 2, "3"), form(kNoon + 1, "2")}));
  EXPECT_EQ(One("SELECT value||' '||time||' '||count FROM last_values"), "3 1700000002 3");
}

TEST_F(ReadingStore, CountsAValueThatCameTwiceOnce) {
  for (int i = 0; i < 3; ++i) Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  EXPECT_EQ(One("SELECT count FROM last_values"), "1");
}

// Readings as meters send them: six values that move, each meter at its own second.
vorn::cRecord MovingReading(int meter, unsigned int at) {
  const auto decimal = [](unsigned int number, std::size_t scale) {
    std::string text = std::to_string(number);
    return text.insert(text.size() - scale, ".");
  };
  cMeterRecord reading("ehzif", "EMH", "E", "1EMH00123456" + std::to_string(10 + meter), "ttyUSB0", "ok", kNoon + at,
                       cMeterTav::eTsMeterUtc, 100'000 + at);
  reading.SetInterfaceInfo("IR1", "SML", "baud=9600");
  reading.SetRSSI(-61 - static_cast<int>(at % 9));
  const cValue values[] = {
      {"1-0:1.8.0*255", decimal(123'456'789 + at * 17, 1)},   {"1-0:2.8.0*255", decimal(23'456 + at / 100, 1)},
      {"1-0:16.7.0*255", decimal(41'237 + at % 977, 2), "W"}, {"1-0:32.7.0*255", decimal(2'314 + at % 31, 1), "V"},
      {"1-0:31.7.0*255", decimal(179 + at % 53, 2), "A"},     {"1-0:14.7.0*255", decimal(4'998 + at % 5, 2), "Hz"}};
  for (const cValue& value : values)
    reading.AddMeasurementEntry({value.obis, value.text, value.unit, kNoon + at, cMeterTav::eTsMeterUtc});
  return reading.ToRecord();
}

TEST_F(ReadingStore, AReadingOfSixValuesTakesAtMost250Bytes) {
  constexpr unsigned int kReadings = 10'000;
  for (const int meters : {1, 20}) {
    std::filesystem::remove(Options().file);
    Open();
    for (unsigned int i = 0; i < kReadings; i += 50) {
      std::vector<vorn::cRecord> records;
      for (unsigned int j = i; j < i + 50; ++j)
        records.push_back(MovingReading(static_cast<int>(j) % meters, j / static_cast<unsigned int>(meters)));
      ASSERT_FALSE(TryStore(records));
    }
    m_store.reset();
    const auto size = std::filesystem::file_size(Options().file);
    RecordProperty("bytes-per-reading-" + std::to_string(meters), std::to_string(size / kReadings));
    EXPECT_LE(size / kReadings, 250u) << meters << " meters";
  }
}

}  // namespace
}  // namespace tav::data
