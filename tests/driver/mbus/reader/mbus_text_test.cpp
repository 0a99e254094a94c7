// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_text.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav;
using namespace tav::mbus;

namespace {

std::string Value(const std::string& digits) { return ValueText(ReadRecord(digits).record()); }
std::string Raw(const std::string& digits) { return RawText(ReadRecord(digits).record()); }
std::string Unit(const std::string& digits) { return UnitText(ReadRecord(digits).record()); }
std::string Base(const std::string& digits) {
  const cBaseValue base = BaseValue(ReadRecord(digits).record());
  return base.value + "|" + base.unit;
}

// A whole number in a unit that no code gives.
std::string BaseOf(unsigned int unit, std::uint64_t magnitude, int scaler) {
  cMBusRecord record;
  record.value.kind = eValueNumber;
  record.value.magnitude = magnitude;
  record.meaning.unit = unit;
  record.meaning.scaler = scaler;
  const cBaseValue base = BaseValue(record);
  return base.value + "|" + base.unit;
}

}  // namespace

TEST(MBusText, HexIsTwoDigitsAByte) {
  EXPECT_EQ(HexText({}), "");
  EXPECT_EQ(HexText(Bytes("0A 01 FF")), "0A01FF");
  EXPECT_EQ(HexText(Bytes("0A 01 FF"), " "), "0A 01 FF");
}

// ---- numbers

TEST(MBusText, NumbersAreExactDecimals) {
  const struct {
    const char* record;
    const char* raw;
    const char* value;
  } kCases[] = {
      {"04 13 F6 FF FF FF", "-10", "-0.010"},
      {"0C 06 78 56 34 12", "12345678", "12345678000"},
      {"04 13 00 00 00 00", "0", "0.000"},
      {"01 48 7F", "127", "0.000000127"},
      {"07 03 FF FF FF FF FF FF FF 7F", "9223372036854775807", "9223372036854775807"},
      {"0D 13 C9 99 99 99 99 99 99 99 99 99", "999999999999999999", "999999999999999.999"},
      {"01 93 F0 F0 70 05", "5", "0.000000000000000000005"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Raw(c.record), c.raw) << c.record;
    EXPECT_EQ(Value(c.record), c.value) << c.record;
  }
}

TEST(MBusText, RealNumbersAreExactDecimals) {
  const struct {
    const char* real;
    const char* text;
  } kCases[] = {
      {"CD CC CC 3D", "0.100000001490116119384765625"},
      {"00 00 80 3F", "1"},
      {"00 00 00 80", "0"},
      {"00 00 00 BF", "-0.5"},
      {"00 00 48 42", "50"},
      {"DB 0F 49 C0", "-3.1415927410125732421875"},
      {"01 00 00 00",
       "0.0000000000000000000000000000000000000000000014012984643248170709237295832899161312802619418765157717570682838"
       "8979108268586060148663818836212158203125"},
      {"FF FF 7F 00",
       "0.0000000000000000000000000000000000000117549421069244107548702944484928734882705242874589333385717453057158887"
       "0475618904265502351336181163787841796875"},
      {"FF FF 7F 7F", "340282346638528859811704183484516925440"},
      {"FF FF 7F FF", "-340282346638528859811704183484516925440"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Value("05 03" + std::string(c.real)), c.text) << c.real;
    EXPECT_EQ(Raw("05 13" + std::string(c.real)), c.text) << c.real;
  }
}

TEST(MBusText, RealNumbersAreScaledToo) {
  EXPECT_EQ(Value("05 13 CD CC CC 3D"), "0.000100000001490116119384765625");
  EXPECT_EQ(Value("05 06 00 00 00 BF"), "-500");
  EXPECT_EQ(Value("05 06 00 00 80 3F"), "1000");
  EXPECT_EQ(Value("05 13 00 00 00 00"), "0.000");
  EXPECT_EQ(Value("05 06 00 00 00 00"), "0");
}

TEST(MBusText, InfinitiesAndNoNumbersStayTheirBytes) {
  for (const char* real : {"0000807F", "000080FF", "0000C07F"}) {
    EXPECT_EQ(Value("05 03" + std::string(real)), "hex:" + std::string(real));
    EXPECT_EQ(Raw("05 03" + std::string(real)), "hex:" + std::string(real));
    EXPECT_EQ(Base("05 03" + std::string(real)), "|");
  }
}

