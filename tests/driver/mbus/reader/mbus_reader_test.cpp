// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_reader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/driver/mbus/reader/mbus_text.h>
#include <tests/support/allocations.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav;
using namespace tav::mbus;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// "at 7: 5 Wh", and behind it why it is no more than its bytes.
std::string Told(const cMBusRecord& record) {
  const std::string unit = UnitText(record);
  return "at " + std::to_string(record.offset) + ": " + ValueText(record) + (unit.empty() ? "" : " ") + unit +
         (record.mark == nullptr ? "" : std::string(", ") + record.mark);
}

std::vector<std::string> Told(const cReading& reading) {
  std::vector<std::string> all;
  for (const cMBusRecord& record : reading.records) all.push_back(Told(record));
  return all;
}

// What a DIB says: "storage tariff subunit".
std::string Dib(const std::string& dib) {
  const cOnly only = ReadRecord(dib + "03 05");
  EXPECT_EQ(Hex(only.record().dib), Hex(Bytes(dib)));
  return std::to_string(only.record().storage) + " " + std::to_string(only.record().tariff) + " " +
         std::to_string(only.record().subunit);
}

// The fault of a telegram whose last record cannot be read; the one before it can.
std::string Fault(const std::string& digits) {
  const std::string before = "01 03 05";
  const cReading reading = ReadRecords(before + digits);
  EXPECT_EQ(reading.records.size(), 2u) << digits;
  if (reading.records.size() != 2) return "";
  EXPECT_EQ(Told(reading.records[0]), "at 7: 5 Wh");
  const cMBusRecord& rest = reading.records[1];
  EXPECT_EQ(rest.offset, 10u);
  EXPECT_EQ(Hex(rest.bytes), Hex(Bytes(digits)));
  EXPECT_EQ(Hex(rest.data), Hex(Bytes(digits)));
  EXPECT_TRUE(rest.dib.empty() && rest.vib.empty() && rest.plainUnit.empty());
  EXPECT_EQ(rest.value.kind, eValueOctets);
  EXPECT_EQ(rest.storage, 0u);
  EXPECT_NE(rest.mark, nullptr);
  EXPECT_NE(reading.fault.find(rest.mark), std::string::npos);
  return reading.fault;
}

const std::string kReserved = "a DIF of a reserved function";

}  // namespace

// ---- records in their order

TEST(MBusReader, ReadsTheRecordsOfAMeter) {
  const cReading reading = ReadAnswer(
      "72 46 01 95 44 18 4E 34 04 1E 00 00 00"
      "0C 78 46 01 95 44  0D 7C 08 44 49 20 2E 74 73 75 63 0A 30 30 30 30 30 30 30 30 30 30"
      "04 6D 2D 0D 38 11  02 7C 09 65 6D 69 74 20 2E 74 61 62 A8 0F  04 13 60 F6 01 00  42 6C DF 1C");
  EXPECT_THAT(Told(reading), ElementsAre("at 19: 44950146", "at 25: 0000000000 cust. ID", "at 47: 2009-01-24T13:45:00",
                                         "at 53: 4008 bat. time", "at 67: 128.608 m\xB3", "at 73: 2014-12-31"));
  EXPECT_EQ(reading.fault, "");
  EXPECT_FALSE(reading.hasMore);
}

TEST(MBusReader, KnowsTheBytesOfARecord) {
  const cReading reading = ReadRecords("01 03 05 8D 10 FC 02 41 42 74 02 44 43");
  ASSERT_EQ(reading.records.size(), 2u);
  const cMBusRecord& record = reading.records[1];
  EXPECT_EQ(record.offset, 10u);
  EXPECT_EQ(Hex(record.bytes),
            "8D10FC0241427402"
            "4443");
  EXPECT_EQ(Hex(record.dib), "8D10");
  EXPECT_EQ(Hex(record.vib), "FC02414274");
  EXPECT_EQ(Hex(record.plainUnit), "4142");
  EXPECT_EQ(record.length, 2);
  EXPECT_EQ(Hex(record.data), "4443");
  EXPECT_EQ(record.tariff, 1u);
  EXPECT_EQ(record.meaning.scaler, -2);
  EXPECT_EQ(record.bytes.data(), reading.bytes.data() + record.offset);
}

