// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_vib.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav;
using namespace tav::mbus;

namespace {

constexpr const char* kRefused = "the meter refuses the record";

cVibMeaning Meaning(const std::string& digits) {
  static cMBusVib vib;  // what a block leaves behind must not show in the next
  return vib.Decode(Bytes(digits));
}

// "36e1 per 22 time unsigned maker"; what is as it is by default is left out.
std::string Told(const std::string& digits) {
  const cVibMeaning meaning = Meaning(digits);
  std::string told = std::to_string(meaning.unit) + "e" + std::to_string(meaning.scaler);
  if (meaning.per != 0) told += " per " + HexOf(meaning.per);
  if (meaning.isTime) told += " time";
  if (meaning.isUnsigned) told += " unsigned";
  if (meaning.isMakers) told += " maker";
  return told;
}

std::string Error(const std::string& digits) {
  const char* const error = Meaning(digits).error;
  return error == nullptr ? "" : error;
}

// What the library says of a block's unit and scaler.
std::string Helper(const std::string& digits) {
  cMBusVIBHelper helper;
  const std::vector<std::uint8_t> codes = Bytes(digits);
  helper.VIB = vorn::cData(codes.data(), codes.size());
  helper.GetUnitScaler();
  return std::to_string(helper.unit) + "e" + std::to_string(helper.scaler);
}

// Unit and scaler only.
std::string Scaled(const std::string& digits) {
  const cVibMeaning meaning = Meaning(digits);
  return std::to_string(meaning.unit) + "e" + std::to_string(meaning.scaler);
}

}  // namespace

// ---- the main code

TEST(MBusVib, UnitAndScalerAreThoseOfTheHelper) {
  for (unsigned int vif = 0; vif < 128; ++vif) EXPECT_EQ(Scaled(HexOf(vif)), Helper(HexOf(vif))) << HexOf(vif);
}

TEST(MBusVib, TheCodeBehindFbAndFdIsNoExtension) {
  for (const char* table : {"FB", "FD"})
    for (unsigned int code = 0; code < 128; ++code) {
      const std::string block = table + HexOf(code);
      EXPECT_EQ(Scaled(block), Helper(block)) << block;
      EXPECT_EQ(Meaning(block).per, 0) << block;
      EXPECT_EQ(Error(block), "") << block;
    }
  EXPECT_EQ(Told("FD 74"), "3e0");
  EXPECT_EQ(Told("FB 74"), "8e-3");
  EXPECT_EQ(Told("FD 7D"), "70e0");
  EXPECT_EQ(Told("FD C8 74"), "41e-3");
  EXPECT_EQ(Told("FB 80 7D"), "36e8");
}

TEST(MBusVib, ABlockThatEndsEarlyHasNoUnit) {
  for (const char* block : {"", "7B", "7D", "FB", "FD"}) EXPECT_EQ(Told(block), "70e0") << block;
}

TEST(MBusVib, NothingStaysOfTheBlockBefore) {
  EXPECT_EQ(Told("84 A2 74"), "36e-1 per 22");
  EXPECT_EQ(Told("7B"), "70e0");
  EXPECT_EQ(Error("84 15"), "the meter says: no data available");
  EXPECT_EQ(Error("04"), "");
  EXPECT_EQ(Told("FD 3C"), "70e0");
  EXPECT_EQ(Told(""), "70e0");
}

TEST(MBusVib, KnowsPointsInTime) {
  for (unsigned int code = 0; code < 128; ++code) {
    EXPECT_EQ(Meaning(HexOf(code)).isTime, code == 0x6C || code == 0x6D) << HexOf(code);
    EXPECT_FALSE(Meaning("FB" + HexOf(code)).isTime) << HexOf(code);
    EXPECT_EQ(Meaning("FD" + HexOf(code)).isTime, code == 0x30 || code == 0x70) << HexOf(code);
  }
}

