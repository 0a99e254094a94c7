// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_meter_table.h>

#include <SQLiteCpp/Database.h>

#include <gateway/database/statement.h>

namespace tav::data {

namespace {

constexpr const char* kSet =
    "INSERT INTO meter_config(meter_id, medium, mfct, addr, key, vendor, interface_name, interface_protocol, "
    "interface_options, push_enabled, store_raw_enabled) VALUES(?,?,?,?,?,?,?,?,?,?,?) "
    "ON CONFLICT(meter_id, medium, mfct) DO UPDATE SET addr=excluded.addr, key=excluded.key, vendor=excluded.vendor, "
    "interface_name=excluded.interface_name, interface_protocol=excluded.interface_protocol, "
    "interface_options=excluded.interface_options, push_enabled=excluded.push_enabled, "
    "store_raw_enabled=excluded.store_raw_enabled RETURNING id";

std::string List(const std::string& where) {
  return "SELECT id, meter_id, addr, medium, mfct, key, vendor, interface_name, interface_protocol, "
         "interface_options, push_enabled, store_raw_enabled FROM meter_config" +
         where + " ORDER BY meter_id, medium, mfct";
}

cStoredMeter FromRow(SQLite::Statement& row) {
  cColumns columns(row);
  cStoredMeter meter;
  meter.id = columns.Number();
  std::string texts[9];
  for (std::string& text : texts) text = columns.Text();
  meter.config.SetIdentification(texts[0], texts[1], texts[2], texts[3]);
  meter.config.SetKey(texts[4]);
  meter.config.SetVendor(texts[5]);
  meter.config.SetInterfaceOptions(texts[6], texts[7], texts[8]);
  meter.config.pushEnabled = columns.Bool();
  meter.config.storeRawEnabled = columns.Bool();
  return meter;
}

template <typename... Parameters>
std::vector<cStoredMeter> Gather(SQLite::Statement& statement, const Parameters&... parameters) {
  std::vector<cStoredMeter> meters;
  ForEach(
      statement, [&](SQLite::Statement& row) { meters.push_back(FromRow(row)); }, parameters...);
  return meters;
}

}  // namespace

cMeterTable::cMeterTable(SQLite::Database& database)
    : m_set(database, kSet),
      m_delete(database, "DELETE FROM meter_config WHERE id=?"),
      m_all(database, List("")),
      m_byAddr(database, List(" WHERE addr=?")),
      m_byKey(database, List(" WHERE (?1='' OR meter_id=?1) AND (?2='' OR medium=?2) AND (?3='' OR mfct=?3)")),
      m_byInterface(database, List(" WHERE interface_name=?")),
      m_count(database, "SELECT count(*) FROM meter_config") {}

std::int64_t cMeterTable::Set(const cMeterConfig& meter) {
  return NumberOr(0, m_set, meter.meterID, meter.medium, meter.mfct, meter.addr, meter.key, meter.vendor,
                  meter.interfaceName, meter.interfaceProtocol, meter.interfaceOptions, meter.pushEnabled,
                  meter.storeRawEnabled);
}

void cMeterTable::Delete(std::int64_t id) { Run(m_delete, id); }

std::vector<cStoredMeter> cMeterTable::ListAll() { return Gather(m_all); }

std::vector<cStoredMeter> cMeterTable::ListByAddr(const std::string& addr) { return Gather(m_byAddr, addr); }

std::vector<cStoredMeter> cMeterTable::ListByKey(const cMeterKey& key) {
  return Gather(m_byKey, key.meterId, key.medium, key.mfct);
}

std::vector<cStoredMeter> cMeterTable::ListByInterface(const std::string& name) { return Gather(m_byInterface, name); }

std::int64_t cMeterTable::Count() { return NumberOr(0, m_count); }

}  // namespace tav::data
