// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/collector_list.h>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <map>
#include <tuple>
#include <utility>

#include <tav/framework/helper.h>

namespace tav::data {

namespace {

constexpr const char* kCollectors =
    "SELECT 0, m.meter_id, m.medium, m.mfct, c.addr, c.activation, c.event_type, c.distance_rp, c.count_rp, c.obis_ids "
    "FROM collector c CROSS JOIN meter_config m ON m.id=c.meter";
constexpr const char* kProfiles =
    "SELECT id, meter_id, medium, mfct, addr, active, event_type, distance_rp, count_rp, obis_ids FROM profile";
constexpr const char* kInsert =
    "INSERT INTO profile(meter_id, medium, mfct, addr, active, event_type, distance_rp, count_rp, obis_ids, logged) "
    "VALUES(?,?,?,?,?,?,?,?,?,0)";
constexpr const char* kChange =
    "UPDATE profile SET active=?, event_type=?, distance_rp=?, count_rp=?, obis_ids=?, logged=iif(?,0,logged) WHERE "
    "id=?";

}  // namespace

bool cCollectorList::Update() {
  std::map<std::vector<std::string>, cCollector> profiles;
  for (cCollector& profile : Read(kProfiles)) {
    const std::vector<std::string> key = profile.key;
    profiles.emplace(key, std::move(profile));
  }
  bool changed = false;
  for (const cCollector& collector : Read(kCollectors)) {
    const auto found = profiles.find(collector.key);
    if (found == profiles.end()) {
      Insert(collector);
      changed = true;
      continue;
    }
    const auto tie = [](const cCollector& c) {
      return std::tie(c.active, c.eventType, c.distance, c.count, c.obisIds);
    };
    if (tie(found->second) != tie(collector)) {
      Change(found->second, collector);
      changed = true;
    }
    profiles.erase(found);
  }
  for (const auto& [key, profile] : profiles) Delete(profile.id);
  return changed || !profiles.empty();
}

std::vector<cCollectorList::cCollector> cCollectorList::Read(const char* sql) {
  SQLite::Statement row(m_database, sql);
  std::vector<cCollector> collectors;
  while (row.executeStep()) {
    cCollector& collector = collectors.emplace_back();
    collector.id = row.getColumn(0).getInt64();
    for (int column = 1; column <= 4; ++column) collector.key.push_back(row.getColumn(column).getString());
    collector.active = row.getColumn(5).getInt64();
    collector.eventType = row.getColumn(6).getString();
    collector.distance = row.getColumn(7).getInt64();
    collector.count = row.getColumn(8).getInt64();
    collector.obisIds = row.getColumn(9).getString();
  }
  return collectors;
}

void cCollectorList::Insert(const cCollector& collector) {
  SQLite::Statement insert(m_database, kInsert);
  int at = 0;
  for (const std::string& part : collector.key) insert.bind(++at, part);
  insert.bind(++at, collector.active);
  insert.bind(++at, collector.eventType);
  insert.bind(++at, collector.distance);
  insert.bind(++at, collector.count);
  insert.bind(++at, collector.obisIds);
  insert.exec();
}

void cCollectorList::Change(const cCollector& from, const cCollector& to) {
  const bool otherEvents = from.eventType != to.eventType || from.distance != to.distance;
  const bool anew = otherEvents || from.obisIds != to.obisIds || from.count != to.count;
  if (otherEvents) DeleteRows(from.id);
  SQLite::Statement change(m_database, kChange);
  change.bind(1, to.active);
  change.bind(2, to.eventType);
  change.bind(3, to.distance);
  change.bind(4, to.count);
  change.bind(5, to.obisIds);
  change.bind(6, anew ? 1 : 0);
  change.bind(7, from.id);
  change.exec();
}

void cCollectorList::Delete(std::int64_t id) {
  DeleteRows(id);
  SQLite::Statement remove(m_database, "DELETE FROM profile WHERE id=?");
  remove.bind(1, id);
  remove.exec();
}

void cCollectorList::DeleteRows(std::int64_t id) {
  SQLite::Statement remove(m_database, "DELETE FROM profile_value WHERE profile=?");
  remove.bind(1, id);
  remove.exec();
}

std::vector<std::string> cCollectorList::SplitObis(const std::string& text) {
  std::vector<std::string> names;
  for (const std::string& token : vorn::cHelper::GetStringTokens(text, ",")) {
    const std::size_t begin = token.find_first_not_of(' ');
    if (begin != std::string::npos) names.push_back(token.substr(begin, token.find_last_not_of(' ') - begin + 1));
  }
  return names;
}

}  // namespace tav::data
