// SPDX-License-Identifier: Apache-2.0
#include <tav/record/meter_tav.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using tav::cMeterTav;
using testing::ElementsAre;
using testing::Pair;

TEST(MeterTav, NormalizeDropsANeutralFGroupOnly) {
  const struct {
    const char* obis;
    const char* normal;
  } kCases[] = {
      {"1-0:1.8.0*255", "1-0:1.8.0"},
      {"1-0:1.8.0*FF", "1-0:1.8.0"},
      {"1-0:1.8.0", "1-0:1.8.0"},
      {"1-0:1.8.0*01", "1-0:1.8.0*01"},
      {"1-0:1.8.0*ff", "1-0:1.8.0*ff"},
      {"1-0:1.8.0*Ff", "1-0:1.8.0*Ff"},
      {"1-0:1.8.0*2552", "1-0:1.8.0*2552"},
      {"1-0:1.8.0*", "1-0:1.8.0*"},
      {"1-0:1.8.0*1*255", "1-0:1.8.0*1*255"},  // the tail starts at the first star
      {"*255", ""},
      {"", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(cMeterTav::ObisNormalize(c.obis), c.normal) << c.obis;
}

TEST(MeterTav, AcceptsTheFormOfAnIdentifier) {
  for (const char* obis : {"1-0:1.8.0", "1-0:1.8.0*255", "1-0:1.8.0*FF", "a-b:c.d.e", "1-0:F.8.0", "999-12345:1.8.0",
                           "0-0:0.0.254", "1-0:1.8.0*zz9"})
    EXPECT_TRUE(cMeterTav::ObisIsValid(obis)) << obis;
}

TEST(MeterTav, RefusesEveryOtherForm) {
  for (const char* obis : {"",
                           "1",
                           "1-0",
                           "1-0:1",
                           "1-0:1.8",
                           "1-0:1.8.",
                           "1-0:1..0",
                           "-0:1.8.0",
                           "1-:1.8.0",
                           "1-0:.8.0",
                           "1:0-1.8.0",
                           "1-0.1.8.0",
                           "1-0:1:8.0",
                           "1-0:1.8:0",
                           "1-0:1.8.0*",
                           "1-0:1.8.0 ",
                           " 1-0:1.8.0",
                           "1-0:1.8.0*255 ",
                           "1-0:1.8.0*1*2",
                           "1-0:1.8.0.1",
                           "1-0:1.8.0-1",
                           "1-0:1.8.0*1.2",
                           "1.8.0",
                           "1-0:1.\xFC.0"})
    EXPECT_FALSE(cMeterTav::ObisIsValid(obis)) << obis;
  EXPECT_FALSE(cMeterTav::ObisIsValid(std::string("1-0:1.8.0\0", 10))) << "a zero byte is a character too many";
  EXPECT_FALSE(cMeterTav::ObisIsValid(std::string("1-0:1.8.0\0*255", 14)));
}

TEST(MeterTav, AStarAnywhereMakesADueDate) {
  EXPECT_TRUE(cMeterTav::ObisIsDuedate("1-0:1.8.0*255"));
  EXPECT_TRUE(cMeterTav::ObisIsDuedate("*"));
  EXPECT_FALSE(cMeterTav::ObisIsDuedate("1-0:1.8.0"));
  EXPECT_FALSE(cMeterTav::ObisIsDuedate(""));
}

TEST(MeterTav, HexformWritesTheGroupsAndAlwaysFF) {
  const struct {
    const char* obis;
    int base;
    const char* hex;
  } kCases[] = {
      {"1-0:1.8.0", 10, "0100010800FF"},
      {"1-0:1.8.0*3", 10, "0100010800FF"},  // a suffix is ignored
      {"1-0:1.8.0 and more", 10, "0100010800FF"},
      {"1-0:16.7.0", 10, "0100100700FF"},
      {"1-0:10.7.0", 16, "0100100700FF"},
      {"1-0:F.8.0", 16, "01000F0800FF"},
      {"1-0:010.8.0", 0, "0100080800FF"},    // radix 0: as C writes numbers
      {"1-0:1.256.0", 10, "01000110000FF"},  // no check: more than two digits
      {" 1- 0:+1.8.0", 10, "0100010800FF"},  // blanks and signs as strtol takes them
      {"1-0:1.8.-1", 10, "01000108FFFFFFFFFF"},
      {"-:..", 10, "0000000000FF"},  // an empty group reads as 0
      {"1.8.0", 10, ""},
      {"1-0:1.8", 10, ""},
      {"1-0.1.8.0", 10, ""},
      {"1-0:F.8.0", 10, ""},
      {"", 10, ""},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(cMeterTav::ObisHexform(c.obis, c.base), c.hex) << c.obis << " radix " << c.base;
}

TEST(MeterTav, HexformOfAnUnknownRadixIsEmpty) {
  for (const int base : {-1, 1, 37}) EXPECT_EQ(cMeterTav::ObisHexform("1-0:1.8.0", base), "") << base;
}

TEST(MeterTav, ATextIsItsOwnLongForm) {
  EXPECT_EQ(cMeterTav::ObisLangform(std::string("1-0:1.8.0*255")), "1-0:1.8.0*255");
  EXPECT_EQ(cMeterTav::ObisLangform(std::string("any text")), "any text");
}

TEST(MeterTav, LongFormOfAPackedIdentifierOmitsFOnlyWhenItIs255) {
  EXPECT_EQ(cMeterTav::ObisLangform(0x00000100010800FFull), "1-0:1.8.0");
  EXPECT_EQ(cMeterTav::ObisLangform(0x00008181C78203FFull), "129-129:199.130.3");
  EXPECT_EQ(cMeterTav::ObisLangform(0xABCD0100010800FFull), "1-0:1.8.0") << "the two upper bytes are no group";
}

TEST(MeterTav, LongFormAppendsTheLowWordAndNotTheFGroup) {
  EXPECT_EQ(cMeterTav::ObisLangform(0x0000010001080001ull), "1-0:1.8.0*17301759");
  EXPECT_EQ(cMeterTav::ObisLangform(0x0000010001080063ull), "1-0:1.8.0*17301759");
  EXPECT_EQ(cMeterTav::ObisLangform(0x00000100800800FEull), "1-0:128.8.0*-2146959105") << "signed";
  EXPECT_EQ(cMeterTav::ObisLangform(0ull), "0-0:0.0.0*255");
}

TEST(MeterTav, TheUnitTableHoldsFiveUnits) {
  cMeterTav::ObisUnitInit();
  cMeterTav::ObisUnitInit();
  EXPECT_THAT(tav::_obisUnits,
              ElementsAre(Pair(1u, "a"), Pair(27u, "W"), Pair(30u, "Wh"), Pair(31u, "VAh"), Pair(254u, "other")));
}

TEST(MeterTav, AUnitIsLookedUpAndAnyOtherCodeIsOther) {
  tav::_obisUnits.clear();  // filled on first use
  EXPECT_EQ(cMeterTav::ObisUnit(30), "Wh");
  EXPECT_EQ(cMeterTav::ObisUnit(2), "other");
  EXPECT_EQ(cMeterTav::ObisUnit(255), "other");
  EXPECT_EQ(cMeterTav::ObisUnit(254), "other");
  EXPECT_EQ(cMeterTav::ObisUnit(1), "a");
}

TEST(MeterTav, AUnitAddedByTheProcessIsFound) {
  cMeterTav::ObisUnitInit();
  tav::_obisUnits.Set(2, "mo");
  tav::_obisUnits.Set(30, "kWh");
  EXPECT_EQ(cMeterTav::ObisUnit(2), "mo");
  EXPECT_EQ(cMeterTav::ObisUnit(30), "kWh") << "filled once, not at every look";
  tav::_obisUnits.clear();
}

TEST(MeterTav, TimeSourcesHaveTheirNumbersAndTexts) {
  const struct {
    cMeterTav::eTimeSource source;
    unsigned int number;
    const char* text;
  } kCases[] = {
      {cMeterTav::eTsUnknown, 0, "Unknown"},  {cMeterTav::eTsNetworkTime, 1, "Network Time"},
      {cMeterTav::eTsMeter, 2, "Meter"},      {cMeterTav::eTsMeterUtc, 3, "Meter UTC"},
      {cMeterTav::eTsMeterDs, 4, "Meter DS"}, {cMeterTav::eTsMeterNonDs, 5, "Meter NonDS"},
      {cMeterTav::eTsRtc, 6, "RTC"},          {cMeterTav::eTsUndefined, 7, "Undefined"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(c.source, c.number);
    EXPECT_EQ(cMeterTav::GetTimeSourceText(c.source), c.text);
    EXPECT_EQ(cMeterTav::GetTimeSource(c.text), c.source);
  }
}

TEST(MeterTav, AnyOtherTimeSourceIsUndefined) {
  for (const char* text : {"", "meter", "METER", "Meter ", " Meter", "Meter utc", "Network", "7"})
    EXPECT_EQ(cMeterTav::GetTimeSource(text), cMeterTav::eTsUndefined) << text;
  for (const unsigned int number : {8u, 9u, 255u, 0xFFFFFFFFu})
    EXPECT_EQ(cMeterTav::GetTimeSourceText(static_cast<cMeterTav::eTimeSource>(number)), "Undefined") << number;
}

namespace {

const struct {
  unsigned int byte;
  const char* letter;
  const char* text;
} kMedia[] = {
    {0, "Z", "other"},
    {1, "O", "Oil"},
    {2, "E", "Electricity"},
    {3, "G", "Gas"},
    {4, "h", "Heat return"},
    {5, "S", "Steam"},
    {6, "W", "Warm Water"},
    {7, "w", "Water"},
    {8, "V", "Heat Cost Allocator"},
    {9, "A", "Compressed Air"},
    {10, "c", "Cooling return"},
    {11, "C", "Cooling"},
    {12, "H", "Heat"},
    {15, "U", "undefined"},
    {22, "K", "Cold Water"},
    {24, "P", "Pressure"},
    {27, "R", "Room sensor"},
};

}  // namespace

TEST(MeterTav, MediaHaveTheirBytesLettersAndTexts) {
  for (const auto& medium : kMedia) {
    EXPECT_EQ(cMeterTav::GetMbusMediumText(static_cast<unsigned char>(medium.byte)), medium.letter);
    EXPECT_EQ(cMeterTav::GetMbusMediumValue(medium.letter), medium.byte);
    EXPECT_EQ(cMeterTav::MediumToString(medium.letter), medium.text);
  }
}

TEST(MeterTav, EveryOtherMediumByteIsX) {
  unsigned int others = 0;
  for (unsigned int byte = 0; byte < 256; ++byte) {
    bool known = false;
    for (const auto& medium : kMedia) known = known || medium.byte == byte;
    if (known) continue;
    ++others;
    EXPECT_EQ(cMeterTav::GetMbusMediumText(static_cast<unsigned char>(byte)), "X") << byte;
  }
  EXPECT_EQ(others, 256u - 17u);
}

TEST(MeterTav, TheSystemHasALetterAndATextButNoByte) {
  EXPECT_EQ(cMeterTav::GetMbusMediumValue("Y"), 255u);
  EXPECT_EQ(cMeterTav::MediumToString("Y"), "System");
}

TEST(MeterTav, AnyOtherLetterIsUnknown) {
  for (const char* letter : {"X", "", "e", "EE", "E ", "Electricity", "z", "\xC4"}) {
    EXPECT_EQ(cMeterTav::GetMbusMediumValue(letter), 255u) << letter;
    EXPECT_EQ(cMeterTav::MediumToString(letter), "unknown") << letter;
  }
}

TEST(MeterTav, TheStatusByteIsOkOrAnErrorInTwoDigits) {
  EXPECT_EQ(cMeterTav::GetMbusStatusText(0), "ok");
  EXPECT_EQ(cMeterTav::GetMbusStatusText(0x1A), "error: 1a");
  EXPECT_EQ(cMeterTav::GetMbusStatusText(1), "error: 01");
  EXPECT_EQ(cMeterTav::GetMbusStatusText(0xFF), "error: ff");
}
