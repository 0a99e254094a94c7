// SPDX-License-Identifier: Apache-2.0
// cEventStore: events as the records they came in, under the time of their arrival. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <functional>

#include <tav/framework/record.h>

namespace tav::data {

// Where a page of events ended; the next one goes on behind it.
struct cEventCursor {
  std::int64_t time = 0;
  std::int64_t id = 0;
};

struct cEventRow {
  cEventCursor at;  // its time is the event's, seconds UTC
  vorn::cRecord record;
};

class cEventStore {
 public:
  explicit cEventStore(SQLite::Database& database);

  void Add(const vorn::cRecord& event, unsigned int time);
  // Events up to a time, behind the cursor, ascending in time, until the function returns false.
  void List(const cEventCursor& after, unsigned int to, const std::function<bool(const cEventRow&)>& row);
  std::uint64_t Count();

 private:
  SQLite::Statement m_insert;
  SQLite::Statement m_list;
  SQLite::Statement m_count;
};

}  // namespace tav::data
