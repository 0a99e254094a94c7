// SPDX-License-Identifier: Apache-2.0
// cStoredReadings: gives readings back as they were stored. Operations throw SQLite::Exception.
//
// The entries of a reading come in the order of their times, the order they came in is not stored. A value that an
// earlier reading of the meter has brought already is that reading's alone.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gateway/service/data/storage/reading_query.h>
#include <tav/record/meter_record.h>

namespace tav::data {

// The place of a reading behind those of its meter.
struct cReadingCursor {
  std::int64_t time = 0;
  std::int64_t seq = -1;
};

struct cReadingSelection {
  std::string meterId = {};
  std::vector<std::string> obis = {};  // entries to deliver; empty: all
  unsigned int from = 0;               // of the readings' own times
  unsigned int to = 0xFFFFFFFF;
  std::optional<cReadingCursor> after = {};
};

class cStoredReadings {
 public:
  // Both outlive it.
  cStoredReadings(SQLite::Database& database, cReadingQuery& query);

  // Readings ascending in time until the function returns false; those without an entry to deliver are left out. left
  // is how many readings and values may still be looked at; the place to go on from when that ended it.
  std::optional<cReadingCursor> List(const cReadingSelection& selection,
                                     const std::function<bool(cMeterRecord&, const cReadingCursor&)>& row,
                                     unsigned int& left);
  // The last one by the order of the readings (clock_log.h), else the newest by its time; nothing when the meter has
  // none.
  std::optional<cMeterRecord> Newest(const std::string& meterId);

  // The statements, for a test of their plans.
  static std::vector<std::string> GetSql();

 private:
  cMeterRecord Read(SQLite::Statement& reading, const std::string& meterId, std::int64_t meter,
                    const std::vector<std::int64_t>& only, unsigned int& left);
  void AddEntries(SQLite::Statement& values, std::int64_t meter, const std::vector<std::int64_t>& only,
                  unsigned int& left, std::list<cMeasurementEntry>& entries);

  cReadingQuery& m_query;
  SQLite::Statement m_list;
  SQLite::Statement m_newest;
  SQLite::Statement m_lastTime;
  SQLite::Statement m_common;
  SQLite::Statement m_owned;
};

}  // namespace tav::data
