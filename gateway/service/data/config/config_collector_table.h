// SPDX-License-Identifier: Apache-2.0
// cCollectorTable: the collectors of each meter, in the order in which they were made. They go with their meter.
// Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <list>
#include <set>
#include <string>
#include <vector>

#include <tav/config/collector_config.h>

namespace tav::data {

class cCollectorTable {
 public:
  explicit cCollectorTable(SQLite::Database& database);

  // Its push target is the one of pushTargetIdx, which is there; none with 0.
  void Set(std::int64_t meter, const cCollectorConfig& collector);
  void Delete(std::int64_t meter, const std::string& addr);
  // Of all collectors, as a first step before they are set anew.
  void ForgetTargets();
  // With the names of their push targets.
  std::list<cCollectorConfig> List(std::int64_t meter);
  // The collectors that push to a target, as "meter 'x' collector 'y'".
  std::vector<std::string> UsersOf(std::int64_t target);
  // How many the meter has most of.
  std::int64_t CountMost();

 private:
  SQLite::Statement m_set;
  SQLite::Statement m_delete;
  SQLite::Statement m_forget;
  SQLite::Statement m_list;
  SQLite::Statement m_users;
  SQLite::Statement m_most;
};

}  // namespace tav::data
