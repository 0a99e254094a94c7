// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/event_store.h>

#include <SQLiteCpp/Database.h>

namespace tav::data {

cEventStore::cEventStore(SQLite::Database& database)
    : m_insert(database, "INSERT INTO event(time, record) VALUES(?,?)"),
      m_list(database, "SELECT time, id, record FROM event WHERE (time, id)>(?,?) AND time<=? ORDER BY time, id"),
      // Events are never deleted, so the last number is their count.
      m_count(database, "SELECT ifnull(max(id), 0) FROM event") {}

void cEventStore::Add(const vorn::cRecord& event, unsigned int time) {
  const std::string_view bytes = event.GetBytes();
  m_insert.bind(1, time);
  m_insert.bindNoCopy(2, static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()));
  m_insert.exec();
  m_insert.reset();
}

void cEventStore::List(const cEventCursor& after, unsigned int to, const std::function<bool(const cEventRow&)>& row) {
  m_list.bind(1, after.time);
  m_list.bind(2, after.id);
  m_list.bind(3, to);
  cEventRow event;
  while (m_list.executeStep()) {
    event.at = {m_list.getColumn(0).getInt64(), m_list.getColumn(1).getInt64()};
    const SQLite::Column bytes = m_list.getColumn(2);
    event.record = vorn::cRecord();
    vorn::cRecord::FromBytes(bytes.getBlob(), static_cast<std::size_t>(bytes.getBytes()), event.record);
    if (!row(event)) break;
  }
  m_list.reset();
}

std::uint64_t cEventStore::Count() {
  m_count.executeStep();
  const std::int64_t count = m_count.getColumn(0).getInt64();
  m_count.reset();
  return static_cast<std::uint64_t>(count);
}

}  // namespace tav::data
