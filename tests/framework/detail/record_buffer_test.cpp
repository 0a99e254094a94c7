// SPDX-License-Identifier: Apache-2.0
// What records cost in calls of the allocator: one block a record, and none where a kept one serves.
#include <tav/framework/record.h>

#include <gtest/gtest.h>

#include <tests/support/allocations.h>

using vorn::cRecord;
using vorn::cRecordPar;

namespace {

// A reading as drivers write it, small enough for a fresh buffer.
cRecord Reading() {
  cRecord record;
  record.AppendUIntPar("version", 1);
  record.AppendTextPar("driver", "ehzif");
  record.AppendTextPar("obis", "1-0:1.8.0*255");
  record.AppendUInt64Par("value", 123456789012u);
  record.AppendIntPar("scaler", -1);
  record.AppendBoolPar("valid", true);
  record.AppendTimePar("time", vorn::cTime::FromSeconds(1393675200, true));
  record.AppendUuidPar("id", vorn::cUuid());
  record.AppendDataPar("raw", vorn::cData());
  return record;
}

// The pool and everything made at first use is there.
void WarmUp() {
  for (int i = 0; i < 20; ++i) {
    cRecord received;
    const cRecord record = Reading();
    cRecord::FromBytes(record.GetBytes().data(), record.GetBytes().size(), received);
    record.GetCount();
  }
}

}  // namespace

TEST(Allocations, AreCounted) {
  const cAllocations allocations;
  std::string text;
  text.reserve(1000);
  EXPECT_EQ(allocations.Get(), 1u);
}

TEST(RecordBuffer, ASmallRecordIsWrittenIntoOneBlock) {
  WarmUp();
  const cAllocations allocations;
  const cRecord record = Reading();
  EXPECT_EQ(allocations.Get(), kBuffersAreKept ? 0u : 1u);
}

TEST(RecordBuffer, AppendingAParameterAllocatesNothing) {
  cRecord record;
  record.AppendUIntPar("version", 1);
  const std::string_view text = "kWh";
  const cAllocations allocations;
  record.AppendTextPar("unit", text);
  record.AppendTextPar("unit", nullptr);
  record.AppendIntPar("scaler", -1);
  record.AppendUIntPar("code", 30);
  record.AppendUInt64Par("value", 123456789012u);
  record.AppendBoolPar("valid", true);
  record.AppendTimePar("time", vorn::cTime::FromSeconds(1393675200, true));
  record.AppendUuidPar("id", vorn::cUuid());
  EXPECT_EQ(allocations.Get(), 0u);
}

TEST(RecordBuffer, ALargeRecordGrowsByDoubling) {
  cRecord record;
  const cAllocations allocations;
  for (unsigned int i = 0; i < 100000; ++i) record.AppendUIntPar("n", i);
  EXPECT_GE(record.GetBytes().size(), 400000u);
  EXPECT_LE(allocations.Get(), 16u);
}

TEST(RecordBuffer, ReadingNumbersAndComparingNamesAllocatesNothing) {
  const cRecord record = Reading();
  ASSERT_EQ(record.GetCount(), 9u);  // indexed from here on
  const cAllocations allocations;
  std::uint64_t sum = record.GetUIntPar("version") + record.GetUInt64Par("value");
  sum += static_cast<std::uint64_t>(record.GetIntPar("scaler") + (record.GetBoolPar("valid") ? 1 : 0));
  sum += record.GetTimePar("time").GetSeconds() + (record.GetUuidPar("id").IsValid() ? 1u : 0u);
  std::size_t drivers = 0;
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next())
    if (par.GetNameView() == "driver" && par.GetBytesView() == "ehzif") ++drivers;
  EXPECT_EQ(allocations.Get(), 0u);
  EXPECT_EQ(sum, 1u + 123456789012u + 1393675200u);
  EXPECT_EQ(drivers, 1u);
}

TEST(RecordBuffer, CopiesViewsAndNestedRecordsAllocateNothing) {
  cRecord record = Reading();
  record.AppendRecordPar("entry", Reading());
  ASSERT_EQ(record.GetCount(), 10u);
  const cAllocations allocations;
  const cRecord copy = record;
  cRecord nested;
  EXPECT_TRUE(copy.GetPar("entry").GetRecord(nested));
  EXPECT_EQ(nested.GetUIntPar("version"), 1u);
  EXPECT_TRUE(nested == nested && copy == record);
  EXPECT_EQ(allocations.Get(), 0u);
}

TEST(RecordBuffer, AReceivedRecordTakesAKeptBlock) {
  const cRecord record = Reading();
  WarmUp();
  cRecord received;
  const cAllocations allocations;
  ASSERT_TRUE(cRecord::FromBytes(record.GetBytes().data(), record.GetBytes().size(), received));
  EXPECT_EQ(allocations.Get(), kBuffersAreKept ? 0u : 2u) << "the block and its index";
}

TEST(RecordBuffer, RecordsOfManySizesEndInAnyOrder) {
  std::vector<cRecord> records;
  for (std::size_t i = 0; i < 200; ++i) {
    cRecord record;
    record.AppendTextPar("text", std::string(i * 50, static_cast<char>('a' + i % 26)));
    records.push_back(record);
    if (i % 3 == 0) records.erase(records.begin() + static_cast<std::ptrdiff_t>(i % records.size()));
  }
  for (const cRecord& record : records) {
    const std::string text = record.GetTextPar("text");
    EXPECT_EQ(text, std::string(text.size(), text.empty() ? ' ' : text.front()));
  }
}
