// SPDX-License-Identifier: Apache-2.0
#include <gateway/database/schema.h>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Transaction.h>

#include <iterator>

#include <gateway/database/decimal_code.h>

namespace tav::data {

namespace {

// Texts that repeat stand once, in the dictionaries meter, obis, form, origin and state. The rows of one meter lie
// beside each other in the order of time, and the key of a value is what makes it the same value when it comes again.
constexpr const char* kReadings = R"(
CREATE TABLE meter(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
CREATE TABLE obis(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
CREATE TABLE form(id INTEGER PRIMARY KEY, unit TEXT NOT NULL, time_source INTEGER NOT NULL, UNIQUE(unit, time_source));
CREATE TABLE origin(id INTEGER PRIMARY KEY, driver TEXT NOT NULL, addr TEXT NOT NULL, manufactor TEXT NOT NULL,
  medium TEXT NOT NULL, interface_name TEXT NOT NULL, interface_protocol TEXT NOT NULL, interface_options TEXT NOT NULL,
  UNIQUE(driver, addr, manufactor, medium, interface_name, interface_protocol, interface_options));
CREATE TABLE state(id INTEGER PRIMARY KEY, status TEXT NOT NULL, time_source INTEGER NOT NULL, learning INTEGER NOT NULL,
  event_raster INTEGER NOT NULL, UNIQUE(status, time_source, learning, event_raster));
CREATE TABLE reading(meter INTEGER, time INTEGER, seq INTEGER, origin INTEGER NOT NULL, state INTEGER NOT NULL,
  osc INTEGER NOT NULL, rssi INTEGER NOT NULL, PRIMARY KEY(meter, time, seq)) WITHOUT ROWID;
CREATE TABLE reading_extra(meter INTEGER, time INTEGER, seq INTEGER, raw BLOB NOT NULL, store_utc INTEGER NOT NULL,
  store_osc INTEGER NOT NULL, PRIMARY KEY(meter, time, seq)) WITHOUT ROWID;
CREATE TABLE value(meter INTEGER, time INTEGER, obis INTEGER, value, form INTEGER NOT NULL, owner INTEGER,
  PRIMARY KEY(meter, time, obis, value)) WITHOUT ROWID;
CREATE TABLE signature(meter INTEGER, time INTEGER, obis INTEGER, value, signature BLOB NOT NULL,
  PRIMARY KEY(meter, time, obis, value)) WITHOUT ROWID;
CREATE TABLE event(id INTEGER PRIMARY KEY, time INTEGER NOT NULL, record BLOB NOT NULL);
CREATE INDEX event_by_time ON event(time);
CREATE TABLE store_value(store TEXT, key TEXT, value TEXT NOT NULL, PRIMARY KEY(store, key)) WITHOUT ROWID;

CREATE VIEW readings AS
  SELECT m.name AS meter, r.time, datetime(r.time, 'unixepoch') AS utc, r.seq, s.time_source, o.driver, o.addr,
    o.manufactor, o.medium, s.status, r.rssi, r.osc, s.learning, s.event_raster, o.interface_name, o.interface_protocol,
    o.interface_options, x.raw, ifnull(x.store_utc, 0) AS store_utc, ifnull(x.store_osc, 0) AS store_osc
  FROM reading r CROSS JOIN meter m ON m.id=r.meter CROSS JOIN origin o ON o.id=r.origin CROSS JOIN state s ON s.id=r.state
    LEFT JOIN reading_extra x ON x.meter=r.meter AND x.time=r.time AND x.seq=r.seq;
CREATE VIEW reading_values AS
  SELECT m.name AS meter, v.time, datetime(v.time, 'unixepoch') AS utc, o.name AS obis, $value AS value, f.unit,
    f.time_source, g.signature, ifnull(v.owner>>16, v.time) AS reading_time, ifnull(v.owner&65535, 0) AS reading_seq
  FROM value v CROSS JOIN meter m ON m.id=v.meter CROSS JOIN obis o ON o.id=v.obis CROSS JOIN form f ON f.id=v.form
    LEFT JOIN signature g ON g.meter=v.meter AND g.time=v.time AND g.obis=v.obis AND g.value=v.value;
)";

// How many values a meter has of each OBIS identifier, and its last one, without walking through them.
constexpr const char* kSeries = R"(
CREATE TABLE series(meter INTEGER, obis INTEGER, count INTEGER NOT NULL, time INTEGER NOT NULL, value,
  form INTEGER NOT NULL, PRIMARY KEY(meter, obis)) WITHOUT ROWID;
INSERT INTO series SELECT meter, obis, count(*), max(time), value, form FROM value GROUP BY meter, obis;
CREATE VIEW last_values AS
  SELECT m.name AS meter, v.time, datetime(v.time, 'unixepoch') AS utc, o.name AS obis, $value AS value, f.unit,
    f.time_source, v.count
  FROM series v CROSS JOIN meter m ON m.id=v.meter CROSS JOIN obis o ON o.id=v.obis CROSS JOIN form f ON f.id=v.form;
)";

// The configuration. What needs another thing refers to it, so that the file never holds a meter without its interface.
// A number of a push target or a template is given once. Secrets stand in meter_config.key, push_target.password and
// meter_template.record.
constexpr const char* kConfiguration = R"(
CREATE TABLE interface(name TEXT PRIMARY KEY CHECK(name<>''), options TEXT NOT NULL,
  enabled INTEGER NOT NULL CHECK(enabled IN (0,1))) WITHOUT ROWID;
CREATE TABLE push_target(idx INTEGER PRIMARY KEY AUTOINCREMENT CHECK(idx>0), name TEXT NOT NULL UNIQUE CHECK(name<>''),
  protocoll TEXT NOT NULL CHECK(protocoll<>''), host TEXT NOT NULL CHECK(host<>''), username TEXT NOT NULL,
  password TEXT NOT NULL, uri TEXT NOT NULL, collect INTEGER NOT NULL CHECK(collect BETWEEN 1 AND 50),
  maxruntime INTEGER NOT NULL CHECK(maxruntime>=5), enabled INTEGER NOT NULL CHECK(enabled IN (0,1)),
  log_enabled INTEGER NOT NULL CHECK(log_enabled IN (0,1)), post_enabled INTEGER NOT NULL CHECK(post_enabled IN (0,1)));
CREATE TABLE meter_config(id INTEGER PRIMARY KEY, meter_id TEXT NOT NULL CHECK(meter_id<>''), medium TEXT NOT NULL,
  mfct TEXT NOT NULL, addr TEXT NOT NULL, key TEXT NOT NULL, vendor TEXT NOT NULL,
  interface_name TEXT NOT NULL REFERENCES interface(name), interface_protocol TEXT NOT NULL,
  interface_options TEXT NOT NULL, push_enabled INTEGER NOT NULL CHECK(push_enabled IN (0,1)),
  store_raw_enabled INTEGER NOT NULL CHECK(store_raw_enabled IN (0,1)), UNIQUE(meter_id, medium, mfct));
CREATE INDEX meter_config_by_addr ON meter_config(addr);
CREATE INDEX meter_config_by_interface ON meter_config(interface_name);
CREATE TABLE collector(id INTEGER PRIMARY KEY, meter INTEGER NOT NULL REFERENCES meter_config(id) ON DELETE CASCADE,
  addr TEXT NOT NULL CHECK(addr<>''), activation INTEGER NOT NULL CHECK(activation IN (0,1)),
  count_rp INTEGER NOT NULL CHECK(count_rp>=0), distance_rp INTEGER NOT NULL CHECK(distance_rp>=0),
  event_type TEXT NOT NULL CHECK(event_type<>''), obis_ids TEXT NOT NULL CHECK(obis_ids<>''),
  push_target INTEGER REFERENCES push_target(idx), push_period TEXT NOT NULL,
  push_enabled INTEGER NOT NULL CHECK(push_enabled IN (0,1)),
  push_raw_enabled INTEGER NOT NULL CHECK(push_raw_enabled IN (0,1)),
  push_random_offset INTEGER NOT NULL CHECK(push_random_offset BETWEEN 0 AND 65535), UNIQUE(meter, addr));
CREATE INDEX collector_by_push_target ON collector(push_target);
CREATE TABLE meter_template(idx INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE CHECK(name<>''),
  record BLOB NOT NULL);
)";

// What collectors have logged. A profile is known by its meter's and collector's keys, so that it outlives a collector
// that is written anew; the rest of it is what it was logged by, and up to which event. Values with a reading of their
// own are found by it: the others belong to the first reading of their second.
constexpr const char* kProfiles = R"(
CREATE TABLE profile(id INTEGER PRIMARY KEY, meter_id TEXT NOT NULL, medium TEXT NOT NULL, mfct TEXT NOT NULL,
  addr TEXT NOT NULL, active INTEGER NOT NULL, event_type TEXT NOT NULL, distance_rp INTEGER NOT NULL,
  count_rp INTEGER NOT NULL, obis_ids TEXT NOT NULL, logged INTEGER NOT NULL, UNIQUE(meter_id, medium, mfct, addr));
CREATE TABLE profile_value(profile INTEGER, time INTEGER, obis INTEGER, value_time INTEGER NOT NULL, value,
  form INTEGER NOT NULL, PRIMARY KEY(profile, time, obis)) WITHOUT ROWID;
CREATE INDEX profile_value_by_obis ON profile_value(profile, obis, time);
CREATE INDEX value_by_owner ON value(meter, owner) WHERE owner IS NOT NULL;
CREATE VIEW profile_values AS
  SELECT p.meter_id AS meter, p.addr AS collector, p.event_type, v.time, datetime(v.time, 'unixepoch') AS utc,
    o.name AS obis, $value AS value, f.unit, f.time_source, v.value_time
  FROM profile p CROSS JOIN profile_value v ON v.profile=p.id CROSS JOIN obis o ON o.id=v.obis
    CROSS JOIN form f ON f.id=v.form;
)";

