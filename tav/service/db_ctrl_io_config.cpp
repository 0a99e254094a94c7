// SPDX-License-Identifier: Apache-2.0
// The requests of cDbCtrlIO that read, write and delete configuration.
#include <tav/service/db_ctrl_io.h>

#include <tav/config/interface_record.h>
#include <tav/config/meter_config.h>
#include <tav/config/meter_template.h>
#include <tav/config/push_target.h>
#include <tav/identified_msg.h>
#include <tav/record/record_fields.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kFailure = 2;

vorn::cMsg NamedRequest(unsigned int type, vorn::cUuid& tid, const std::string& name) {
  vorn::cMsg msg = IdentifiedMsg(type, tid);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kName, name);
  return msg;
}

vorn::cMsg NumberedRequest(unsigned int type, vorn::cUuid& tid, unsigned long long idx, const std::string& name) {
  vorn::cMsg msg = IdentifiedMsg(type, tid);
  msg.Record().AppendUInt64Par(db_ctrl::kIdx, idx);
  msg.Record().AppendTextPar(db_ctrl::kName, name);
  return msg;
}

// The operation is named as the log's readers know it.
bool SendOnce(cDbCtrlIO& io, const char* operation, const vorn::cMsg& msg) {
  if (io.Send(msg) != 0) return true;
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[", operation, "] send failed, msg=", [&] { return msg.ToString(); });
  return false;
}

}  // namespace

// ---- meters

bool cDbCtrlIO::GetMeter(vorn::cUuid& tid, const std::string& addr) {
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eGetMeter, tid);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kAddr, addr);
  return SendOnce(*this, "GetMeter", msg);
}

bool cDbCtrlIO::SetMeter(vorn::cUuid& tid, const cMeterConfig& config) {
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eSetMeter, tid);
  msg.Record().AppendRecordPar(db_ctrl::kMeterConfigRecord, config.ToRecord());
  return SendOnce(*this, "SetMeter", msg);
}

bool cDbCtrlIO::DeleteMeter(vorn::cUuid& tid, const std::string& meterId, const std::string& medium,
                            const std::string& mfct) {
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eDeleteMeter, tid);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kMeterDashId, meterId);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kMedium, medium);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kManufactor, mfct);
  return SendOnce(*this, "DeleteMeter", msg);
}

// ---- interfaces

bool cDbCtrlIO::GetInterface(vorn::cUuid& tid, const std::string& name, bool withMeters, bool withLoggers) {
  vorn::cMsg msg = NamedRequest(db_ctrl::eGetInterface, tid, name);
  msg.Record().AppendBoolPar(db_ctrl::kWithMeters, withMeters);
  msg.Record().AppendBoolPar(db_ctrl::kWithLoggers, withLoggers);
  return SendOnce(*this, "GetInterface", msg);
}

bool cDbCtrlIO::SetInterface(vorn::cUuid& tid, const cInterfaceRecord& interface) {
  if (!interface.valid) {
    vorn::Trace(UnitTAV(), kFailure, "dbctrl[SetInterface] invalid InterfaceRecord");
    return false;
  }
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eSetInterface, tid);
  msg.Record().AppendRecordPar(db_ctrl::kInterfaceRecord, interface.ToRecord());
  if (Send(msg) != 0) return true;
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[SetInterface] send failed");
  return false;
}

bool cDbCtrlIO::DeleteInterface(vorn::cUuid& tid, const std::string& name) {
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eDeleteInterface, tid);
  msg.Record().AppendTextPar(db_ctrl::kName, name);
  return SendOnce(*this, "DelInterface", msg);
}

// ---- push targets

bool cDbCtrlIO::GetPushTarget(vorn::cUuid& tid, const std::string& name) {
  return SendOnce(*this, "GetPushTarget", NamedRequest(db_ctrl::eGetPushTarget, tid, name));
}

// Sent even when there is nothing to set, unlike an interface: the refusal comes from the service.
bool cDbCtrlIO::SetPushTarget(vorn::cUuid& tid, cPushTarget& target) {
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eSetPushTarget, tid);
  if (target.isValid()) msg.Record().AppendRecordPar(db_ctrl::kPushTargetRecord, target.ToRecord());
  return SendOnce(*this, "SetPushTarget", msg);
}

bool cDbCtrlIO::DeletePushTarget(vorn::cUuid& tid, unsigned long long idx, const std::string& name) {
  return SendOnce(*this, "DelPushTarget", NumberedRequest(db_ctrl::eDeletePushTarget, tid, idx, name));
}

// ---- meter templates

bool cDbCtrlIO::GetMeterTemplate(vorn::cUuid& tid, const std::string& name) {
  return SendOnce(*this, "GetMeterTemplate", NamedRequest(db_ctrl::eGetMeterTemplate, tid, name));
}

bool cDbCtrlIO::SetMeterTemplate(vorn::cUuid& tid, const cMeterTemplate& meterTemplate) {
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eSetMeterTemplate, tid);
  msg.Record().AppendRecordPar(db_ctrl::kMeterTemplateRecord, meterTemplate.ToRecord());
  return SendOnce(*this, "SetMeterTemplate", msg);
}

bool cDbCtrlIO::DeleteMeterTemplate(vorn::cUuid& tid, unsigned long long idx, const std::string& name) {
  return SendOnce(*this, "DeleteMeterTemplate", NumberedRequest(db_ctrl::eDeleteMeterTemplate, tid, idx, name));
}

// ---- the same under an identifier of their own

bool cDbCtrlIO::GetMeter(const std::string& addr) {
  vorn::cUuid tid;
  return GetMeter(tid, addr);
}

bool cDbCtrlIO::SetMeter(const cMeterConfig& config) {
  vorn::cUuid tid;
  return SetMeter(tid, config);
}

bool cDbCtrlIO::DeleteMeter(const std::string& meterId, const std::string& medium, const std::string& mfct) {
  vorn::cUuid tid;
  return DeleteMeter(tid, meterId, medium, mfct);
}

bool cDbCtrlIO::GetInterface(const std::string& name, bool withMeters, bool withLoggers) {
  vorn::cUuid tid;
  return GetInterface(tid, name, withMeters, withLoggers);
}

bool cDbCtrlIO::SetInterface(const cInterfaceRecord& interface) {
  vorn::cUuid tid;
  return SetInterface(tid, interface);
}

bool cDbCtrlIO::DeleteInterface(const std::string& name) {
  vorn::cUuid tid;
  return DeleteInterface(tid, name);
}

bool cDbCtrlIO::GetPushTarget(const std::string& name) {
  vorn::cUuid tid;
  return GetPushTarget(tid, name);
}

bool cDbCtrlIO::SetPushTarget(cPushTarget& target) {
  vorn::cUuid tid;
  return SetPushTarget(tid, target);
}

bool cDbCtrlIO::DeletePushTarget(unsigned long long idx, const std::string& name) {
  vorn::cUuid tid;
  return DeletePushTarget(tid, idx, name);
}

bool cDbCtrlIO::GetMeterTemplate(const std::string& name) {
  vorn::cUuid tid;
  return GetMeterTemplate(tid, name);
}

bool cDbCtrlIO::SetMeterTemplate(const cMeterTemplate& meterTemplate) {
  vorn::cUuid tid;
  return SetMeterTemplate(tid, meterTemplate);
}

bool cDbCtrlIO::DeleteMeterTemplate(unsigned long long idx, const std::string& name) {
  vorn::cUuid tid;
  return DeleteMeterTemplate(tid, idx, name);
}

}  // namespace tav
