// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/series.h>

#include <SQLiteCpp/Database.h>

namespace tav::data {

namespace {

constexpr const char* kUpsert =
    "INSERT INTO series(meter, obis, count, time, value, form) VALUES(?,?,?,?,?,?) "
    "ON CONFLICT(meter, obis) DO UPDATE SET count=count+excluded.count, "
    "value=iif(excluded.time>=time, excluded.value, value), form=iif(excluded.time>=time, excluded.form, form), "
    "time=max(time, excluded.time)";

}  // namespace

cSeries::cSeries(SQLite::Database& database) : m_upsert(database, kUpsert) {}

void cSeries::Add(std::int64_t meter, std::int64_t obis, unsigned int time, const cStoredValue& value,
                  std::int64_t form) {
  cLast& last = m_gathered[{meter, obis}];
  if (last.count++ != 0 && time < last.time) return;
  last.time = time;
  last.value = value;
  last.form = form;
}

void cSeries::Flush() {
  for (const auto& [key, last] : m_gathered) {
    m_upsert.bind(1, key.meter);
    m_upsert.bind(2, key.obis);
    m_upsert.bind(3, last.count);
    m_upsert.bind(4, last.time);
    BindValue(m_upsert, 5, last.value);
    m_upsert.bind(6, last.form);
    m_upsert.exec();
    m_upsert.reset();
  }
  m_gathered.clear();
}

void BindValue(SQLite::Statement& statement, int index, const cStoredValue& value) {
  if (const auto* packed = std::get_if<std::int64_t>(&value))
    statement.bind(index, *packed);
  else
    statement.bindNoCopy(index, std::get<std::string>(value));
}

}  // namespace tav::data
