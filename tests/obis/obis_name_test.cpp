// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <tav/obis/obis_map.h>
#include <tav/record/meter_tav.h>

using tav::cMeterTav;
using tav::cObisMap;
using tav::cObisMapEntry;

TEST(ObisName, TheMapNamesAnIdentifierWhateverItsChannel) {
  cObisMap map;
  map.Set(cObisMapEntry(1, "Energy", "1-2:1.8.0", ""));
  EXPECT_EQ(cMeterTav::ObisName("1-0:1.8.0", map), "Energy");
  EXPECT_EQ(cMeterTav::ObisName("1-7:1.8.0*255", map), "Energy");
  EXPECT_EQ(cMeterTav::ObisName("1-7:1.8.0*1", map), "unknown");
}

TEST(ObisName, ReservedIdentifiersHaveFixedNames) {
  const cObisMap map;
  EXPECT_EQ(cMeterTav::ObisName("0-0:0.0.0", map), "place holder");
  EXPECT_EQ(cMeterTav::ObisName("0-0:0.0.1", map), "missing key");
  EXPECT_EQ(cMeterTav::ObisName("0-0:0.0.254", map), "unknown WMBUS mapping");
  EXPECT_EQ(cMeterTav::ObisName("0-0:0.0.253", map), "unknown DLMS mapping");
}

TEST(ObisName, AnyOtherIsUnknown) {
  const cObisMap map;
  for (const char* obis : {"", "1-0:1.8.0", "0-0:0.0.2", "0-0:0.0.0*255", "0-1:0.0.0"})
    EXPECT_EQ(cMeterTav::ObisName(obis, map), "unknown") << obis;
}

TEST(ObisName, TheMapComesBeforeTheFixedNames) {
  cObisMap map;
  map.Set(cObisMapEntry(1, "mine", "0-0:0.0.1", ""));
  EXPECT_EQ(cMeterTav::ObisName("0-0:0.0.1", map), "mine");
  EXPECT_EQ(cMeterTav::ObisName("0-0:0.0.0", map), "place holder");
}
