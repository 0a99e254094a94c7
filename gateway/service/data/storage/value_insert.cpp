// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/value_insert.h>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

#include <algorithm>

namespace tav::data {

namespace {

// The parameters 1 to 3 are the same for all rows, each row has three of its own.
constexpr int kShared = 3;
constexpr int kOwn = 3;

}  // namespace

cValueInsert::cValueInsert(SQLite::Database& database)
    : m_database(database),
      m_statements(database, "INSERT OR FAIL INTO value(meter, time, owner, obis, value, form) VALUES",
                   "(?1,?2,?3,?,?,?)") {}

void cValueInsert::Insert(std::int64_t meter, std::int64_t time, std::optional<std::int64_t> owner,
                          std::span<cNewValue> values) {
  while (!values.empty()) {
    const std::span<cNewValue> some = values.first(std::min(values.size(), cRowStatements::kMaxRows));
    SQLite::Statement& statement = m_statements.For(some.size());
    statement.bind(1, meter);
    statement.bind(2, time);
    if (owner)
      statement.bind(3, *owner);
    else
      statement.bind(3);
    const std::size_t stored = InsertUntilKnown(statement, some);
    for (std::size_t at = 0; at < some.size(); ++at) some[at].stored = at < stored;
    // The one behind the stored ones is known; those behind it have not been looked at.
    values = values.subspan(std::min(stored + 1, some.size()));
  }
}

// A statement that fails keeps the rows before the one it failed at, and tells how many they were.
std::size_t cValueInsert::InsertUntilKnown(SQLite::Statement& statement, std::span<const cNewValue> values) {
  int index = kShared;
  for (const cNewValue& value : values) {
    statement.bind(index + 1, value.obis);
    BindValue(statement, index + 2, value.value);
    statement.bind(index + 3, value.form);
    index += kOwn;
  }
  const int result = statement.tryExecuteStep();
  if (result != SQLITE_DONE && result != SQLITE_CONSTRAINT) throw SQLite::Exception(m_database.getHandle(), result);
  const auto stored = static_cast<std::size_t>(statement.getChanges());
  statement.tryReset();
  return stored;
}

}  // namespace tav::data