// The mapping rules, whose identifiers are unsigned, and the status values as they were last known. A setting is
// something that a service has done once. Views begin with the meter: whoever asks for one does not walk through the
// values of all.
//
// Readings follow each other by boot and seconds since boot where the gateway's clock has timed them (clock_log.h).
constexpr const char* kRulesAndStatus = R"(
CREATE TABLE obis_rule(id INTEGER PRIMARY KEY, name TEXT NOT NULL CHECK(name<>''), obis TEXT NOT NULL CHECK(obis<>''),
  map TEXT NOT NULL CHECK(map<>''));
CREATE TABLE status_value(name TEXT PRIMARY KEY, value TEXT NOT NULL, process TEXT NOT NULL, pid INTEGER NOT NULL,
  changed INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;

DROP VIEW readings;
DROP VIEW reading_values;
DROP VIEW last_values;
CREATE TABLE boot(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);
CREATE TABLE clock(boot INTEGER, osc INTEGER, utc_offset INTEGER NOT NULL, PRIMARY KEY(boot, osc)) WITHOUT ROWID;
CREATE TABLE new_state(id INTEGER PRIMARY KEY, status TEXT NOT NULL, time_source INTEGER NOT NULL,
  learning INTEGER NOT NULL, event_raster INTEGER NOT NULL, boot INTEGER NOT NULL,
  UNIQUE(status, time_source, learning, event_raster, boot));
INSERT INTO new_state SELECT id, status, time_source, learning, event_raster, 0 FROM state;
DROP TABLE state;
ALTER TABLE new_state RENAME TO state;
ALTER TABLE series ADD COLUMN ord INTEGER NOT NULL DEFAULT 0;

CREATE VIEW readings AS
  SELECT m.name AS meter, r.time, datetime(r.time, 'unixepoch') AS utc, r.seq, s.time_source, o.driver, o.addr,
    o.manufactor, o.medium, s.status, r.rssi, r.osc, s.learning, s.event_raster, o.interface_name, o.interface_protocol,
    o.interface_options, x.raw, ifnull(x.store_utc, 0) AS store_utc, ifnull(x.store_osc, 0) AS store_osc, s.boot,
    ifnull(r.osc+(SELECT c.utc_offset FROM clock c WHERE c.boot=s.boot ORDER BY c.osc DESC LIMIT 1), r.time) AS true_time
  FROM meter m CROSS JOIN reading r ON r.meter=m.id CROSS JOIN origin o ON o.id=r.origin CROSS JOIN state s ON s.id=r.state
    LEFT JOIN reading_extra x ON x.meter=r.meter AND x.time=r.time AND x.seq=r.seq;
CREATE VIEW reading_values AS
  SELECT m.name AS meter, v.time, datetime(v.time, 'unixepoch') AS utc, o.name AS obis, $value AS value, f.unit,
    f.time_source, g.signature, ifnull(v.owner>>16, v.time) AS reading_time, ifnull(v.owner&65535, 0) AS reading_seq
  FROM meter m CROSS JOIN value v ON v.meter=m.id CROSS JOIN obis o ON o.id=v.obis CROSS JOIN form f ON f.id=v.form
    LEFT JOIN signature g ON g.meter=v.meter AND g.time=v.time AND g.obis=v.obis AND g.value=v.value;
CREATE VIEW last_values AS
  SELECT m.name AS meter, v.time, datetime(v.time, 'unixepoch') AS utc, o.name AS obis, $value AS value, f.unit,
    f.time_source, v.count
  FROM meter m CROSS JOIN series v ON v.meter=m.id CROSS JOIN obis o ON o.id=v.obis CROSS JOIN form f ON f.id=v.form;
)";

