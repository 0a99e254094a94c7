// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/event_store.h>

#include <tests/service/data/store_fixture.h>

namespace tav::data {
namespace {

class EventStore : public StoreFixture {
 protected:
  void SetUp() override { Open(); }

  void Add(unsigned int time, const std::string& what) {
    vorn::cRecord event;
    event.AppendTextPar("what", what);
    ASSERT_FALSE(m_store->Write([&](cTables& tables) { tables.events.Add(event, time); }));
  }
  std::string List(cEventCursor after, unsigned int to, std::size_t limit = 100) {
    std::string found;
    EXPECT_FALSE(m_store->Read([&](cTables& tables) {
      tables.events.List(after, to, [&](const cEventRow& row) {
        found += row.record.GetTextPar("what") + std::to_string(row.at.time) + " ";
        return --limit != 0;
      });
    }));
    return found;
  }
};

TEST_F(EventStore, GivesEventsBackInTheOrderOfTime) {
  Add(7, "b");
  Add(5, "a");
  Add(7, "c");
  EXPECT_EQ(List({0, -1}, 100), "a5 b7 c7 ");
}

TEST_F(EventStore, SelectsByTime) {
  for (unsigned int time : {5u, 6u, 7u, 8u}) Add(time, "e");
  EXPECT_EQ(List({6, -1}, 7), "e6 e7 ");
}

TEST_F(EventStore, GoesOnBehindACursorWithinASecond) {
  for (const char* what : {"a", "b", "c"}) Add(7, what);
  EXPECT_EQ(List({7, 1}, 100), "b7 c7 ");
  EXPECT_EQ(List({7, 1}, 100, 1), "b7 ");
}

TEST_F(EventStore, KeepsTheSameEventTwice) {
  Add(7, "a");
  Add(7, "a");
  EXPECT_EQ(List({0, -1}, 100), "a7 a7 ");
  EXPECT_FALSE(m_store->Read([](cTables& tables) { EXPECT_EQ(tables.events.Count(), 2u); }));
}

TEST_F(EventStore, PagesGoAlongTheIndex) {
  SQLite::Database database(Options().file, SQLite::OPEN_READONLY);
  SQLite::Statement plan(database,
                         "EXPLAIN QUERY PLAN SELECT time, id, record FROM event WHERE (time, id)>(1,1) AND time<=9 "
                         "ORDER BY time, id");
  ASSERT_TRUE(plan.executeStep());
  EXPECT_THAT(plan.getColumn(3).getString(), testing::StartsWith("SEARCH event USING INDEX event_by_time ("));
  EXPECT_FALSE(plan.executeStep());
}

}  // namespace
}  // namespace tav::data
