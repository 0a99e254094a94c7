// SPDX-License-Identifier: Apache-2.0
// cSeries: how many values each meter has of each OBIS identifier, and the last of them.
//
// What the readings of one transaction add is gathered in memory and written once before the commit, so that many
// readings of one meter cost one row an identifier. The last value is the newest one by its own time, of two with the
// same time the one that came later; but of two that were timed by the gateway's clock the later one by their order
// (clock_log.h), whatever the clock said.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include <gateway/service/data/storage/row_statements.h>

namespace tav::data {

// A value as the tables hold it: packed (decimal_code.h), or its text.
using cStoredValue = std::variant<std::int64_t, std::string>;

class cSeries {
 public:
  explicit cSeries(SQLite::Database& database);

  // order: see cClockLog::OrderOf.
  void Add(std::int64_t meter, std::int64_t obis, unsigned int time, std::int64_t order, const cStoredValue& value,
           std::int64_t form);
  // Writes what was gathered; throws SQLite::Exception.
  void Flush();

 private:
  struct cKey {
    std::int64_t meter;
    std::int64_t obis;
    bool operator==(const cKey& other) const { return meter == other.meter && obis == other.obis; }
  };
  struct cHash {
    std::size_t operator()(const cKey& key) const {
      return std::hash<std::int64_t>()(key.meter * 1'000'003 + key.obis);
    }
  };
  struct cLast {
    std::int64_t count = 0;  // added since the last flush
    unsigned int time = 0;
    std::int64_t order = 0;
    cStoredValue value;
    std::int64_t form = 0;
  };

  void FlushRows(std::size_t begin, std::size_t end);

  // Kept from one transaction to the next for their room.
  static constexpr std::size_t kMaxKept = 8192;

  cRowStatements m_upserts;
  std::unordered_map<cKey, cLast, cHash> m_series;
  std::vector<std::pair<const cKey, cLast>*> m_gathered;
};

// Binds a value as the tables hold it; a text must live until the statement was run.
void BindValue(SQLite::Statement& statement, int index, const cStoredValue& value);

}  // namespace tav::data
