// SPDX-License-Identifier: Apache-2.0
#include <bench/road/bare_store.h>

#include <gateway/database/schema.h>

namespace tav::bench {

namespace {

// An origin, a state, a form: any number does where nothing is looked up.
constexpr int kSome = 1;

SQLite::Database Open(const std::string& file, data::eDurability durability) {
  SQLite::Database database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLite::OPEN_NOMUTEX);
  database.exec("PRAGMA journal_mode=WAL");
  database.exec(durability == data::eDurability::Full ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
  database.exec("PRAGMA wal_autocheckpoint=" + std::to_string(data::cDataStore::kWalBusyPages));
  database.exec("PRAGMA cache_size=-8000");
  data::Migrate(database);
  return database;
}

void Run(SQLite::Statement& statement) {
  statement.exec();
  statement.reset();
}

// The next parameter is the first one again.
void Run(SQLite::Statement& statement, int& index) {
  Run(statement);
  index = 0;
}

template <typename... Numbers>
void Bind(SQLite::Statement& statement, int& index, Numbers... numbers) {
  (statement.bind(++index, numbers), ...);
}

// Four digits and one behind the point, packed.
std::int64_t PackedValue(std::int64_t time, unsigned int value) {
  return (10'000 + (time * 7 + value) % 90'000) * 16 + 1;
}

}  // namespace

cBareStore::cBareStore(const std::string& file, data::eDurability durability, unsigned int rows)
    : m_rows(rows),
      m_database(Open(file, durability)),
      m_begin(m_database, "BEGIN IMMEDIATE"),
      m_commit(m_database, "COMMIT"),
      m_reading(m_database, "INSERT INTO reading VALUES(?,?,0,?,?,?,0)"),
      m_values(m_database, "INSERT INTO value VALUES", "(?,?,?,?,?,NULL)"),
      m_series(m_database, "INSERT INTO series VALUES", "(?,?,?,?,?,?,?)",
               " ON CONFLICT(meter, obis) DO UPDATE SET count=count+excluded.count, time=excluded.time, "
               "value=excluded.value, form=excluded.form, ord=excluded.ord") {}

void cBareStore::Store(unsigned int meters, unsigned int readings) {
  Run(m_begin);
  for (unsigned int i = 0; i < readings; ++i)
    for (unsigned int meter = 1; meter <= meters; ++meter) StoreReading(meter, m_time + i);
  m_time += readings;
  for (unsigned int meter = 1; meter <= meters; ++meter) UpdateSeries(meter, m_time - 1, readings);
  Run(m_commit);
}

void cBareStore::StoreReading(std::int64_t meter, std::int64_t time) {
  SQLite::Statement& values = m_values.For(m_rows);
  int index = 0;
  Bind(m_reading, index, meter, time, kSome, kSome, time);
  Run(m_reading, index);
  for (unsigned int value = 1; value <= kValues; ++value) {
    Bind(values, index, meter, time, value, PackedValue(time, value), kSome);
    if (value % m_rows == 0) Run(values, index);
  }
}

void cBareStore::UpdateSeries(std::int64_t meter, std::int64_t time, unsigned int readings) {
  SQLite::Statement& series = m_series.For(m_rows);
  int index = 0;
  for (unsigned int value = 1; value <= kValues; ++value) {
    Bind(series, index, meter, value, readings, time, PackedValue(time, value), kSome, readings);
    if (value % m_rows == 0) Run(series, index);
  }
}

void cBareStore::Checkpoint() { m_database.exec("PRAGMA wal_checkpoint(PASSIVE)"); }

}  // namespace tav::bench