TEST(MBusVib, KnowsWhatHasNoSign) {
  for (unsigned int code = 0; code < 128; ++code) {
    EXPECT_EQ(Meaning(HexOf(code)).isUnsigned, code >= 0x78 && code <= 0x7A) << HexOf(code);
    EXPECT_FALSE(Meaning("FB" + HexOf(code)).isUnsigned) << HexOf(code);
    EXPECT_EQ(Meaning("FD" + HexOf(code)).isUnsigned, (code >= 0x08 && code <= 0x22) || code == 0x60 || code == 0x61)
        << HexOf(code);
  }
}

TEST(MBusVib, TheMakersVifIsItsOwnWithAllBehindIt) {
  EXPECT_EQ(Told("7F"), "71e0 maker");
  EXPECT_EQ(Told("FF A2 F4 95 7D"), "71e0 maker");
  EXPECT_EQ(Error("FF 15"), "");
  EXPECT_EQ(Told("FD 7F"), "70e0");
}

TEST(MBusVib, SaysHowManyBytesSelectAMainCode) {
  EXPECT_EQ(CodeSize({}), 0u);
  for (unsigned int code = 0; code < 256; ++code) {
    const bool isTable = code % 128 == 0x7B || code % 128 == 0x7D;
    EXPECT_EQ(CodeSize(Bytes(HexOf(code))), 1u);
    EXPECT_EQ(CodeSize(Bytes(HexOf(code) + "00 00")), isTable ? 2u : 1u) << HexOf(code);
  }
}

// ---- extensions

