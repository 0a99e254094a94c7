// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/reading_store.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>

#include <gateway/database/decimal_code.h>

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

cStoredValue Stored(std::string_view text) {
  if (const auto packed = PackDecimal(text)) return *packed;
  return std::string(text);
}

int Run(SQLite::Statement& statement) {
  const int changes = statement.exec();
  statement.reset();
  return changes;
}

}  // namespace

cReadingStore::cReadingStore(SQLite::Database& database, const cClockLog* clock)
    : m_clock(clock),
      m_meters(database, "meter", {"name"}),
      m_obis(database, "obis", {"name"}),
      m_forms(database, "form", {"unit", "time_source"}),
      m_origins(
          database, "origin",
          {"driver", "addr", "manufactor", "medium", "interface_name", "interface_protocol", "interface_options"}),
      m_states(database, "state", {"status", "time_source", "learning", "event_raster", "boot"}),
      m_series(database),
      m_insertReading(database, "INSERT OR IGNORE INTO reading VALUES(?,?,?,?,?,?,?)"),
      m_findSame(database, kFindSame),
      m_lastSequence(database, "SELECT max(seq) FROM reading WHERE meter=? AND time=?"),
      m_nearest(database, "SELECT min(abs(osc-?1)) FROM reading WHERE meter=?2 AND time=?3 AND seq<>?4"),
      m_insertExtra(database, "INSERT INTO reading_extra VALUES(?,?,?,?,?,?)"),
      m_deleteReading(database, "DELETE FROM reading WHERE meter=? AND time=? AND seq=?"),
      m_insertSignature(database, "INSERT INTO signature VALUES(?,?,?,?,?)"),
      m_insertValues(database) {}

cReadingStore::eOutcome cReadingStore::Add(const cReadingView& reading) {
  if (reading.entries.empty()) return eOutcome::NothingNew;
  const cRow row = OpenRow(reading);
  if (row.seq > kMaxSequence) return eOutcome::Refused;
  bool stored = false;
  const std::vector<cEntryView>& entries = reading.entries;
  for (std::size_t begin = 0, end = 0; begin < entries.size(); begin = end) {
    while (end < entries.size() && entries[end].timestamp == entries[begin].timestamp) ++end;
    stored |= AddEntries(reading, begin, end, row);
  }
  const bool isNew = stored || (row.fresh && IsAnotherMoment(reading, row));
  if (row.fresh && isNew && HasExtra(reading)) InsertExtra(reading, row);
  if (row.fresh && !isNew) DeleteRow(row);
  return isNew ? eOutcome::Stored : eOutcome::NothingNew;
}

cReadingStore::cRow cReadingStore::OpenRow(const cReadingView& reading) {
  const std::int64_t meter = m_meters.Id({reading.meterId});
  const std::int64_t origin =
      m_origins.Id({reading.driver, reading.addr, reading.manufactor, reading.medium, reading.interfaceName,
                    reading.interfaceProtocol, reading.interfaceOptions});
  const std::int64_t boot = BootOf(reading.timeSource, reading);
  const std::int64_t state = m_states.Id({reading.status, std::int64_t{reading.timeSource},
                                          std::int64_t{reading.learning}, std::int64_t{reading.eventRaster}, boot});
  cRow row{meter, reading.timestamp, 0, true, boot};
  if (InsertRow(reading, meter, 0, origin, state)) return row;
  row.seq = FindSequence(reading, meter, origin, state);
  row.fresh = row.seq <= kMaxSequence && InsertRow(reading, meter, row.seq, origin, state);
  return row;
}

std::int64_t cReadingStore::BootOf(unsigned int timeSource, const cReadingView& reading) const {
  return m_clock != nullptr ? m_clock->BootOf(timeSource, reading.osc) : 0;
}

// A reading that says what another one of its second has said, but not at that time: the clock was set back.
bool cReadingStore::IsAnotherMoment(const cReadingView& reading, const cRow& row) {
  if (row.boot == 0) return false;
  BindNumbers(m_nearest, reading.osc, row.meter, row.time, row.seq);
  m_nearest.executeStep();
  const bool another = m_nearest.getColumn(0).getInt64() > cClockLog::kTolerance;
  m_nearest.reset();
  return another;
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

// Entries that have the same time.
bool cReadingStore::AddEntries(const cReadingView& reading, std::size_t begin, std::size_t end, const cRow& row) {
  m_values.resize(end - begin);
  for (std::size_t at = begin; at < end; ++at) {
    const cPlace& place = PlaceOf(reading.entries[at], at);
    m_values[at - begin] = {place.obis, Stored(reading.entries[at].value), place.form};
  }
  // The common value belongs to the first reading of its own second: then nothing has to be written of it.
  const std::int64_t time = reading.entries[begin].timestamp;
  const bool common = time == row.time && row.seq == 0;
  m_insertValues.Insert(row.meter, time, common ? std::nullopt : std::optional(row.time << 16 | row.seq), m_values);
  bool stored = false;
  for (std::size_t at = begin; at < end; ++at) {
    const cNewValue& value = m_values[at - begin];
    if (!value.stored) continue;
    stored = true;
    const std::int64_t boot = BootOf(reading.entries[at].timeSource, reading);
    m_series.Add(row.meter, value.obis, reading.entries[at].timestamp, cClockLog::OrderOf(boot, reading.osc),
                 value.value, value.form);
    if (!reading.entries[at].signature.empty()) InsertSignature(reading.entries[at], row.meter, value);
  }
  if (stored && m_onStored) m_onStored(row.meter, time);
  return stored;
}

const cReadingStore::cPlace& cReadingStore::PlaceOf(const cEntryView& entry, std::size_t at) {
  at = std::min(at, kMaxPlaces);
  if (at >= m_places.size()) m_places.resize(at + 1);
  cPlace& place = m_places[at];
  if (place.obis != 0 && place.name == entry.name && place.unit == entry.unit && place.timeSource == entry.timeSource)
    return place;
  place.name = entry.name;
  place.unit = entry.unit;
  place.timeSource = entry.timeSource;
  place.obis = m_obis.Id({entry.name});
  place.form = m_forms.Id({entry.unit, std::int64_t{entry.timeSource}});
  return place;
}

void cReadingStore::InsertSignature(const cEntryView& entry, std::int64_t meter, const cNewValue& value) {
  BindNumbers(m_insertSignature, meter, entry.timestamp, value.obis);
  BindValue(m_insertSignature, 4, value.value);
  BindBlob(m_insertSignature, 5, entry.signature);
  Run(m_insertSignature);
}

}  // namespace tav::data
