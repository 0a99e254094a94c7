// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_collector_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>
#include <gateway/service/data/config/config_faults.h>

namespace tav::data {

namespace {

constexpr const char* kSet =
    "INSERT INTO collector(meter, addr, activation, count_rp, distance_rp, event_type, obis_ids, push_target, "
    "push_period, push_enabled, push_raw_enabled, push_random_offset) VALUES(?,?,?,?,?,?,?,nullif(?,0),?,?,?,?) "
    "ON CONFLICT(meter, addr) DO UPDATE SET activation=excluded.activation, count_rp=excluded.count_rp, "
    "distance_rp=excluded.distance_rp, event_type=excluded.event_type, obis_ids=excluded.obis_ids, "
    "push_target=excluded.push_target, push_period=excluded.push_period, push_enabled=excluded.push_enabled, "
    "push_raw_enabled=excluded.push_raw_enabled, push_random_offset=excluded.push_random_offset";

constexpr const char* kList =
    "SELECT c.addr, c.activation, c.count_rp, c.distance_rp, c.event_type, c.obis_ids, ifnull(c.push_target, 0), "
    "ifnull(p.name, ''), c.push_period, c.push_enabled, c.push_raw_enabled, c.push_random_offset "
    "FROM collector c LEFT JOIN push_target p ON p.idx=c.push_target WHERE c.meter=? ORDER BY c.id";

cCollectorConfig FromRow(SQLite::Statement& row) {
  cColumns columns(row);
  cCollectorConfig collector;
  collector.addr = columns.Text();
  collector.activation = columns.Bool();
  collector.countRP = columns.UInt();
  collector.distanceRP = columns.UInt();
  collector.eventType = columns.Text();
  collector.obisIds = columns.Text();
  collector.pushTargetIdx = static_cast<unsigned long long>(columns.Number());
  collector.pushTargetName = columns.Text();
  collector.pushPeriod = columns.Text();
  collector.pushEnabled = columns.Bool();
  collector.pushRawEnabled = columns.Bool();
  collector.pushRandomOffset = static_cast<unsigned short>(columns.Number());
  return collector;
}

}  // namespace

cCollectorTable::cCollectorTable(SQLite::Database& database)
    : m_set(database, kSet),
      m_delete(database, "DELETE FROM collector WHERE meter=? AND addr=?"),
      m_forget(database, "UPDATE collector SET push_target=NULL WHERE push_target IS NOT NULL"),
      m_list(database, kList),
      m_users(database,
              "SELECT m.meter_id, c.addr FROM collector c JOIN meter_config m ON m.id=c.meter WHERE c.push_target=? "
              "ORDER BY m.meter_id, c.id"),
      m_most(database, "SELECT count(*) FROM collector GROUP BY meter ORDER BY 1 DESC LIMIT 1") {}

void cCollectorTable::Set(std::int64_t meter, const cCollectorConfig& collector) {
  Run(m_set, meter, collector.addr, collector.activation, collector.countRP, collector.distanceRP, collector.eventType,
      collector.obisIds, static_cast<std::int64_t>(collector.pushTargetIdx), collector.pushPeriod,
      collector.pushEnabled, collector.pushRawEnabled, static_cast<int>(collector.pushRandomOffset));
}

void cCollectorTable::Delete(std::int64_t meter, const std::string& addr) { Run(m_delete, meter, addr); }

void cCollectorTable::ForgetTargets() { Run(m_forget); }

std::list<cCollectorConfig> cCollectorTable::List(std::int64_t meter) {
  std::list<cCollectorConfig> collectors;
  ForEach(
      m_list, [&](SQLite::Statement& row) { collectors.push_back(FromRow(row)); }, meter);
  return collectors;
}

std::vector<std::string> cCollectorTable::UsersOf(std::int64_t target) {
  std::vector<std::string> users;
  const auto add = [&](SQLite::Statement& row) {
    cColumns columns(row);
    const std::string meter = columns.Text();
    users.push_back("meter " + QuotedName(meter) + " collector " + QuotedName(columns.Text()));
  };
  ForEach(m_users, add, target);
  return users;
}

std::int64_t cCollectorTable::CountMost() { return NumberOr(0, m_most); }

}  // namespace tav::data
