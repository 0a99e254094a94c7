// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/mbus_vib_helper.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <tav/framework/helper.h>
#include <tests/support/allocations.h>

using tav::cMBusVIBHelper;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// ---- what the codes 00 to 7F give, eight a line: unit "e" scaler; no unit where it stays, "-" where both do

// clang-format off
// By the VIF alone; FB and FD need the byte behind them.
constexpr const char* kPrimary = R"(
  00: 36e-3 36e-2 36e-1 36e0  36e1  36e2  36e3  36e4
  08: 31e0  31e1  31e2  31e3  31e4  31e5  31e6  31e7
  10: 13e-6 13e-5 13e-4 13e-3 13e-2 13e-1 13e0  13e1
  18: 26e-3 26e-2 26e-1 26e0  26e1  26e2  26e3  26e4
  20: 6e0   5e0   4e0   3e0   6e0   5e0   4e0   3e0
  28: 33e-3 33e-2 33e-1 33e0  33e1  33e2  33e3  33e4
  30: 32e0  32e1  32e2  32e3  32e4  32e5  32e6  32e7
  38: 17e-6 17e-5 17e-4 17e-3 17e-2 17e-1 17e0  17e1
  40: 19e-7 19e-6 19e-5 19e-4 19e-3 19e-2 19e-1 19e0
  48: 20e-9 20e-8 20e-7 20e-6 20e-5 20e-4 20e-3 20e-2
  50: 57e-3 57e-2 57e-1 57e0  57e1  57e2  57e3  57e4
  58: 8e-3  8e-2  8e-1  8e0   8e-3  8e-2  8e-1  8e0
  60: 59e-3 59e-2 59e-1 59e0  8e-3  8e-2  8e-1  8e0
  68: 30e-3 30e-2 30e-1 30e0  72e0  72e0  70e0  70e0
  70: 6e0   5e0   4e0   3e0   6e0   5e0   4e0   3e0
  78: 70e0  70e0  70e0  -     70e0  -     70e0  71e0
)";

// By the byte behind FB.
constexpr const char* kFB = R"(
  00: 36e5  36e6  38e3  38e4  70e0  70e0  70e0  70e0
  08: 31e8  31e9  70e0  70e0  70e0  70e0  70e0  70e0
  10: 13e2  13e3  70e0  70e0  70e0  70e0  70e0  70e0
  18: 26e5  26e6  70e0  70e0  70e0  70e0  70e0  70e0
  20: 70e0  14e-1 15e-1 15e0  23e-3 23e0  24e0  70e0
  28: 33e5  33e6  70e0  70e0  70e0  70e0  70e0  70e0
  30: 32e8  32e9  70e0  70e0  70e0  70e0  70e0  70e0
  38: 70e0  70e0  70e0  70e0  70e0  70e0  70e0  70e0
  40: 70e0  70e0  70e0  70e0  70e0  70e0  70e0  70e0
  48: 70e0  70e0  70e0  70e0  70e0  70e0  70e0  70e0
  50: 70e0  70e0  70e0  70e0  70e0  70e0  70e0  70e0
  58: 9e-3  9e-2  9e-1  9e0   9e-3  9e-2  9e-1  9e0
  60: 9e-3  9e-2  9e-1  9e0   9e-3  9e-2  9e-1  9e0
  68: 70e0  70e0  70e0  70e0  70e0  70e0  70e0  70e0
  70: 9e-3  9e-2  9e-1  9e0   8e-3  8e-2  8e-1  8e0
  78: 72e0  72e0  72e0  72e0  72e0  72e0  72e0  72e0
)";

