// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/record_state.h>

#include <gtest/gtest.h>

#include <tav/framework/helper.h>

namespace tav::pages {
namespace {

// The bytes 0, 1, 2, ... as the authors of the hash take them for their vectors.
std::string Counting(std::size_t size) {
  std::string bytes;
  for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(i);
  return bytes;
}

TEST(RecordState, HashesAsItsAuthorsDo) {
  constexpr cStateKey key = {0x0706050403020100, 0x0f0e0d0c0b0a0908};
  EXPECT_EQ(KeyedHash(Counting(0), key), 0x726fdb47dd0e0e31u);
  EXPECT_EQ(KeyedHash(Counting(1), key), 0x74f839c593dc67fdu);
  EXPECT_EQ(KeyedHash(Counting(7), key), 0xab0200f58b01d137u);
  EXPECT_EQ(KeyedHash(Counting(8), key), 0x93f5f5799a932462u);
  EXPECT_EQ(KeyedHash(Counting(15), key), 0xa129ca6149be45e5u);
}

TEST(RecordState, IsTheSameForEqualRecordsOnly) {
  vorn::cRecord record;
  record.AppendTextPar("name", "a");
  vorn::cRecord other = record;
  EXPECT_EQ(RecordState(record), RecordState(other));
  EXPECT_EQ(RecordState(record).size(), 16u);
  other.SetTextPar("name", "b");
  EXPECT_NE(RecordState(record), RecordState(other));
}

TEST(RecordState, DoesNotTellWhatTheRecordIs) {
  EXPECT_NE(RecordState({}), vorn::FormatString("%016llx", static_cast<unsigned long long>(KeyedHash("", {}))));
}

}  // namespace
}  // namespace tav::pages
