// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/dlms_units.h>

#include <gtest/gtest.h>

#include <string>

#include <tav/record/meter_tav.h>

using namespace tav::sml;

TEST(DlmsUnits, HoldsTheUnitsOfMeters) {
  const struct {
    unsigned int code;
    const char* text;
  } kCases[] = {
      {8, "°"},    {9, "°C"},    {13, "m³"}, {27, "W"}, {28, "VA"}, {29, "var"}, {30, "Wh"},
      {31, "VAh"}, {32, "varh"}, {33, "A"},  {35, "V"}, {44, "Hz"}, {56, "%"},   {255, "count"},
  };
  for (const auto& c : kCases) EXPECT_STREQ(DlmsUnitText(c.code), c.text) << c.code;
}

TEST(DlmsUnits, HasNoTextForReservedCodes) {
  for (const unsigned int code : {0u, 58u, 59u, 68u, 73u, 200u, 253u, 256u})
    EXPECT_EQ(DlmsUnitText(code), nullptr) << code;
}

TEST(DlmsUnits, FillsTheGapsOfTheLibrarysTableOnly) {
  tav::cMeterTav::ObisUnitInit();
  const auto own = tav::_obisUnits;
  AddDlmsUnits();
  for (const auto& [code, text] : own) EXPECT_EQ(tav::cMeterTav::ObisUnit(code), text) << code;
  EXPECT_EQ(tav::cMeterTav::ObisUnit(35), "V");
  EXPECT_EQ(tav::cMeterTav::ObisUnit(255), "count");
  EXPECT_EQ(tav::cMeterTav::ObisUnit(200), "other");
  const auto once = tav::_obisUnits;
  AddDlmsUnits();
  EXPECT_EQ(tav::_obisUnits, once);
}
