// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/obis/obis_rule_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>

namespace tav::gateway {

namespace {

// The database's numbers are signed: an ID is kept by its bits.
std::int64_t ToColumn(unsigned long long id) { return static_cast<std::int64_t>(id); }

}  // namespace

cObisRuleTable::cObisRuleTable(SQLite::Database& database)
    : m_set(database,
            "INSERT INTO obis_rule VALUES(?,?,?,?) "
            "ON CONFLICT(id) DO UPDATE SET name=excluded.name, obis=excluded.obis, map=excluded.map"),
      m_remove(database, "DELETE FROM obis_rule WHERE id=?"),
      m_list(database, "SELECT id, name, obis, map FROM obis_rule"),
      m_furnished(database, "SELECT count(*) FROM setting WHERE name='obis-rules-furnished'"),
      m_markFurnished(database, "INSERT OR REPLACE INTO setting VALUES('obis-rules-furnished', '1')") {}

void cObisRuleTable::Set(const cObisMapEntry& rule) {
  data::Run(m_set, ToColumn(rule.GetID()), rule.GetName(), rule.GetObisID(), rule.GetMap());
}

void cObisRuleTable::Remove(unsigned long long id) { data::Run(m_remove, ToColumn(id)); }

void cObisRuleTable::List(const std::function<void(const cObisMapEntry& rule)>& each) {
  data::ForEach(m_list, [&](SQLite::Statement& row) {
    data::cColumns columns(row);
    const auto id = static_cast<unsigned long long>(columns.Number());
    const std::string name = columns.Text();
    const std::string obis = columns.Text();
    each(cObisMapEntry(id, name, obis, columns.Text()));
  });
}

bool cObisRuleTable::IsFurnished() { return data::NumberOr(0, m_furnished) != 0; }

void cObisRuleTable::MarkFurnished() { data::Run(m_markFurnished); }

}  // namespace tav::gateway
