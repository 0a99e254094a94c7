// SPDX-License-Identifier: Apache-2.0
#include <tav/config/meter_template.h>

#include <tav/config/config_fields.h>
#include <tav/framework/xml.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kFailure = 2;
constexpr int kSuccess = 8;
constexpr int kNoSuchFile = 10;  // of the XML reader

}  // namespace

cMeterTemplate& cMeterTemplate::operator=(const cMeterTemplate& other) {
  version = other.version;
  name = other.name;
  enable = other.enable;
  meterConfig = other.meterConfig;
  pushConfig = other.pushConfig;
  return *this;
}

void cMeterTemplate::Init() {
  version = kConfigVersion;
  name.clear();
  id = 0;
  enable = false;
  error.clear();
  meterConfig.Init();
  pushConfig.Init();
}

vorn::cRecord cMeterTemplate::ToRecord() const {
  vorn::cRecord record;
  record.AppendUIntPar("version", version);
  record.AppendTextPar("name", name);
  record.AppendBoolPar("enable", enable);
  record.AppendRecordPar("meter-config", meterConfig.ToRecord());
  record.AppendRecordPar("push-config", pushConfig.ToRecord());
  return record;
}

bool cMeterTemplate::FromRecord(const vorn::cRecord& rec) {
  Init();
  // Readers of the log know the line by the meter configuration's name.
  if (rec.IsEmpty() || !ReadConfigVersion(rec, "MeterConfigRecord", version, error)) return false;
  name = rec.GetTextPar("name");
  enable = rec.GetBoolPar("enable");
  meterConfig.FromRecord(rec.GetRecordPar("meter-config"));
  pushConfig.FromRecord(rec.GetRecordPar("push-config"));
  return true;
}

std::string cMeterTemplate::ToString() const {
  return "name=" + name + ", enable=" + (enable ? "true" : "false") + ", meter-config={" + meterConfig.ToString() +
         "}, push-config={" + pushConfig.ToString() + "}";
}

std::string cMeterTemplate::FileName() const { return std::to_string(id) + ".mt"; }

bool cMeterTemplate::Load(const std::string& location) {
  const std::string file = FileName();
  vorn::cRecord record;
  const int result = xml::RecordFromXmlFile(record, file, location, nullptr);
  if (result == kNoSuchFile) {
    vorn::Trace(UnitTAV(), kSuccess, "meterTemplate[", name, "] empty loaded");
    return true;
  }
  if (result != 0) {
    vorn::Trace(UnitTAV(), kFailure, "meterTemplate[", name, "] load failed, file=", file, ", ",
                XMLNode::getError(result));
    return false;
  }
  if (!FromRecord(record)) {
    vorn::Trace(UnitTAV(), kFailure, "meterTemplate[", name, "] load failed, bad data, file=", file);
    return false;
  }
  vorn::Trace(UnitTAV(), kSuccess, "meterTemplate[", name, "] loaded, file=", file);
  return true;
}

bool cMeterTemplate::Store(const std::string& location) const {
  const std::string file = FileName();
  const int result = xml::RecordToXmlFile(ToRecord(), file, location, nullptr, true);
  if (result == 0) {
    vorn::Trace(UnitTAV(), kSuccess, "meterTemplate[", name, "] stored, file=", file);
    return true;
  }
  vorn::Trace(UnitTAV(), kFailure, "meterTemplate[", name, "] stored failed, file=", file, ", ",
              XMLNode::getError(result));
  return false;
}

}  // namespace tav
