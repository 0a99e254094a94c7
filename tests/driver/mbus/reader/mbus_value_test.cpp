// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_value.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav::mbus;

namespace {

constexpr const char* kNone = "the number that says: none";
constexpr const char* kErrorDigit = "BCD with an error digit";

// "-5", "13421773*2^-27", "text", "octets", "nothing"; or why it is no value.
std::string Told(unsigned int field, unsigned int length, const std::string& digits, bool isUnsigned = false) {
  const std::vector<std::uint8_t> data = Bytes(digits);
  cMBusValue value;
  value.negative = true;
  value.magnitude = 99;
  value.power = 9;
  const char* const mark =
      ReadValue(static_cast<std::uint8_t>(field), static_cast<std::uint8_t>(length), data, isUnsigned, value);
  if (mark != nullptr) {
    EXPECT_EQ(value.kind, eValueOctets);
    EXPECT_FALSE(value.negative);
    return mark;
  }
  const std::string sign = value.negative ? "-" : "";
  switch (value.kind) {
    case eValueNone:
      return "nothing";
    case eValueNumber:
      EXPECT_EQ(value.power, 0);
      return sign + std::to_string(value.magnitude);
    case eValueReal:
      return sign + std::to_string(value.magnitude) + "*2^" + std::to_string(value.power);
    case eValueText:
      return "text";
    default:
      return value.kind == eValueOctets ? "octets" : "a time";
  }
}

struct cCase {
  unsigned int field;
  const char* data;
  const char* told;
};

}  // namespace

// ---- sizes

TEST(MBusValue, EveryDataFieldHasItsSize) {
  const std::size_t bytes[] = {0, 1, 2, 3, 4, 4, 6, 8, 0, 1, 2, 3, 4, 0, 6, 0};
  for (std::uint8_t field = 0; field < 16; ++field) {
    if (field == eFieldVariable) continue;
    for (const std::uint8_t length : Bytes("00 05 FF")) {
      const cMBusDataSize size = DataSize(field, length);
      EXPECT_EQ(size.bytes, bytes[field]);
      EXPECT_EQ(size.lengthBytes, 0u);
      EXPECT_TRUE(size.known);
    }
  }
}

TEST(MBusValue, EveryVariableLengthHasItsSizeOrIsReserved) {
  for (unsigned int length = 0; length < 256; ++length) {
    const cMBusDataSize size = DataSize(eFieldVariable, static_cast<std::uint8_t>(length));
    const bool isReserved = (length >= 0xCA && length < 0xD0) || (length >= 0xDA && length < 0xE0) || length > 0xF6;
    EXPECT_EQ(size.known, !isReserved) << length;
    EXPECT_EQ(size.lengthBytes, 1u) << length;
    std::size_t expected = length & 0x0F;
    if (length < 0xC0) expected = length;
    if (length >= 0xF0) expected = 4 * (length - 0xEC);
    if (length == 0xF5) expected = 48;
    if (length == 0xF6) expected = 64;
    if (isReserved) expected = 0;
    EXPECT_EQ(size.bytes, expected) << length;
  }
}

// ---- whole numbers

TEST(MBusValue, ReadsWholeNumbersOfEverySize) {
  const cCase kCases[] = {
      {1, "00", "0"},
      {1, "05", "5"},
      {1, "7F", "127"},
      {1, "FF", "-1"},
      {1, "81", "-127"},
      {1, "80", kNone},
      {2, "34 12", "4660"},
      {2, "FF 7F", "32767"},
      {2, "FE FF", "-2"},
      {2, "01 80", "-32767"},
      {2, "00 80", kNone},
      {2, "80 00", "128"},
      {3, "56 34 12", "1193046"},
      {3, "FF FF 7F", "8388607"},
      {3, "FF FF FF", "-1"},
      {3, "01 00 80", "-8388607"},
      {3, "00 00 80", kNone},
      {4, "78 56 34 12", "305419896"},
      {4, "FF FF FF 7F", "2147483647"},
      {4, "F6 FF FF FF", "-10"},
      {4, "01 00 00 80", "-2147483647"},
      {4, "00 00 00 80", kNone},
      {6, "BC 9A 78 56 34 12", "20015998343868"},
      {6, "FF FF FF FF FF 7F", "140737488355327"},
      {6, "FF FF FF FF FF FF", "-1"},
      {6, "01 00 00 00 00 80", "-140737488355327"},
      {6, "00 00 00 00 00 80", kNone},
      {7, "F0 DE BC 9A 78 56 34 12", "1311768467463790320"},
      {7, "FF FF FF FF FF FF FF 7F", "9223372036854775807"},
      {7, "FF FF FF FF FF FF FF FF", "-1"},
      {7, "01 00 00 00 00 00 00 80", "-9223372036854775807"},
      {7, "00 00 00 00 00 00 00 80", kNone},
  };
  for (const cCase& c : kCases) EXPECT_EQ(Told(c.field, 0, c.data), c.told) << c.field << ": " << c.data;
}

