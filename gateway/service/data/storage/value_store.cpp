// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/value_store.h>

#include <SQLiteCpp/Database.h>

namespace tav::data {

namespace {

// The length of a text in bytes: length() alone counts characters, and stops at a zero byte.
constexpr const char* kSize =
    "SELECT total(length(CAST(key AS BLOB)) + length(CAST(value AS BLOB)) + ?3) FROM store_value "
    "WHERE store=?1 AND key<>?2";

}  // namespace

cValueStore::cValueStore(SQLite::Database& database)
    : m_set(database,
            "INSERT INTO store_value VALUES(?,?,?) ON CONFLICT(store, key) DO UPDATE SET value=excluded.value"),
      m_size(database, kSize),
      m_get(database, "SELECT key, value FROM store_value WHERE store=? AND key>? ORDER BY key"),
      m_list(database, "SELECT DISTINCT store FROM store_value WHERE store>? ORDER BY store") {}

bool cValueStore::Set(const std::string& store, const std::string& key, const std::string& value) {
  if (SizeWithout(store, key) + key.size() + value.size() + kPairRoom > kMaxStoreSize) return false;
  m_set.bindNoCopy(1, store);
  m_set.bindNoCopy(2, key);
  m_set.bindNoCopy(3, value);
  m_set.exec();
  m_set.reset();
  return true;
}

std::size_t cValueStore::SizeWithout(const std::string& store, const std::string& key) {
  m_size.bindNoCopy(1, store);
  m_size.bindNoCopy(2, key);
  m_size.bind(3, static_cast<std::int64_t>(kPairRoom));
  m_size.executeStep();
  const double size = m_size.getColumn(0).getDouble();
  m_size.reset();
  return static_cast<std::size_t>(size);
}

void cValueStore::Get(const std::string& store, const std::string& after,
                      const std::function<bool(const std::string& key, const std::string& value)>& pair) {
  m_get.bindNoCopy(1, store);
  m_get.bindNoCopy(2, after);
  while (m_get.executeStep())
    if (!pair(m_get.getColumn(0).getString(), m_get.getColumn(1).getString())) break;
  m_get.reset();
}

void cValueStore::List(const std::string& after, const std::function<bool(const std::string& store)>& name) {
  m_list.bindNoCopy(1, after);
  while (m_list.executeStep())
    if (!name(m_list.getColumn(0).getString())) break;
  m_list.reset();
}

}  // namespace tav::data