// By the byte behind FD.
constexpr const char* kFD = R"(
  00: 10e-3  10e-2  10e-1  10e0   10e-3  10e-2  10e-1  10e0
  08: 72e0   70e0   70e0   70e0   70e0   70e0   70e0   70e0
  10: 70e0   70e0   70e0   70e0   70e0   70e0   70e0   70e0
  18: 70e0   70e0   70e0   70e0   70e0   72e0   70e0   70e0
  20: 72e0   72e0   72e0   70e0   6e0    5e0    4e0    3e0
  28: 1e0    0e0    70e0   6e0    6e0    5e0    4e0    3e0
  30: e0     5e0    4e0    3e0    6e0    5e0    4e0    3e0
  38: 1e0    0e0    70e0   70e0   -      -      -      -
  40: 41e-9  41e-8  41e-7  41e-6  41e-5  41e-4  41e-3  41e-2
  48: 41e-1  41e0   41e1   41e2   41e3   41e4   41e5   41e6
  50: 39e-12 39e-11 39e-10 39e-9  39e-8  39e-7  39e-6  39e-5
  58: 39e-4  39e-3  39e-2  39e-1  39e0   39e1   39e2   39e3
  60: 72e0   72e0   70e0   3e0    2e0    70e0   70e0   70e0
  68: 4e0    3e0    1e0    0e0    4e0    3e0    1e0    0e0
  70: 70e0   70e0   70e0   70e0   3e0    72e0   -      -
  78: -      -      -      -      -      -      -      -
)";

// Of one VIFE: the extensions in their order, and what is added to the scaler.
constexpr const char* kVife = R"(
  00: 64       64       64       64       64       64       64       64
  08: 64       64       64       64       64       64       64       64
  10: 64       64       64       64       64       64       64       64
  18: 64       64       64       64       64       64       64       64
  20: 0        1        2        3        4        5        6        7
  28: 8        9        10       11       12       13       14       15
  30: 16       17       18       19       20       21       22       23
  38: 24       25       26       27       28       29       64       64
  40: 31       33       34       38       64       64       40       36
  48: 30       32       35       39       64       64       37       41
  50: 42+64    42+64    42+64    42+64    44+64    44+64    44+64    44+64
  58: 43+64    43+64    43+64    43+64    45+64    45+64    45+64    45+64
  60: 46+64    46+64    46+64    46+64    47+64    47+64    47+64    47+64
  68: 48       50       52       55       49       51       54       53
  70: 56+64e-6 56+64e-5 56+64e-4 56+64e-3 56+64e-2 56+64e-1 56+64    56+64e1
  78: 60       59       58       57       64       61e3     62       63
)";
// clang-format on

// The texts of the units from 0 on.
constexpr const char* kTexts =
    "a|mo|wk|d|h|min.|s|\xB0|\xB0\x43|F|currency|m|m/s|m\xB3|feet\xB3|USgallon|m\xB3|m\xB3/h|m\xB3/h|m\xB3/min|m\xB3/s|"
    "m\xB3/d|m\xB3/d|USgallon/min|USgallon/h|l|kg|N|Nm|Pa|bar|J|J/h|W|VA|var|Wh|VAh|varh|A|C|V|V/m|F|Ohm|Ohm m\xB2/m|"
    "Wb|T|A/m|H|Hz|1/(Wh)|1/(varh)|1/(VAh)|V\xB2h|A\xB2h|kg/s|kg/h|S|K|1/(V\xB2h)|1/(A\xB2h)|1/m\xB3|%|Ah|Wh/m\xB3|"
    "J/m\xB3|Mol %|g/m\xB3|Pa s|||";

constexpr unsigned int kPresetUnit = 999;
constexpr int kPresetScaler = 77;

// A table's cells by their codes.
std::vector<std::string> Cells(const char* table) {
  std::vector<std::string> cells;
  std::istringstream words(table);
  for (std::string word; words >> word;)
    if (word.back() != ':') cells.push_back(word);
  return cells;
}

vorn::cData Block(const std::string& hex) {
  vorn::cData block;
  EXPECT_TRUE(vorn::cData::FromHex(hex, block)) << hex;
  return block;
}

std::string Hex(unsigned int byte) {
  const auto value = static_cast<unsigned char>(byte);
  return vorn::cData(&value, 1).ToString(0);
}

cMBusVIBHelper Preset(const std::string& hex) {
  cMBusVIBHelper helper;
  helper.VIB = Block(hex);
  helper.unit = kPresetUnit;
  helper.scaler = kPresetScaler;
  return helper;
}

