// SPDX-License-Identifier: Apache-2.0
// The fields of the configuration records as people write them: one table a record. What is listed, shown, set,
// exported and imported comes from these tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <variant>

#include <tav/config/collector_config.h>
#include <tav/config/interface_record.h>
#include <tav/config/meter_config.h>
#include <tav/config/meter_template.h>
#include <tav/config/push_target.h>

namespace tav::form {

template <typename Record>
using Member = std::variant<std::string Record::*, bool Record::*, unsigned int Record::*, unsigned short Record::*,
                            unsigned long Record::*, unsigned long long Record::*>;

template <typename Record>
struct cField {
  std::string_view name;
  Member<Record> member;
  std::string_view help;
  bool secret = false;  // shown and exported only when that is asked for
};

// clang-format off
inline constexpr cField<cInterfaceRecord> kInterfaceFields[] = {
    {"name",                 &cInterfaceRecord::name,              "name, such as RS232, RS485, MBUS, WMBUS or SIM"},
    {"enabled",              &cInterfaceRecord::enabled,           "whether it is in use"},
    {"options",              &cInterfaceRecord::options,           "KEY=VALUE pairs with commas between them, such as input=/dev/ttyUSB0,baud=9600"},
};

inline constexpr cField<cMeterConfig> kMeterFields[] = {
    {"meterID",              &cMeterConfig::meterID,               "identifier"},
    {"addr",                 &cMeterConfig::addr,                  "address on its interface"},
    {"medium",               &cMeterConfig::medium,                "medium letter, such as E electricity, H heat, W warm water, G gas"},
    {"mfct",                 &cMeterConfig::mfct,                  "manufacturer code"},
    {"key",                  &cMeterConfig::key,                   "key of its encryption", true},
    {"vendor",               &cMeterConfig::vendor,                "vendor"},
    {"interface-name",       &cMeterConfig::interfaceName,         "interface it is read through"},
    {"interface-protocol",   &cMeterConfig::interfaceProtocol,     "protocol on that interface, such as SML, MBUS, DLMS, MODBUS, 1107"},
    {"interface-options",    &cMeterConfig::interfaceOptions,      "KEY=VALUE pairs for this meter, such as interval=900"},
    {"push-enabled",         &cMeterConfig::pushEnabled,           "whether its values are pushed"},
    {"store-raw-enabled",    &cMeterConfig::storeRawEnabled,       "whether its telegrams are stored with the readings"},
};

inline constexpr cField<cCollectorConfig> kCollectorFields[] = {
    {"addr",                 &cCollectorConfig::addr,              "name within its meter"},
    {"activation",           &cCollectorConfig::activation,        "whether it logs"},
    {"event-type",           &cCollectorConfig::eventType,         "when it logs: 15min, hour, day, month, or a number of seconds"},
    {"obis-ids",             &cCollectorConfig::obisIds,           "OBIS identifiers it logs, with commas between them"},
    {"countRP",              &cCollectorConfig::countRP,           "values kept of each; 0: all"},
    {"distanceRP",           &cCollectorConfig::distanceRP,        "logs at every so many events; 0 and 1: at each"},
    {"push-target-idx",      &cCollectorConfig::pushTargetIdx,     "number of the push target"},
    {"push-target-name",     &cCollectorConfig::pushTargetName,    "name of the push target"},
    {"push-period",          &cCollectorConfig::pushPeriod,        "when it pushes"},
    {"push-enabled",         &cCollectorConfig::pushEnabled,       "whether it pushes"},
    {"push-raw-enabled",     &cCollectorConfig::pushRawEnabled,    "whether it pushes telegrams too"},
    {"push-random-offset",   &cCollectorConfig::pushRandomOffset,  "random delay of a push"},
};

inline constexpr cField<cPushTarget> kPushTargetFields[] = {
    {"idx",                  &cPushTarget::idx,                    "number; 0: the service chooses"},
    {"name",                 &cPushTarget::name,                   "name"},
    {"enabled",              &cPushTarget::enabled,                "whether it is pushed to"},
    {"protocoll",            &cPushTarget::protocoll,              "scheme of its URL, such as https"},
    {"host",                 &cPushTarget::host,                   "host, with a port where needed"},
    {"uri",                  &cPushTarget::uri,                    "path on the host, without the first /"},
    {"username",             &cPushTarget::username,               "user name"},
    {"password",             &cPushTarget::password,               "password", true},
    {"collect",              &cPushTarget::collect,                "collections sent together, 1 to 50"},
    {"maxruntime",           &cPushTarget::maxruntime,             "longest run time of a push, seconds, 5 at least"},
    {"log-enabled",          &cPushTarget::logEnabled,             "whether pushes are logged"},
    {"post-enabled",         &cPushTarget::postEnabled,            "whether data are posted"},
};

// Its meter and push target stand nested in it, under these names.
inline constexpr const char* kMeterConfig = "meter-config";
inline constexpr const char* kPushConfig = "push-config";
inline constexpr cField<cMeterTemplate> kTemplateFields[] = {
    {"idx",                  &cMeterTemplate::id,                  "number; the service chooses it"},
    {"name",                 &cMeterTemplate::name,                "name"},
    {"enable",               &cMeterTemplate::enable,              "whether it is offered"},
};
// clang-format on

// ---- values of fields

// A value of one kind from its text; false, and what was expected, when it does not fit.
bool TakeText(const std::string& text, std::string& value, std::string& expected);
bool TakeText(const std::string& text, bool& value, std::string& expected);
bool TakeText(const std::string& text, std::uint64_t most, std::uint64_t& value, std::string& expected);
template <typename Number>
bool TakeText(const std::string& text, Number& value, std::string& expected) {
  std::uint64_t number = 0;
  if (!TakeText(text, std::numeric_limits<Number>::max(), number, expected)) return false;
  value = static_cast<Number>(number);
  return true;
}

// The text of a field's value: true or false, digits, or the text itself.
template <typename Record>
std::string FieldText(const Record& record, const cField<Record>& field) {
  return std::visit(
      [&](auto member) {
        const auto& value = record.*member;
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>)
          return value;
        else if constexpr (std::is_same_v<std::decay_t<decltype(value)>, bool>)
          return std::string(value ? "true" : "false");
        else
          return std::to_string(value);
      },
      field.member);
}

