// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/result_page.h>

#include <gtest/gtest.h>

namespace tav::data {
namespace {

vorn::cRecord Row(std::size_t size) {
  vorn::cRecord row;
  row.AppendTextPar("text", std::string(size, 'x'));
  return row;
}

// How many rows of a size a page takes.
unsigned int Fill(unsigned int rows, std::size_t size, unsigned int source = 1000) {
  vorn::cRecord answer;
  cResultPage page(answer, "row", rows);
  unsigned int taken = 0;
  while (taken < source && page.Add(Row(size))) ++taken;
  EXPECT_EQ(page.GetCount(), taken);
  EXPECT_EQ(answer.GetCount(), taken);
  return taken;
}

TEST(ResultPage, TakesSoManyRows) {
  EXPECT_EQ(Fill(0, 10), 0u);
  EXPECT_EQ(Fill(1, 10), 1u);
  EXPECT_EQ(Fill(7, 10), 7u);
  EXPECT_EQ(Fill(7, 10, 6), 6u);
}

TEST(ResultPage, TakesWhatFitsAMessageAndOneRowAtLeast) {
  EXPECT_EQ(Fill(100, cResultPage::kMaxBytes / 4), 3u);
  EXPECT_EQ(Fill(100, cResultPage::kMaxBytes + 1), 1u);
}

}  // namespace
}  // namespace tav::data