TEST(MBusVib, ExtensionsMoveTheScaler) {
  const struct {
    const char* block;
    const char* told;
  } kCases[] = {
      {"93 70", "13e-9"}, {"93 71", "13e-8"}, {"93 72", "13e-7"},       {"93 73", "13e-6"},
      {"93 74", "13e-5"}, {"93 75", "13e-4"}, {"93 76", "13e-3"},       {"93 77", "13e-2"},
      {"93 7D", "13e0"},  {"93 78", "13e-3"}, {"93 FD FD 70", "13e-3"}, {"87 FD 7D", "36e10"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Told(c.block), c.told) << c.block;
  EXPECT_EQ(Told("93" + Repeated("F0", 9) + "70"), "13e-63");
}

TEST(MBusVib, ExtensionsThatSayNothingOfTheValueLeaveIt) {
  for (const char* vife : {"00", "3A", "3B", "3C", "3D", "3E", "3F", "40", "44", "45", "48",
                           "4C", "4D", "68", "69", "6C", "6D", "78", "79", "7A", "7B", "7E"})
    EXPECT_EQ(Told("93" + std::string(vife)), "13e-3") << vife;
}

TEST(MBusVib, AValueMayBeOneForEachOfSomething) {
  for (unsigned int code = 0x20; code <= 0x38; ++code) EXPECT_EQ(Told("93" + HexOf(code)), "13e-3 per " + HexOf(code));
  EXPECT_EQ(Told("93 A2 FD 74"), "13e-2 per 22");
}

TEST(MBusVib, TheTimeOfAnEventIsAPointInTimeWithoutTheUnitOfTheQuantity) {
  for (const char* vife : {"39", "42", "43", "46", "47", "4A", "4B", "4E", "4F", "6A", "6B", "6E", "6F"}) {
    EXPECT_EQ(Told("93" + std::string(vife)), "72e0 time") << vife;
    EXPECT_EQ(Told("FB 81" + std::string(vife)), "72e0 time") << vife;
    EXPECT_EQ(Told("93 A2" + std::string(vife)), "72e0 time") << vife;
  }
}

TEST(MBusVib, DurationsHaveTheirOwnUnit) {
  const unsigned int units[] = {eMBusSecond, eMBusMinute, eMBusHour, eMBusDay};
  for (unsigned int code = 0x50; code <= 0x67; ++code)
    for (const char* main : {"93", "93 FD", "93 A2", "FD C8", "EC"})
      EXPECT_EQ(Told(main + HexOf(code | 0x80) + "00"), std::to_string(units[code % 4]) + "e0") << main << HexOf(code);
}

TEST(MBusVib, CountsHaveNoUnit) {
  for (const char* vife : {"41", "49"})
    for (const char* main : {"93", "93 FD", "93 A2", "EC"})
      EXPECT_EQ(Told(std::string(main) + vife), "72e0") << main << vife;
}

TEST(MBusVib, WhatStandsBehindADurationIsAboutTheDuration) {
  EXPECT_EQ(Told("93 D0 7D"), "6e3");
  EXPECT_EQ(Told("93 F0 D1 77"), "5e1");
  EXPECT_EQ(Told("93 D0 22"), "6e0 per 22");
}

TEST(MBusVib, TheMakersExtensionEndsWhatIsKnown) {
  EXPECT_EQ(Told("93 A2 FF F4 50"), "13e-3 per 22");
  EXPECT_EQ(Told("93 7F"), "13e-3");
  EXPECT_EQ(Error("93 FF 15"), "");
}

TEST(MBusVib, ACodeOfTheSecondTableIsPassedOver) {
  EXPECT_EQ(Told("93 FC 74"), "13e-3");
  EXPECT_EQ(Told("93 FC F4 74"), "13e-5");
  EXPECT_EQ(Told("93 FC FF 74"), "13e-5");
  EXPECT_EQ(Told("93 F4 7C"), "13e-5");
  EXPECT_EQ(Error("93 FC 15"), "");
}

TEST(MBusVib, TheExtensionsOfAPlainTextVifAreRead) {
  EXPECT_EQ(Told("FC 74"), "70e-2");
  EXPECT_EQ(Told("FC A2 7D"), "70e3 per 22");
}

TEST(MBusVib, RecordErrorsSayWhy) {
  EXPECT_EQ(Error("93 00"), "");
  for (unsigned int code = 1; code < 0x20; ++code) {
    std::string expected = code < 0x10 ? kRefused : "the meter says: an error of a reserved kind";
    if (code == 0x15) expected = "the meter says: no data available";
    if (code == 0x16) expected = "the meter says: data overflow";
    if (code == 0x17) expected = "the meter says: data underflow";
    if (code == 0x18) expected = "the meter says: data error";
    if (code == 0x1C) expected = "the meter says: premature end of record";
    EXPECT_EQ(Error("93" + HexOf(code)), expected) << HexOf(code);
    EXPECT_EQ(Error("93 F4" + HexOf(0x80 | code) + "74"), expected) << HexOf(code);
  }
}

TEST(MBusVib, NoErrorDoesNotTakeAnErrorBack) { EXPECT_EQ(Error("93 95 00"), "the meter says: no data available"); }

// ---- unit texts

TEST(MBusVib, UnitTextsTellWhatTheValueIsForEachOf) {
  const char* const texts[] = {"/s",     "/min.",  "/h",     "/d", "/wk",    "/mo",  "/a",  "/revolution", "/pulse",
                               "/pulse", "/pulse", "/pulse", "/l", "/m\xB3", "/kg",  "/K",  "/kWh",        "/GJ",
                               "/kW",    "/(K l)", "/V",     "/A", " s",     " s/V", " s/A"};
  for (unsigned int per = 0; per < 256; ++per) {
    const bool isKnown = per >= 0x20 && per <= 0x38;
    EXPECT_EQ(UnitText(eMBusWattHour, static_cast<std::uint8_t>(per)),
              std::string("Wh") + (isKnown ? texts[per - 0x20] : ""));
  }
}

TEST(MBusVib, UnitTextsAreThoseOfTheHelper) {
  for (unsigned int unit = 0; unit < 80; ++unit) {
    cMBusVIBHelper helper;
    helper.unit = unit;
    EXPECT_EQ(UnitText(unit, 0), helper.GetUnitString());
  }
  EXPECT_EQ(UnitText(eMBusCubicMetre, 0), "m\xB3");
}
