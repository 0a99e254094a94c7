// SPDX-License-Identifier: Apache-2.0
// cInterfaceTable: the interfaces, by name. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <string>
#include <vector>

#include <tav/config/interface_record.h>

namespace tav::data {

class cInterfaceTable {
 public:
  explicit cInterfaceTable(SQLite::Database& database);

  void Set(const cInterfaceRecord& interface);
  // Fails, by an exception, while meters refer to it.
  void Delete(const std::string& name);
  bool Has(const std::string& name);
  // That one, or all without a name, in the order of their names; without their meters.
  std::vector<cInterfaceRecord> List(const std::string& name);
  std::int64_t Count();

 private:
  SQLite::Statement m_set;
  SQLite::Statement m_delete;
  SQLite::Statement m_list;
  SQLite::Statement m_find;
  SQLite::Statement m_count;
};

}  // namespace tav::data
