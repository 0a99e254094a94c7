// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/value_insert.h>

#include <SQLiteCpp/Database.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include <gateway/database/schema.h>

namespace tav::data {
namespace {

class ValueInsert : public testing::Test {
 protected:
  ValueInsert() { Migrate(m_database); }

  static std::vector<cNewValue> Values(const std::vector<std::int64_t>& numbers) {
    std::vector<cNewValue> values;
    for (const std::int64_t number : numbers) values.push_back({1, number, 1});
    return values;
  }
  // Which were stored, one digit each.
  static std::string Stored(const std::vector<cNewValue>& values) {
    std::string digits;
    for (const cNewValue& value : values) digits += value.stored ? '1' : '0';
    return digits;
  }
  std::string Insert(const std::vector<std::int64_t>& numbers) {
    std::vector<cNewValue> values = Values(numbers);
    m_insert.Insert(1, 100, std::nullopt, values);
    return Stored(values);
  }
  int Count() { return m_database.execAndGet("SELECT count(*) FROM value").getInt(); }

  SQLite::Database m_database{":memory:", SQLite::OPEN_READWRITE};
  cValueInsert m_insert{m_database};
};

TEST_F(ValueInsert, TellsTheNewFromTheKnown) {
  EXPECT_EQ(Insert({1, 2, 3}), "111");
  EXPECT_EQ(Insert({1, 2, 3}), "000");
  EXPECT_EQ(Insert({4, 1, 5}), "101");
  EXPECT_EQ(Insert({1, 6, 2}), "010");
  EXPECT_EQ(Insert({7, 7, 8}), "101");
  EXPECT_EQ(Insert({}), "");
  EXPECT_EQ(Count(), 8);
}

TEST_F(ValueInsert, TakesAnyNumberOfValues) {
  std::mt19937 random(3);
  std::set<std::int64_t> known;
  for (std::size_t size : {1u, 15u, 16u, 17u, 31u, 32u, 33u, 100u})
    for (int round = 0; round < 20; ++round) {
      std::vector<std::int64_t> numbers;
      std::string expected;
      while (numbers.size() < size) {
        numbers.push_back(static_cast<std::int64_t>(random() % 2000));
        expected += known.insert(numbers.back()).second ? '1' : '0';
      }
      ASSERT_EQ(Insert(numbers), expected);
    }
  EXPECT_EQ(Count(), static_cast<int>(known.size()));
}

TEST_F(ValueInsert, WritesTheOwnerWhenThereIsOne) {
  std::vector<cNewValue> values = Values({1});
  m_insert.Insert(1, 100, 7, values);
  m_insert.Insert(1, 101, std::nullopt, values);
  EXPECT_EQ(m_database.execAndGet("SELECT group_concat(ifnull(owner, 'none')) FROM value").getString(), "7,none");
}

TEST_F(ValueInsert, ThrowsForWhatIsNoKnownValue) {
  m_database.exec("PRAGMA query_only=1");
  EXPECT_THROW(Insert({1}), SQLite::Exception);
}

}  // namespace
}  // namespace tav::data