// ---- texts, times, octets

TEST(MBusText, TextsAreReversed) {
  EXPECT_EQ(Value("0D FD 0B 05 4F 4C 4C 45 48"), "HELLO");
  EXPECT_EQ(Value("0D FD 0B 02 B3 6D"), "m\xB3");
  EXPECT_EQ(Value("0D FD 0B 00"), "");
  EXPECT_EQ(Raw("0D FD 0B 05 4F 4C 4C 45 48"), "hex:4F4C4C4548");
}

TEST(MBusText, TextsWithControlCharactersStayOctetsAsSent) {
  EXPECT_EQ(Value("0D FD 0B 03 00 42 41"), "hex:004241");
  EXPECT_STREQ(ReadRecord("0D FD 0B 03 00 42 41").record().mark, "a text with characters that are none");
}

TEST(MBusText, PointsInTimeAreTexts) {
  EXPECT_EQ(Value("02 6C DF 1C"), "2014-12-31");
  EXPECT_EQ(Raw("02 6C DF 1C"), "hex:DF1C");
  EXPECT_EQ(Value("04 6D 2D 0D 38 11"), "2009-01-24T13:45:00");
  EXPECT_EQ(Value("04 6D AD 0D 38 11"), "hex:AD0D3811");
  EXPECT_EQ(Unit("04 6D 2D 0D 38 11"), "");
  EXPECT_EQ(Unit("04 93 42 2D 0D 38 11"), "");
}

TEST(MBusText, VariableBinaryNumbersShowTheMostSignificantByteFirst) {
  EXPECT_EQ(Value("0D FD 0B E9 01 02 03 04 05 06 07 08 09"), "hex:090807060504030201");
  EXPECT_EQ(Raw("0D FD 0B E9 01 02 03 04 05 06 07 08 09"), "hex:010203040506070809");
  EXPECT_EQ(Value("0D 13 E2 00 80"), "hex:8000");
  EXPECT_EQ(Value("0D 03 E2 05 00"), "5");
}

TEST(MBusText, OtherOctetsComeAsSent) {
  EXPECT_EQ(Value("0F 01 02 03"), "hex:010203");
  EXPECT_EQ(Value("02 03 00 80"), "hex:0080");
  EXPECT_EQ(Value("0D 03 C2 0A 01"), "hex:0A01");
  EXPECT_EQ(Value("0A 03 0A 01"), "hex:0A01");
}

TEST(MBusText, WithoutDataThereIsNoText) {
  for (const char* record : {"00 03", "08 03", "0F", "0D 03 C0", "0D 03 E0", "00 83 15"}) {
    EXPECT_EQ(Value(record), "") << record;
    EXPECT_EQ(Raw(record), "") << record;
    EXPECT_EQ(Base(record), "|") << record;
  }
}

// ---- units

TEST(MBusText, UnitsAreTheHelpersWithWhatTheyAreForEachOf) {
  EXPECT_EQ(Unit("01 03 05"), "Wh");
  EXPECT_EQ(Unit("01 13 05"), "m\xB3");
  EXPECT_EQ(Unit("01 83 22 05"), "Wh/h");
  EXPECT_EQ(Unit("01 FD 3A 05"), "");
  EXPECT_EQ(Unit("01 7F 05"), "");
}

TEST(MBusText, PlainUnitsAreReversed) {
  EXPECT_EQ(Unit("01 7C 03 48 57 4D 05"), "MWH");
  EXPECT_EQ(Unit("01 FC 02 B3 6D 74 05"), "m\xB3");
  EXPECT_EQ(Unit("01 FC 03 48 57 4D 22 05"), "MWH/h");
  EXPECT_EQ(Unit("01 7C 00 05"), "");
}

TEST(MBusText, PlainUnitsHaveNoControlCharacters) { EXPECT_EQ(Unit("01 7C 04 00 41 1B 85 05"), "??A?"); }

