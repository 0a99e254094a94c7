// SPDX-License-Identifier: Apache-2.0
// cCollectorList: brings the list of profiles in step with the configured collectors. Used once and thrown away, inside
// a transaction; operations throw SQLite::Exception.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace SQLite {
class Database;
}

namespace tav::data {

class cCollectorList {
 public:
  explicit cCollectorList(SQLite::Database& database) : m_database(database) {}

  // True when anything was changed.
  bool Update();

  // The identifiers of a text "1-0:1.8.0, 1-0:2.8.0"; blanks around them do not count.
  static std::vector<std::string> SplitObis(const std::string& text);

 private:
  struct cCollector {
    std::vector<std::string> key;  // meter identifier, medium, manufacturer, address of the collector
    std::string eventType, obisIds;
    std::int64_t active = 0, distance = 0, count = 0;
    std::int64_t id = 0;  // of the profile
  };

  std::vector<cCollector> Read(const char* sql);
  void Insert(const cCollector& collector);
  void Change(const cCollector& from, const cCollector& to);
  void Delete(std::int64_t id);
  void DeleteRows(std::int64_t id);

  SQLite::Database& m_database;
};

}  // namespace tav::data
