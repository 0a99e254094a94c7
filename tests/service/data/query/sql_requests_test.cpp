// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/sql_requests.h>

#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <tav/framework/helper.h>
#include <tests/service/data/query/query_fixture.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using vorn::cMsg;
using vorn::cRecord;

class SqlRequests : public QueryFixture {
 protected:
  static constexpr unsigned int kWrite = cSqlRequests::kWrite;

  std::vector<cRecord> AllSql(const std::string& sql, unsigned int options = 0, unsigned int count = 0) {
    const cMsg answer = Sql(sql, options);
    EXPECT_EQ(answer.GetType(), db_ctrl::eSqlResult) << sql << ": " << Reason(answer);
    std::vector<cRecord> all;
    for (const vorn::cUuid handle = Handle(answer); handle.IsValid();) {
      const cMsg page = FetchSql(handle, count);
      EXPECT_EQ(page.GetType(), db_ctrl::eSqlRows) << Reason(page);
      for (const cRecord& row : Rows(page)) all.push_back(row);
      if (page.GetType() != db_ctrl::eSqlRows || IsEnd(page)) break;
    }
    return all;
  }
  cRecord OneRow(const std::string& sql) {
    const std::vector<cRecord> rows = AllSql(sql);
    EXPECT_EQ(rows.size(), 1u) << sql;
    return rows.empty() ? cRecord() : rows[0];
  }
  // Why a statement is refused.
  std::string Refusal(const std::string& sql, unsigned int options = 0) {
    const cMsg answer = Sql(sql, options);
    EXPECT_EQ(answer.GetType(), db_ctrl::eSqlExec + 2) << sql;
    return Reason(answer);
  }
  void TrustNobody() {
    m_server->SetSqlPolicy([](const vorn::cScmPeer&) { return false; });
  }
  void Bound(const std::function<void(cSqlBounds&)>& set) {
    cSqlBounds bounds;
    set(bounds);
    m_server->SetSqlBounds(bounds);
  }
  static std::string Sequence(unsigned int count, const std::string& columns = "i") {
    return "WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(count) +
           ") SELECT " + columns + " FROM n";
  }
};

// ---- rows

TEST_F(SqlRequests, RunsAStatementAndDeliversItsRowsByHandle) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "12.50"}}));
  const cMsg answer = Sql("SELECT meter, value FROM reading_values", 0, "tav");
  EXPECT_EQ(answer.GetType(), db_ctrl::eSqlResult);
  EXPECT_EQ(answer.Record().GetUInt64Par("changes"), 0u);
  EXPECT_EQ(answer.Record().GetPar("column").GetText(), "meter");
  EXPECT_EQ(answer.Record().GetPar("column").NextSame().GetText(), "value");
  const cMsg page = FetchSql(Handle(answer));
  EXPECT_EQ(page.GetType(), db_ctrl::eSqlRows);
  EXPECT_TRUE(IsEnd(page));
  EXPECT_THAT(Lines(Rows(page), {"meter", "value"}), ElementsAre("M 12.50"));
  EXPECT_EQ(m_server->CountResults(), 0u);
}

TEST_F(SqlRequests, EveryTypeHasItsForm) {
  const cRecord row = OneRow(
      "SELECT 7 AS a, -2147483648 AS b, 2147483647 AS c, 2147483648 AS d, 9223372036854775807 AS e, -2147483649 AS f, "
      "0.1 AS g, 1e300*10 AS h, 'x' AS i, '' AS j, x'00ff' AS k, x'' AS l, NULL AS m");
  EXPECT_TRUE(row.GetPar("a").IsInt());
  EXPECT_EQ(row.GetIntPar("a"), 7);
  EXPECT_EQ(row.GetIntPar("b"), std::numeric_limits<int>::min());
  EXPECT_EQ(row.GetIntPar("c"), std::numeric_limits<int>::max());
  EXPECT_EQ(row.GetUInt64Par("d"), 2147483648u);
  EXPECT_EQ(row.GetUInt64Par("e"), 9223372036854775807u);
  EXPECT_EQ(row.GetTextPar("f"), "-2147483649");
  EXPECT_EQ(row.GetTextPar("g"), "0.1");
  EXPECT_EQ(row.GetTextPar("h"), "1e+301");
  EXPECT_EQ(row.GetTextPar("i"), "x");
  EXPECT_TRUE(row.GetPar("j").HasText());
  EXPECT_EQ(row.GetDataPar("k"), vorn::cData("\x00\xff", 2));
  EXPECT_TRUE(row.GetPar("l").IsData());
  EXPECT_TRUE(row.GetPar("m").IsText());
  EXPECT_FALSE(row.GetPar("m").HasText());
}

