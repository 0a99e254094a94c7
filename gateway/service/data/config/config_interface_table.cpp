// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_interface_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>

namespace tav::data {

cInterfaceTable::cInterfaceTable(SQLite::Database& database)
    : m_set(database,
            "INSERT INTO interface(name, options, enabled) VALUES(?,?,?) "
            "ON CONFLICT(name) DO UPDATE SET options=excluded.options, enabled=excluded.enabled"),
      m_delete(database, "DELETE FROM interface WHERE name=?"),
      m_list(database, "SELECT name, options, enabled FROM interface ORDER BY name"),
      m_find(database, "SELECT name, options, enabled FROM interface WHERE name=?"),
      m_count(database, "SELECT count(*) FROM interface") {}

void cInterfaceTable::Set(const cInterfaceRecord& interface) {
  Run(m_set, interface.name, interface.options, interface.enabled);
}

void cInterfaceTable::Delete(const std::string& name) { Run(m_delete, name); }

bool cInterfaceTable::Has(const std::string& name) { return !name.empty() && !List(name).empty(); }

std::vector<cInterfaceRecord> cInterfaceTable::List(const std::string& name) {
  std::vector<cInterfaceRecord> interfaces;
  const auto add = [&](SQLite::Statement& row) {
    cColumns columns(row);
    const std::string found = columns.Text();
    const std::string options = columns.Text();
    interfaces.emplace_back(found, options, columns.Bool());
  };
  if (name.empty())
    ForEach(m_list, add);
  else
    ForEach(m_find, add, name);
  return interfaces;
}

std::int64_t cInterfaceTable::Count() { return NumberOr(0, m_count); }

}  // namespace tav::data
