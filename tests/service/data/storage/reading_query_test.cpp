// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/reading_query.h>

#include <tests/service/data/store_fixture.h>

namespace tav::data {
namespace {

class ReadingQuery : public StoreFixture {
 protected:
  void SetUp() override { Open(); }

  template <typename Ask>
  void Query(Ask ask) {
    const cFault fault = m_store->Read([&](cTables& tables) { ask(tables.query); });
    ASSERT_FALSE(fault) << fault.text;
  }
  // One page as "time obis value" lines; the cursor moves to its last row.
  std::vector<std::string> Page(cValueSelection& selection, std::size_t limit) {
    std::vector<std::string> lines;
    Query([&](cReadingQuery& query) {
      query.ListValues(selection, [&](const cValueRow& row, const cValueCursor& at) {
        lines.push_back(std::to_string(row.time - kNoon) + " " + row.obis + " " + row.value);
        selection.after = at;
        return lines.size() < limit;
      });
    });
    return lines;
  }
};

TEST_F(ReadingQuery, ListsMetersInOrderWithWhatTheirLastReadingSays) {
  Store(Reading("B", kNoon + 60, {{"1-0:1.8.0", "2"}, {"1-0:2.8.0", "2"}}));
  Store(Reading("B", kNoon, {{"1-0:1.8.0", "1"}}));
  cMeterRecord moved("mbif", "KAM", "H", "A", "17", "", kNoon, cMeterTav::eTsRtc, 1);
  moved.AddMeasurementEntry({"6-0:1.0.0", "5", "kWh", kNoon, cMeterTav::eTsRtc});
  Store(moved);
  std::vector<cMeterRow> rows;
  Query([&](cReadingQuery& query) {
    query.ListMeters("", [&](const cMeterRow& row) {
      rows.push_back(row);
      return true;
    });
  });
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].meterId + rows[0].addr + rows[0].manufactor + rows[0].medium + rows[0].driver, "A17KAMHmbif");
  EXPECT_EQ(rows[1].meterId + rows[1].interfaceName, "BIR1");
  EXPECT_EQ(rows[1].first, kNoon);
  EXPECT_EQ(rows[1].last, kNoon + 60);
  EXPECT_EQ(rows[1].values, 3u);
}

TEST_F(ReadingQuery, ListsMetersBehindAName) {
  for (const char* meter : {"A", "B", "C"}) Store(Reading(meter, kNoon, {{"1-0:1.8.0", "1"}}));
  std::string found;
  Query([&](cReadingQuery& query) {
    query.ListMeters("A", [&](const cMeterRow& row) {
      found += row.meterId;
      return false;
    });
  });
  EXPECT_EQ(found, "B");
}

TEST_F(ReadingQuery, PagesGoThroughAllValuesOnceInTheOrderOfTime) {
  std::vector<std::string> expected;
  for (unsigned int i = 0; i < 20; ++i) {
    // A text among the numbers: the cursor has to carry both.
    Store(Reading("M", kNoon + i, {{"1-0:1.8.0", std::to_string(i)}, {"0-0:96.1.0", "text " + std::to_string(i)}}));
    expected.push_back(std::to_string(i) + " 1-0:1.8.0 " + std::to_string(i));
    expected.push_back(std::to_string(i) + " 0-0:96.1.0 text " + std::to_string(i));
  }
  for (const std::size_t limit : {1u, 3u, 7u, 40u, 100u}) {
    cValueSelection selection{.meterId = "M"};
    std::vector<std::string> all;
    for (std::vector<std::string> page; !(page = Page(selection, limit)).empty();)
      all.insert(all.end(), page.begin(), page.end());
    EXPECT_EQ(all, expected) << limit;
  }
}

TEST_F(ReadingQuery, SelectsByMeterTimeAndIdentifier) {
  for (unsigned int i = 0; i < 5; ++i) {
    Store(Reading("M", kNoon + i, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}}));
    Store(Reading("N", kNoon + i, {{"1-0:1.8.0", "9"}}));
  }
  cValueSelection selection{.meterId = "M", .obis = {"1-0:2.8.0"}, .from = kNoon + 1, .to = kNoon + 2};
  EXPECT_EQ(Page(selection, 100), (std::vector<std::string>{"1 1-0:2.8.0 2", "2 1-0:2.8.0 2"}));
}

TEST_F(ReadingQuery, KnowsNothingOfAMeterThatNeverCame) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  cValueSelection selection{.meterId = "N"};
  EXPECT_TRUE(Page(selection, 100).empty());
  selection.meterId = "M";
  selection.obis = {"9-9:9.9.9"};
  EXPECT_TRUE(Page(selection, 100).empty());
}

