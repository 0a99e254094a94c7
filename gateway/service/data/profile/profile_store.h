// SPDX-License-Identifier: Apache-2.0
// cProfileStore: logs, for each active collector, the last value that each of its identifiers had in the period that an
// event ends. Used inside a transaction that its owner has opened.
//
// A period reaches from behind the event before up to its event. The value keeps its own time; a period without a value
// has no row. A profile covers all stored values of its meter, whenever they came: a fresh one is filled from what is
// there, and a period that is logged already is logged again when a value of it comes late.
// Operations throw SQLite::Exception; after a rolled back transaction make a new one.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <gateway/service/data/profile/profile_event.h>
#include <gateway/service/data/storage/reading_query.h>

namespace tav::data {

class cProfileStore {
 public:
  // Periods that one call logs: what is left goes into a later transaction.
  static constexpr unsigned int kMaxAtOnce = 500;

  // Both outlive it.
  cProfileStore(SQLite::Database& database, cReadingQuery& query);

  // Takes over what the configuration says about collectors. A profile whose event or distance changed begins anew, one
  // without a collector is deleted.
  void TakeCollectors();
  // Logs the events up to now, seconds UTC. False when some are left.
  bool LogUntil(std::int64_t now);
  // The first event behind a time; nothing when nothing is logged.
  std::optional<std::int64_t> FindNext(std::int64_t now);

  // A value of that time was stored; meter is the number it has in the tables.
  void Stored(std::int64_t meter, std::int64_t time);
  // Call before the commit, when the series have been written.
  void Flush();

  // The statements, for a test of their plans.
  static std::vector<const char*> GetSql();

 private:
  struct cProfile {
    std::int64_t id;
    std::string meterId;
    std::optional<std::int64_t> meter;  // nothing while it has no readings
    cProfileEvent event;
    std::vector<std::string> obis;
    std::int64_t count;   // of rows to keep of an identifier; 0: all
    std::int64_t logged;  // the event up to which everything is logged
  };

  void Load();
  void AddProfile(SQLite::Statement& row);
  bool Resolve(cProfile& profile);
  bool LogProfile(cProfile& profile, unsigned int& left);
  std::optional<std::int64_t> FindBehind(std::int64_t meter, std::int64_t time);
  void LogEvent(const cProfile& profile, std::int64_t event);
  std::set<std::int64_t> FindWanted(const cProfile& profile, std::int64_t begin);
  void Log(const cProfile& profile, std::int64_t event, SQLite::Statement& value);
  void Trim(const cProfile& profile, std::int64_t obis);
  void SetLogged(cProfile& profile, std::int64_t event);

  SQLite::Database& m_database;
  cReadingQuery& m_query;
  SQLite::Statement m_load;
  SQLite::Statement m_behind;
  SQLite::Statement m_seriesTime;
  SQLite::Statement m_walk;
  SQLite::Statement m_insert;
  SQLite::Statement m_trim;
  SQLite::Statement m_setLogged;
  bool m_loaded = false;
  bool m_waiting = false;  // some profile's meter has no readings yet
  std::int64_t m_now = 0;  // of the last LogUntil
  std::vector<cProfile> m_profiles;
  std::unordered_multimap<std::int64_t, std::size_t> m_byMeter;
  std::set<std::pair<std::size_t, std::int64_t>> m_late;  // profile and event
};

}  // namespace tav::data
