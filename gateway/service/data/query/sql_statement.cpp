// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/sql_statement.h>

#include <sqlite3.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>

#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

using Clock = std::chrono::steady_clock;
using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

constexpr int kStepsBetweenLooks = 1000;
constexpr int kPatience = 10;  // milliseconds for another process's lock

// Time and memory bounds of a connection while the object lives. Time is looked at between the steps of a statement, so
// texts and patterns are kept short enough that no function takes long with them.
class cBounded {
 public:
  cBounded(sqlite3* database, const cSqlBounds& bounds)
      : m_database(database),
        m_end(Clock::now() + std::chrono::milliseconds(bounds.milliseconds)),
        m_length(sqlite3_limit(database, SQLITE_LIMIT_LENGTH, bounds.cellBytes)),
        m_pattern(sqlite3_limit(database, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, bounds.patternBytes)),
        m_heap(sqlite3_hard_heap_limit64(-1)) {
    sqlite3_progress_handler(database, kStepsBetweenLooks, &cBounded::Look, this);
    sqlite3_hard_heap_limit64(sqlite3_memory_used() + bounds.memory);
  }
  ~cBounded() {
    sqlite3_hard_heap_limit64(m_heap);
    sqlite3_limit(m_database, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, m_pattern);
    sqlite3_limit(m_database, SQLITE_LIMIT_LENGTH, m_length);
    sqlite3_progress_handler(m_database, 0, nullptr, nullptr);
  }
  cBounded(const cBounded&) = delete;
  cBounded& operator=(const cBounded&) = delete;

 private:
  static int Look(void* self) { return Clock::now() > static_cast<cBounded*>(self)->m_end ? 1 : 0; }

  sqlite3* m_database;
  Clock::time_point m_end;
  int m_length;
  int m_pattern;
  sqlite3_int64 m_heap;
};

class cRun {
 public:
  cRun(sqlite3* database, const cSqlAuthorizer& authorizer, const cSqlBounds& bounds, cSqlOutcome& outcome)
      : m_database(database), m_authorizer(authorizer), m_bounds(bounds), m_outcome(outcome) {}

  bool Fail(const std::string& error) {
    m_outcome.error = error;
    m_outcome.rows = vorn::cRecord();
    return false;
  }
  bool FailHere(int code) {
    if (!m_authorizer.GetDenied().empty()) return Fail(m_authorizer.GetDenied());
    if (code == SQLITE_INTERRUPT)
      return Fail("the statement took more than " + std::to_string(m_bounds.milliseconds) + " ms");
    if (code == SQLITE_NOMEM)
      return Fail("the statement took more than " + std::to_string(m_bounds.memory) + " bytes of memory");
    const int at = sqlite3_error_offset(m_database);
    return Fail(sqlite3_errmsg(m_database) + (at < 0 ? std::string() : " at byte " + std::to_string(at)));
  }

  bool Prepare(const std::string& sql, Statement& statement) {
    if (sql.size() > static_cast<std::size_t>(m_bounds.textBytes))
      return Fail("the statement has " + std::to_string(sql.size()) + " bytes, at most " +
                  std::to_string(m_bounds.textBytes) + " are possible");
    if (sql.find('\0') != std::string::npos) return Fail("the statement has a zero byte");
    const char* tail = nullptr;
    const int code = PrepareOne(sql.c_str(), statement, tail);
    if (code != SQLITE_OK) return FailHere(code);
    if (statement == nullptr) return Fail("there is no statement");
    if (HasMore(tail)) return Fail("there are several statements, one at a time is possible");
    if (sqlite3_bind_parameter_count(statement.get()) != 0)
      return Fail("the statement has a parameter, there are no values for it");
    return ReadColumns(statement.get());
  }

