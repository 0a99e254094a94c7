// SPDX-License-Identifier: Apache-2.0
// cBareStore: the limit of the road of a reading. The rows that the database control service writes for one, into the
// same tables with the same settings, by prepared statements and nothing else: no record, no texts to look up, no
// question whether a row is there already.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <string>

#include <gateway/service/data/data_store.h>
#include <gateway/service/data/storage/row_statements.h>

namespace tav::bench {

class cBareStore {
 public:
  static constexpr unsigned int kValues = 6;  // of a reading

  // rows: how many one statement inserts, 1 or kValues; 1 is how it is usually written, more costs less.
  cBareStore(const std::string& file, data::eDurability durability, unsigned int rows);

  // One transaction: so many meters, of each so many readings a second apart, behind those that are there.
  void Store(unsigned int meters, unsigned int readings);
  // Moves the log into the file, as the service does when it is idle.
  void Checkpoint();

 private:
  void StoreReading(std::int64_t meter, std::int64_t time);
  void UpdateSeries(std::int64_t meter, std::int64_t time, unsigned int readings);

  const unsigned int m_rows;
  SQLite::Database m_database;
  SQLite::Statement m_begin;
  SQLite::Statement m_commit;
  SQLite::Statement m_reading;
  data::cRowStatements m_values;
  data::cRowStatements m_series;
  std::int64_t m_time = 1'700'000'000;
};

}  // namespace tav::bench
