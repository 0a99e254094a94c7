// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/byte_range.h>

#include <gtest/gtest.h>

using tav::gateway::web::cByteRange;
using tav::gateway::web::eRange;
using tav::gateway::web::ReadRange;

TEST(ByteRange, IsReadFromItsField) {
  struct cCase {
    const char* field;
    std::uint64_t fileSize;
    eRange expected;
    std::uint64_t first, size;
  };
  const cCase kCases[] = {
      {"", 10, eRange::Whole, 0, 0},
      {"bytes=0-3", 10, eRange::Part, 0, 4},
      {"BYTES=0-3", 10, eRange::Part, 0, 4},
      {"bytes=9-9", 10, eRange::Part, 9, 1},
      {"bytes=4-", 10, eRange::Part, 4, 6},
      {"bytes=4-100", 10, eRange::Part, 4, 6},
      {"bytes=-3", 10, eRange::Part, 7, 3},
      {"bytes=-100", 10, eRange::Part, 0, 10},
      {"bytes=10-", 10, eRange::Impossible, 0, 0},
      {"bytes=-0", 10, eRange::Impossible, 0, 0},
      {"bytes=0-", 0, eRange::Impossible, 0, 0},
      {"bytes=99999999999999999999999-", 10, eRange::Impossible, 0, 0},
      {"bytes=0-99999999999999999999999", 10, eRange::Part, 0, 10},
      {"bytes=3-1", 10, eRange::Whole, 0, 0},
      {"bytes=0-1,3-4", 10, eRange::Whole, 0, 0},
      {"bytes=-", 10, eRange::Whole, 0, 0},
      {"bytes=", 10, eRange::Whole, 0, 0},
      {"bytes=a-b", 10, eRange::Whole, 0, 0},
      {"bytes=--1", 10, eRange::Whole, 0, 0},
      {"lines=0-3", 10, eRange::Whole, 0, 0},
  };
  for (const cCase& each : kCases) {
    cByteRange range;
    EXPECT_EQ(ReadRange(each.field, each.fileSize, range), each.expected) << each.field;
    EXPECT_EQ(range.first, each.first) << each.field;
    EXPECT_EQ(range.size, each.size) << each.field;
  }
}