TEST_F(SqlRequests, RealsReadBackAsTheSameNumber) {
  for (const double number : {1.0 / 3, 2.5, 1e-320, -0.0, 123456789.123456789}) {
    const std::string text = OneRow("SELECT " + vorn::FormatString("%.17g", number) + "*1.0 AS x").GetTextPar("x");
    EXPECT_EQ(std::strtod(text.c_str(), nullptr), number) << text;
    EXPECT_LE(text.size(), vorn::FormatString("%.17g", number).size());
  }
}

TEST_F(SqlRequests, ColumnsMayHaveTheSameName) {
  const cRecord row = OneRow("SELECT 1 AS x, 2 AS x");
  EXPECT_EQ(row.GetPar("x").GetInt(), 1);
  EXPECT_EQ(row.GetPar("x").NextSame().GetInt(), 2);
}

TEST_F(SqlRequests, PagesGiveEveryRowOnce) {
  for (const unsigned int count : {1u, 7u, 0u, 250u, 251u})
    EXPECT_EQ(AllSql(Sequence(250), 0, count).size(), 250u) << count;
}

TEST_F(SqlRequests, AQueryWithoutRowsHasAHandleTooAndAStatementThatGivesNoneHasNone) {
  EXPECT_THAT(AllSql("SELECT * FROM value"), IsEmpty());
  EXPECT_TRUE(Handle(Sql("SELECT * FROM value")).IsValid());
  EXPECT_FALSE(Sql("DELETE FROM event", kWrite).Record().GetPar("handle").IsValid());
}

TEST_F(SqlRequests, AHeldResultLeavesTheDatabaseAlone) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  const vorn::cUuid handle = Handle(Sql("SELECT value FROM reading_values"));
  Store(Reading("M", kNoon + 1, {{"1-0:1.8.0", "2"}}));
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  SQLite::Statement checkpoint(other, "PRAGMA wal_checkpoint(TRUNCATE)");
  ASSERT_TRUE(checkpoint.executeStep());
  EXPECT_EQ(checkpoint.getColumn(0).getInt(), 0);
  EXPECT_THAT(Lines(Rows(FetchSql(handle)), {"value"}), ElementsAre("1"));  // as it was when it was asked
}

