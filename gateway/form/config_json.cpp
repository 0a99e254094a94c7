// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_json.h>

namespace tav::form {

vorn::cRecord RowOf(const cJson& object) {
  vorn::cRecord row;
  for (const auto& [name, value] : object.items()) {
    if (value.is_string())
      row.AppendTextPar(name, value.get<std::string>());
    else if (value.is_boolean())
      row.AppendBoolPar(name, value.get<bool>());
    else if (value.is_number_unsigned())
      row.AppendUInt64Par(name, value.get<std::uint64_t>());
  }
  return row;
}

cJson MeterToJson(const cMeterConfig& meter, eSecrets secrets) {
  cJson object = ToJson(meter, kMeterFields, secrets);
  object[kCollectors] =
      ListToJson(meter.collectors, [&](const auto& each) { return ToJson(each, kCollectorFields, secrets); });
  return object;
}

cJson TemplateToJson(const cMeterTemplate& meterTemplate, eSecrets secrets) {
  cJson object = ToJson(meterTemplate, kTemplateFields, secrets);
  object[kMeterConfig] = MeterToJson(meterTemplate.meterConfig, secrets);
  object[kPushConfig] = ToJson(meterTemplate.pushConfig, kPushTargetFields, secrets);
  return object;
}

void ListFromJson(const cJson& object, const char* name, const std::string& place, Faults& faults,
                  const TakeItem& take) {
  const auto found = object.find(name);
  if (found == object.end()) return;
  const std::string at = Below(place, name);
  if (!found->is_array()) return faults.push_back({at, "expected a list"});
  for (std::size_t i = 0; i < found->size(); ++i) take((*found)[i], at + "[" + std::to_string(i) + "]");
}

void MeterFromJson(const cJson& object, cMeterConfig& meter, const std::string& place, Faults& faults) {
  FromJson(object, kMeterFields, meter, place, faults, {kCollectors});
  ListFromJson(object, kCollectors, place, faults, [&](const cJson& each, const std::string& at) {
    cCollectorConfig collector;
    FromJson(each, kCollectorFields, collector, at, faults);
    meter.AddCollector(collector);
  });
}

void TemplateFromJson(const cJson& object, cMeterTemplate& meterTemplate, const std::string& place, Faults& faults) {
  FromJson(object, kTemplateFields, meterTemplate, place, faults, {kMeterConfig, kPushConfig});
  if (!object.is_object()) return;
  if (object.contains(kMeterConfig))
    MeterFromJson(object[kMeterConfig], meterTemplate.meterConfig, Below(place, kMeterConfig), faults);
  if (object.contains(kPushConfig))
    FromJson(object[kPushConfig], kPushTargetFields, meterTemplate.pushConfig, Below(place, kPushConfig), faults);
  const std::string fault = PushConfigFault(meterTemplate);
  if (!fault.empty()) faults.push_back({Below(place, kPushConfig), fault});
}

std::string PushConfigFault(const cMeterTemplate& meterTemplate) {
  cPushTarget target(meterTemplate.pushConfig);
  return target.ToRecord() == cPushTarget().ToRecord() || target.isValid() ? std::string() : target.error;
}

}  // namespace tav::form