using Decode = void (cMBusVIBHelper::*)();

// Unit and scaler as a cell tells them.
std::string UnitAndScaler(const std::string& hex, Decode decode = &cMBusVIBHelper::GetUnitScaler) {
  cMBusVIBHelper helper = Preset(hex);
  (helper.*decode)();
  EXPECT_THAT(helper.extensions, IsEmpty()) << hex;
  if (helper.unit == kPresetUnit && helper.scaler == kPresetScaler) return "-";
  return (helper.unit == kPresetUnit ? "" : std::to_string(helper.unit)) + "e" + std::to_string(helper.scaler);
}

// The extensions of a block, and what was added to the scaler, as a cell tells them.
std::string Extensions(const std::string& hex) {
  cMBusVIBHelper helper = Preset(hex);
  helper.GetUnitScalerExtension();
  EXPECT_EQ(helper.unit, kPresetUnit) << hex;
  std::string all;
  for (const unsigned int extension : helper.extensions) all += (all.empty() ? "" : "+") + std::to_string(extension);
  const int added = helper.scaler - kPresetScaler;
  return all + (added == 0 ? "" : "e" + std::to_string(added));
}

std::string Text(unsigned int unit) {
  cMBusVIBHelper helper;
  helper.unit = unit;
  return helper.GetUnitString();
}

}  // namespace

TEST(MBusVibHelper, StartsWithoutUnitAndScaler) {
  const cMBusVIBHelper helper;
  EXPECT_TRUE(helper.VIB.IsEmpty());
  EXPECT_EQ(helper.unit, 70u);
  EXPECT_EQ(helper.scaler, 0);
  EXPECT_THAT(helper.extensions, IsEmpty());
}

// ---- unit and scaler

TEST(MBusVibHelper, ReadsEveryVifWithAndWithoutItsExtensionBit) {
  const std::vector<std::string> cells = Cells(kPrimary);
  ASSERT_EQ(cells.size(), 128u);
  for (unsigned int vif = 0; vif < 256; ++vif) EXPECT_EQ(UnitAndScaler(Hex(vif)), cells[vif % 128]) << Hex(vif);
}

TEST(MBusVibHelper, LooksAtNothingBehindAPrimaryVif) {
  const std::vector<std::string> cells = Cells(kPrimary);
  for (unsigned int vif = 0; vif < 256; ++vif)
    if (cells[vif % 128] != "-") {
      EXPECT_EQ(UnitAndScaler(Hex(vif) + "74 7D"), cells[vif % 128]) << Hex(vif);
    }
}

TEST(MBusVibHelper, ReadsEveryByteBehindFB) {
  const std::vector<std::string> cells = Cells(kFB);
  ASSERT_EQ(cells.size(), 128u);
  for (unsigned int byte = 0; byte < 256; ++byte)
    for (const char* first : {"FB", "7B"}) EXPECT_EQ(UnitAndScaler(first + Hex(byte)), cells[byte % 128]) << Hex(byte);
}

TEST(MBusVibHelper, ReadsEveryByteBehindFD) {
  const std::vector<std::string> cells = Cells(kFD);
  ASSERT_EQ(cells.size(), 128u);
  for (unsigned int byte = 0; byte < 256; ++byte)
    for (const char* first : {"FD", "7D"}) EXPECT_EQ(UnitAndScaler(first + Hex(byte)), cells[byte % 128]) << Hex(byte);
}

TEST(MBusVibHelper, TheTablesOfFBAndFDDoNotAskForTheFirstByte) {
  const std::vector<std::string> ofFB = Cells(kFB);
  const std::vector<std::string> ofFD = Cells(kFD);
  for (unsigned int byte = 0; byte < 256; ++byte)
    for (const char* first : {"04", "FB", "FD"}) {
      EXPECT_EQ(UnitAndScaler(first + Hex(byte), &cMBusVIBHelper::GetUnitScalerFromFBVif), ofFB[byte % 128]);
      EXPECT_EQ(UnitAndScaler(first + Hex(byte), &cMBusVIBHelper::GetUnitScalerFromFDVif), ofFD[byte % 128]);
    }
}

