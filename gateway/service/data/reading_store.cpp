// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/reading_store.h>

#include <SQLiteCpp/Database.h>

#include <gateway/service/data/decimal_code.h>

namespace tav::data {

namespace {

constexpr const char* kFindSame =
    "SELECT r.seq FROM reading r LEFT JOIN reading_extra x ON x.meter=r.meter AND x.time=r.time AND x.seq=r.seq "
    "WHERE r.meter=? AND r.time=? AND r.origin=? AND r.state=? AND r.osc=? AND r.rssi=? "
    "AND ifnull(x.raw, x'')=? AND ifnull(x.store_utc, 0)=? AND ifnull(x.store_osc, 0)=?";

bool HasExtra(const cReadingView& reading) {
  return !reading.raw.empty() || reading.storeUtc != 0 || reading.storeOsc != 0;
}

void BindBlob(SQLite::Statement& statement, int index, std::string_view bytes) {
  // A null pointer would bind NULL instead of no bytes.
  statement.bindNoCopy(index, bytes.empty() ? "" : bytes.data(), static_cast<int>(bytes.size()));
}

template <typename... Numbers>
void BindNumbers(SQLite::Statement& statement, Numbers... numbers) {
  int index = 0;
  (statement.bind(++index, numbers), ...);
}

int Run(SQLite::Statement& statement) {
  const int changes = statement.exec();
  statement.reset();
  return changes;
}

}  // namespace

cReadingStore::cReadingStore(SQLite::Database& database)
    : m_meters(database, "meter", {"name"}),
      m_obis(database, "obis", {"name"}),
      m_forms(database, "form", {"unit", "time_source"}),
      m_origins(
          database, "origin",
          {"driver", "addr", "manufactor", "medium", "interface_name", "interface_protocol", "interface_options"}),
      m_states(database, "state", {"status", "time_source", "learning", "event_raster"}),
      m_series(database),
      m_insertReading(database, "INSERT OR IGNORE INTO reading VALUES(?,?,?,?,?,?,?)"),
      m_findSame(database, kFindSame),
      m_lastSequence(database, "SELECT max(seq) FROM reading WHERE meter=? AND time=?"),
      m_insertExtra(database, "INSERT INTO reading_extra VALUES(?,?,?,?,?,?)"),
      m_deleteReading(database, "DELETE FROM reading WHERE meter=? AND time=? AND seq=?"),
      m_insertValue(database, "INSERT OR IGNORE INTO value VALUES(?,?,?,?,?,?)"),
      m_insertSignature(database, "INSERT INTO signature VALUES(?,?,?,?,?)") {}

cReadingStore::eOutcome cReadingStore::Add(const cReadingView& reading) {
  if (reading.entries.empty()) return eOutcome::NothingNew;
  const cRow row = OpenRow(reading);
  if (row.seq > kMaxSequence) return eOutcome::Refused;
  bool stored = false;
  for (const cEntryView& entry : reading.entries) stored |= AddEntry(entry, row);
  if (row.fresh && stored && HasExtra(reading)) InsertExtra(reading, row);
  if (row.fresh && !stored) DeleteRow(row);
  return stored ? eOutcome::Stored : eOutcome::NothingNew;
}

cReadingStore::cRow cReadingStore::OpenRow(const cReadingView& reading) {
  const std::int64_t meter = m_meters.Id({reading.meterId});
  const std::int64_t origin =
      m_origins.Id({reading.driver, reading.addr, reading.manufactor, reading.medium, reading.interfaceName,
                    reading.interfaceProtocol, reading.interfaceOptions});
  const std::int64_t state = m_states.Id({reading.status, std::int64_t{reading.timeSource},
                                          std::int64_t{reading.learning}, std::int64_t{reading.eventRaster}});
  cRow row{meter, reading.timestamp, 0, true};
  if (InsertRow(reading, meter, 0, origin, state)) return row;
  row.seq = FindSequence(reading, meter, origin, state);
  row.fresh = row.seq <= kMaxSequence && InsertRow(reading, meter, row.seq, origin, state);
  return row;
}

// The number of the row that tells the same as this reading, else the next free one of its second.
std::int64_t cReadingStore::FindSequence(const cReadingView& reading, std::int64_t meter, std::int64_t origin,
                                         std::int64_t state) {
  BindNumbers(m_findSame, meter, reading.timestamp, origin, state, reading.osc, reading.rssi);
  BindBlob(m_findSame, 7, reading.raw);
  m_findSame.bind(8, reading.storeUtc);
  m_findSame.bind(9, reading.storeOsc);
  std::int64_t found = -1;
  if (m_findSame.executeStep()) found = m_findSame.getColumn(0).getInt64();
  m_findSame.reset();
  if (found >= 0) return found;
  BindNumbers(m_lastSequence, meter, reading.timestamp);
  m_lastSequence.executeStep();
  found = m_lastSequence.getColumn(0).getInt64() + 1;
  m_lastSequence.reset();
  return found;
}

bool cReadingStore::InsertRow(const cReadingView& reading, std::int64_t meter, std::int64_t seq, std::int64_t origin,
                              std::int64_t state) {
  BindNumbers(m_insertReading, meter, reading.timestamp, seq, origin, state, reading.osc, reading.rssi);
  return Run(m_insertReading) != 0;
}

void cReadingStore::InsertExtra(const cReadingView& reading, const cRow& row) {
  BindNumbers(m_insertExtra, row.meter, row.time, row.seq);
  BindBlob(m_insertExtra, 4, reading.raw);
  m_insertExtra.bind(5, reading.storeUtc);
  m_insertExtra.bind(6, reading.storeOsc);
  Run(m_insertExtra);
}

void cReadingStore::DeleteRow(const cRow& row) {
  BindNumbers(m_deleteReading, row.meter, row.time, row.seq);
  Run(m_deleteReading);
}

bool cReadingStore::AddEntry(const cEntryView& entry, const cRow& row) {
  const std::int64_t obis = m_obis.Id({entry.name});
  const std::int64_t form = m_forms.Id({entry.unit, std::int64_t{entry.timeSource}});
  if (const auto packed = PackDecimal(entry.value))
    m_value = *packed;
  else
    m_value = std::string(entry.value);
  BindNumbers(m_insertValue, row.meter, entry.timestamp, obis);
  BindValue(m_insertValue, 4, m_value);
  m_insertValue.bind(5, form);
  // The common value belongs to the first reading of its own second: then nothing has to be written.
  if (entry.timestamp == row.time && row.seq == 0)
    m_insertValue.bind(6);
  else
    m_insertValue.bind(6, row.time << 16 | row.seq);
  if (Run(m_insertValue) == 0) return false;
  if (!entry.signature.empty()) InsertSignature(entry, row.meter, obis);
  m_series.Add(row.meter, obis, entry.timestamp, m_value, form);
  return true;
}

void cReadingStore::InsertSignature(const cEntryView& entry, std::int64_t meter, std::int64_t obis) {
  BindNumbers(m_insertSignature, meter, entry.timestamp, obis);
  BindValue(m_insertSignature, 4, m_value);
  BindBlob(m_insertSignature, 5, entry.signature);
  Run(m_insertSignature);
}

}  // namespace tav::data