TEST(MBusValue, ANumberWithoutASignHasAllItsBits) {
  const cCase kCases[] = {
      {1, "80", "128"},
      {1, "FF", "255"},
      {2, "00 80", "32768"},
      {3, "FF FF FF", "16777215"},
      {4, "FF FF FF FF", "4294967295"},
      {6, "00 00 00 00 00 80", "140737488355328"},
      {7, "FF FF FF FF FF FF FF FF", "18446744073709551615"},
  };
  for (const cCase& c : kCases) EXPECT_EQ(Told(c.field, 0, c.data, true), c.told) << c.field << ": " << c.data;
}

// ---- BCD

TEST(MBusValue, ReadsBcdOfEverySize) {
  const cCase kCases[] = {
      {0x9, "00", "0"},
      {0x9, "99", "99"},
      {0x9, "F5", "-5"},
      {0xA, "34 12", "1234"},
      {0xA, "34 F2", "-234"},
      {0xB, "56 34 12", "123456"},
      {0xB, "56 34 F2", "-23456"},
      {0xC, "78 56 34 12", "12345678"},
      {0xC, "99 99 99 F9", "-9999999"},
      {0xE, "12 90 78 56 34 12", "123456789012"},
      {0xE, "12 90 78 56 34 F2", "-23456789012"},
  };
  for (const cCase& c : kCases) {
    EXPECT_EQ(Told(c.field, 0, c.data), c.told) << c.data;
    EXPECT_EQ(Told(c.field, 0, c.data, true), c.told) << c.data;
  }
}

TEST(MBusValue, MinusZeroIsZero) {
  EXPECT_EQ(Told(0x9, 0, "F0"), "0");
  EXPECT_EQ(Told(0xC, 0, "00 00 00 F0"), "0");
  EXPECT_EQ(Told(0xD, 0xD2, "00 00"), "0");
  EXPECT_EQ(Told(0x5, 0, "00 00 00 80"), "0*2^-149");
}

TEST(MBusValue, AnyOtherDigitOfBcdIsAnError) {
  for (const auto& [field, size] : {std::pair{0x9u, 1u}, {0xAu, 2u}, {0xBu, 3u}, {0xCu, 4u}, {0xEu, 6u}})
    for (unsigned int place = 0; place < 2 * size; ++place)
      for (unsigned int digit = 0xA; digit <= 0xF; ++digit) {
        std::string digits(2 * size, '1');
        digits[place] = "0123456789ABCDEF"[digit];
        const bool isSign = place == 2 * size - 2 && digit == 0xF;
        const std::string ones(2 * size - 1, '1');
        EXPECT_EQ(Told(field, 0, digits), isSign ? "-" + ones : kErrorDigit) << digits;
      }
}

TEST(MBusValue, ReadsBcdOfVariableLength) {
  const struct {
    unsigned int length;
    const char* data;
    const char* told;
  } kCases[] = {
      {0xC1, "42", "42"},
      {0xC1, "F2", "-2"},
      {0xC3, "56 34 12", "123456"},
      {0xC9, "99 99 99 99 99 99 99 99 99", "999999999999999999"},
      {0xC9, "00 00 00 00 00 00 00 00 F1", "-10000000000000000"},
      {0xC2, "0A 00", kErrorDigit},
      {0xC2, "F0 00", kErrorDigit},
      {0xD1, "42", "-42"},
      {0xD9, "99 99 99 99 99 99 99 99 99", "-999999999999999999"},
      {0xD1, "F2", kErrorDigit},
      {0xD2, "00 A0", kErrorDigit},
  };
  for (const auto& c : kCases) EXPECT_EQ(Told(0xD, c.length, c.data), c.told) << HexOf(c.length) << " " << c.data;
}