constexpr const char* kSteps[] = {kReadings, kSeries, kConfiguration, kProfiles, kRulesAndStatus};
static_assert(std::size(kSteps) == kSchemaVersion);

std::string WithUnpacking(std::string sql) {
  constexpr std::string_view kMark = "$value";
  const std::string unpacked = UnpackSql("v.value");
  for (std::size_t at = sql.find(kMark); at != std::string::npos; at = sql.find(kMark, at + unpacked.size()))
    sql.replace(at, kMark.size(), unpacked);
  return sql;
}

void TakeStep(SQLite::Database& database, int version) {
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
  if (GetSchemaVersion(database) >= version) return;  // another process was faster
  database.exec(WithUnpacking(kSteps[version - 1]));
  database.exec("PRAGMA application_id=" + std::to_string(kApplicationId));
  database.exec("PRAGMA user_version=" + std::to_string(version));
  transaction.commit();
}

}  // namespace

int GetSchemaVersion(SQLite::Database& database) { return database.execAndGet("PRAGMA user_version").getInt(); }

// In one transaction: another process may just be making the tables.
bool IsOurs(SQLite::Database& database) {
  const SQLite::Transaction transaction(database);
  const int id = database.execAndGet("PRAGMA application_id").getInt();
  if (id == kApplicationId) return true;
  return id == 0 && GetSchemaVersion(database) == 0 &&
         database.execAndGet("SELECT count(*) FROM sqlite_schema").getInt() == 0;
}

void Migrate(SQLite::Database& database, int version) {
  for (int next = GetSchemaVersion(database) + 1; next <= version; ++next) TakeStep(database, next);
}

}  // namespace tav::data