TEST_F(SqlRequests, SeesWhatWasStoredBeforeOnTheSameChannel) {
  m_client->StoreMeterRec(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  EXPECT_EQ(OneRow("SELECT count(*) AS n FROM value").GetIntPar("n"), 1);
}

// ---- what is no statement

TEST_F(SqlRequests, KnowsOneDatabaseAndOneOption) {
  EXPECT_EQ(Reason(Sql("SELECT 1", 0, "main")), "unknown database 'main': there is 'tav' only");
  EXPECT_EQ(Reason(Sql("SELECT 1", 2)), "options 0x2: only 1 (write) is known");
  EXPECT_EQ(Reason(Sql("SELECT 1", 0x80000001)), "options 0x80000001: only 1 (write) is known");
}

TEST_F(SqlRequests, RefusesWhatIsNotExactlyOneStatement) {
  for (const unsigned int options : {0u, kWrite}) {
    for (const char* none : {"", "  ", ";", " ; ", "-- nothing", "/* nothing */"})
      EXPECT_EQ(Refusal(none, options), "there is no statement") << none;
    for (const char* several :
         {"SELECT 1; SELECT 2", "SELECT 1; nonsense", "SELECT 1; ; SELECT 2", "SELECT 1; DELETE FROM event"})
      EXPECT_THAT(Refusal(several, options), HasSubstr("several statements")) << several;
    EXPECT_EQ(Refusal("SELECT ?", options), "the statement has a parameter, there are no values for it");
    EXPECT_EQ(Refusal("SELECT :name", options), "the statement has a parameter, there are no values for it");
    EXPECT_EQ(Refusal(std::string("SELECT 1\0, 2", 12), options), "the statement has a zero byte");
  }
  EXPECT_EQ(AllSql("SELECT 1 ;; -- the end\n ; /* really */ ").size(), 1u);
}

TEST_F(SqlRequests, TellsTheFaultInTheDatabasesOwnWords) {
  EXPECT_EQ(Refusal("SELEC 1"), "near \"SELEC\": syntax error at byte 0");
  EXPECT_EQ(Refusal("SELECT x FROM nowhere"), "no such table: nowhere");
  EXPECT_EQ(Refusal("SELECT abs(-9223372036854775808)"), "integer overflow");
}

TEST_F(SqlRequests, RefusesNamesThatFitNoRow) {
  EXPECT_EQ(AllSql("SELECT 1 AS \"" + std::string(255, 'x') + "\"").size(), 1u);
  EXPECT_THAT(Refusal("SELECT 1, 1 AS \"" + std::string(256, 'x') + "\""),
              StartsWith("the name of column 2 has more than 255 bytes"));
}

// ---- bounds

TEST_F(SqlRequests, BoundsTheNumberOfRows) {
  Bound([](cSqlBounds& bounds) { bounds.rows = 100; });
  EXPECT_EQ(AllSql(Sequence(100)).size(), 100u);
  EXPECT_EQ(Refusal(Sequence(101)), "there are more than 100 rows");
}

TEST_F(SqlRequests, BoundsTheBytesOfTheRows) {
  EXPECT_EQ(AllSql(Sequence(33, "zeroblob(250000) AS x")).size(), 33u);
  EXPECT_EQ(Refusal(Sequence(34, "zeroblob(250000) AS x")), "the rows have more than 8388608 bytes: ask for fewer");
  std::string wide = "SELECT zeroblob(250000)";
  for (int i = 0; i < 8; ++i) wide += ", zeroblob(250000)";
  EXPECT_EQ(Refusal(wide), "a row has more than 2097152 bytes");
  EXPECT_EQ(AllSql("SELECT zeroblob(262144)").size(), 1u);
  EXPECT_EQ(Refusal("SELECT zeroblob(262145)"), "string or blob too big");
}

TEST_F(SqlRequests, BoundsPatterns) {
  EXPECT_EQ(AllSql("SELECT 'x' LIKE '" + std::string(256, '%') + "' AS x").size(), 1u);
  EXPECT_THAT(Refusal("SELECT 'x' LIKE '" + std::string(257, '%') + "' AS x"), HasSubstr("pattern too complex"));
}

TEST_F(SqlRequests, BoundsTheBytesOfTheStatement) {
  const auto padded = [](std::size_t size) { return std::string(size - 8, ' ') + "SELECT 1"; };
  EXPECT_EQ(AllSql(padded(65536)).size(), 1u);
  EXPECT_EQ(Refusal(padded(65537)), "the statement has 65537 bytes, at most 65536 are possible");
}

TEST_F(SqlRequests, BoundsTheTime) {
  Bound([](cSqlBounds& bounds) { bounds.milliseconds = 20; });
  EXPECT_EQ(Refusal("WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n) SELECT max(i) FROM n"),
            "the statement took more than 20 ms");
  EXPECT_EQ(AllSql("SELECT 1").size(), 1u);
}

TEST_F(SqlRequests, AWriteThatTakesTooLongIsTakenBack) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  Bound([](cSqlBounds& bounds) { bounds.milliseconds = 20; });
  EXPECT_EQ(Refusal("INSERT INTO event(time, record) WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n) "
                    "SELECT i, x'' FROM n",
                    kWrite),
            "the statement took more than 20 ms");
  EXPECT_EQ(One("SELECT count(*) FROM event"), "0");
  Store(Reading("M", kNoon + 1, {{"1-0:1.8.0", "2"}}));
  EXPECT_EQ(One("SELECT count(*) FROM value"), "2");
}

