// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_vif_names.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_digits.h>

using namespace tav::mbus;

TEST(MBusVifNames, AreThoseOfTheTableThatTheBlockSelects) {
  const struct {
    const char* codes;
    const char* name;
  } kCases[] = {
      {"00", "Energy"},
      {"0F", "Energy"},
      {"13", "Volume"},
      {"93 3A", "Volume"},
      {"18", "Mass"},
      {"20", "On time"},
      {"24", "Operating time"},
      {"2B", "Power"},
      {"37", "Power"},
      {"3B", "Volume flow"},
      {"4F", "Volume flow"},
      {"53", "Mass flow"},
      {"5A", "Flow temperature"},
      {"5E", "Return temperature"},
      {"62", "Temperature difference"},
      {"66", "External temperature"},
      {"69", "Pressure"},
      {"6C", "Date"},
      {"6D", "Date and time"},
      {"6E", "Units for H.C.A."},
      {"6F", "reserved"},
      {"71", "Averaging duration"},
      {"75", "Actuality duration"},
      {"78", "Fabrication number"},
      {"79", "Enhanced identification"},
      {"7A", "Address"},
      {"7C", "VIF in following string"},
      {"7E", "Any VIF"},
      {"FF 01", "Manufacturer specific"},
      {"FB 00", "Energy"},
      {"FB 03", "Reactive energy"},
      {"FB 05", "Apparent energy"},
      {"FB 15", "Reactive power"},
      {"FB 1A", "Relative humidity"},
      {"FB 2A", "Phase U-U, volt to volt"},
      {"FB 2C", "Frequency"},
      {"FB 37", "Apparent power"},
      {"FB 38", "reserved"},
      {"FB 74", "Cold or warm temperature limit"},
      {"FB 78", "Cumulative maximum of active power"},
      {"FD 08", "Unique message identification"},
      {"FD 0E", "Metrology firmware version"},
      {"FD 17", "Error flags"},
      {"FD 3A", "Dimensionless"},
      {"FD C9 FF 01", "Voltage"},
      {"FD 59", "Current"},
      {"FD 61", "Cumulation counter"},
      {"FD 74", "Remaining battery life time"},
      {"FD 7F", "reserved"},
      {"FD", "Extension of VIF codes, table FD"},
      {"FB", "Extension of VIF codes, table FB"},
  };
  for (const auto& c : kCases) {
    const std::string codes = FromHex(c.codes);
    EXPECT_STREQ(VifName(View(codes)), c.name) << c.codes;
  }
  EXPECT_EQ(VifName({}), nullptr);
}

TEST(MBusVifNames, TellWhatACombinableCodeAdds) {
  const struct {
    int code;
    const char* name;
  } kCases[] = {
      {0x00, "no error"},
      {0x15, "error: no data available"},
      {0x1C, "error: premature end of record"},
      {0x20, "per second"},
      {0xA8, "increment per input pulse"},
      {0x38, "multiplied by seconds per ampere"},
      {0x39, "start date and time of"},
      {0x40, "lower limit value"},
      {0x4E, "begin of the last time above the upper limit"},
      {0x5B, "duration of the first time above the upper limit"},
      {0x6F, "end of the last"},
      {0x74, "multiplicative correction by a power of ten"},
      {0x7B, "additive correction constant"},
      {0x7D, "multiplicative correction by 1000"},
      {0xFF, "manufacturer specific from here on"},
  };
  for (const auto& c : kCases) EXPECT_STREQ(VifeName(static_cast<std::uint8_t>(c.code)), c.name);
  EXPECT_STREQ(SecondVifeName(0x01), "at phase L1");
  EXPECT_STREQ(SecondVifeName(0x8C), "delta between import and export");
  EXPECT_STREQ(SecondVifeName(0x7F), "reserved");
}

TEST(MBusVifNames, AreThereForEveryCode) {
  for (unsigned int code = 0; code < 256; ++code) {
    const auto byte = static_cast<std::uint8_t>(code);
    for (const std::uint8_t first : {std::uint8_t{0xFB}, std::uint8_t{0xFD}, byte}) {
      const std::uint8_t codes[] = {first, byte};
      EXPECT_NE(VifName(codes), nullptr);
    }
    EXPECT_NE(VifeName(byte), nullptr);
    EXPECT_NE(SecondVifeName(byte), nullptr);
  }
}