  bool Step(sqlite3_stmt* statement) {
    const std::int64_t before = sqlite3_total_changes64(m_database);
    unsigned int count = 0;
    int code = sqlite3_step(statement);
    for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
      if (++count > m_bounds.rows) return Fail("there are more than " + std::to_string(m_bounds.rows) + " rows");
      if (!AddRow(statement)) return false;
    }
    if (code != SQLITE_DONE) return FailHere(code);
    m_outcome.changes = static_cast<std::uint64_t>(sqlite3_total_changes64(m_database) - before);
    return true;
  }

 private:
  int PrepareOne(const char* sql, Statement& statement, const char*& tail) {
    sqlite3_stmt* made = nullptr;
    const int code = sqlite3_prepare_v3(m_database, sql, -1, 0, &made, &tail);
    statement.reset(made);
    return code;
  }

  // Blanks, comments and semicolons behind a statement are none; everything else is, also what has an error.
  bool HasMore(const char* tail) {
    while (*tail != '\0') {
      Statement next(nullptr, &sqlite3_finalize);
      const char* const begin = tail;
      if (PrepareOne(begin, next, tail) != SQLITE_OK || next != nullptr) return true;
      if (tail == begin) return false;
    }
    return false;
  }

  bool ReadColumns(sqlite3_stmt* statement) {
    constexpr std::size_t kMaxName = 255;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
      m_outcome.columns.emplace_back(sqlite3_column_name(statement, column));
      if (m_outcome.columns.back().size() > kMaxName)
        return Fail("the name of column " + std::to_string(column + 1) + " has more than " + std::to_string(kMaxName) +
                    " bytes: give it a shorter one with AS");
    }
    return true;
  }

  bool AddRow(sqlite3_stmt* statement) {
    vorn::cRecord row;
    for (int column = 0; column < static_cast<int>(m_outcome.columns.size()); ++column) AddCell(statement, column, row);
    const std::size_t size = row.GetBytes().size();
    if (size > m_bounds.rowBytes) return Fail("a row has more than " + std::to_string(m_bounds.rowBytes) + " bytes");
    if (m_outcome.rows.GetBytes().size() + size > m_bounds.bytes)
      return Fail("the rows have more than " + std::to_string(m_bounds.bytes) + " bytes: ask for fewer");
    m_outcome.rows.AppendRecordPar(db_ctrl::kRow, row);
    return true;
  }

  void AddCell(sqlite3_stmt* statement, int column, vorn::cRecord& row) const {
    const std::string& name = m_outcome.columns[static_cast<std::size_t>(column)];
    const auto size = [&] { return static_cast<std::size_t>(sqlite3_column_bytes(statement, column)); };
    switch (sqlite3_column_type(statement, column)) {
      case SQLITE_INTEGER:
        return AddInteger(sqlite3_column_int64(statement, column), name, row);
      case SQLITE_FLOAT:
        return AddReal(sqlite3_column_double(statement, column), name, row);
      case SQLITE_TEXT: {
        const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        return row.AppendTextPar(name, std::string_view(text, size()));
      }
      case SQLITE_BLOB: {
        const void* const bytes = sqlite3_column_blob(statement, column);
        return row.AppendDataPar(name, vorn::cData(bytes, size()));
      }
      default:
        return row.AppendTextPar(name, nullptr);
    }
  }

  static void AddInteger(std::int64_t number, const std::string& name, vorn::cRecord& row) {
    if (number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max())
      row.AppendIntPar(name, static_cast<int>(number));
    else if (number > 0)
      row.AppendUInt64Par(name, static_cast<std::uint64_t>(number));
    else
      row.AppendTextPar(name, std::to_string(number));
  }

  // The shortest text that reads back as the same number.
  static void AddReal(double number, const std::string& name, vorn::cRecord& row) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    row.AppendTextPar(name, std::string_view(text.data(), static_cast<std::size_t>(end - text.data())));
  }

  sqlite3* m_database;
  const cSqlAuthorizer& m_authorizer;
  const cSqlBounds& m_bounds;
  cSqlOutcome& m_outcome;
};

}  // namespace

cSqlOutcome RunSql(sqlite3* database, const std::string& sql, eSqlRight right, const cSqlBounds& bounds) {
  cSqlOutcome outcome;
  const cSqlAuthorizer authorizer(database, right);
  const cBounded bounded(database, bounds);
  Statement statement(nullptr, &sqlite3_finalize);
  cRun run(database, authorizer, bounds, outcome);
  if (run.Prepare(sql, statement)) run.Step(statement.get());
  return outcome;
}

cSqlOutcome RunSqlReadOnly(const std::string& file, const std::string& sql, eSqlRight right, const cSqlBounds& bounds) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
  const std::unique_ptr<sqlite3, int (*)(sqlite3*)> database(opened, &sqlite3_close);
  if (code != SQLITE_OK) {
    cSqlOutcome outcome;
    outcome.error = "database '" + file + "': " + sqlite3_errstr(code);
    return outcome;
  }
  sqlite3_busy_timeout(opened, kPatience);
  sqlite3_limit(opened, SQLITE_LIMIT_ATTACHED, 0);
  sqlite3_exec(opened, "PRAGMA temp_store=MEMORY", nullptr, nullptr, nullptr);
  return RunSql(opened, sql, right, bounds);
}

}  // namespace tav::data