TEST(MBusVibHelper, FurtherBytesBehindFBAndFDDoNotMatter) {
  EXPECT_EQ(UnitAndScaler("FD C8 74"), "41e-1");
  EXPECT_EQ(UnitAndScaler("FB 80 7D"), "36e5");
}

TEST(MBusVibHelper, ReadsWhatMetersSend) {
  EXPECT_EQ(UnitAndScaler("04"), "36e1");
  EXPECT_EQ(UnitAndScaler("13"), "13e-3");
  EXPECT_EQ(UnitAndScaler("84 70"), "36e1");
  EXPECT_EQ(UnitAndScaler("FD 48"), "41e-1");
}

TEST(MBusVibHelper, AnEmptyOrCutBlockChangesNothing) {
  for (const char* block : {"", "7B", "FB", "7D", "FD"}) EXPECT_EQ(UnitAndScaler(block), "-") << block;
  for (const char* block : {"", "04", "FB", "FD"}) {
    EXPECT_EQ(UnitAndScaler(block, &cMBusVIBHelper::GetUnitScalerFromFBVif), "-") << block;
    EXPECT_EQ(UnitAndScaler(block, &cMBusVIBHelper::GetUnitScalerFromFDVif), "-") << block;
  }
}

// ---- readings that installations' rules rely on

TEST(MBusVibHelper, ACountOfMaximumPowerIsACountOrTimePointWithoutItsScaler) {
  for (const char* block : {"FB 78", "FB 7A", "FB 7F", "7B FA"}) EXPECT_EQ(UnitAndScaler(block), "72e0") << block;
}

TEST(MBusVibHelper, ThePeriodOfTransmissionsLeavesWhatTheCallerKnows) {
  for (const char* block : {"FD 3C", "FD 3D", "FD 3E", "FD BF"}) EXPECT_EQ(UnitAndScaler(block), "-") << block;
}

TEST(MBusVibHelper, TheStartOfATariffKeepsTheCallersUnitButNotItsScaler) { EXPECT_EQ(UnitAndScaler("FD 30"), "e0"); }

TEST(MBusVibHelper, CaloriesApparentValuesAndFrequenciesBehindFBHaveNoUnit) {
  for (const char* block : {"FB 04", "FB 0C", "FB 14", "FB 1A", "FB 20", "FB 2A", "FB 2C", "FB 34"})
    EXPECT_EQ(UnitAndScaler(block), "70e0") << block;
}

// ---- extensions

TEST(MBusVibHelper, ReadsEveryVifeWithAndWithoutItsExtensionBit) {
  const std::vector<std::string> cells = Cells(kVife);
  ASSERT_EQ(cells.size(), 128u);
  for (unsigned int vife = 0; vife < 256; ++vife)
    EXPECT_EQ(Extensions("84" + Hex(vife)), cells[vife % 128]) << Hex(vife);
}

TEST(MBusVibHelper, ABlockWithoutVifeHasNoExtensions) {
  for (const char* block : {"", "04", "84", "7D", "74"}) EXPECT_EQ(Extensions(block), "") << block;
}

TEST(MBusVibHelper, ExtensionsComeInTheOrderOfTheBytes) {
  EXPECT_EQ(Extensions("84 C8 FD A0 00"), "30+61+0+64e3");
  EXPECT_EQ(Extensions("84 F0 D1 7F"), "56+64+42+64+63e-6");
}

TEST(MBusVibHelper, ScalersOfSeveralVifesAddUp) { EXPECT_EQ(Extensions("84 FD FD F4 77"), "61+61+56+64+56+64e5"); }

TEST(MBusVibHelper, TheByteBehindFBAndFDIsReadAsAVifeToo) {
  EXPECT_EQ(Extensions("FD 48"), "30");
  EXPECT_EQ(Extensions("FD F0 20"), "56+64+0e-6");
  EXPECT_EQ(Extensions("FB 00"), "64");
}