// Null when there is no field of that name.
template <typename Record, std::size_t N>
const cField<Record>* FindField(const cField<Record> (&fields)[N], std::string_view name) {
  for (const cField<Record>& field : fields)
    if (field.name == name) return &field;
  return nullptr;
}

// "name, enabled, options"
template <typename Record, std::size_t N>
std::string FieldNames(const cField<Record> (&fields)[N]) {
  std::string names;
  for (const cField<Record>& field : fields) (names += names.empty() ? "" : ", ") += field.name;
  return names;
}

// Sets a field from its text; false, and what was expected, when it does not fit.
template <typename Record>
bool SetField(Record& record, const cField<Record>& field, const std::string& text, std::string& expected) {
  return std::visit([&](auto member) { return TakeText(text, record.*member, expected); }, field.member);
}

// Sets the field of that name from its text; false, and what is wrong, when there is none or the text does not fit.
template <typename Record, std::size_t N>
bool SetByName(Record& record, const cField<Record> (&fields)[N], const std::string& name, const std::string& text,
               std::string& error) {
  const cField<Record>* const field = FindField(fields, name);
  if (field == nullptr) {
    error = "there is no field '" + name + "'; there are " + FieldNames(fields);
    return false;
  }
  std::string expected;
  if (SetField(record, *field, text, expected)) return true;
  error = name + ": expected " + expected + ", found \"" + text + "\"";
  return false;
}

// The same of a template, and with "meter-config.medium", "push-config.host" of what stands nested in it.
bool SetTemplateByName(cMeterTemplate& meterTemplate, const std::string& name, const std::string& text,
                       std::string& error);

}  // namespace tav::form
