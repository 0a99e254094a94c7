// SPDX-License-Identifier: Apache-2.0
// cMeterTable: the configured meters, by identifier, medium and manufacturer, with their collectors. Operations throw
// SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <string>
#include <vector>

#include <gateway/service/data/config/config_collector_table.h>
#include <tav/config/meter_config.h>

namespace tav::data {

// What names a meter. In a question an empty part stands for any.
struct cMeterKey {
  std::string meterId;
  std::string medium;
  std::string mfct;
};

struct cStoredMeter {
  std::int64_t id = 0;
  cMeterConfig config;  // without its collectors
};

class cMeterTable {
 public:
  explicit cMeterTable(SQLite::Database& database);

  // Its number; a meter that is changed keeps it. Its collectors stay as they are.
  std::int64_t Set(const cMeterConfig& meter);
  // With its collectors.
  void Delete(std::int64_t id);
  // Each in the order of identifier, medium, manufacturer.
  std::vector<cStoredMeter> ListAll();
  std::vector<cStoredMeter> ListByAddr(const std::string& addr);
  std::vector<cStoredMeter> ListByKey(const cMeterKey& key);
  std::vector<cStoredMeter> ListByInterface(const std::string& name);
  std::int64_t Count();

 private:
  SQLite::Statement m_set;
  SQLite::Statement m_delete;
  SQLite::Statement m_all;
  SQLite::Statement m_byAddr;
  SQLite::Statement m_byKey;
  SQLite::Statement m_byInterface;
  SQLite::Statement m_count;
};

}  // namespace tav::data