TEST(MBusVibHelper, ScalerAndExtensionsOfOneBlockJoin) {
  cMBusVIBHelper helper = Preset("84 70");
  helper.GetUnitScaler();
  helper.GetUnitScalerExtension();
  EXPECT_EQ(helper.unit, 36u);
  EXPECT_EQ(helper.scaler, -5);
  EXPECT_THAT(helper.extensions, ElementsAre(tav::eVifeScalerCorrection, tav::eVifeNotRecognised));
}

TEST(MBusVibHelper, APresetScalerStopsAtTheEndsOfANumber) {
  const struct {
    int preset;
    const char* block;
    int scaler;
  } kCases[] = {
      {INT_MAX, "84 7D", INT_MAX},         {INT_MAX - 2, "84 7D", INT_MAX},    {INT_MAX - 3, "84 7D", INT_MAX},
      {INT_MAX - 4, "84 7D", INT_MAX - 1}, {INT_MAX, "84 FD 70", INT_MAX - 6}, {INT_MIN, "84 70", INT_MIN},
      {INT_MIN + 5, "84 70", INT_MIN},     {INT_MIN + 6, "84 70", INT_MIN},    {INT_MIN + 7, "84 70", INT_MIN + 1},
  };
  for (const auto& c : kCases) {
    cMBusVIBHelper helper = Preset(c.block);
    helper.scaler = c.preset;
    helper.GetUnitScalerExtension();
    EXPECT_EQ(helper.scaler, c.scaler) << c.preset << " " << c.block;
  }
}

TEST(MBusVibHelper, RepeatedCallsAccumulate) {
  cMBusVIBHelper helper = Preset("84 7D");
  helper.GetUnitScalerExtension();
  helper.GetUnitScalerExtension();
  helper.VIB = Block("84 20");
  helper.GetUnitScaler();
  helper.GetUnitScalerExtension();
  EXPECT_THAT(helper.extensions, ElementsAre(61u, 61u, 0u));
  EXPECT_EQ(helper.scaler, 1);
}

TEST(MBusVibHelper, AVeryLongBlockIsReadToItsEnd) {
  cMBusVIBHelper helper;
  helper.VIB = vorn::cData(std::string(100001, '\x7E'));
  helper.GetUnitScalerExtension();
  EXPECT_EQ(helper.extensions.size(), 100000u);
}

TEST(MBusVibHelper, DecodesWithoutAllocatingOnceTheExtensionsHaveRoom) {
  cMBusVIBHelper helper = Preset("FD C8 F0 50");
  helper.GetUnitScalerExtension();
  helper.extensions.clear();
  const cAllocations allocations;
  helper.GetUnitScaler();
  helper.GetUnitScalerExtension();
  EXPECT_EQ(allocations.Get(), 0u);
  EXPECT_EQ(helper.extensions.size(), 5u);
}

// ---- unit texts

TEST(MBusVibHelper, EveryUnitHasItsText) {
  const std::vector<std::string> texts = vorn::cHelper::Split(kTexts, "|");
  ASSERT_EQ(texts.size(), 73u);
  for (unsigned int unit = 0; unit < texts.size(); ++unit) EXPECT_EQ(Text(unit), texts[unit]) << unit;
}

TEST(MBusVibHelper, WhatIsNoUnitHasNoText) {
  for (const unsigned int unit : {70u, 71u, 72u, 73u, 200u, std::numeric_limits<unsigned int>::max()})
    EXPECT_EQ(Text(unit), "") << unit;
}

TEST(MBusVibHelper, FahrenheitAndFaradShareATextAsCorrectedVolumesDo) {
  EXPECT_EQ(Text(tav::eMBusFahrenheit), "F");
  EXPECT_EQ(Text(tav::eMBusFarad), "F");
  EXPECT_EQ(Text(tav::eMBusCorrectedCubicMetre), Text(tav::eMBusCubicMetre));
  EXPECT_EQ(Text(tav::eMBusCorrectedCubicMetrePerHour), Text(tav::eMBusCubicMetrePerHour));
  EXPECT_EQ(Text(tav::eMBusCorrectedCubicMetrePerDay), Text(tav::eMBusCubicMetrePerDay));
}
