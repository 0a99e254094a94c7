// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/dictionary.h>

#include <SQLiteCpp/Database.h>

namespace tav::data {

namespace {

std::string Joined(std::initializer_list<const char*> columns, const char* before, const char* between) {
  std::string text;
  for (const char* column : columns) text += (text.empty() ? before : between) + std::string(column);
  return text;
}

std::string SelectSql(const std::string& table, std::initializer_list<const char*> columns) {
  return "SELECT id FROM " + table + " WHERE " + Joined(columns, "", "=? AND ") + "=?";
}

std::string InsertSql(const std::string& table, std::initializer_list<const char*> columns) {
  std::string marks = "?";
  for (std::size_t i = 1; i < columns.size(); ++i) marks += ",?";
  return "INSERT INTO " + table + Joined(columns, "(", ",") + ") VALUES(" + marks + ")";
}

void AppendRaw(std::string& to, std::int64_t number) {
  to.append(reinterpret_cast<const char*>(&number), sizeof number);
}

}  // namespace

cDictionary::cDictionary(SQLite::Database& database, const std::string& table,
                         std::initializer_list<const char*> columns, std::size_t limit)
    : m_select(database, SelectSql(table, columns)), m_insert(database, InsertSql(table, columns)), m_limit(limit) {}

std::int64_t cDictionary::Id(cRow row) {
  MakeKey(row);
  if (const auto found = m_known.find(m_key); found != m_known.end()) return found->second;
  std::optional<std::int64_t> id = Select(row);
  if (!id) {
    m_insert.reset();
    Bind(m_insert, row);
    m_insert.exec();
    m_insert.reset();
    id = Select(row);
  }
  Remember(*id);
  return *id;
}

std::optional<std::int64_t> cDictionary::Find(cRow row) {
  MakeKey(row);
  if (const auto found = m_known.find(m_key); found != m_known.end()) return found->second;
  const std::optional<std::int64_t> id = Select(row);
  if (id) Remember(*id);
  return id;
}

// Texts with their length in front, so that no two rows make the same key.
void cDictionary::MakeKey(cRow row) {
  m_key.clear();
  for (const cField& field : row) {
    if (const auto* number = std::get_if<std::int64_t>(&field)) {
      AppendRaw(m_key, *number);
    } else {
      const std::string_view text = std::get<std::string_view>(field);
      AppendRaw(m_key, static_cast<std::int64_t>(text.size()));
      m_key.append(text);
    }
  }
}

void cDictionary::Bind(SQLite::Statement& statement, cRow row) {
  int at = 0;
  for (const cField& field : row) {
    if (const auto* number = std::get_if<std::int64_t>(&field))
      statement.bind(++at, *number);
    else
      statement.bind(++at, std::string(std::get<std::string_view>(field)));
  }
}

std::optional<std::int64_t> cDictionary::Select(cRow row) {
  m_select.reset();
  Bind(m_select, row);
  std::optional<std::int64_t> id;
  if (m_select.executeStep()) id = m_select.getColumn(0).getInt64();
  m_select.reset();
  return id;
}

void cDictionary::Remember(std::int64_t id) {
  if (m_known.size() >= m_limit) m_known.clear();
  m_known.emplace(m_key, id);
}

}  // namespace tav::data