TEST(MBusReader, OnlyVariableLengthHasALengthByte) {
  const cReading reading = ReadRecords("01 03 05 02 03 05 06 0D 03 01 41");
  ASSERT_EQ(reading.records.size(), 3u);
  EXPECT_EQ(reading.records[0].length, 0);
  EXPECT_EQ(reading.records[1].length, 0);
  EXPECT_EQ(reading.records[2].length, 1);
}

TEST(MBusReader, AnAnswerMayHaveNoRecords) {
  for (const char* answer : {"78", "78 2F 2F 2F", "7A 00 00 00 00", "70 08", "71 FF", "7A 00 00 10 05"}) {
    const cReading reading = ReadAnswer(answer);
    EXPECT_THAT(reading.records, IsEmpty()) << answer;
    EXPECT_EQ(reading.fault, "");
  }
}

TEST(MBusReader, EveryDataFieldTakesItsBytes) {
  const std::size_t bytes[] = {0, 1, 2, 3, 4, 4, 6, 8, 0, 1, 2, 3, 4, 0, 6};
  for (unsigned int field = 0; field < 15; ++field) {
    const std::string data = field == 0xD ? "01 31" : Repeated("01", bytes[field]);
    const cReading reading = ReadRecords(HexOf(field) + "03" + data + "01 03 05");
    ASSERT_EQ(reading.records.size(), 2u) << field;
    EXPECT_EQ(reading.records[0].HasValue(), field != 0 && field != 8);
    EXPECT_EQ(ValueText(reading.records[1]), "5") << field;
    EXPECT_EQ(reading.fault, "");
  }
}

TEST(MBusReader, EveryVariableLengthTakesItsBytesOrIsReserved) {
  for (unsigned int length = 0; length < 256; ++length) {
    const cMBusDataSize size = DataSize(eFieldVariable, static_cast<std::uint8_t>(length));
    const cReading reading = ReadRecords("0D 03" + HexOf(length) + Repeated("11", size.bytes) + "01 03 05");
    if (size.known) {
      ASSERT_EQ(reading.records.size(), 2u) << length;
      EXPECT_EQ(reading.records[0].data.size(), size.bytes);
      EXPECT_EQ(reading.fault, "");
    } else {
      ASSERT_EQ(reading.records.size(), 1u) << length;
      EXPECT_EQ(reading.fault, "byte 9: a variable length that is reserved (" + HexOf(length) + ")");
    }
  }
}

TEST(MBusReader, PassesOverIdleFillers) {
  EXPECT_THAT(Told(ReadRecords("2F 2F 01 03 05 2F 01 03 06 2F 2F")), ElementsAre("at 9: 5 Wh", "at 13: 6 Wh"));
}

TEST(MBusReader, BeginsAnewWithAnotherTelegram) {
  const cReading broken = ReadRecords("01 03");
  const cReading fixed = ReadAnswer("73 78 56 34 12 0A 03 05 05 01 00 00 00 02 00 00 00");
  const cReading more = ReadRecords("1F");
  const cReading good = ReadRecords("01 03 05");
  cMBusReader reader;
  for (const cReading* before : {&broken, &fixed, &more}) {
    cMBusRecord record;
    reader.Begin(before->telegram);
    while (reader.Next(record)) {
    }
    reader.Begin(good.telegram);
    ASSERT_TRUE(reader.Next(record));
    EXPECT_EQ(Told(record), "at 7: 5 Wh");
    EXPECT_FALSE(reader.Next(record));
    EXPECT_FALSE(reader.Next(record));
    EXPECT_FALSE(reader.HasFault());
    EXPECT_FALSE(reader.HasMore());
  }
}

