// SPDX-License-Identifier: Apache-2.0
#include <tavctl/message_filter.h>

#include <gtest/gtest.h>

namespace tav::ctl {
namespace {

TEST(MessageFilter, LooksIntoTheNamesOfMessageAndParameters) {
  vorn::cRecord inner, record;
  inner.AppendTextPar("meterID", "needle");
  record.AppendRecordPar("meter-record", inner);
  const struct {
    const char* text;
    bool wanted;
  } cases[] = {
      {"", true},         {"store", true},   {"store-meter-records", true}, {"meter-record", true}, {"meterID", true},
      {"METERID", false}, {"needle", false}, {"store-event", false}};
  for (const auto& [text, wanted] : cases)
    EXPECT_EQ(cMessageFilter(text).Wants("store-meter-records", record), wanted) << text;
}

TEST(MessageFilter, WantsAnEmptyMessageWithoutAFilter) {
  EXPECT_TRUE(cMessageFilter("").Wants("0x1", {}));
  EXPECT_FALSE(cMessageFilter("x1x").Wants("0x1", {}));
}

}  // namespace
}  // namespace tav::ctl
