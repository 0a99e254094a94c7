// SPDX-License-Identifier: Apache-2.0
// What the listing says of single values and offsets; whole listings are the matter of sml_explain_test.cpp.
#include <gateway/driver/sml/sml_listing.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sml_telegrams.h"

using namespace tav::sml;

TEST(SmlListing, WritesValuesAsTheMeterMeansThem) {
  cSmlValue value;
  EXPECT_EQ(ValueText(value, -1), "");
  value.type = eSmlUInt;
  value.bits = 5;
  EXPECT_EQ(ValueText(value, -1), "0.5");
  value.type = eSmlBool;
  EXPECT_EQ(ValueText(value, -1), "true");
  const std::string bytes = Bytes("0A01");
  value.type = eSmlOctets;
  value.octets = View(bytes);
  EXPECT_EQ(ValueText(value, -1), "hex:0A01");
  value.octets = {};
  EXPECT_EQ(ValueText(value, 0), "hex:");
}

TEST(SmlListing, NamesAMeterByTextOnlyWhenAllOfItIsPrintable) {
  const struct {
    const char* bytes;
    const char* meter;
  } kCases[] = {
      {"31454D4820", "1EMH "}, {"7E20", "~ "}, {"317F", "317F"}, {"0A01454D48", "0A01454D48"}, {"31C3A4", "31C3A4"}};
  for (const auto& c : kCases) {
    const std::string bytes = Bytes(c.bytes);
    EXPECT_EQ(MeterText(View(bytes)), c.meter);
  }
  EXPECT_EQ(MeterText({}), "");
}

TEST(SmlListing, KnowsWhereAByteOfThePayloadIsInTheCapture) {
  const std::string payload = Bytes("01 1B1B1B1B 02 1B1B1B1B1B1B1B1B 03");
  const std::string raw = WriteSmlFrame(payload);
  cSmlFrame frame;
  frame.offset = 100;
  frame.payload = View(payload);
  frame.escapes = 3;
  const cObisNamer nobody;
  cSmlListing listing(nobody);
  listing.BeginFrame(frame, View(raw));
  for (const std::uint32_t at : {0u, 5u, 14u}) EXPECT_EQ(raw[listing.OffsetOf(at) - 100], payload[at]) << at;
}
