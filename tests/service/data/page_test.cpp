// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/page.h>

#include <gtest/gtest.h>

namespace tav::data {
namespace {

class Page : public testing::Test {
 protected:
  static vorn::cRecord Row(std::size_t size) {
    vorn::cRecord row;
    row.AppendTextPar("text", std::string(size, 'x'));
    return row;
  }
  // Fills a page from a source of so many rows; how many it took.
  unsigned int Fill(unsigned int maxLen, unsigned int source, std::size_t size = 10) {
    vorn::cRecord request;
    if (maxLen != kAbsent) request.AppendUIntPar("maxlen", maxLen);
    m_answer = {};
    cPage page(request, m_answer, 5, 20, 1000);
    for (unsigned int at = 0; at < source; ++at)
      if (!page.Add(Row(size), "row " + std::to_string(at))) return at;
    return source;
  }
  std::string Next() const { return m_answer.GetDataPar("next").AsText(); }

  static constexpr unsigned int kAbsent = 0xFFFFFFFF;
  vorn::cRecord m_answer;
};

TEST_F(Page, TakesAsManyRowsAsAskedFor) {
  EXPECT_EQ(Fill(3, 10), 3u);
  EXPECT_EQ(Next(), "row 2");
  EXPECT_EQ(Fill(kAbsent, 10), 5u);
  EXPECT_EQ(Fill(0, 10), 5u);
  EXPECT_EQ(Fill(100, 30), 20u);
}

TEST_F(Page, HasNoCursorBehindTheLastRow) {
  EXPECT_EQ(Fill(3, 2), 2u);
  EXPECT_FALSE(m_answer.GetPar("next").IsValid());
  EXPECT_EQ(Fill(3, 3), 3u);
  EXPECT_FALSE(m_answer.GetPar("next").IsValid());
  EXPECT_EQ(Fill(3, 0), 0u);
  EXPECT_TRUE(m_answer.IsEmpty());
}

TEST_F(Page, EndsBeforeItIsTooLarge) {
  EXPECT_EQ(Fill(20, 10, 300), 3u);
  EXPECT_EQ(Next(), "row 2");
}

TEST_F(Page, HasOneRowHoweverLarge) { EXPECT_EQ(Fill(20, 10, 3000), 1u); }

}  // namespace
}  // namespace tav::data
