// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_store.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>

#include <gateway/service/data/profile/collector_list.h>
#include <tav/framework/trace.h>

namespace tav::data {

namespace {

constexpr const char* kLoad =
    "SELECT id, meter_id, addr, event_type, distance_rp, count_rp, obis_ids, logged FROM profile WHERE active=1";
constexpr const char* kBehind = "SELECT time FROM value WHERE meter=? AND time>? ORDER BY time LIMIT 1";
constexpr const char* kSeriesTime = "SELECT time FROM series WHERE meter=? AND obis=?";
constexpr const char* kWalk =
    "SELECT time, obis, value, form FROM value WHERE meter=? AND time>? AND time<=? "
    "ORDER BY time DESC, obis DESC, value DESC";
constexpr const char* kInsert =
    "INSERT OR REPLACE INTO profile_value(profile, time, obis, value_time, value, form) VALUES(?,?,?,?,?,?)";
constexpr const char* kTrim =
    "DELETE FROM profile_value WHERE profile=?1 AND obis=?2 AND time<=(SELECT time FROM profile_value "
    "WHERE profile=?1 AND obis=?2 ORDER BY time DESC LIMIT 1 OFFSET ?3)";
constexpr const char* kSetLogged = "UPDATE profile SET logged=?2 WHERE id=?1";

void Run(SQLite::Statement& statement) {
  statement.exec();
  statement.reset();
}

}  // namespace

cProfileStore::cProfileStore(SQLite::Database& database, cReadingQuery& query)
    : m_database(database),
      m_query(query),
      m_load(database, kLoad),
      m_behind(database, kBehind),
      m_seriesTime(database, kSeriesTime),
      m_walk(database, kWalk),
      m_insert(database, kInsert),
      m_trim(database, kTrim),
      m_setLogged(database, kSetLogged) {}

std::vector<const char*> cProfileStore::GetSql() { return {kBehind, kSeriesTime, kWalk, kTrim, kSetLogged}; }

void cProfileStore::TakeCollectors() {
  if (cCollectorList(m_database).Update()) m_loaded = false;
}

bool cProfileStore::LogUntil(std::int64_t now) {
  Load();
  m_now = now;
  unsigned int left = kMaxAtOnce;
  return std::all_of(m_profiles.begin(), m_profiles.end(),
                     [&](cProfile& profile) { return !Resolve(profile) || LogProfile(profile, left); });
}

std::optional<std::int64_t> cProfileStore::FindNext(std::int64_t now) {
  Load();
  std::optional<std::int64_t> first;
  for (const cProfile& profile : m_profiles) {
    const std::int64_t next = profile.event.Next(now + 1);
    first = first ? std::min(*first, next) : next;
  }
  return first;
}

void cProfileStore::Stored(std::int64_t meter, std::int64_t time) {
  Load();
  const auto [begin, end] = m_byMeter.equal_range(meter);
  for (auto at = begin; at != end; ++at) {
    const cProfile& profile = m_profiles[at->second];
    if (time <= profile.logged) m_late.emplace(at->second, profile.event.Next(time));
  }
}

void cProfileStore::Flush() {
  for (const auto& [profile, event] : m_late) LogEvent(m_profiles[profile], event);
  m_late.clear();
  if (!m_waiting) return;
  m_waiting = false;
  unsigned int left = kMaxAtOnce;
  for (cProfile& profile : m_profiles)
    if (!profile.meter && Resolve(profile)) LogProfile(profile, left);
}

void cProfileStore::Load() {
  if (m_loaded) return;
  m_profiles.clear();
  m_byMeter.clear();
  m_late.clear();
  m_waiting = false;
  while (m_load.executeStep()) AddProfile(m_load);
  m_load.reset();
  for (cProfile& profile : m_profiles) Resolve(profile);
  m_loaded = true;
}

void cProfileStore::AddProfile(SQLite::Statement& row) {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  const auto text = [&](int column) { return row.getColumn(column).getString(); };
  const auto event = cProfileEvent::Parse(text(3), row.getColumn(4).getUInt());
  if (!event)
    return vorn::Trace(unit, 4, "meter '", text(1), "': collector '", text(2), "': event-type '", text(3),
                       "' is none of ", cProfileEvent::kPossible);
  m_profiles.push_back({row.getColumn(0).getInt64(), text(1), std::nullopt, *event, cCollectorList::SplitObis(text(6)),
                        row.getColumn(5).getInt64(), row.getColumn(7).getInt64()});
}

// Finds the meter in the tables, once it is there.
bool cProfileStore::Resolve(cProfile& profile) {
  if (profile.meter) return true;
  profile.meter = m_query.FindMeter(profile.meterId);
  if (profile.meter)
    m_byMeter.emplace(*profile.meter, static_cast<std::size_t>(&profile - m_profiles.data()));
  else
    m_waiting = true;
  return profile.meter.has_value();
}

// From one value to the next, so that a time without values costs nothing. False when there is more than may be done.
bool cProfileStore::LogProfile(cProfile& profile, unsigned int& left) {
  std::int64_t logged = profile.logged;
  bool done = false;
  for (; !done && left != 0; --left) {
    const std::optional<std::int64_t> value = FindBehind(*profile.meter, logged);
    const std::int64_t event = value ? profile.event.Next(*value) : 0;
    done = !value || event > m_now;
    if (!done) LogEvent(profile, event);
    logged = done ? std::max(logged, profile.event.Last(m_now)) : event;
  }
  SetLogged(profile, logged);
  return done;
}

std::optional<std::int64_t> cProfileStore::FindBehind(std::int64_t meter, std::int64_t time) {
  std::optional<std::int64_t> found;
  m_behind.bind(1, meter);
  m_behind.bind(2, time);
  if (m_behind.executeStep()) found = m_behind.getColumn(0).getInt64();
  m_behind.reset();
  return found;
}

void cProfileStore::LogEvent(const cProfile& profile, std::int64_t event) {
  const std::int64_t begin = profile.event.Before(event);
  std::set<std::int64_t> wanted = FindWanted(profile, begin);
  m_walk.bind(1, *profile.meter);
  m_walk.bind(2, begin);
  m_walk.bind(3, event);
  while (!wanted.empty() && m_walk.executeStep())
    if (wanted.erase(m_walk.getColumn(1).getInt64()) != 0) Log(profile, event, m_walk);
  m_walk.reset();
}

// The identifiers to look for: what has no value behind the period's begin is not worth walking through the period.
std::set<std::int64_t> cProfileStore::FindWanted(const cProfile& profile, std::int64_t begin) {
  std::set<std::int64_t> wanted;
  for (const std::int64_t obis : m_query.FindAllObis(profile.obis)) {
    m_seriesTime.bind(1, *profile.meter);
    m_seriesTime.bind(2, obis);
    if (m_seriesTime.executeStep() && m_seriesTime.getColumn(0).getInt64() > begin) wanted.insert(obis);
    m_seriesTime.reset();
  }
  return wanted;
}

void cProfileStore::Log(const cProfile& profile, std::int64_t event, SQLite::Statement& value) {
  const std::int64_t obis = value.getColumn(1).getInt64();
  const cStoredValue stored = StoredValueOf(value.getColumn(2));
  m_insert.bind(1, profile.id);
  m_insert.bind(2, event);
  m_insert.bind(3, obis);
  m_insert.bind(4, value.getColumn(0).getInt64());
  BindValue(m_insert, 5, stored);
  m_insert.bind(6, value.getColumn(3).getInt64());
  Run(m_insert);
  Trim(profile, obis);
}

void cProfileStore::Trim(const cProfile& profile, std::int64_t obis) {
  if (profile.count == 0) return;
  m_trim.bind(1, profile.id);
  m_trim.bind(2, obis);
  m_trim.bind(3, profile.count);
  Run(m_trim);
}

void cProfileStore::SetLogged(cProfile& profile, std::int64_t event) {
  if (profile.logged == event) return;
  profile.logged = event;
  m_setLogged.bind(1, profile.id);
  m_setLogged.bind(2, event);
  Run(m_setLogged);
}

}  // namespace tav::data
