// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_cursor.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

// A cursor over bytes that end exactly where the memory does.
struct cOver {
  explicit cOver(const std::string& digits) {
    const std::string all = Bytes(digits);
    bytes.assign(all.begin(), all.end());
  }
  cSmlCursor Cursor() { return cSmlCursor(bytes, 0, fault); }

  std::vector<std::uint8_t> bytes;
  cSmlFault fault;
};

}  // namespace

TEST(SmlCursor, ReadsUnsignedNumbersOfEveryWidth) {
  const struct {
    const char* element;
    std::uint64_t number;
  } kCases[] = {
      {"62FF", 0xFF},
      {"63FF00", 0xFF00},
      {"64010203", 0x010203},
      {"6501020304", 0x01020304},
      {"660102030405", 0x0102030405},
      {"67010203040506", 0x010203040506},
      {"6801020304050607", 0x01020304050607},
      {"69FFFFFFFFFFFFFFFF", UINT64_MAX},
      {"E0040102", 0x0102},  // a type-length field of two bytes
  };
  for (const auto& c : kCases) {
    for (const char* behind : {"", "0102030405060708"}) {
      cOver over(std::string(c.element) + behind);
      cSmlCursor cursor = over.Cursor();
      std::uint64_t number = 0;
      ASSERT_TRUE(cursor.Unsigned("n", UINT64_MAX, number)) << c.element;
      EXPECT_EQ(number, c.number) << c.element;
      EXPECT_EQ(cursor.Offset(), std::string(c.element).size() / 2);
    }
  }
}

TEST(SmlCursor, ReadsSignedNumbersOfEveryWidth) {
  const struct {
    const char* element;
    std::int64_t number;
  } kCases[] = {
      {"52FF", -1},
      {"527F", 127},
      {"5380FF", -32513},
      {"538B28", -29912},
      {"54FFFFFE", -2},
      {"5580000000", INT32_MIN},
      {"56FFFFFFFFFE", -2},
      {"57800000000000", -140737488355328},
      {"58FFFFFFFFFFFFFE", -2},
      {"598000000000000000", INT64_MIN},
      {"597FFFFFFFFFFFFFFF", INT64_MAX},
  };
  for (const auto& c : kCases) {
    cOver over(c.element);
    cSmlCursor cursor = over.Cursor();
    std::int64_t number = 0;
    ASSERT_TRUE(cursor.Signed("n", INT64_MIN, INT64_MAX, number)) << c.element;
    EXPECT_EQ(number, c.number) << c.element;
    EXPECT_TRUE(cursor.AtEnd());
  }
}

TEST(SmlCursor, ReadsLongTypeLengthFields) {
  cOver over("8302" + std::string(96, 'A'));
  cSmlCursor cursor = over.Cursor();
  cBytes octets;
  ASSERT_TRUE(cursor.Octets("key", octets));
  EXPECT_EQ(octets.size(), 48u);
  EXPECT_TRUE(cursor.AtEnd());

  cOver four("80808003AA");  // four bytes that say a length of three: less than themselves
  cursor = four.Cursor();
  EXPECT_FALSE(cursor.Octets("key", octets));
  EXPECT_EQ(four.fault.ToString(), "byte 0, key: expected a length that counts its own bytes, found 0x80");

  cOver list("F104");
  cursor = list.Cursor();
  std::uint32_t count = 0;
  ASSERT_TRUE(cursor.List("list", count));
  EXPECT_EQ(count, 20u);
}

TEST(SmlCursor, ReadsEveryKindOfTime) {
  const struct {
    const char* element;
    eSmlTimeKind kind;
    std::uint32_t seconds;
    int local, season;
  } kCases[] = {
      {"01", eSmlNoTime, 0, 0, 0},
      {"7262016505E748D7", eSmlSecIndex, 0x05E748D7, 0, 0},
      {"72620262 2A", eSmlTimestamp, 42, 0, 0},
      {"7262026565E748D7", eSmlTimestamp, 0x65E748D7, 0, 0},
      {"72620373 6565E748D7 53003C 5200", eSmlLocalTimestamp, 0x65E748D7, 60, 0},
      {"72620373 6565E748D7 53FFC4 52C4", eSmlLocalTimestamp, 0x65E748D7, -60, -60},
      {"650A575853", eSmlBareSeconds, 0x0A575853, 0, 0},
  };
  for (const auto& c : kCases) {
    cOver over(c.element);
    cSmlCursor cursor = over.Cursor();
    cSmlTime time;
    ASSERT_TRUE(cursor.Time("t", time)) << c.element << over.fault.ToString();
    EXPECT_EQ(time.kind, c.kind) << c.element;
    EXPECT_EQ(time.seconds, c.seconds) << c.element;
    EXPECT_EQ(time.localOffset, c.local) << c.element;
    EXPECT_EQ(time.seasonOffset, c.season) << c.element;
    EXPECT_TRUE(cursor.AtEnd()) << c.element;
  }
}

