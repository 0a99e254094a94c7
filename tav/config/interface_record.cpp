// SPDX-License-Identifier: Apache-2.0
#include <tav/config/interface_record.h>

#include <utility>

#include <tav/config/config_fields.h>
#include <tav/record/record_fields.h>

namespace tav {

void cInterfaceRecord::SetName(const std::string& newName) {
  name = newName;
  valid = true;
}

void cInterfaceRecord::SetOptions(const std::string& newOptions) {
  options = newOptions;
  optionMap = ParseOptions(options, eNoPair::KeyOnly);
  valid = true;
}

void cInterfaceRecord::Set(const std::string& newName, const std::string& newOptions, bool newEnabled) {
  enabled = newEnabled;
  SetName(newName);
  SetOptions(newOptions);
}

bool cInterfaceRecord::GetOption(const std::string& key, std::string& value) const {
  return valid && optionMap.Get(key, value);
}

vorn::cRecord cInterfaceRecord::ToRecord() const {
  vorn::cRecord record;
  record.AppendUIntPar("version", version);
  record.AppendTextPar("name", name);
  record.AppendTextPar("options", options);
  record.AppendBoolPar("enabled", enabled);
  return record;
}

bool cInterfaceRecord::FromRecord(const vorn::cRecord& rec) {
  Init();
  if (rec.IsEmpty() || !ReadConfigVersion(rec, "InterfaceRecord", version, error)) return false;
  std::string text;
  if (!TakeText(rec, "name", text)) {
    error = "missing interface name";
    return valid;
  }
  SetName(text);
  if (TakeText(rec, "options", text)) SetOptions(text);
  enabled = rec.GetBoolPar("enabled");
  ReadMeters(rec);
  return valid;
}

void cInterfaceRecord::ReadMeters(const vorn::cRecord& rec) {
  vorn::cRecord nested;
  for (vorn::cRecordPar par = rec.GetPar("meterconfig-record");
       IsFilled(par, vorn::eParRecord) && par.GetRecord(nested); par = par.NextSame()) {
    cMeterConfig meter;
    if (meter.FromRecord(nested)) meters.push_back(std::move(meter));
  }
}

std::string cInterfaceRecord::ToString() const { return name + (enabled ? "(enabled)" : "(disabled)") + ":" + options; }

}  // namespace tav
