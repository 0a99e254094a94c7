// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/dictionary.h>

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>

namespace tav::data {
namespace {

class Dictionary : public testing::Test {
 protected:
  Dictionary() {
    m_database.exec("CREATE TABLE pair(id INTEGER PRIMARY KEY, a TEXT, b TEXT, n INTEGER, UNIQUE(a, b, n))");
  }
  int CountRows() { return m_database.execAndGet("SELECT count(*) FROM pair").getInt(); }

  SQLite::Database m_database{":memory:", SQLite::OPEN_READWRITE};
};

TEST_F(Dictionary, GivesEachRowOneNumber) {
  cDictionary pairs(m_database, "pair", {"a", "b", "n"});
  const std::int64_t first = pairs.Id({"x", "y", std::int64_t{1}});
  EXPECT_NE(pairs.Id({"x", "y", std::int64_t{2}}), first);
  EXPECT_EQ(pairs.Id({"x", "y", std::int64_t{1}}), first);
  EXPECT_EQ(CountRows(), 2);
}

TEST_F(Dictionary, KeepsRowsApartWhoseTextsJoinToTheSame) {
  cDictionary pairs(m_database, "pair", {"a", "b", "n"});
  const std::int64_t first = pairs.Id({"ab", "c", std::int64_t{0}});
  EXPECT_NE(pairs.Id({"a", "bc", std::int64_t{0}}), first);
  EXPECT_NE(pairs.Id({"abc", "", std::int64_t{0}}), first);
}

TEST_F(Dictionary, FindsTheNumbersOfAnEarlierOne) {
  const std::int64_t first = cDictionary(m_database, "pair", {"a", "b", "n"}).Id({"x", "", std::int64_t{0}});
  cDictionary later(m_database, "pair", {"a", "b", "n"});
  EXPECT_EQ(later.Id({"x", "", std::int64_t{0}}), first);
  EXPECT_EQ(CountRows(), 1);
}

TEST_F(Dictionary, FindAddsNothing) {
  cDictionary pairs(m_database, "pair", {"a", "b", "n"});
  EXPECT_FALSE(pairs.Find({"x", "y", std::int64_t{1}}));
  EXPECT_EQ(CountRows(), 0);
  const std::int64_t id = pairs.Id({"x", "y", std::int64_t{1}});
  EXPECT_EQ(pairs.Find({"x", "y", std::int64_t{1}}), id);
}

TEST_F(Dictionary, RemembersNoMoreThanItsLimit) {
  cDictionary pairs(m_database, "pair", {"a", "b", "n"}, 3);
  std::vector<std::int64_t> ids;
  for (std::int64_t i = 0; i < 10; ++i) {
    ids.push_back(pairs.Id({"x", "y", i}));
    EXPECT_LE(pairs.GetRemembered(), 3u);
  }
  for (std::int64_t i = 0; i < 10; ++i) EXPECT_EQ(pairs.Id({"x", "y", i}), ids[static_cast<std::size_t>(i)]);
  EXPECT_EQ(CountRows(), 10);
}

TEST_F(Dictionary, TakesBytesThatAreNoUtf8AndZeroBytes) {
  cDictionary pairs(m_database, "pair", {"a", "b", "n"}, 1);
  const std::int64_t micro = pairs.Id({"\xB5", "", std::int64_t{0}});
  const std::int64_t zero = pairs.Id({std::string_view("a\0b", 3), "", std::int64_t{0}});
  EXPECT_NE(zero, pairs.Id({"a", "", std::int64_t{0}}));
  EXPECT_EQ(pairs.Id({"\xB5", "", std::int64_t{0}}), micro);
  EXPECT_EQ(pairs.Id({std::string_view("a\0b", 3), "", std::int64_t{0}}), zero);
}

}  // namespace
}  // namespace tav::data
