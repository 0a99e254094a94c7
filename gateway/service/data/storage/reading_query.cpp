// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/reading_query.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>
#include <cstring>

#include <gateway/database/decimal_code.h>

namespace tav::data {

namespace {

// Names kept between pages; far more than a gateway's meters have.
constexpr std::size_t kMaxNames = 8192;

constexpr const char* kPage =
    "SELECT time, obis, value, form FROM value WHERE meter=? AND (time, obis, value)>(?,?,?) AND time<=? "
    "ORDER BY time, obis, value";

constexpr const char* kLastReading =
    "SELECT r.time, o.addr, o.manufactor, o.medium, o.driver, o.interface_name FROM reading r "
    "CROSS JOIN origin o ON o.id=r.origin WHERE r.meter=? ORDER BY r.time DESC, r.seq DESC LIMIT 1";

constexpr const char* kLast =
    "SELECT s.meter, s.obis, s.time, s.value, s.form, m.name FROM series s CROSS JOIN meter m ON m.id=s.meter "
    "WHERE (s.meter, s.obis)>(?,?) ORDER BY s.meter, s.obis";

unsigned int UInt(const SQLite::Column& column) { return static_cast<unsigned int>(column.getInt64()); }

void AppendRaw(std::string& to, std::int64_t number) {
  to.append(reinterpret_cast<const char*>(&number), sizeof number);
}

std::int64_t TakeRaw(std::string_view& from) {
  std::int64_t number = 0;
  std::memcpy(&number, from.data(), sizeof number);
  from.remove_prefix(sizeof number);
  return number;
}

std::optional<std::int64_t> FindName(SQLite::Statement& statement, const std::string& name) {
  std::optional<std::int64_t> number;
  statement.bindNoCopy(1, name);
  if (statement.executeStep()) number = statement.getColumn(0).getInt64();
  statement.reset();
  return number;
}

std::uint64_t Number(SQLite::Statement& statement) {
  statement.executeStep();
  const std::int64_t number = statement.getColumn(0).getInt64();
  statement.reset();
  return static_cast<std::uint64_t>(number);
}

}  // namespace

std::string cValueCursor::ToBytes() const {
  std::string bytes;
  AppendRaw(bytes, time);
  AppendRaw(bytes, obis);
  const auto* packed = std::get_if<std::int64_t>(&value);
  bytes.push_back(packed != nullptr ? 'i' : 't');
  if (packed != nullptr)
    AppendRaw(bytes, *packed);
  else
    bytes += std::get<std::string>(value);
  return bytes;
}

std::optional<cValueCursor> cValueCursor::FromBytes(std::string_view bytes) {
  if (bytes.size() < 2 * sizeof(std::int64_t) + 1) return std::nullopt;
  cValueCursor cursor;
  cursor.time = TakeRaw(bytes);
  cursor.obis = TakeRaw(bytes);
  const char kind = bytes.front();
  bytes.remove_prefix(1);
  if (kind == 't')
    cursor.value = std::string(bytes);
  else if (kind == 'i' && bytes.size() == sizeof(std::int64_t))
    cursor.value = TakeRaw(bytes);
  else
    return std::nullopt;
  return cursor;
}

cReadingQuery::cReadingQuery(SQLite::Database& database)
    : m_meters(database, "SELECT id, name FROM meter WHERE name>? ORDER BY name"),
      m_findMeter(database, "SELECT id FROM meter WHERE name=?"),
      m_findObis(database, "SELECT id FROM obis WHERE name=?"),
      m_lastReading(database, kLastReading),
      m_firstReading(database, "SELECT time FROM reading WHERE meter=? ORDER BY time LIMIT 1"),
      m_countOf(database, "SELECT ifnull(sum(count), 0) FROM series WHERE meter=?"),
      m_last(database, kLast),
      m_page(database, kPage),
      m_signature(database, "SELECT signature FROM signature WHERE meter=? AND time=? AND obis=? AND value=?"),
      m_obisName(database, "SELECT name FROM obis WHERE id=?"),
      m_form(database, "SELECT unit, time_source FROM form WHERE id=?"),
      m_countMeters(database, "SELECT count(*) FROM meter"),
      m_countValues(database, "SELECT ifnull(sum(count), 0) FROM series") {}

const char* cReadingQuery::GetPageSql() { return kPage; }

const char* cReadingQuery::GetLastSql() { return kLast; }

void cReadingQuery::ListMeters(const std::string& after, const std::function<bool(const cMeterRow&)>& row) {
  m_meters.bindNoCopy(1, after);
  while (m_meters.executeStep()) {
    cMeterRow meter;
    meter.meterId = m_meters.getColumn(1).getString();
    FillMeter(m_meters.getColumn(0).getInt64(), meter);
    if (!row(meter)) break;
  }
  m_meters.reset();
}

void cReadingQuery::FillMeter(std::int64_t meter, cMeterRow& row) {
  m_lastReading.bind(1, meter);
  if (m_lastReading.executeStep()) {
    row.last = UInt(m_lastReading.getColumn(0));
    row.addr = m_lastReading.getColumn(1).getString();
    row.manufactor = m_lastReading.getColumn(2).getString();
    row.medium = m_lastReading.getColumn(3).getString();
    row.driver = m_lastReading.getColumn(4).getString();
    row.interfaceName = m_lastReading.getColumn(5).getString();
  }
  m_lastReading.reset();
  m_firstReading.bind(1, meter);
  if (m_firstReading.executeStep()) row.first = UInt(m_firstReading.getColumn(0));
  m_firstReading.reset();
  m_countOf.bind(1, meter);
  row.values = Number(m_countOf);
}

std::optional<std::int64_t> cReadingQuery::FindMeter(const std::string& meterId) {
  return FindName(m_findMeter, meterId);
}

std::optional<std::int64_t> cReadingQuery::FindObis(const std::string& name) { return FindName(m_findObis, name); }

std::vector<std::int64_t> cReadingQuery::FindAllObis(const std::vector<std::string>& names) {
  std::vector<std::int64_t> found;
  for (const std::string& name : names)
    if (const auto obis = FindObis(name)) found.push_back(*obis);
  return found;
}

void cReadingQuery::ListLast(const std::string& meterId, const cLastCursor& after,
                             const std::function<bool(const cValueRow&, const cLastCursor&)>& row) {
  const std::optional<std::int64_t> only = FindMeter(meterId);
  if (!meterId.empty() && !only) return;
  const bool within = !only || after.meter == *only;
  m_last.bind(1, within ? after.meter : *only);
  m_last.bind(2, within ? after.obis : -1);
  while (m_last.executeStep()) {
    const cLastCursor at{m_last.getColumn(0).getInt64(), m_last.getColumn(1).getInt64()};
    if (only && at.meter != *only) break;
    const cForm& form = FormOf(m_last.getColumn(4).getInt64());
    const cStoredValue value = StoredValueOf(m_last.getColumn(3));
    const unsigned int time = UInt(m_last.getColumn(2));
    if (!row({m_last.getColumn(5).getString(), NameOf(at.obis), TextOf(value), form.unit,
              ReadSignature(at.meter, {time, at.obis, value}), time, form.timeSource},
             at))
      break;
  }
  m_last.reset();
}

std::optional<cValueCursor> cReadingQuery::ListValues(
    const cValueSelection& selection, const std::function<bool(const cValueRow&, const cValueCursor&)>& row,
    unsigned int& left) {
  const std::optional<std::int64_t> meter = FindMeter(selection.meterId);
  const std::vector<std::int64_t> only = FindAllObis(selection.obis);
  if (!meter || only.empty() != selection.obis.empty()) return std::nullopt;
  cValueCursor at{selection.from, -1, std::int64_t{0}};
  if (selection.after && selection.after->time >= at.time) at = *selection.after;
  const cStoredValue begin = at.value;
  m_page.bind(1, *meter);
  m_page.bind(2, at.time);
  m_page.bind(3, at.obis);
  BindValue(m_page, 4, begin);
  m_page.bind(5, selection.to);
  bool more = true;
  while (more && left != 0 && m_page.executeStep()) {
    --left;
    at = {m_page.getColumn(0).getInt64(), m_page.getColumn(1).getInt64(), StoredValueOf(m_page.getColumn(2))};
    if (!only.empty() && std::find(only.begin(), only.end(), at.obis) == only.end()) continue;
    const cForm& form = FormOf(m_page.getColumn(3).getInt64());
    more = row({selection.meterId, NameOf(at.obis), TextOf(at.value), form.unit, ReadSignature(*meter, at),
                static_cast<unsigned int>(at.time), form.timeSource},
               at);
  }
  m_page.reset();
  return more && left == 0 ? std::optional(at) : std::nullopt;
}

std::string cReadingQuery::ReadSignature(std::int64_t meter, const cValueCursor& at) {
  m_signature.bind(1, meter);
  m_signature.bind(2, at.time);
  m_signature.bind(3, at.obis);
  BindValue(m_signature, 4, at.value);
  std::string signature;
  if (m_signature.executeStep()) signature = m_signature.getColumn(0).getString();
  m_signature.reset();
  return signature;
}

const std::string& cReadingQuery::NameOf(std::int64_t obis) {
  if (const auto known = m_names.find(obis); known != m_names.end()) return known->second;
  if (m_names.size() >= kMaxNames) m_names.clear();
  std::string& name = m_names[obis];
  m_obisName.bind(1, obis);
  if (m_obisName.executeStep()) name = m_obisName.getColumn(0).getString();
  m_obisName.reset();
  return name;
}

const cReadingQuery::cForm& cReadingQuery::FormOf(std::int64_t form) {
  if (const auto known = m_forms.find(form); known != m_forms.end()) return known->second;
  if (m_forms.size() >= kMaxNames) m_forms.clear();
  cForm& made = m_forms[form];
  m_form.bind(1, form);
  if (m_form.executeStep()) made = {m_form.getColumn(0).getString(), UInt(m_form.getColumn(1))};
  m_form.reset();
  return made;
}

std::uint64_t cReadingQuery::CountMeters() { return Number(m_countMeters); }

std::uint64_t cReadingQuery::CountValues() { return Number(m_countValues); }

cStoredValue StoredValueOf(const SQLite::Column& column) {
  if (column.isInteger()) return std::int64_t{column.getInt64()};
  return column.getString();
}

std::string TextOf(const cStoredValue& value) {
  const auto* packed = std::get_if<std::int64_t>(&value);
  return packed != nullptr ? UnpackDecimal(*packed) : std::get<std::string>(value);
}

}  // namespace tav::data
