// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_fixed.h>

#include <gtest/gtest.h>

#include <gateway/driver/mbus/reader/mbus_text.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav;
using namespace tav::mbus;

namespace {

constexpr const char* kNoMeaning = "a unit without a meaning for numbers";

// Both counters behind a header with this status; units are the two bytes of medium and unit.
cReading Counters(unsigned int status, const std::string& units, const std::string& counters) {
  cReading reading = ReadAnswer("73 78 56 34 12 0A" + HexOf(status) + units + counters);
  EXPECT_EQ(reading.records.size(), 2u);
  reading.records.resize(2);
  return reading;
}

std::string Told(const cMBusRecord& record) {
  return ValueText(record) + " " + UnitText(record) + (record.storage == 1 ? " stored" : "");
}

}  // namespace

TEST(MBusFixed, EveryUnitHasItsValueInformation) {
  const struct {
    unsigned int first, last;
    unsigned int unit;
    int scaler;  // of the first
  } kRows[] = {
      {0x02, 0x0A, eMBusWattHour, 0},     {0x0B, 0x13, eMBusJoule, 3},       {0x14, 0x1C, eMBusWatt, 0},
      {0x1D, 0x25, eMBusJoulePerHour, 3}, {0x26, 0x2E, eMBusCubicMetre, -6}, {0x2F, 0x37, eMBusCubicMetrePerHour, -6},
      {0x38, 0x38, eMBusCelsius, -3},     {0x39, 0x39, eMBusNoUnit, 0},      {0x3F, 0x3F, eMBusNoUnit, 0},
  };
  unsigned int known = 0;
  cMBusVib vib;
  for (const auto& row : kRows)
    for (unsigned int code = row.first; code <= row.last; ++code, ++known)
      for (const unsigned int medium : {0x00u, 0x40u, 0xC0u}) {
        const cBytes block = FixedVib(static_cast<std::uint8_t>(medium | code));
        ASSERT_FALSE(block.empty()) << HexOf(code);
        const cVibMeaning meaning = vib.Decode(block);
        EXPECT_EQ(meaning.unit, row.unit) << HexOf(code);
        EXPECT_EQ(meaning.scaler, row.scaler + static_cast<int>(code - row.first)) << HexOf(code);
        EXPECT_FALSE(meaning.isTime) << HexOf(code);
        // A block that says of itself where it ends.
        for (std::size_t i = 0; i < block.size(); ++i) EXPECT_EQ((block[i] & 0x80) != 0, i + 1 < block.size());
      }
  EXPECT_EQ(known, 64u - 7u);
}

TEST(MBusFixed, TimesDatesAndReservedUnitsHaveNone) {
  for (const std::uint8_t code : Bytes("00 01 3A 3B 3C 3D 3E 40 C1 FE")) EXPECT_TRUE(FixedVib(code).empty());
}

TEST(MBusFixed, CountersAreReadByTheirUnits) {
  const cReading reading = Counters(0x00, "E9 6C", "01 00 00 00 35 01 00 00");
  EXPECT_EQ(Told(reading.records[0]), "0.001 m\xB3");
  EXPECT_EQ(Told(reading.records[1]), "135 m\xB3");
  EXPECT_EQ(reading.fault, "");
  EXPECT_FALSE(reading.hasMore);
}

TEST(MBusFixed, CountersAreBcdOrWholeNumbersWithoutASign) {
  EXPECT_EQ(Told(Counters(0x00, "02 02", "78 56 34 12 00 00 00 00").records[0]), "12345678 Wh");
  EXPECT_EQ(Told(Counters(0x01, "02 02", "78 56 34 12 00 00 00 00").records[0]), "305419896 Wh");
  EXPECT_EQ(Told(Counters(0x01, "02 02", "00 00 00 80 FF FF FF FF").records[0]), "2147483648 Wh");
  EXPECT_EQ(Told(Counters(0x01, "02 02", "00 00 00 80 FF FF FF FF").records[1]), "4294967295 Wh");
  EXPECT_EQ(Told(Counters(0x00, "02 02", "01 00 00 F0 00 00 00 00").records[0]), "-1 Wh");
  const cReading error = Counters(0x00, "02 02", "0A 00 00 00 01 00 00 00");
  EXPECT_STREQ(error.records[0].mark, "BCD with an error digit");
  EXPECT_EQ(ValueText(error.records[0]), "hex:0A000000");
  EXPECT_EQ(Told(error.records[1]), "1 Wh");
}

TEST(MBusFixed, StoredCountersAreThoseOfStorage1) {
  for (const unsigned int status : {2u, 3u}) {
    const cReading reading = Counters(status, "05 05", "01 00 00 00 02 00 00 00");
    EXPECT_EQ(Told(reading.records[0]), "1000 Wh stored");
    EXPECT_EQ(Told(reading.records[1]), "2000 Wh stored");
  }
}

TEST(MBusFixed, TheSecondCounterMayBeTheFirstOneOfThePast) {
  const cReading reading = Counters(0x00, "E9 7E", "01 00 00 00 35 01 00 00");
  EXPECT_EQ(Told(reading.records[0]), "0.001 m\xB3");
  EXPECT_EQ(Told(reading.records[1]), "0.135 m\xB3 stored");
}

TEST(MBusFixed, TheFirstCounterCannotBeOneOfThePast) {
  for (const char* second : {"3E", "05"})
    EXPECT_STREQ(Counters(0x00, std::string("3E") + second, "01 00 00 00 35 01 00 00").records[0].mark, kNoMeaning);
  EXPECT_STREQ(Counters(0x00, "3E 3E", "01 00 00 00 35 01 00 00").records[1].mark, kNoMeaning);
}

TEST(MBusFixed, CountersOfUnitsWithoutAMeaningStayTheirBytes) {
  for (const char* unit : {"00", "01", "3A", "3B", "3C", "3D"}) {
    const cReading reading = Counters(0x00, std::string(unit) + "05", "12 34 56 78 01 00 00 00");
    EXPECT_STREQ(reading.records[0].mark, kNoMeaning) << unit;
    EXPECT_EQ(ValueText(reading.records[0]), "hex:12345678") << unit;
    EXPECT_TRUE(reading.records[0].HasValue());
    EXPECT_EQ(Told(reading.records[1]), "1000 Wh");
    EXPECT_EQ(reading.fault, "");
  }
}

TEST(MBusFixed, CountersTellWhereTheyStandAndLookLikeRecords) {
  const struct {
    unsigned int status;
    const char* dib;
  } kCases[] = {{0, "0C"}, {1, "04"}, {2, "4C"}, {3, "44"}};
  for (const auto& c : kCases) {
    const cReading reading = Counters(c.status, "0A 06", "11 00 00 00 22 00 00 00");
    EXPECT_EQ(Hex(reading.records[0].dib), c.dib);
    EXPECT_EQ(Hex(reading.records[0].vib), "FB807D");
    EXPECT_EQ(Hex(reading.records[1].vib), "07");
    EXPECT_EQ(reading.records[0].offset, 15u);
    EXPECT_EQ(reading.records[1].offset, 19u);
    EXPECT_EQ(Hex(reading.records[0].bytes), "11000000");
    EXPECT_EQ(Hex(reading.records[1].data), "22000000");
    EXPECT_EQ(reading.bytes[reading.records[1].offset], 0x22);
  }
}
