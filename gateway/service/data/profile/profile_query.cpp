// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_query.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>

namespace tav::data {

namespace {

constexpr const char* kNames =
    "SELECT id, addr, event_type FROM profile WHERE meter_id=? "
    "ORDER BY meter_id, medium, mfct, addr";
constexpr const char* kValues =
    "SELECT time, obis, value_time, value, form FROM profile_value WHERE profile=? AND (time, obis)>(?,?) AND time<=? "
    "ORDER BY time, obis";

}  // namespace

cProfileQuery::cProfileQuery(SQLite::Database& database, cReadingQuery& query)
    : m_query(query), m_names(database, kNames), m_values(database, kValues) {}

std::vector<const char*> cProfileQuery::GetSql() { return {kNames, kValues}; }

std::vector<cProfileName> cProfileQuery::List(const std::string& meterId) {
  std::vector<cProfileName> names;
  m_names.bindNoCopy(1, meterId);
  while (m_names.executeStep())
    names.push_back(
        {m_names.getColumn(0).getInt64(), m_names.getColumn(1).getString(), m_names.getColumn(2).getString()});
  m_names.reset();
  return names;
}

std::optional<cProfileCursor> cProfileQuery::ListValues(const cProfileSelection& selection, const Row& row,
                                                        unsigned int& left) {
  const std::optional<std::int64_t> meter = m_query.FindMeter(selection.meterId);
  const std::vector<std::int64_t> only = m_query.FindAllObis(selection.obis);
  if (!meter || only.empty() != selection.obis.empty()) return std::nullopt;
  cProfileCursor at{selection.from, -1};
  if (selection.after && selection.after->time >= at.time) at = *selection.after;
  m_values.bind(1, selection.profile);
  m_values.bind(2, at.time);
  m_values.bind(3, at.obis);
  m_values.bind(4, selection.to);
  bool more = true;
  while (more && left != 0 && m_values.executeStep()) {
    --left;
    at = {m_values.getColumn(0).getInt64(), m_values.getColumn(1).getInt64()};
    if (!only.empty() && std::find(only.begin(), only.end(), at.obis) == only.end()) continue;
    const std::int64_t time = m_values.getColumn(2).getInt64();
    const cStoredValue value = StoredValueOf(m_values.getColumn(3));
    const cReadingQuery::cForm& form = m_query.FormOf(m_values.getColumn(4).getInt64());
    more = row(
        {selection.meterId, m_query.NameOf(at.obis), TextOf(value), form.unit,
         m_query.ReadSignature(*meter, {time, at.obis, value}), static_cast<unsigned int>(at.time), form.timeSource},
        static_cast<unsigned int>(time), at);
  }
  m_values.reset();
  return more && left == 0 ? std::optional(at) : std::nullopt;
}

}  // namespace tav::data
