// SPDX-License-Identifier: Apache-2.0
// cObisRuleTable: the OBIS mapping rules in the gateway's database. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <functional>

#include <gateway/database/store.h>
#include <tav/obis/obis_map_entry.h>

namespace tav::gateway {

class cObisRuleTable {
 public:
  explicit cObisRuleTable(SQLite::Database& database);

  // In place of a rule with its ID.
  void Set(const cObisMapEntry& rule);
  void Remove(unsigned long long id);
  // In no particular order.
  void List(const std::function<void(const cObisMapEntry& rule)>& each);

  // Whether the shipped rules were put in once; they are not put in again, whatever has become of them.
  bool IsFurnished();
  void MarkFurnished();

 private:
  SQLite::Statement m_set;
  SQLite::Statement m_remove;
  SQLite::Statement m_list;
  SQLite::Statement m_furnished;
  SQLite::Statement m_markFurnished;
};

using cObisStore = data::cStore<cObisRuleTable>;

}  // namespace tav::gateway