// ---- data information

TEST(MBusReader, EveryDifHasItsFunctionAndStorage) {
  for (unsigned int bits = 0; bits < 8; ++bits) {
    const cOnly only = ReadRecord(HexOf(bits << 4 | 1) + "03 05");
    EXPECT_EQ(only.record().function, bits & 3);
    EXPECT_EQ(only.record().storage, bits >> 2);
    EXPECT_EQ(only.record().tariff, 0u);
    EXPECT_TRUE(only.record().HasValue());
  }
}

TEST(MBusReader, FunctionsHaveTheirTexts) {
  EXPECT_STREQ(FunctionText(eInstantaneous), "Instantaneous value");
  EXPECT_STREQ(FunctionText(eMaximum), "Maximum value");
  EXPECT_STREQ(FunctionText(eMinimum), "Minimum value");
  EXPECT_STREQ(FunctionText(eErrorState), "Value during error state");
  EXPECT_STREQ(FunctionText(eManufacturerSpecific), "Manufacturer specific");
  EXPECT_STREQ(FunctionText(eMoreRecordsFollow), "More records follow");
}

TEST(MBusReader, EachDifeHasMoreBitsOfStorageTariffAndSubunit) {
  const struct {
    const char* dib;
    const char* told;
  } kCases[] = {
      {"01", "0 0 0"},       {"41", "1 0 0"},          {"81 00", "0 0 0"},    {"81 01", "2 0 0"},
      {"C1 0F", "31 0 0"},   {"81 10", "0 1 0"},       {"81 30", "0 3 0"},    {"81 40", "0 0 1"},
      {"C1 7F", "31 3 1"},   {"81 80 01", "32 0 0"},   {"81 80 10", "0 4 0"}, {"81 80 40", "0 0 2"},
      {"81 C0 40", "0 0 3"}, {"C1 FF 7F", "511 15 3"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Dib(c.dib), c.told) << c.dib;
}

TEST(MBusReader, TenDifeFillTheirNumbersAndElevenAreRefused) {
  for (unsigned int count = 1; count <= 10; ++count) {
    const std::uint64_t storage = (std::uint64_t{2} << 4 * count) - 1;
    const std::uint64_t tariff = (std::uint64_t{1} << 2 * count) - 1;
    const std::uint64_t subunit = (std::uint64_t{1} << count) - 1;
    EXPECT_EQ(Dib("C1" + Repeated("FF", count - 1) + "7F"),
              std::to_string(storage) + " " + std::to_string(tariff) + " " + std::to_string(subunit));
    const std::string zeros = Repeated("80", count - 1);
    EXPECT_EQ(Dib("81" + zeros + "08"), std::to_string(std::uint64_t{16} << 4 * (count - 1)) + " 0 0");
    EXPECT_EQ(Dib("81" + zeros + "20"), "0 " + std::to_string(std::uint64_t{2} << 2 * (count - 1)) + " 0");
    EXPECT_EQ(Dib("81" + zeros + "40"), "0 0 " + std::to_string(std::uint64_t{1} << (count - 1)));
  }
  EXPECT_EQ(Fault("81" + Repeated("80", 10) + "03 05"), "byte 21: a DIB of more than 10 DIFE (03)");
  EXPECT_EQ(Fault("81" + Repeated("80", 11) + "00 03 05"), "byte 21: a DIB of more than 10 DIFE (80)");
}

TEST(MBusReader, RefusesADifOfAReservedFunction) {
  for (unsigned int dif = 0x0F; dif < 256; dif += 0x10) {
    if (dif == 0x0F || dif == 0x1F || dif == 0x2F) continue;
    EXPECT_EQ(Fault(HexOf(dif) + "03 05 01 03 05"), "byte 10: " + kReserved + " (" + HexOf(dif) + ")");
  }
  EXPECT_EQ(Fault("7F"), "byte 10: " + kReserved + " (7F)");
}

// ---- value information

TEST(MBusReader, TenVifeAreReadAndElevenRefused) {
  EXPECT_EQ(Told(ReadRecord("01 83" + Repeated("F7", 9) + "77 05").record()), "at 7: 50000000000 Wh");
  EXPECT_EQ(Fault("01 83" + Repeated("F7", 10) + "77 05"), "byte 22: a VIB of more than 10 VIFE (77)");
  EXPECT_EQ(Fault("01 83" + Repeated("F7", 10)), "byte 22: the telegram ends within a VIB");
  EXPECT_EQ(Fault("01 FD" + Repeated("FD", 10) + "77 05"), "byte 22: a VIB of more than 10 VIFE (77)");
}

TEST(MBusReader, APlainTextStandsBeforeTheExtensions) {
  EXPECT_EQ(Told(ReadRecord("01 7C 01 41 05").record()), "at 7: 5 A");
  EXPECT_EQ(Told(ReadRecord("01 FC 01 41 74 05").record()), "at 7: 0.05 A");
  EXPECT_EQ(Told(ReadRecord("01 FC 01 41 F4 74 05").record()), "at 7: 0.0005 A");
  EXPECT_EQ(Told(ReadRecord("01 7C 00 05").record()), "at 7: 5");
  EXPECT_EQ(Hex(ReadRecord("01 7C 02 42 41 05").record().vib), "7C024241");
}

TEST(MBusReader, APlainTextMayBeAsLongAsTheTelegram) {
  EXPECT_EQ(Told(ReadRecord("08 7C F9" + Repeated("41", 249)).record()), "at 7:  " + std::string(249, 'A'));
  EXPECT_EQ(Fault("01 7C 02 41"), "byte 12: the text of a VIF is longer than the telegram (02)");
  EXPECT_EQ(Fault("01 7C 01"), "byte 12: the text of a VIF is longer than the telegram (01)");
  EXPECT_EQ(Fault("01 FC FF 41 41 41 41"), "byte 12: the text of a VIF is longer than the telegram (FF)");
}

TEST(MBusReader, AVifeThatLooksLikeAPlainTextIsNone) {
  EXPECT_EQ(Told(ReadRecord("01 83 FC 01 05").record()), "at 7: 5 Wh");
  EXPECT_EQ(Told(ReadRecord("01 FD 7C 05").record()), "at 7: 5");
}

TEST(MBusReader, PointsInTimeAreReadByTheirLengthOthersAreNumbers) {
  EXPECT_EQ(Told(ReadRecord("02 6C DF 1C").record()), "at 7: 2014-12-31");
  EXPECT_EQ(Told(ReadRecord("03 FD 30 1E 1D 0D").record()), "at 7: 13:29:30");
  EXPECT_EQ(Told(ReadRecord("06 6D 1E 1D 4D 98 11 04").record()), "at 7: 2012-01-24T13:29:30");
  EXPECT_EQ(Told(ReadRecord("04 FD 70 2D 0D 38 11").record()), "at 7: 2009-01-24T13:45:00");
  EXPECT_EQ(Told(ReadRecord("04 93 42 2D 0D 38 11").record()), "at 7: 2009-01-24T13:45:00");
  EXPECT_EQ(Told(ReadRecord("01 6C 05").record()), "at 7: 5");
  EXPECT_EQ(Told(ReadRecord("09 6D 12").record()), "at 7: 12");
  EXPECT_EQ(Told(ReadRecord("0C 6D 78 56 34 12").record()), "at 7: 12345678");
  EXPECT_EQ(Told(ReadRecord("02 EC 41 05 00").record()), "at 7: 5");
  EXPECT_EQ(Told(ReadRecord("04 6D FF FF FF FF").record()), "at 7: hex:FFFFFFFF, a time that the meter calls invalid");
}

TEST(MBusReader, ADateWithoutDataIsNothing) {
  for (const char* digits : {"00 6C", "08 6D"}) {
    const cOnly only = ReadRecord(digits);
    EXPECT_FALSE(only.record().HasValue());
    EXPECT_EQ(only.record().mark, nullptr);
  }
}

TEST(MBusReader, NumbersThatHaveNoSignAreReadWithoutOne) {
  EXPECT_EQ(Told(ReadRecord("04 78 FF FF FF FF").record()), "at 7: 4294967295");
  EXPECT_EQ(Told(ReadRecord("02 FD 17 00 80").record()), "at 7: 32768");
  EXPECT_EQ(Told(ReadRecord("02 FD 1C 00 96").record()), "at 7: 38400");
  EXPECT_EQ(Told(ReadRecord("02 03 00 96").record()), "at 7: -27136 Wh");
}

TEST(MBusReader, ARecordInErrorStaysItsBytesAndTheNextIsRead) {
  const cReading reading = ReadRecords("02 83 18 34 12 00 83 15 01 03 05");
  EXPECT_THAT(Told(reading), ElementsAre("at 7: hex:3412 Wh, the meter says: data error",
                                         "at 12:  Wh, the meter says: no data available", "at 15: 5 Wh"));
  EXPECT_TRUE(reading.records[0].HasValue());
  EXPECT_FALSE(reading.records[1].HasValue());
  EXPECT_EQ(reading.fault, "");
}

TEST(MBusReader, ANumberThatIsNoneDoesNotEndTheTelegram) {
  EXPECT_THAT(Told(ReadRecords("02 03 00 80 0A 03 AB 00 01 03 05")),
              ElementsAre("at 7: hex:0080 Wh, the number that says: none",
                          "at 11: hex:AB00 Wh, BCD with an error digit", "at 15: 5 Wh"));
}

// ---- what is the maker's, what cannot be read

TEST(MBusReader, BehindAMakersDifTheRestIsTheMakers) {
  for (const bool hasMore : {false, true}) {
    const cReading reading = ReadRecords(std::string("01 03 05") + (hasMore ? "1F" : "0F") + "2F 01 03 05");
    ASSERT_EQ(reading.records.size(), 2u);
    const cMBusRecord& record = reading.records[1];
    EXPECT_EQ(Told(record), "at 10: hex:2F010305");
    EXPECT_EQ(record.function, hasMore ? eMoreRecordsFollow : eManufacturerSpecific);
    EXPECT_EQ(Hex(record.dib), hasMore ? "1F" : "0F");
    EXPECT_EQ(Hex(record.bytes), std::string(hasMore ? "1F" : "0F") + "2F010305");
    EXPECT_TRUE(record.meaning.isMakers);
    EXPECT_EQ(record.meaning.unit, eMBusManufacturerSpecific);
    EXPECT_FALSE(record.HasValue());
    EXPECT_EQ(reading.hasMore, hasMore);
    EXPECT_EQ(reading.fault, "");
  }
}

TEST(MBusReader, AMakersDifMayHaveNothingBehindIt) {
  for (const char* dif : {"0F", "1F"}) {
    const cReading reading = ReadRecords(dif);
    EXPECT_THAT(Told(reading), ElementsAre("at 7: ")) << dif;
    EXPECT_EQ(reading.records[0].value.kind, eValueNone);
    EXPECT_EQ(reading.hasMore, std::string(dif) == "1F");
  }
}

TEST(MBusReader, EncryptedRecordsAreOneOfTheirBytes) {
  const cReading reading = ReadAnswer("7A 1E 00 10 05 2F 01 03 05 0F");
  EXPECT_THAT(Told(reading), ElementsAre("at 11: hex:2F0103050F, encrypted"));
  EXPECT_EQ(Hex(reading.records[0].bytes), "2F0103050F");
  EXPECT_EQ(reading.fault, "");
  EXPECT_FALSE(reading.hasMore);
}

TEST(MBusReader, ATelegramThatEndsTooEarlyNamesTheByteThatIsMissing) {
  const struct {
    const char* digits;
    const char* fault;
  } kCases[] = {
      {"01", "byte 11: the telegram ends within a VIB"},
      {"81", "byte 11: the telegram ends within a DIB"},
      {"81 80", "byte 12: the telegram ends within a DIB"},
      {"81 00", "byte 12: the telegram ends within a VIB"},
      {"01 83", "byte 12: the telegram ends within a VIB"},
      {"01 FD", "byte 12: the telegram ends within a VIB"},
      {"01 7C", "byte 12: the telegram ends within a VIB"},
      {"01 FC 01 41", "byte 14: the telegram ends within a VIB"},
      {"01 03", "byte 12: the data of a record end too early"},
      {"04 03 01 02 03", "byte 15: the data of a record end too early"},
      {"07 03 01", "byte 13: the data of a record end too early"},
      {"0D 03", "byte 12: the telegram ends before the data of a record"},
      {"0D 03 01", "byte 13: the data of a record end too early"},
      {"0D 03 03 41 41", "byte 15: the data of a record end too early"},
      {"0D 03 F6 41 41", "byte 15: the data of a record end too early"},
      {"0D 03 FF 41 41", "byte 12: a variable length that is reserved (FF)"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Fault(c.digits), c.fault) << c.digits;
}

TEST(MBusReader, EveryPrefixKeepsWhatIsWholeAndEveryByteBelongsToOneRecord) {
  const std::vector<std::uint8_t> whole =
      Bytes("01 03 05 8C 10 13 78 56 34 12 0D FD 0B 02 42 41 04 6D 2D 0D 38 11 01 FC 01 41 74 05 0D 03 C2 34 12 0F 01");
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const cReading reading = ReadRecords(Hex({whole.data(), size}));
    std::string bytes;
    std::size_t unread = 0;
    for (const cMBusRecord& record : reading.records) {
      EXPECT_EQ(record.offset, 7 + bytes.size() / 2);
      bytes += Hex(record.bytes);
      if (record.dib.empty()) ++unread;
    }
    EXPECT_EQ(bytes, Hex({whole.data(), size}));
    EXPECT_EQ(unread, reading.fault.empty() ? 0u : 1u);
  }
}

// ---- cost

TEST(MBusReader, AllocatesNothingForARecord) {
  const std::string shapes =
      "01 03 05 04 86 A2 F4 7D 01 02 03 04 02 FD C8 74 05 00 0D 7C 01 41 02 42 41 05 5B CD CC CC 3D 02 6C DF 1C"
      "8C 90 10 93 D0 18 78 56 34 12 02 83 15 00 00 0D 03 E9 01 02 03 04 05 06 07 08 09 01 FF A2 74 01";
  const cReading telegram = ReadRecords(shapes + shapes + shapes);
  ASSERT_EQ(telegram.records.size(), 30u);
  cMBusReader reader;
  cMBusRecord record;
  const auto readAll = [&] {
    std::size_t count = 0;
    for (reader.Begin(telegram.telegram); reader.Next(record);) ++count;
    return count;
  };
  EXPECT_EQ(readAll(), 30u);
  const cAllocations allocations;
  std::size_t records = 0;
  for (int i = 0; i < 100; ++i) records += readAll();
  EXPECT_EQ(allocations.Get(), 0u);
  EXPECT_EQ(records, 3000u);
}

TEST(MBusReader, AllocatesNothingForTheLongestBlockAfterTheFirst) {
  const cReading telegram = ReadRecords("01 83" + Repeated("F7", 9) + "77 05");
  cMBusReader reader;
  cMBusRecord record;
  reader.Begin(telegram.telegram);
  reader.Next(record);
  const cAllocations allocations;
  reader.Begin(telegram.telegram);
  EXPECT_TRUE(reader.Next(record));
  EXPECT_EQ(allocations.Get(), 0u);
}