TEST(SmlCursor, ReadsEveryKindOfValue) {
  const struct {
    const char* element;
    eSmlType type;
    std::uint8_t width;
    std::uint64_t bits;
    std::size_t octets;
  } kCases[] = {
      {"01", eSmlAbsent, 0, 0, 0},         {"04445A47", eSmlOctets, 0, 0, 3},
      {"4200", eSmlBool, 1, 0, 0},         {"42FF", eSmlBool, 1, 1, 0},
      {"5300BC", eSmlInt, 2, 188, 0},      {"560000000001", eSmlInt, 5, 1, 0},
      {"64010000", eSmlUInt, 3, 65536, 0}, {"72620172620165000000FF", eSmlList, 0, 0, 11},
      {"70", eSmlList, 0, 0, 1},
  };
  for (const auto& c : kCases) {
    cOver over(c.element);
    cSmlCursor cursor = over.Cursor();
    cSmlValue value;
    ASSERT_TRUE(cursor.Value("v", value)) << c.element << over.fault.ToString();
    EXPECT_EQ(value.type, c.type) << c.element;
    EXPECT_EQ(value.width, c.width) << c.element;
    EXPECT_EQ(value.bits, c.bits) << c.element;
    EXPECT_EQ(value.octets.size(), c.octets) << c.element;
    EXPECT_TRUE(cursor.AtEnd()) << c.element;
  }
}

TEST(SmlCursor, RefusesWhatIsNoValue) {
  const struct {
    const char* element;
    const char* fault;
  } kCases[] = {
      {"", "byte 0, v: expected a type-length field, found the end of the bytes"},
      {"00", "byte 0, v: expected a length that counts its own bytes, found 0x00"},
      {"05 0102", "byte 0, v: expected more bytes, found 0x05"},
      {"51", "byte 0, v: expected a number of 1 to 8 bytes or a boolean of one, found 0x51"},
      {"5A 000000000000000000", "byte 0, v: expected a number of 1 to 8 bytes or a boolean of one, found 0x5A"},
      {"43 0001", "byte 0, v: expected a number of 1 to 8 bytes or a boolean of one, found 0x43"},
      {"12 00", "byte 0, v: expected an octet string, a boolean, a number or a list, found 0x12"},
      {"72 6201", "byte 3, v: expected a type-length field, found the end of the bytes"},
      {"81", "byte 0, v: expected another byte of length, found 0x81"},
      {"81 11", "byte 0, v: expected another byte of length, found 0x81"},
      {"8F8F8F8F8F8F8F0F", "byte 0, v: expected a length below 2^28, found 0x8F"},
      {"8F8F8F8F8F8F0F", "byte 0, v: expected more bytes, found 0x8F"},
  };
  for (const auto& c : kCases) {
    cOver over(c.element);
    cSmlCursor cursor = over.Cursor();
    cSmlValue value;
    EXPECT_FALSE(cursor.Value("v", value)) << c.element;
    EXPECT_EQ(over.fault.ToString(), c.fault);
  }
}

TEST(SmlCursor, RefusesWhatIsNoTime) {
  const struct {
    const char* element;
    const char* fault;
  } kCases[] = {
      {"0300FF", "byte 0, t: expected a choice of time (list of 2) or a number of seconds, found 0x03"},
      {"73620162016201", "byte 0, t: expected a choice of time (list of 2) or a number of seconds, found 0x73"},
      {"72620462FF", "byte 1, t: expected choice 1 (seconds index), 2 (timestamp) or 3 (local timestamp), found 0x62"},
      {"72620162", "byte 3, t: expected more bytes, found 0x62"},
      {"726201660100000000", "byte 3, t: expected a smaller number, found 0x66"},
      {"6601FFFFFFFF", "byte 0, t: expected a smaller number, found 0x66"},
      {"7262037262 00 6200", "byte 3, t: expected a local timestamp (list of 3), found 0x72"},
      {"7262037362 00 5480 0000 5200", "byte 6, t: expected a number nearer to zero, found 0x54"},
  };
  for (const auto& c : kCases) {
    cOver over(c.element);
    cSmlCursor cursor = over.Cursor();
    cSmlTime time;
    if (cursor.Time("t", time)) ADD_FAILURE() << c.element;
    EXPECT_EQ(over.fault.ToString(), c.fault);
  }
}

TEST(SmlCursor, LeavesAWrongElementWhereItIs) {
  cOver over("6201");
  cSmlCursor cursor = over.Cursor();
  cBytes octets;
  std::int64_t number = 0;
  std::uint64_t obis = 0;
  std::uint32_t count = 0;
  EXPECT_FALSE(cursor.Octets("o", octets));
  EXPECT_FALSE(cursor.Signed("s", -1, 1, number));
  EXPECT_FALSE(cursor.Obis("id", obis));
  EXPECT_FALSE(cursor.List("l", count));
  EXPECT_FALSE(cursor.ListOf("l", 2, "two"));
  EXPECT_FALSE(cursor.EndOfMessage());
  EXPECT_FALSE(cursor.Absent());
  EXPECT_EQ(cursor.Offset(), 0u);
}

TEST(SmlCursor, SkipsAnElementWithAllThatIsInIt) {
  const std::string sixteen = "F100 01010101010101010101010101010101";
  cOver over("77 01 01 72620165000000FF 02AA 71 73420052 00 01 70" + sixteen + "62AA");
  cSmlCursor cursor = over.Cursor();
  ASSERT_TRUE(cursor.Skip("all")) << over.fault.ToString();
  EXPECT_EQ(cursor.Peek(), 0x62);
  ASSERT_TRUE(cursor.Skip("last"));
  EXPECT_TRUE(cursor.AtEnd());
}

TEST(SmlCursor, NeedsNoStackForDeepNesting) {
  cOver over("71");
  over.bytes.assign(100000, 0x71);
  cSmlCursor cursor = over.Cursor();
  EXPECT_FALSE(cursor.Skip("deep"));
  EXPECT_EQ(over.fault.offset, over.bytes.size());
}
