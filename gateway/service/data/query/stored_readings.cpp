// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/stored_readings.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>

#include <gateway/database/statement.h>

namespace tav::data {

namespace {

constexpr const char* kReading =
    "SELECT r.time, r.seq, r.osc, r.rssi, o.driver, o.addr, o.manufactor, o.medium, o.interface_name, "
    "o.interface_protocol, o.interface_options, s.status, s.time_source, s.learning, s.event_raster, x.raw, "
    "x.store_utc, x.store_osc FROM reading r CROSS JOIN origin o ON o.id=r.origin CROSS JOIN state s ON s.id=r.state "
    "LEFT JOIN reading_extra x ON x.meter=r.meter AND x.time=r.time AND x.seq=r.seq WHERE r.meter=?";
constexpr const char* kInOrder = " AND (r.time, r.seq)>(?,?) AND r.time<=? ORDER BY r.time, r.seq";
constexpr const char* kBackwards = " AND r.time<=? ORDER BY r.time DESC, r.seq DESC LIMIT 1";
constexpr const char* kLastTime = "SELECT time FROM series WHERE meter=? AND ord>0 ORDER BY ord DESC LIMIT 1";
constexpr std::int64_t kAnyTime = 0xFFFFFFFF;
// The common values belong to the first reading of their second.
constexpr const char* kCommon =
    "SELECT time, obis, value, form FROM value WHERE meter=? AND time=? AND owner IS NULL ORDER BY obis, value";
constexpr const char* kOwned =
    "SELECT time, obis, value, form FROM value WHERE meter=? AND owner=? ORDER BY time, obis, value";

std::string ListSql() { return std::string(kReading) + kInOrder; }
std::string NewestSql() { return std::string(kReading) + kBackwards; }

unsigned int UInt(const SQLite::Column& column) { return static_cast<unsigned int>(column.getInt64()); }

cMeterTav::eTimeSource TimeSource(const SQLite::Column& column) {
  return static_cast<cMeterTav::eTimeSource>(column.getInt());
}

// Set by storing services only, so the class has no setters for them.
void SetStoreTimes(cMeterRecord& reading, unsigned int utc, unsigned int osc) {
  if (utc == 0 && osc == 0) return;
  vorn::cRecord form = reading.ToRecord();
  form.SetUIntPar("store-utc", utc);
  form.SetUIntPar("store-osc", osc);
  reading.FromRecord(form);
}

}  // namespace

cStoredReadings::cStoredReadings(SQLite::Database& database, cReadingQuery& query)
    : m_query(query),
      m_list(database, ListSql()),
      m_newest(database, NewestSql()),
      m_lastTime(database, kLastTime),
      m_common(database, kCommon),
      m_owned(database, kOwned) {}

std::vector<std::string> cStoredReadings::GetSql() { return {ListSql(), NewestSql(), kCommon, kOwned}; }

std::optional<cReadingCursor> cStoredReadings::List(
    const cReadingSelection& selection, const std::function<bool(cMeterRecord&, const cReadingCursor&)>& row,
    unsigned int& left) {
  const std::optional<std::int64_t> meter = m_query.FindMeter(selection.meterId);
  const std::vector<std::int64_t> only = m_query.FindAllObis(selection.obis);
  if (!meter || only.empty() != selection.obis.empty()) return std::nullopt;
  cReadingCursor at{selection.from, -1};
  if (selection.after && selection.after->time >= at.time) at = *selection.after;
  m_list.bind(1, *meter);
  m_list.bind(2, at.time);
  m_list.bind(3, at.seq);
  m_list.bind(4, selection.to);
  bool more = true;
  while (more && left != 0 && m_list.executeStep()) {
    --left;
    at = {m_list.getColumn(0).getInt64(), m_list.getColumn(1).getInt64()};
    cMeterRecord reading = Read(m_list, selection.meterId, *meter, only, left);
    more = reading.GetMeasurementEntries().empty() || row(reading, at);
  }
  m_list.reset();
  return more && left == 0 ? std::optional(at) : std::nullopt;
}

std::optional<cMeterRecord> cStoredReadings::Newest(const std::string& meterId) {
  const std::optional<std::int64_t> meter = m_query.FindMeter(meterId);
  if (!meter) return std::nullopt;
  std::optional<cMeterRecord> reading;
  unsigned int left = cReadingQuery::kMaxScanned;
  m_newest.bind(1, *meter);
  m_newest.bind(2, NumberOr(kAnyTime, m_lastTime, *meter));
  if (m_newest.executeStep()) reading = Read(m_newest, meterId, *meter, {}, left);
  m_newest.reset();
  return reading;
}

cMeterRecord cStoredReadings::Read(SQLite::Statement& reading, const std::string& meterId, std::int64_t meter,
                                   const std::vector<std::int64_t>& only, unsigned int& left) {
  const auto text = [&](int column) { return reading.getColumn(column).getString(); };
  const std::int64_t time = reading.getColumn(0).getInt64();
  const std::int64_t seq = reading.getColumn(1).getInt64();
  cMeterRecord record(text(4), text(6), text(7), meterId, text(5), text(11), static_cast<unsigned int>(time),
                      TimeSource(reading.getColumn(12)), UInt(reading.getColumn(2)));
  record.SetRSSI(reading.getColumn(3).getInt());
  record.SetInterfaceInfo(text(8), text(9), text(10));
  record.SetLearning(reading.getColumn(13).getInt() != 0);
  record.SetEventRaster(UInt(reading.getColumn(14)));
  record.SetRaw(vorn::cData(text(15)));
  std::list<cMeasurementEntry> entries;
  if (seq == 0) {
    m_common.bind(2, time);
    AddEntries(m_common, meter, only, left, entries);
  }
  m_owned.bind(2, time << 16 | seq);
  AddEntries(m_owned, meter, only, left, entries);
  record.AddMeasurementList(entries);
  if (!entries.empty()) SetStoreTimes(record, UInt(reading.getColumn(16)), UInt(reading.getColumn(17)));
  return record;
}

void cStoredReadings::AddEntries(SQLite::Statement& values, std::int64_t meter, const std::vector<std::int64_t>& only,
                                 unsigned int& left, std::list<cMeasurementEntry>& entries) {
  values.bind(1, meter);
  while (values.executeStep()) {
    if (left > 1) --left;
    const cValueCursor at{values.getColumn(0).getInt64(), values.getColumn(1).getInt64(),
                          StoredValueOf(values.getColumn(2))};
    if (!only.empty() && std::find(only.begin(), only.end(), at.obis) == only.end()) continue;
    const cReadingQuery::cForm& form = m_query.FormOf(values.getColumn(3).getInt64());
    cMeasurementEntry& entry =
        entries.emplace_back(m_query.NameOf(at.obis), TextOf(at.value), form.unit, static_cast<unsigned int>(at.time),
                             static_cast<cMeterTav::eTimeSource>(form.timeSource));
    const std::string signature = m_query.ReadSignature(meter, at);
    if (!signature.empty()) entry.SetSignature(vorn::cData(signature));
  }
  values.reset();
}

}  // namespace tav::data
