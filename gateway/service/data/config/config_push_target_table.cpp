// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_push_target_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>

namespace tav::data {

namespace {

constexpr const char* kSet =
    "INSERT INTO push_target(idx, name, protocoll, host, username, password, uri, collect, maxruntime, enabled, "
    "log_enabled, post_enabled) VALUES(nullif(?,0),?,?,?,?,?,?,?,?,?,?,?) "
    "ON CONFLICT(idx) DO UPDATE SET name=excluded.name, protocoll=excluded.protocoll, host=excluded.host, "
    "username=excluded.username, password=excluded.password, uri=excluded.uri, collect=excluded.collect, "
    "maxruntime=excluded.maxruntime, enabled=excluded.enabled, log_enabled=excluded.log_enabled, "
    "post_enabled=excluded.post_enabled RETURNING idx";

constexpr const char* kList =
    "SELECT idx, name, protocoll, host, username, password, uri, collect, maxruntime, enabled, log_enabled, "
    "post_enabled FROM push_target WHERE ?1='' OR name=?1 ORDER BY idx";

cPushTarget FromRow(SQLite::Statement& row) {
  cColumns columns(row);
  cPushTarget target;
  target.idx = static_cast<unsigned long long>(columns.Number());
  for (std::string* text :
       {&target.name, &target.protocoll, &target.host, &target.username, &target.password, &target.uri})
    *text = columns.Text();
  target.collect = columns.UInt();
  target.maxruntime = columns.UInt();
  for (bool* flag : {&target.enabled, &target.logEnabled, &target.postEnabled}) *flag = columns.Bool();
  return target;
}

}  // namespace

cPushTargetTable::cPushTargetTable(SQLite::Database& database)
    : m_set(database, kSet),
      m_delete(database, "DELETE FROM push_target WHERE idx=?"),
      m_find(database, "SELECT idx FROM push_target WHERE name=?"),
      m_nameOf(database, "SELECT name FROM push_target WHERE idx=?"),
      m_list(database, kList),
      m_count(database, "SELECT count(*) FROM push_target") {}

std::int64_t cPushTargetTable::Set(const cPushTarget& target) {
  return NumberOr(0, m_set, static_cast<std::int64_t>(target.idx), target.name, target.protocoll, target.host,
                  target.username, target.password, target.uri, target.collect, target.maxruntime, target.enabled,
                  target.logEnabled, target.postEnabled);
}

void cPushTargetTable::Delete(std::int64_t idx) { Run(m_delete, idx); }

std::int64_t cPushTargetTable::Find(const std::string& name) { return NumberOr(0, m_find, name); }

std::string cPushTargetTable::NameOf(std::int64_t idx) {
  std::string name;
  ForEach(
      m_nameOf, [&](SQLite::Statement& row) { name = row.getColumn(0).getString(); }, idx);
  return name;
}

std::vector<cPushTarget> cPushTargetTable::List(const std::string& name) {
  std::vector<cPushTarget> targets;
  ForEach(
      m_list, [&](SQLite::Statement& row) { targets.push_back(FromRow(row)); }, name);
  return targets;
}

std::int64_t cPushTargetTable::Count() { return NumberOr(0, m_count); }

}  // namespace tav::data
