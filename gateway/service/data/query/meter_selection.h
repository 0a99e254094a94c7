// SPDX-License-Identifier: Apache-2.0
// cMeterSelection: the stored meters that a request means. Address, manufacturer and medium are those of a meter's
// newest reading, the vendor stands in its configuration. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <string>
#include <vector>

namespace tav::data {

// What is empty does not select.
struct cMeterFilter {
  std::string meterId = {};
  std::string addr = {};
  std::string manufactor = {};
  std::string medium = {};
  std::string vendor = {};
};

class cMeterSelection {
 public:
  explicit cMeterSelection(SQLite::Database& database);

  // In the order of their identifiers.
  std::vector<std::string> Find(const cMeterFilter& filter);

  // The statements, for a test of their plans.
  static std::vector<const char*> GetSql();

 private:
  void Look(SQLite::Statement& meters, const cMeterFilter& filter, std::vector<std::string>& found);
  bool Matches(std::int64_t meter, const std::string& meterId, const cMeterFilter& filter);

  SQLite::Statement m_all;
  SQLite::Statement m_one;
  SQLite::Statement m_newest;
  SQLite::Statement m_vendor;
};

}  // namespace tav::data
