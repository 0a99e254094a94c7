// SPDX-License-Identifier: Apache-2.0
// cTemplateTable: the meter templates, by name, each with a number that no other one had. Operations throw
// SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <string>
#include <vector>

#include <tav/framework/record.h>

namespace tav::data {

struct cStoredTemplate {
  std::int64_t idx = 0;
  std::string name;
  vorn::cRecord record;
};

class cTemplateTable {
 public:
  explicit cTemplateTable(SQLite::Database& database);

  // Its number: idx, which no other one has; for 0 the one that it has, or the next.
  std::int64_t Set(const std::string& name, const vorn::cRecord& record, std::int64_t idx = 0);
  void Delete(std::int64_t idx);
  // 0 when there is none.
  std::int64_t Find(const std::string& name);
  // Empty when there is none.
  std::string NameOf(std::int64_t idx);
  // The one of that name, or all without a name, in the order of their numbers.
  std::vector<cStoredTemplate> List(const std::string& name);
  std::int64_t Count();

 private:
  SQLite::Statement m_update;
  SQLite::Statement m_number;
  SQLite::Statement m_insert;
  SQLite::Statement m_delete;
  SQLite::Statement m_find;
  SQLite::Statement m_nameOf;
  SQLite::Statement m_list;
  SQLite::Statement m_count;
};

}  // namespace tav::data
