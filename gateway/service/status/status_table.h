// SPDX-License-Identifier: Apache-2.0
// cStatusTable: the status values in the gateway's database, as they were last known. Operations throw
// SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <functional>
#include <string>

#include <gateway/database/store.h>
#include <gateway/service/status/status_set.h>

namespace tav::gateway {

class cStatusTable {
 public:
  explicit cStatusTable(SQLite::Database& database);

  void Set(const std::string& name, const cStatusValue& value);
  void Remove(const std::string& name);
  void List(const std::function<void(const std::string& name, const cStatusValue& value)>& each);

 private:
  SQLite::Statement m_set;
  SQLite::Statement m_remove;
  SQLite::Statement m_list;
};

using cStatusStore = data::cStore<cStatusTable>;

}  // namespace tav::gateway
