// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/meter_selection.h>

#include <SQLiteCpp/Database.h>

namespace tav::data {

namespace {

constexpr const char* kAll = "SELECT id, name FROM meter ORDER BY name";
constexpr const char* kOne = "SELECT id, name FROM meter WHERE name=?";
constexpr const char* kNewest =
    "SELECT o.addr, o.manufactor, o.medium FROM reading r CROSS JOIN origin o ON o.id=r.origin WHERE r.meter=? "
    "ORDER BY r.time DESC, r.seq DESC LIMIT 1";
constexpr const char* kVendor = "SELECT 1 FROM meter_config WHERE meter_id=? AND vendor=? LIMIT 1";

bool Selects(const std::string& wanted, const SQLite::Column& found) {
  return wanted.empty() || wanted == found.getString();
}

}  // namespace

cMeterSelection::cMeterSelection(SQLite::Database& database)
    : m_all(database, kAll), m_one(database, kOne), m_newest(database, kNewest), m_vendor(database, kVendor) {}

std::vector<const char*> cMeterSelection::GetSql() { return {kOne, kNewest, kVendor}; }

std::vector<std::string> cMeterSelection::Find(const cMeterFilter& filter) {
  std::vector<std::string> found;
  if (!filter.meterId.empty()) m_one.bindNoCopy(1, filter.meterId);
  Look(filter.meterId.empty() ? m_all : m_one, filter, found);
  return found;
}

void cMeterSelection::Look(SQLite::Statement& meters, const cMeterFilter& filter, std::vector<std::string>& found) {
  while (meters.executeStep()) {
    std::string name = meters.getColumn(1).getString();
    if (Matches(meters.getColumn(0).getInt64(), name, filter)) found.push_back(std::move(name));
  }
  meters.reset();
}

bool cMeterSelection::Matches(std::int64_t meter, const std::string& meterId, const cMeterFilter& filter) {
  bool matches = true;
  if (!filter.addr.empty() || !filter.manufactor.empty() || !filter.medium.empty()) {
    m_newest.bind(1, meter);
    matches = m_newest.executeStep() && Selects(filter.addr, m_newest.getColumn(0)) &&
              Selects(filter.manufactor, m_newest.getColumn(1)) && Selects(filter.medium, m_newest.getColumn(2));
    m_newest.reset();
  }
  if (!matches || filter.vendor.empty()) return matches;
  m_vendor.bindNoCopy(1, meterId);
  m_vendor.bindNoCopy(2, filter.vendor);
  matches = m_vendor.executeStep();
  m_vendor.reset();
  return matches;
}

}  // namespace tav::data
