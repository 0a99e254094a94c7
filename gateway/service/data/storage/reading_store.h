// SPDX-License-Identifier: Apache-2.0
// cReadingStore: writes readings into the tables, inside a transaction that its owner has opened.
//
// The same value (meter, time, OBIS identifier and text) is stored once however often it comes; a reading that brings
// nothing new leaves nothing behind, unless the clock was set back and it is another reading of that second. Readings
// of one meter and second that differ in anything are kept side by side.
// Operations throw SQLite::Exception; after a rolled back transaction make a new one.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gateway/service/data/storage/clock_log.h>
#include <gateway/service/data/storage/dictionary.h>
#include <gateway/service/data/storage/reading_view.h>
#include <gateway/service/data/storage/series.h>
#include <gateway/service/data/storage/value_insert.h>

namespace tav::data {

class cReadingStore {
 public:
  // Readings of one meter and second that differ in more than their values. What comes beyond is refused.
  static constexpr std::int64_t kMaxSequence = 0xFFFF;

  enum class eOutcome { Stored, NothingNew, Refused };

  // The log outlives the store. Without one all readings are ordered by their times.
  explicit cReadingStore(SQLite::Database& database, const cClockLog* clock = nullptr);

  // Refused: see kMaxSequence.
  eOutcome Add(const cReadingView& reading);
  // To be called for each time that values were stored of, with the number of their meter.
  void OnStored(std::function<void(std::int64_t meter, std::int64_t time)> call) { m_onStored = std::move(call); }
  // Call before the commit.
  void Flush() { m_series.Flush(); }

 private:
  // The row that the values of a reading belong to.
  struct cRow {
    std::int64_t meter;
    std::int64_t time;
    std::int64_t seq;
    bool fresh;  // made for this reading
    std::int64_t boot;
  };

  // What the entry at one place of a reading was last time: mostly it is the same again.
  struct cPlace {
    std::string name;
    std::string unit;
    unsigned int timeSource = 0;
    std::int64_t obis = 0;
    std::int64_t form = 0;
  };
  static constexpr std::size_t kMaxPlaces = 64;

  cRow OpenRow(const cReadingView& reading);
  std::int64_t BootOf(unsigned int timeSource, const cReadingView& reading) const;
  std::int64_t FindSequence(const cReadingView& reading, std::int64_t meter, std::int64_t origin, std::int64_t state);
  bool InsertRow(const cReadingView& reading, std::int64_t meter, std::int64_t seq, std::int64_t origin,
                 std::int64_t state);
  void InsertExtra(const cReadingView& reading, const cRow& row);
  void DeleteRow(const cRow& row);
  bool IsAnotherMoment(const cReadingView& reading, const cRow& row);
  bool AddEntries(const cReadingView& reading, std::size_t begin, std::size_t end, const cRow& row);
  const cPlace& PlaceOf(const cEntryView& entry, std::size_t at);
  void InsertSignature(const cEntryView& entry, std::int64_t meter, const cNewValue& value);

  const cClockLog* m_clock;
  cDictionary m_meters;
  cDictionary m_obis;
  cDictionary m_forms;
  cDictionary m_origins;
  cDictionary m_states;
  cSeries m_series;
  SQLite::Statement m_insertReading;
  SQLite::Statement m_findSame;
  SQLite::Statement m_lastSequence;
  SQLite::Statement m_nearest;
  SQLite::Statement m_insertExtra;
  SQLite::Statement m_deleteReading;
  SQLite::Statement m_insertSignature;
  cValueInsert m_insertValues;
  std::vector<cNewValue> m_values;  // of the entries at hand, kept for their room
  std::vector<cPlace> m_places;
  std::function<void(std::int64_t, std::int64_t)> m_onStored;
};

}  // namespace tav::data
