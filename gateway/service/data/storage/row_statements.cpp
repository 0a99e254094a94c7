// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/row_statements.h>

#include <SQLiteCpp/Database.h>

#include <utility>

namespace tav::data {

cRowStatements::cRowStatements(SQLite::Database& database, std::string head, std::string row, std::string tail)
    : m_database(database), m_head(std::move(head)), m_row(std::move(row)), m_tail(std::move(tail)) {}

SQLite::Statement& cRowStatements::For(std::size_t rows) {
  std::optional<SQLite::Statement>& statement = m_statements[rows - 1];
  if (!statement) {
    std::string sql = m_head + m_row;
    for (std::size_t row = 1; row < rows; ++row) sql += "," + m_row;
    statement.emplace(m_database, sql + m_tail);
  }
  return *statement;
}

}  // namespace tav::data