TEST(MBusText, ADurationIsNotInThePlainUnitOfItsQuantity) {
  EXPECT_EQ(Unit("01 FC 03 48 57 4D 51 05"), "min.");
  EXPECT_EQ(Base("01 FC 03 48 57 4D 51 05"), "300|s");
  EXPECT_EQ(Unit("02 FC 03 48 57 4D 42 DF 1C"), "");
}

// ---- base values

TEST(MBusText, BaseValuesAreExact) {
  const struct {
    const char* record;
    const char* base;
  } kCases[] = {
      {"01 03 05", "5|Wh"},
      {"01 13 FB", "-0.005|m\xB3"},
      {"01 20 05", "5|s"},
      {"01 21 05", "300|s"},
      {"01 22 05", "18000|s"},
      {"01 23 FB", "-432000|s"},
      {"02 FD 64 02 00", "1209600|s"},
      {"04 40 01 00 00 00", "0.0000060|m\xB3/h"},
      {"04 47 02 00 00 00", "120|m\xB3/h"},
      {"04 48 01 00 00 00", "0.000003600|m\xB3/h"},
      {"01 4F 01", "36.00|m\xB3/h"},
      {"01 3E 07", "7|m\xB3/h"},
      {"01 6B 02", "2|bar"},
      {"07 23 FF FF FF FF FF FF FF 7F", "796899343984252629724800|s"},
      {"01 7C 01 64 05", "5|d"},
      {"01 A1 22 05", "300|s/h"},
      {"01 5B 14", "20|\xB0\x43"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Base(c.record), c.base) << c.record;
}

TEST(MBusText, EveryUnitWithABaseIsTurnedIntoIt) {
  const struct {
    unsigned int unit;
    const char* base;
  } kCases[] = {
      {eMBusWeek, "30240000|s"},
      {eMBusDay, "4320000|s"},
      {eMBusHour, "180000|s"},
      {eMBusMinute, "3000|s"},
      {eMBusSecond, "50|s"},
      {eMBusCubicMetre, "50|m\xB3"},
      {eMBusCorrectedCubicMetre, "50|m\xB3"},
      {eMBusCubicMetrePerHour, "50|m\xB3/h"},
      {eMBusCorrectedCubicMetrePerHour, "50|m\xB3/h"},
      {eMBusCubicMetrePerMinute, "3000|m\xB3/h"},
      {eMBusCubicMetrePerSecond, "180000|m\xB3/h"},
      {eMBusLitre, "0.050|m\xB3"},
      {eMBusPascal, "0.00050|bar"},
      {eMBusBar, "50|bar"},
      {eMBusJoule, "50|J"},
      {eMBusMonth, "50|mo"},
      {eMBusYear, "50|a"},
      {eMBusCubicMetrePerDay, "50|m\xB3/d"},
      {eMBusKelvin, "50|K"},
      {eMBusNoUnit, "50|"},
  };
  for (const auto& c : kCases) EXPECT_EQ(BaseOf(c.unit, 50, 0), c.base) << c.unit;
  EXPECT_EQ(BaseOf(eMBusLitre, 50, 4), "500|m\xB3");
  EXPECT_EQ(BaseOf(eMBusWeek, UINT64_MAX, -3), "11156590815779536816752.000|s");
}

TEST(MBusText, BaseValuesOfRealNumbersAreExact) {
  EXPECT_EQ(Base("05 22 CD CC CC 3D"), "360.00000536441802978515625|s");
  EXPECT_EQ(Base("05 22 00 00 00 3F"), "1800|s");
  EXPECT_EQ(Base("05 22 00 00 00 00"), "0|s");
  EXPECT_EQ(Base("05 FD 64 FF FF 7F 7F"), "205802763246982254414118690171435836506112000|s");
  EXPECT_EQ(
      Base("05 FD 64 01 00 00 80"),
      "-0.000000000000000000000000000000000000000847505311223649364494671651973741276198302422446916738758674898096"
      "5456468084084917791187763214111328125|s");
}

TEST(MBusText, OnlyNumbersHaveABase) {
  for (const char* record : {"02 6C DF 1C", "0D 03 01 41", "02 03 00 80", "0F 01", "01 83 15 05"})
    EXPECT_EQ(Base(record), "|") << record;
}