// ---- real numbers

TEST(MBusValue, ReadsRealNumbersWithoutRounding) {
  const cCase kCases[] = {
      {5, "CD CC CC 3D", "13421773*2^-27"},                                   // 0.1
      {5, "00 00 80 3F", "8388608*2^-23"},                                    // 1
      {5, "DB 0F 49 C0", "-13176795*2^-22"}, {5, "01 00 00 00", "1*2^-149"},  // the smallest
      {5, "01 00 00 80", "-1*2^-149"},       {5, "FF FF 7F 00", "8388607*2^-149"},
      {5, "00 00 80 00", "8388608*2^-149"},  {5, "FF FF 7F 7F", "16777215*2^104"},  // the largest
      {5, "FF FF 7F FF", "-16777215*2^104"}, {5, "00 00 00 00", "0*2^-149"},
  };
  for (const cCase& c : kCases) EXPECT_EQ(Told(c.field, 0, c.data), c.told) << c.data;
}

TEST(MBusValue, InfinitiesAndNoNumbersAreNoValues) {
  for (const char* data : {"00 00 80 7F", "00 00 80 FF", "00 00 C0 7F", "01 00 80 7F", "FF FF FF FF"})
    EXPECT_EQ(Told(5, 0, data), "a real number that is none") << data;
}

// ---- texts, octets, nothing

TEST(MBusValue, TextsAreOfIso8859AndHaveNoControlCharacters) {
  for (unsigned int byte = 0; byte < 256; ++byte) {
    const bool isGood = (byte >= 0x20 && byte <= 0x7E) || byte >= 0xA0;
    EXPECT_EQ(IsPrintable(static_cast<std::uint8_t>(byte)), isGood);
    for (const std::string& text : {"41" + HexOf(byte), HexOf(byte) + "41"})
      EXPECT_EQ(Told(0xD, 2, text), isGood ? "text" : "a text with characters that are none") << text;
  }
  EXPECT_EQ(Told(0xD, 0, ""), "text");
  EXPECT_EQ(Told(0xD, 0xBF, Repeated("41", 0xBF)), "text");
}

TEST(MBusValue, VariableBinaryNumbersOfUpToEightBytesAreNumbers) {
  EXPECT_EQ(Told(0xD, 0xE1, "FF"), "-1");
  EXPECT_EQ(Told(0xD, 0xE1, "FF", true), "255");
  EXPECT_EQ(Told(0xD, 0xE1, "80"), kNone);
  EXPECT_EQ(Told(0xD, 0xE5, "01 00 00 00 80"), "-549755813887");
  EXPECT_EQ(Told(0xD, 0xE7, "FF FF FF FF FF FF 7F"), "36028797018963967");
  EXPECT_EQ(Told(0xD, 0xE8, "FF FF FF FF FF FF FF 7F"), "9223372036854775807");
  EXPECT_EQ(Told(0xD, 0xE8, "00 00 00 00 00 00 00 80"), kNone);
  EXPECT_EQ(Told(0xD, 0xE9, Repeated("00", 9)), "octets");
  EXPECT_EQ(Told(0xD, 0xEF, Repeated("FF", 15)), "octets");
  for (const auto& [length, size] : {std::pair{0xF0u, 16u}, {0xF4u, 32u}, {0xF5u, 48u}, {0xF6u, 64u}})
    EXPECT_EQ(Told(0xD, length, Repeated("01", size)), "octets");
}

TEST(MBusValue, ANumberWithoutDigitsIsNothing) {
  for (const unsigned int length : {0xC0u, 0xD0u, 0xE0u}) EXPECT_EQ(Told(0xD, length, ""), "nothing") << length;
}

TEST(MBusValue, FieldsWithoutDataAreNothing) {
  for (const unsigned int field : {0x0u, 0x8u, 0xFu}) EXPECT_EQ(Told(field, 0, ""), "nothing") << field;
}
