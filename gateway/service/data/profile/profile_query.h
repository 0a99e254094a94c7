// SPDX-License-Identifier: Apache-2.0
// cProfileQuery: reads back what collectors have logged. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gateway/service/data/storage/reading_query.h>

namespace tav::data {

struct cProfileName {
  std::int64_t id = 0;
  std::string addr;  // of the collector
  std::string eventType;
};

struct cProfileCursor {
  std::int64_t time = 0;
  std::int64_t obis = -1;
};

struct cProfileSelection {
  std::int64_t profile = 0;
  std::string meterId = {};
  std::vector<std::string> obis = {};  // empty: all
  unsigned int from = 0;               // of the events
  unsigned int to = 0xFFFFFFFF;
  std::optional<cProfileCursor> after = {};
};

class cProfileQuery {
 public:
  // Both outlive it.
  cProfileQuery(SQLite::Database& database, cReadingQuery& query);

  std::vector<cProfileName> List(const std::string& meterId);
  // Logged values ascending in the time of their event until the function returns false; the row's time is the
  // event's, valueTime the value's own. The place to go on from when left, the number of rows to look at, ended it.
  using Row = std::function<bool(const cValueRow& row, unsigned int valueTime, const cProfileCursor& at)>;
  std::optional<cProfileCursor> ListValues(const cProfileSelection& selection, const Row& row, unsigned int& left);

  // The statements, for a test of their plans.
  static std::vector<const char*> GetSql();

 private:
  cReadingQuery& m_query;
  SQLite::Statement m_names;
  SQLite::Statement m_values;
};

}  // namespace tav::data
