// SPDX-License-Identifier: Apache-2.0
// cReadingQuery: reads meters and values back, in pages. Operations throw SQLite::Exception.
//
// A page goes on where a cursor says, along a key of its table, so that a late page costs no more than the first one.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <gateway/service/data/storage/series.h>

namespace tav::data {

struct cMeterRow {
  std::string meterId;
  std::string addr, manufactor, medium, driver, interfaceName;  // as its last reading has them
  unsigned int first = 0;                                       // times of its first and last reading, seconds UTC
  unsigned int last = 0;
  std::uint64_t values = 0;
};

// The place of a value behind those of its meter.
struct cValueCursor {
  std::int64_t time = 0;
  std::int64_t obis = -1;
  cStoredValue value = std::int64_t{0};

  std::string ToBytes() const;
  static std::optional<cValueCursor> FromBytes(std::string_view bytes);
};

struct cLastCursor {
  std::int64_t meter = -1;
  std::int64_t obis = -1;
};

struct cValueRow {
  std::string meterId;
  std::string obis;
  std::string value;  // exactly as it came
  std::string unit;
  std::string signature;        // empty when there is none
  unsigned int time = 0;        // seconds UTC
  unsigned int timeSource = 0;  // tav::cMeterTav::eTimeSource
};

struct cValueSelection {
  std::string meterId = {};
  std::vector<std::string> obis = {};  // empty: all
  unsigned int from = 0;
  unsigned int to = 0xFFFFFFFF;
  std::optional<cValueCursor> after = {};
};

class cReadingQuery {
 public:
  // Values looked at for one page; a page of few matches in many values may end short, with a cursor to go on.
  static constexpr unsigned int kMaxScanned = 200'000;

  explicit cReadingQuery(SQLite::Database& database);

  // Meters behind a name, in the order of their names, until the function returns false.
  void ListMeters(const std::string& after, const std::function<bool(const cMeterRow&)>& row);
  // The last values behind a cursor, of one meter or (empty) of all, until the function returns false.
  void ListLast(const std::string& meterId, const cLastCursor& after,
                const std::function<bool(const cValueRow&, const cLastCursor&)>& row);
  // Values ascending in time until the function returns false. The place to go on from when kMaxScanned ended it.
  std::optional<cValueCursor> ListValues(const cValueSelection& selection,
                                         const std::function<bool(const cValueRow&, const cValueCursor&)>& row) {
    unsigned int left = kMaxScanned;
    return ListValues(selection, row, left);
  }
  // The same for one of several meters: left is how many values may still be looked at.
  std::optional<cValueCursor> ListValues(const cValueSelection& selection,
                                         const std::function<bool(const cValueRow&, const cValueCursor&)>& row,
                                         unsigned int& left);
  std::uint64_t CountMeters();
  std::uint64_t CountValues();

  // ---- what the tables hold by number
  struct cForm {
    std::string unit;
    unsigned int timeSource = 0;
  };
  std::optional<std::int64_t> FindMeter(const std::string& meterId);
  std::optional<std::int64_t> FindObis(const std::string& name);
  // The numbers of those that are known.
  std::vector<std::int64_t> FindAllObis(const std::vector<std::string>& names);
  const std::string& NameOf(std::int64_t obis);
  const cForm& FormOf(std::int64_t form);
  // Empty when there is none.
  std::string ReadSignature(std::int64_t meter, const cValueCursor& at);

  // The statements behind ListValues and ListLast, for a test of their plans.
  static const char* GetPageSql();
  static const char* GetLastSql();

 private:
  void FillMeter(std::int64_t meter, cMeterRow& row);

  SQLite::Statement m_meters;
  SQLite::Statement m_findMeter;
  SQLite::Statement m_findObis;
  SQLite::Statement m_lastReading;
  SQLite::Statement m_firstReading;
  SQLite::Statement m_countOf;
  SQLite::Statement m_last;
  SQLite::Statement m_page;
  SQLite::Statement m_signature;
  SQLite::Statement m_obisName;
  SQLite::Statement m_form;
  SQLite::Statement m_countMeters;
  SQLite::Statement m_countValues;
  std::unordered_map<std::int64_t, std::string> m_names;
  std::unordered_map<std::int64_t, cForm> m_forms;
};

// A value of the tables, and its text.
cStoredValue StoredValueOf(const SQLite::Column& column);
std::string TextOf(const cStoredValue& value);

}  // namespace tav::data