TEST_F(ReadingQuery, DeliversUnitClockAndSignature) {
  cMeterRecord reading = Reading("M", kNoon, {});
  cMeasurementEntry entry("1-0:1.8.0", "1", "kWh", kNoon, cMeterTav::eTsMeterDs);
  entry.SetSignature(vorn::cData("\x01\x00", 2));
  reading.AddMeasurementEntry(entry);
  Store(reading);
  cValueRow found;
  Query([&](cReadingQuery& query) {
    query.ListValues({.meterId = "M"}, [&](const cValueRow& row, const cValueCursor&) {
      found = row;
      return true;
    });
  });
  EXPECT_EQ(found.unit, "kWh");
  EXPECT_EQ(found.timeSource, cMeterTav::eTsMeterDs);
  EXPECT_EQ(found.signature, std::string("\x01\x00", 2));
}

TEST_F(ReadingQuery, APageOfFewMatchesEndsWithACursorToGoOn) {
  constexpr unsigned int kValues = cReadingQuery::kMaxScanned + 10;
  ASSERT_FALSE(m_store->Write([](cTables&) {}));
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "0"}, {"1-0:2.8.0", "0"}}));
  SQLite::Database(Options().file, SQLite::OPEN_READWRITE)
      .exec("WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(kValues) +
            ") INSERT INTO value SELECT 1, 1700000000+i, 1, 0, 1, NULL FROM n");
  Store(Reading("M", kNoon + kValues + 1, {{"1-0:2.8.0", "1"}}));
  cValueSelection selection{.meterId = "M", .obis = {"1-0:2.8.0"}};
  std::vector<std::string> found;
  const auto take = [&](const cValueRow& row, const cValueCursor&) {
    found.push_back(row.value);
    return true;
  };
  Query([&](cReadingQuery& query) { selection.after = query.ListValues(selection, take); });
  EXPECT_EQ(found, std::vector<std::string>{"0"});
  ASSERT_TRUE(selection.after);
  Query([&](cReadingQuery& query) { EXPECT_FALSE(query.ListValues(selection, take)); });
  EXPECT_EQ(found, (std::vector<std::string>{"0", "1"}));
}

TEST_F(ReadingQuery, ListsTheLastValuesOfOneMeterOrOfAll) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}}));
  Store(Reading("N", kNoon, {{"1-0:1.8.0", "3"}}));
  Store(Reading("M", kNoon + 1, {{"1-0:1.8.0", "4"}}));
  const auto list = [&](const std::string& meter, cLastCursor after) {
    std::vector<std::string> lines;
    Query([&](cReadingQuery& query) {
      query.ListLast(meter, after, [&](const cValueRow& row, const cLastCursor& at) {
        lines.push_back(row.meterId + " " + row.obis + " " + row.value);
        after = at;
        return lines.size() < 2;
      });
    });
    return std::pair(lines, after);
  };
  EXPECT_EQ(list("N", {}).first, std::vector<std::string>{"N 1-0:1.8.0 3"});
  EXPECT_EQ(list("X", {}).first, std::vector<std::string>{});
  const auto [first, end] = list("", {});
  EXPECT_EQ(first, (std::vector<std::string>{"M 1-0:1.8.0 4", "M 1-0:2.8.0 2"}));
  EXPECT_EQ(list("", end).first, std::vector<std::string>{"N 1-0:1.8.0 3"});
}

TEST_F(ReadingQuery, CountsWithoutWalkingThroughTheValues) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}}));
  Store(Reading("N", kNoon, {{"1-0:1.8.0", "3"}}));
  Query([](cReadingQuery& query) {
    EXPECT_EQ(query.CountMeters(), 2u);
    EXPECT_EQ(query.CountValues(), 3u);
  });
}

TEST_F(ReadingQuery, APageGoesAlongThePrimaryKey) {
  const auto plan = [&](const std::string& sql) {
    SQLite::Database database(Options().file, SQLite::OPEN_READONLY);
    SQLite::Statement explain(database, "EXPLAIN QUERY PLAN " + sql);
    std::string text;
    while (explain.executeStep()) text += explain.getColumn(3).getString() + "\n";
    return text;
  };
  EXPECT_EQ(plan(cReadingQuery::GetPageSql()),
            "SEARCH value USING PRIMARY KEY (meter=? AND (time,obis,value)>(?,?,?) AND time<?)\n");
}

TEST(ValueCursor, ComesBackFromItsBytes) {
  for (const cStoredValue& value :
       {cStoredValue(std::int64_t{-5}), cStoredValue(std::string("a\0b", 3)), cStoredValue(std::string())}) {
    const auto back = cValueCursor::FromBytes(cValueCursor{7, 9, value}.ToBytes());
    ASSERT_TRUE(back);
    EXPECT_EQ(back->time, 7);
    EXPECT_EQ(back->obis, 9);
    EXPECT_EQ(back->value, value);
  }
}

TEST(ValueCursor, RefusesBytesThatAreNone) {
  const std::string bytes = cValueCursor{7, 9, std::int64_t{1}}.ToBytes();
  for (std::size_t size = 0; size < bytes.size(); ++size) EXPECT_FALSE(cValueCursor::FromBytes(bytes.substr(0, size)));
  EXPECT_FALSE(cValueCursor::FromBytes(bytes + "x"));
  std::string other = bytes;
  other[16] = 'x';
  EXPECT_FALSE(cValueCursor::FromBytes(other));
}

}  // namespace
}  // namespace tav::data
