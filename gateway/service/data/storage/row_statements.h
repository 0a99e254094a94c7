// SPDX-License-Identifier: Apache-2.0
// cRowStatements: one INSERT statement for each number of rows, prepared when it is asked for the first time. Running a
// statement costs more than the rows in it.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <array>
#include <optional>
#include <string>

namespace tav::data {

class cRowStatements {
 public:
  // Rows of one statement.
  static constexpr std::size_t kMaxRows = 16;

  // The statement is head, the row so many times separated by commas, tail.
  cRowStatements(SQLite::Database& database, std::string head, std::string row, std::string tail = {});

  // rows: 1 to kMaxRows. Throws SQLite::Exception.
  SQLite::Statement& For(std::size_t rows);

 private:
  SQLite::Database& m_database;
  std::string m_head;
  std::string m_row;
  std::string m_tail;
  std::array<std::optional<SQLite::Statement>, kMaxRows> m_statements;
};

}  // namespace tav::data
