// SPDX-License-Identifier: Apache-2.0
// cDictionary: a table of rows that repeat (names, units, origins of readings), each kept once under a small number.
//
// Numbers asked for once are remembered, up to a limit, so that the common reading costs no look-up in the database.
// Operations throw SQLite::Exception. What it remembers is wrong after a rolled back transaction: make a new one.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

namespace SQLite {
class Database;
}

namespace tav::data {

class cDictionary {
 public:
  using cField = std::variant<std::int64_t, std::string_view>;
  using cRow = std::initializer_list<cField>;

  static constexpr std::size_t kDefaultLimit = 8192;

  // The table has the column "id" and a unique key over these columns.
  cDictionary(SQLite::Database& database, const std::string& table, std::initializer_list<const char*> columns,
              std::size_t limit = kDefaultLimit);

  // The number of a row; it is added when it is new.
  std::int64_t Id(cRow row);
  std::optional<std::int64_t> Find(cRow row);
  std::size_t GetRemembered() const { return m_known.size(); }

 private:
  void MakeKey(cRow row);
  void Bind(SQLite::Statement& statement, cRow row);
  std::optional<std::int64_t> Select(cRow row);
  void Remember(std::int64_t id);

  SQLite::Statement m_select;
  SQLite::Statement m_insert;
  std::size_t m_limit;
  std::string m_key;  // of the row asked for last, kept for its room
  std::unordered_map<std::string, std::int64_t> m_known;
};

}  // namespace tav::data
