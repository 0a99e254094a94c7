// SPDX-License-Identifier: Apache-2.0
// cDataStore: the readings, events, values and configuration in the gateway's database (gateway/database).
#pragma once

#include <functional>

#include <gateway/database/store.h>
#include <gateway/service/data/config/config_store.h>
#include <gateway/service/data/profile/profile_query.h>
#include <gateway/service/data/profile/profile_store.h>
#include <gateway/service/data/query/meter_selection.h>
#include <gateway/service/data/query/stored_readings.h>
#include <gateway/service/data/storage/clock_log.h>
#include <gateway/service/data/storage/event_store.h>
#include <gateway/service/data/storage/reading_query.h>
#include <gateway/service/data/storage/reading_store.h>
#include <gateway/service/data/storage/value_store.h>

namespace tav::data {

// The tables of an open database.
struct cTables {
  explicit cTables(SQLite::Database& connection)
      : database(connection),
        clock(database),
        readings(database, &clock),
        query(database),
        events(database),
        values(database),
        config(database),
        meters(database),
        storedReadings(database, query),
        profiles(database, query),
        profileQuery(database, query) {
    readings.OnStored([this](std::int64_t meter, std::int64_t time) { profiles.Stored(meter, time); });
  }
  cTables(const cTables&) = delete;
  cTables& operator=(const cTables&) = delete;

  // Call before the commit: what was gathered beside the readings.
  void Flush() {
    readings.Flush();
    profiles.Flush();
  }

  SQLite::Database& database;
  cClockLog clock;
  cReadingStore readings;
  cReadingQuery query;
  cEventStore events;
  cValueStore values;
  cConfigStore config;
  cMeterSelection meters;
  cStoredReadings storedReadings;
  cProfileStore profiles;
  cProfileQuery profileQuery;
};

// Change is not for readings, whose numbers are remembered: Write is.
class cDataStore : public cStore<cTables> {
 public:
  using cStore::cStore;

  // In place of the machine's clocks.
  void SetClock(std::function<cMoment()> clock) { m_clock = std::move(clock); }

  cFault Write(const std::function<void(cTables&)>& add) {
    return Change([&](cTables& tables) {
      tables.clock.Note(m_clock());
      add(tables);
      tables.Flush();
      return true;
    });
  }

 private:
  std::function<cMoment()> m_clock = cMoment::Now;
};

}  // namespace tav::data
