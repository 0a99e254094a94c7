// SPDX-License-Identifier: Apache-2.0
#include <tav/config/collector_config.h>

#include <tav/config/config_fields.h>

namespace tav {

void cCollectorConfig::SetLogger(unsigned int newCountRP, unsigned int newDistanceRP, const std::string& newEventType) {
  countRP = newCountRP;
  distanceRP = newDistanceRP;
  eventType = newEventType;
}

void cCollectorConfig::SetPushTarget(unsigned long long idx, const std::string& period, bool enabled, bool rawEnabled,
                                     unsigned short randomOffset) {
  pushTargetIdx = idx;
  pushPeriod = period;
  pushEnabled = enabled;
  pushRawEnabled = rawEnabled;
  pushRandomOffset = randomOffset;
}

bool cCollectorConfig::IsValid() const {
  return !addr.empty() && (shouldRemoved || (!obisIds.empty() && !eventType.empty()));
}

vorn::cRecord cCollectorConfig::ToRecord() const {
  vorn::cRecord record;
  record.AppendUIntPar("version", version);
  record.AppendTextPar("addr", addr);
  record.AppendBoolPar("should-removed", shouldRemoved);
  record.AppendBoolPar("activation", activation);
  record.AppendUIntPar("countRP", countRP);
  record.AppendUIntPar("distanecRP", distanceRP);  // read as "distanceRP"
  record.AppendTextPar("event-type", eventType);
  record.AppendTextPar("obis-ids", obisIds);
  record.AppendUInt64Par("push-target-idx", pushTargetIdx);
  record.AppendTextPar("push-target-name", pushTargetName);
  record.AppendTextPar("push-period", pushPeriod);
  record.AppendBoolPar("push-enabled", pushEnabled);
  record.AppendBoolPar("push-raw-enabled", pushRawEnabled);
  record.AppendUIntPar("push-random-offset", pushRandomOffset);
  return record;
}

bool cCollectorConfig::FromRecord(const vorn::cRecord& rec) {
  Init();
  if (rec.IsEmpty() || !ReadConfigVersion(rec, "CollectorConfigRecord", version, error)) return false;
  shouldRemoved = rec.GetBoolPar("should-removed");
  SetAddr(rec.GetTextPar("addr"));
  SetActivation(rec.GetBoolPar("activation"));
  SetLogger(rec.GetUIntPar("countRP"), rec.GetUIntPar("distanceRP"), rec.GetTextPar("event-type"));
  SetLoggedObisID(rec.GetTextPar("obis-ids"));
  SetPushTarget(rec.GetUInt64Par("push-target-idx"), rec.GetTextPar("push-period"), rec.GetBoolPar("push-enabled"),
                rec.GetBoolPar("push-raw-enabled"), static_cast<unsigned short>(rec.GetUIntPar("push-random-offset")));
  SetPushTargetName(rec.GetTextPar("push-target-name"));
  return IsValid();
}

std::string cCollectorConfig::ToString() const {
  const char* const push = !pushEnabled ? "OFF" : pushRawEnabled ? "ON with RAW" : "ON";
  return addr + "[" + eventType + "] push=" + push + " " + obisIds;
}

}  // namespace tav
