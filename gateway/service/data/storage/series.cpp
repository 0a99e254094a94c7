// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/series.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>

namespace tav::data {

namespace {

constexpr const char* kHead = "INSERT INTO series(meter, obis, count, time, value, form, ord) VALUES";
constexpr const char* kRow = "(?,?,?,?,?,?,?)";
constexpr int kColumns = 7;
constexpr const char* kTail =
    " ON CONFLICT(meter, obis) DO UPDATE SET count=count+excluded.count, value=iif($later, excluded.value, value), "
    "form=iif($later, excluded.form, form), ord=iif($later, excluded.ord, ord), time=iif($later, excluded.time, time)";
constexpr std::string_view kLaterMark = "$later";
constexpr const char* kLater = "iif(excluded.ord>0 AND ord>0, excluded.ord>=ord, excluded.time>=time)";

std::string Tail() {
  std::string tail = kTail;
  for (std::size_t at = tail.find(kLaterMark); at != std::string::npos; at = tail.find(kLaterMark, at))
    tail.replace(at, kLaterMark.size(), kLater);
  return tail;
}

}  // namespace

cSeries::cSeries(SQLite::Database& database) : m_upserts(database, kHead, kRow, Tail()) {}

void cSeries::Add(std::int64_t meter, std::int64_t obis, unsigned int time, std::int64_t order,
                  const cStoredValue& value, std::int64_t form) {
  auto& gathered = *m_series.try_emplace({meter, obis}).first;
  cLast& last = gathered.second;
  if (last.count++ == 0)
    m_gathered.push_back(&gathered);
  else if (order > 0 && last.order > 0 ? order < last.order : time < last.time)
    return;
  last.time = time;
  last.order = order;
  last.value = value;
  last.form = form;
}

void cSeries::Flush() {
  for (std::size_t begin = 0; begin < m_gathered.size(); begin += cRowStatements::kMaxRows)
    FlushRows(begin, std::min(begin + cRowStatements::kMaxRows, m_gathered.size()));
  m_gathered.clear();
  if (m_series.size() > kMaxKept) m_series.clear();
}

void cSeries::FlushRows(std::size_t begin, std::size_t end) {
  SQLite::Statement& upsert = m_upserts.For(end - begin);
  int index = 0;
  for (std::size_t at = begin; at < end; ++at, index += kColumns) {
    auto& [key, last] = *m_gathered[at];
    upsert.bind(index + 1, key.meter);
    upsert.bind(index + 2, key.obis);
    upsert.bind(index + 3, last.count);
    upsert.bind(index + 4, last.time);
    BindValue(upsert, index + 5, last.value);
    upsert.bind(index + 6, last.form);
    upsert.bind(index + 7, last.order);
    last.count = 0;
  }
  upsert.exec();
  upsert.reset();
}

void BindValue(SQLite::Statement& statement, int index, const cStoredValue& value) {
  if (const auto* packed = std::get_if<std::int64_t>(&value))
    statement.bind(index, *packed);
  else
    statement.bindNoCopy(index, std::get<std::string>(value));
}

}  // namespace tav::data
