// SPDX-License-Identifier: Apache-2.0
#include <tav/config/meter_config.h>

#include <string_view>

#include <tav/config/config_fields.h>
#include <tav/record/record_fields.h>

namespace tav {

namespace {

struct cDriverRow {
  std::string_view interfaceName;
  std::string_view protocol;
  const char* driver;
};

// clang-format off
constexpr cDriverRow kDrivers[] = {
  {"RS232", "SML",          "ehzif"},
  {"RS232", "1107",         "1107if"},
  {"RS485", "1107",         "1107if"},
  {"RS485", "DLMS",         "dlmsif"},
  {"RS485", "MODBUS",       "dlmsif"},  // the master's side is the DLMS driver's work
  {"RS485", "MODBUS-SLAVE", "modsif"},
  {"SIM",   "SML",          "ehzif"},
  {"WMBUS", "SML",          "wmbif"},
  {"WMBUS", "MBUS",         "wmbif"},
  {"MBUS",  "MBUS",         "mbif"},
};
// clang-format on

const char* DriverOf(const std::string& name, const std::string& protocol) {
  for (const cDriverRow& row : kDrivers)
    if (row.interfaceName == name && row.protocol == protocol) return row.driver;
  return "unknown";
}

}  // namespace

void cMeterConfig::SetIdentification(const std::string& newMeterID, const std::string& newAddr,
                                     const std::string& newMedium, const std::string& newMfct) {
  meterID = newMeterID;
  addr = newAddr;
  medium = newMedium;
  mfct = newMfct;
  valid = !meterID.empty();
  if (!valid) error = "missing meterID";
}

void cMeterConfig::SetInterfaceOptions(const std::string& name, const std::string& protocol,
                                       const std::string& options) {
  interfaceOptions = options;
  interfaceName = name;
  interfaceProtocol = protocol;
  interfaceDriver = DriverOf(interfaceName, interfaceProtocol);
  interfaceOptionMap = ParseOptions(interfaceOptions, eNoPair::Ignored);
}

bool cMeterConfig::GetInterfaceOption(const std::string& option, std::string& value) const {
  return valid && interfaceOptionMap.Get(option, value);
}

vorn::cRecord cMeterConfig::ToRecord() const {
  vorn::cRecord record;
  record.AppendUIntPar("version", version);
  record.AppendTextPar("meterID", meterID);
  record.AppendTextPar("addr", addr);
  record.AppendTextPar("medium", medium);
  record.AppendTextPar("mfct", mfct);
  record.AppendTextPar("key", key);
  record.AppendTextPar("vendor", vendor);
  record.AppendTextPar("interface-name", interfaceName);
  record.AppendTextPar("interface-protocol", interfaceProtocol);
  record.AppendTextPar("interface-options", interfaceOptions);
  record.AppendBoolPar("push-enabled", pushEnabled);
  record.AppendBoolPar("store-raw-enabled", storeRawEnabled);
  for (const cCollectorConfig& collector : collectors) record.AppendRecordPar("collector-config", collector.ToRecord());
  return record;
}

bool cMeterConfig::FromRecord(const vorn::cRecord& rec) {
  Init();
  if (rec.IsEmpty() || !ReadConfigVersion(rec, "MeterConfigRecord", version, error)) return false;
  SetIdentification(rec.GetTextPar("meterID"), rec.GetTextPar("addr"), rec.GetTextPar("medium"),
                    rec.GetTextPar("mfct"));
  SetInterfaceOptions(rec.GetTextPar("interface-name"), rec.GetTextPar("interface-protocol"),
                      rec.GetTextPar("interface-options"));
  SetKey(rec.GetTextPar("key"));
  pushEnabled = rec.GetBoolPar("push-enabled");
  storeRawEnabled = rec.GetBoolPar("store-raw-enabled");
  SetVendor(rec.GetTextPar("vendor"));
  vorn::cRecord nested;
  // On to the next of any name: what follows the first collector is taken for one.
  for (vorn::cRecordPar par = rec.GetPar("collector-config"); IsFilled(par, vorn::eParRecord) && par.GetRecord(nested);
       par = par.Next()) {
    cCollectorConfig collector;
    collector.FromRecord(nested);
    if (collector.IsValid()) AddCollector(collector);
  }
  return valid;
}

std::string cMeterConfig::ToString() const {
  return meterID + "(" + addr + ")/" + medium + "/" + mfct + "interface=" + interfaceName + "(" + interfaceProtocol +
         ") " + interfaceOptions;
}

}  // namespace tav
