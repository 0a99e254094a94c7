// SPDX-License-Identifier: Apache-2.0
// cPushTargetTable: the push targets, by number; their names are unique. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <string>
#include <vector>

#include <tav/config/push_target.h>

namespace tav::data {

class cPushTargetTable {
 public:
  explicit cPushTargetTable(SQLite::Database& database);

  // Its number: with idx 0 the next one, which no target had before.
  std::int64_t Set(const cPushTarget& target);
  // Fails, by an exception, while collectors refer to it.
  void Delete(std::int64_t idx);
  // 0 when there is none.
  std::int64_t Find(const std::string& name);
  // Empty when there is none.
  std::string NameOf(std::int64_t idx);
  // The one of that name, or all without a name, in the order of their numbers.
  std::vector<cPushTarget> List(const std::string& name);
  std::int64_t Count();

 private:
  SQLite::Statement m_set;
  SQLite::Statement m_delete;
  SQLite::Statement m_find;
  SQLite::Statement m_nameOf;
  SQLite::Statement m_list;
  SQLite::Statement m_count;
};

}  // namespace tav::data
