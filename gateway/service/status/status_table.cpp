// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/status/status_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>

namespace tav::gateway {

cStatusTable::cStatusTable(SQLite::Database& database)
    : m_set(database,
            "INSERT INTO status_value VALUES(?,?,?,?,?) ON CONFLICT(name) DO UPDATE SET value=excluded.value, "
            "process=excluded.process, pid=excluded.pid, changed=excluded.changed"),
      m_remove(database, "DELETE FROM status_value WHERE name=?"),
      m_list(database, "SELECT name, value, process, pid, changed FROM status_value") {}

void cStatusTable::Set(const std::string& name, const cStatusValue& value) {
  data::Run(m_set, name, value.value, value.process, value.pid, value.changed);
}

void cStatusTable::Remove(const std::string& name) { data::Run(m_remove, name); }

void cStatusTable::List(const std::function<void(const std::string& name, const cStatusValue& value)>& each) {
  data::ForEach(m_list, [&](SQLite::Statement& row) {
    data::cColumns columns(row);
    const std::string name = columns.Text();
    cStatusValue value;
    value.value = columns.Text();
    value.process = columns.Text();
    value.pid = columns.UInt();
    value.changed = columns.UInt();
    each(name, value);
  });
}

}  // namespace tav::gateway
