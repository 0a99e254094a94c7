// SPDX-License-Identifier: Apache-2.0
// What the tables of the configuration share: a statement run with its parameters in one line.
#pragma once

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include <cstdint>

namespace tav::data {

// A statement that gives no rows; how many rows it changed.
template <typename... Parameters>
int Run(SQLite::Statement& statement, const Parameters&... parameters) {
  SQLite::bind(statement, parameters...);
  const int changed = statement.exec();
  statement.reset();
  return changed;
}

// Calls row for each row of the result. It must not use the same statement.
template <typename Row, typename... Parameters>
void ForEach(SQLite::Statement& statement, const Row& row, const Parameters&... parameters) {
  SQLite::bind(statement, parameters...);
  while (statement.executeStep()) row(statement);
  statement.reset();
}

// The number in the first column of the only row; absent when there is no row.
template <typename... Parameters>
std::int64_t NumberOr(std::int64_t absent, SQLite::Statement& statement, const Parameters&... parameters) {
  std::int64_t number = absent;
  ForEach(
      statement, [&](SQLite::Statement& row) { number = row.getColumn(0).getInt64(); }, parameters...);
  return number;
}

// The columns of a row one after the other.
class cColumns {
 public:
  explicit cColumns(SQLite::Statement& row) : m_row(row) {}

  std::string Text() { return m_row.getColumn(m_at++).getString(); }
  std::int64_t Number() { return m_row.getColumn(m_at++).getInt64(); }
  unsigned int UInt() { return static_cast<unsigned int>(Number()); }
  bool Bool() { return Number() != 0; }

 private:
  SQLite::Statement& m_row;
  int m_at = 0;
};

}  // namespace tav::data
