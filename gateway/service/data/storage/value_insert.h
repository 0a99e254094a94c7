// SPDX-License-Identifier: Apache-2.0
// cValueInsert: adds the values that one meter has of one second, many with one statement: what a statement costs is
// most of what a value costs. Operations throw SQLite::Exception.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include <gateway/service/data/storage/row_statements.h>
#include <gateway/service/data/storage/series.h>

namespace tav::data {

struct cNewValue {
  std::int64_t obis = 0;
  cStoredValue value;
  std::int64_t form = 0;
  bool stored = false;  // set by Insert: it was not there before
};

class cValueInsert {
 public:
  explicit cValueInsert(SQLite::Database& database);

  // owner: the reading they belong to, as the table has it; none for the first reading of that second.
  void Insert(std::int64_t meter, std::int64_t time, std::optional<std::int64_t> owner, std::span<cNewValue> values);

 private:
  std::size_t InsertUntilKnown(SQLite::Statement& statement, std::span<const cNewValue> values);

  SQLite::Database& m_database;
  cRowStatements m_statements;
};

}  // namespace tav::data