TEST_F(SqlRequests, BoundsTheMemory) {
  Bound([](cSqlBounds& bounds) { bounds.memory = 4 << 20; });
  EXPECT_EQ(Refusal(Sequence(100'000, "max(i), hex(randomblob(100)) AS x") + " GROUP BY x ORDER BY 2 DESC LIMIT 1"),
            "the statement took more than 4194304 bytes of memory");
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  EXPECT_EQ(AllSql("SELECT * FROM value").size(), 1u);
}

TEST_F(SqlRequests, AClientHoldsABoundedNumberOfResults) {
  for (std::size_t i = 0; i < cResultTable::kMaxOfChannel; ++i) Sql("SELECT 1");
  EXPECT_THAT(Refusal("SELECT 1"), HasSubstr("this client holds 16 results"));
}

// ---- rights

TEST_F(SqlRequests, WithoutTheOptionNothingIsWritten) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  EXPECT_EQ(Refusal("DELETE FROM value"), "DELETE from value needs the option to write (1)");
  EXPECT_EQ(Refusal("INSERT INTO event(time, record) VALUES(1, x'')"),
            "INSERT into event needs the option to write (1)");
  EXPECT_EQ(Refusal("UPDATE value SET value=2"), "UPDATE of value needs the option to write (1)");
  EXPECT_EQ(One("SELECT count(*) FROM value"), "1");
}

TEST_F(SqlRequests, NobodyGetsAroundTheTables) {
  const std::string file = m_folder.File("other.db");
  const std::pair<std::string, const char*> kDenied[] = {
      {"ATTACH '" + file + "' AS other", "ATTACH is not allowed"},
      {"DETACH main", "DETACH is not allowed"},
      {"VACUUM INTO '" + file + "'", ""},
      {"VACUUM", ""},
      {"BEGIN", "control of transactions is not allowed"},
      {"COMMIT", "control of transactions is not allowed"},
      {"SAVEPOINT x", "control of transactions is not allowed"},
      {"CREATE TABLE x(y)", "a change of the tables is not allowed"},
      {"CREATE TEMP TABLE x(y)", "not allowed"},
      {"CREATE TEMP VIEW x AS SELECT 1", "not allowed"},
      {"CREATE VIRTUAL TABLE x USING fts5(y)", "a change of the tables is not allowed"},
      {"CREATE TRIGGER x AFTER INSERT ON event BEGIN SELECT 1; END", "a change of the tables is not allowed"},
      {"DROP TABLE value", "a change of the tables is not allowed"},
      {"ALTER TABLE value ADD COLUMN x", "a change of the tables is not allowed"},
      {"ANALYZE", "not allowed"},
      {"REINDEX", "REINDEX is not allowed"},
      {"UPDATE sqlite_schema SET sql=''", ""},
      {"PRAGMA journal_mode=DELETE", "PRAGMA journal_mode with a value is not allowed"},
      {"PRAGMA user_version=9", "PRAGMA user_version with a value is not allowed"},
      {"PRAGMA writable_schema=1", "PRAGMA writable_schema with a value is not allowed"},
      {"PRAGMA temp_store_directory='/'", "PRAGMA temp_store_directory with a value is not allowed"},
      {"PRAGMA wal_checkpoint", "PRAGMA wal_checkpoint is not allowed"},
      {"PRAGMA database_list", "PRAGMA database_list is not allowed"},
      {"SELECT load_extension('x')", "load_extension is not allowed"},
      {"SELECT * FROM sqlite_stmt", "table sqlite_stmt is not allowed"},
  };
  for (const unsigned int options : {0u, kWrite})
    for (const auto& [sql, reason] : kDenied) EXPECT_THAT(Refusal(sql, options), HasSubstr(reason)) << sql;
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_EQ(One("PRAGMA journal_mode"), "wal");
  EXPECT_EQ(StoreFixture::One("SELECT count(*) FROM sqlite_schema WHERE name='value'"), "1");
}

TEST_F(SqlRequests, HarmlessQuestionsAboutTheFileAreAnswered) {
  EXPECT_GT(AllSql("PRAGMA table_info(value)").size(), 1u);
  EXPECT_GT(AllSql("SELECT name FROM pragma_table_info('value')").size(), 1u);
  EXPECT_GT(AllSql("SELECT name, sql FROM sqlite_schema").size(), 1u);
  EXPECT_EQ(AllSql("PRAGMA user_version").size(), 1u);
  EXPECT_EQ(AllSql("pragma User_Version").size(), 1u);
  EXPECT_EQ(AllSql("EXPLAIN QUERY PLAN SELECT * FROM reading_values WHERE meter='M'").empty(), false);
  EXPECT_EQ(AllSql("SELECT value FROM json_each('[1,2]')").size(), 2u);
}

TEST_F(SqlRequests, WritesForThoseWhoMayInOneTransaction) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}}));
  const cMsg answer = Sql("DELETE FROM value WHERE obis IN (1, 2)", kWrite);
  EXPECT_EQ(answer.GetType(), db_ctrl::eSqlResult) << Reason(answer);
  EXPECT_EQ(answer.Record().GetUInt64Par("changes"), 2u);
  EXPECT_EQ(One("SELECT count(*) FROM value"), "0");
  EXPECT_THAT(Refusal("INSERT INTO store_value VALUES('s', 'a', 'x'), ('s', 'b', NULL)", kWrite),
              HasSubstr("NOT NULL constraint failed: store_value.value"));
  EXPECT_EQ(One("SELECT count(*) FROM store_value"), "0");
  const auto rows = AllSql("INSERT INTO store_value VALUES('s', 'a', 'x') RETURNING key", kWrite);
  EXPECT_THAT(Lines(rows, {"key"}), ElementsAre("a"));
  EXPECT_EQ(AllSql("SELECT 1", kWrite).size(), 1u);
}

