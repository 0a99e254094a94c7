// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_template_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>

namespace tav::data {

// A change goes by UPDATE first: an INSERT that ends in one would use up a number.
cTemplateTable::cTemplateTable(SQLite::Database& database)
    : m_update(database, "UPDATE meter_template SET record=?2 WHERE name=?1"),
      m_number(database, "UPDATE meter_template SET idx=?2 WHERE name=?1"),
      m_insert(database, "INSERT INTO meter_template(name, record) VALUES(?1,?2)"),
      m_delete(database, "DELETE FROM meter_template WHERE idx=?"),
      m_find(database, "SELECT idx FROM meter_template WHERE name=?"),
      m_nameOf(database, "SELECT name FROM meter_template WHERE idx=?"),
      m_list(database, "SELECT idx, name, record FROM meter_template WHERE ?1='' OR name=?1 ORDER BY idx"),
      m_count(database, "SELECT count(*) FROM meter_template") {}

std::int64_t cTemplateTable::Set(const std::string& name, const vorn::cRecord& record, std::int64_t idx) {
  SQLite::Statement& statement = Find(name) != 0 ? m_update : m_insert;
  const std::string_view bytes = record.GetBytes();
  statement.bindNoCopy(1, name);
  statement.bindNoCopy(2, static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()));
  statement.exec();
  statement.reset();
  if (idx != 0) Run(m_number, name, idx);
  return Find(name);
}

void cTemplateTable::Delete(std::int64_t idx) { Run(m_delete, idx); }

std::int64_t cTemplateTable::Find(const std::string& name) { return NumberOr(0, m_find, name); }

std::string cTemplateTable::NameOf(std::int64_t idx) {
  std::string name;
  ForEach(
      m_nameOf, [&](SQLite::Statement& row) { name = row.getColumn(0).getString(); }, idx);
  return name;
}

std::vector<cStoredTemplate> cTemplateTable::List(const std::string& name) {
  std::vector<cStoredTemplate> templates;
  const auto add = [&](SQLite::Statement& row) {
    cStoredTemplate& found = templates.emplace_back();
    found.idx = row.getColumn(0).getInt64();
    found.name = row.getColumn(1).getString();
    const SQLite::Column bytes = row.getColumn(2);
    vorn::cRecord::FromBytes(bytes.getBlob(), static_cast<std::size_t>(bytes.getBytes()), found.record);
  };
  ForEach(m_list, add, name);
  return templates;
}

std::int64_t cTemplateTable::Count() { return NumberOr(0, m_count); }

}  // namespace tav::data