TEST_F(SqlRequests, WhatTheServiceRemembersIsReadAgainAfterAWrite) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}}));
  for (const char* table : {"value", "reading", "meter", "obis", "series"})
    EXPECT_EQ(Sql(std::string("DELETE FROM ") + table, kWrite).GetType(), db_ctrl::eSqlResult);
  Store(Reading("N", kNoon, {{"1-0:2.8.0", "2"}}));
  EXPECT_EQ(One("SELECT meter||' '||obis||' '||value FROM reading_values"), "N 1-0:2.8.0 2");
}

TEST_F(SqlRequests, ACollectorThatIsWrittenLogs) {
  Configure("M", {});
  Store(Reading("M", kMidnight + 5, {{"1-0:1.8.0", "1"}}));
  Sql("INSERT INTO collector(meter, addr, activation, count_rp, distance_rp, event_type, obis_ids, push_period, "
      "push_enabled, push_raw_enabled, push_random_offset) SELECT id, '1', 1, 0, 1, '15min', '1-0:1.8.0', '', 0, 0, 0 "
      "FROM meter_config",
      kWrite);
  PollUntilIdle(*m_host);
  Pass(kQuarter);
  EXPECT_EQ(One("SELECT count(*) FROM profile_value"), "1");
}

TEST_F(SqlRequests, WithoutTheRightNothingIsWritten) {
  TrustNobody();
  EXPECT_EQ(Refusal("DELETE FROM value", kWrite), "writing is for root and the user of the service only");
  EXPECT_EQ(Refusal("SELECT 1", kWrite), "writing is for root and the user of the service only");
  EXPECT_EQ(AllSql("SELECT 1").size(), 1u);
}

TEST_F(SqlRequests, SecretsAreReadByThoseWhoMayWrite) {
  Configure("M", {});
  const char* const kSecrets[] = {"SELECT key FROM meter_config",
                                  "SELECT * FROM meter_config",
                                  "SELECT password FROM push_target",
                                  "SELECT record FROM meter_template",
                                  "SELECT 1 FROM meter_config WHERE key='secret'",
                                  "SELECT (SELECT max(key) FROM meter_config)",
                                  "SELECT x FROM (SELECT key AS x FROM meter_config)",
                                  "WITH s AS (SELECT * FROM meter_config) SELECT meter_id FROM s ORDER BY key"};
  for (const char* sql : kSecrets) EXPECT_EQ(Sql(sql).GetType(), db_ctrl::eSqlResult) << sql;
  EXPECT_EQ(OneRow("SELECT key FROM meter_config").GetTextPar("key"), "secret");
  TrustNobody();
  m_client = Connect();
  for (const char* sql : kSecrets) EXPECT_THAT(Refusal(sql), HasSubstr("is read only by those who may write")) << sql;
  EXPECT_EQ(OneRow("SELECT meter_id FROM meter_config").GetTextPar("meter_id"), "M");
  EXPECT_EQ(OneRow("SELECT count(*) AS n FROM push_target").GetIntPar("n"), 0);
}

TEST_F(SqlRequests, RootAndTheServicesOwnUserMayWrite) {
  const auto peer = [](uid_t uid) {
    vorn::cScmPeer of;
    of.uid = uid;
    return of;
  };
  EXPECT_TRUE(cSqlRequests::MayWrite(peer(0)));
  EXPECT_TRUE(cSqlRequests::MayWrite(peer(geteuid())));
  EXPECT_FALSE(cSqlRequests::MayWrite(peer(geteuid() + 1)));
  EXPECT_FALSE(cSqlRequests::MayWrite(vorn::cScmPeer()));
}

// ---- faults

TEST_F(SqlRequests, AFileThatIsGoneIsARefusal) {
  std::filesystem::rename(Options().file, m_folder.File("elsewhere.db"));
  EXPECT_THAT(Refusal("SELECT * FROM value"), HasSubstr("unable to open database file"));
  EXPECT_THAT(Refusal("DELETE FROM value", kWrite), HasSubstr("removed or replaced"));
  std::filesystem::rename(m_folder.File("elsewhere.db"), Options().file);
  EXPECT_EQ(Sql("DELETE FROM value", kWrite).GetType(), db_ctrl::eSqlResult);
}

TEST_F(SqlRequests, ALockOfAnotherProcessRefusesWritingOnly) {
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN IMMEDIATE");
  EXPECT_THAT(Refusal("DELETE FROM value", kWrite), HasSubstr("another process holds its lock"));
  EXPECT_EQ(AllSql("SELECT 1 FROM meter UNION ALL SELECT 2").size(), 1u);
  other.exec("ROLLBACK");
  EXPECT_EQ(Sql("DELETE FROM value", kWrite).GetType(), db_ctrl::eSqlResult);
}

}  // namespace
}  // namespace tav::data
