// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_io.h>

#include <tav/identified_msg.h>
#include <tav/record/record_fields.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kFailure = 2;
constexpr int kWarning = 4;
constexpr int kProgress = 16;

std::string Reason(const vorn::cMsg& msg) { return msg.Record().GetPar(db_ctrl::kReason).GetText(); }

}  // namespace

cDbCtrlIO::cDbCtrlIO(vorn::cScmService* service, const std::string& driver)
    : vorn::cScmServiceIO(service, std::string(db_ctrl::kProtocol.GetService())), m_driver(driver) {}

cDbCtrlIO::~cDbCtrlIO() = default;

// ---- connection

void cDbCtrlIO::OnConnect() {
  if (!m_driver.empty()) {
    RegisterDriver();  // the queue waits for the answer
    return;
  }
  AttachStore();
  if (SendFront() == eFront::Refused) vorn::Trace(UnitTAV(), kFailure, "re-send failed");
}

void cDbCtrlIO::RegisterDriver() {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl connection established, register driver '", m_driver, "'");
  vorn::cMsg msg(db_ctrl::eRegisterDriver);
  msg.Record().AppendTextPar(db_ctrl::kDriver, m_driver);
  if (Send(msg) < 1) vorn::Trace(UnitTAV(), kFailure, "send driver registration failed");
}

void cDbCtrlIO::AttachStore() {
  if (m_storeName.empty()) {
    vorn::Trace(UnitTAV(), kProgress, "dbctrl connection established, no driver");
    return;
  }
  vorn::Trace(UnitTAV(), kProgress, "dbctrl connection established, no driver, store=", m_storeName);
  vorn::cMsg msg(db_ctrl::eAttachStore);
  msg.Record().AppendTextPar(db_ctrl::kStore, m_storeName);
  Send(msg);
}

void cDbCtrlIO::OnClose() { vorn::Trace(UnitTAV(), kProgress, "dbctrl connection shutdown"); }

bool cDbCtrlIO::DispatchMessage(const vorn::cMsg& msg) {
  switch (msg.GetType()) {
    case db_ctrl::eRegisterDriverFailed:
      vorn::Trace(
          UnitTAV(), kFailure, "register driver '", m_driver, "' failed (", [&] { return Reason(msg); }, ")");
      return true;
    case db_ctrl::eStoreMeterRecFailed:
      vorn::Trace(
          UnitTAV(), kFailure, "store meter-rec failed (", [&] { return Reason(msg); }, ")");
      return true;
    case db_ctrl::eStoreEventFailed:
      vorn::Trace(
          UnitTAV(), kFailure, "store event failed (", [&] { return Reason(msg); }, ")");
      return true;
    case db_ctrl::eStoreContents:
      SetStore(msg);
      return true;
    case db_ctrl::eDriverRegistered:
      SetStore(msg);
      if (SendFront() == eFront::Refused) vorn::Trace(UnitTAV(), kFailure, "driver connected: re-send failed");
      return true;
    case db_ctrl::eMeterRecStored:
    case db_ctrl::eEventStored:
      Acknowledged();
      return true;
    default:
      return false;
  }
}

void cDbCtrlIO::Acknowledged() {
  if (SendFront() != eFront::Refused) return;
  HealthRequest();
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[StoreMeterRec] store, re-send failed");
}

// ---- the queue

cDbCtrlIO::eFront cDbCtrlIO::SendFront() {
  if (m_queue.empty()) return eFront::None;
  if (Send(m_queue.front()) < 1) return eFront::Refused;
  m_queue.pop_front();
  return eFront::Sent;
}

bool cDbCtrlIO::Enqueue(const vorn::cMsg& msg, const char* operation) {
  const bool full = m_queue.size() >= m_queueLimit;
  m_queue.push_back(msg);  // before the front goes: the message may be the front
  if (!full) return true;
  if (m_queue.size() > 1) m_queue.pop_front();
  vorn::Trace(UnitTAV(), kWarning, "dbctrl[", operation, "] store, queue full (size=", m_queueLimit, ")");
  return false;
}

bool cDbCtrlIO::StoreMeterRec(const cMeterRecord& rec) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[StoreMeterRec] store");
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eStoreMeterRec);
  msg.Record().AppendRecordPar(db_ctrl::kMeterRecord, rec.ToRecord());
  return StoreMeterRecQueued(msg);
}

bool cDbCtrlIO::StoreMeterRec(const std::list<cMeterRecord>& recs) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[StoreMeterRec] multiple store");
  vorn::cMsg msg = IdentifiedMsg(db_ctrl::eStoreMeterRec);
  for (const cMeterRecord& rec : recs) msg.Record().AppendRecordPar(db_ctrl::kMeterRecord, rec.ToRecord());
  return StoreMeterRecQueued(msg);
}

bool cDbCtrlIO::StoreMeterRecQueued(const vorn::cMsg& msg) {
  Enqueue(msg, "StoreMeterRec");
  if (IsConnected()) {
    if (SendFront() == eFront::Sent) return true;
    HealthRequest();
    vorn::Trace(UnitTAV(), kFailure, "dbctrl[StoreMeterRec] store, send failed");
    return false;
  }
  HealthRequest();
  vorn::Trace(UnitTAV(), kWarning, "dbctrl[StoreMeterRec] failed, not connectetd (queue=", m_queue.size(), ")");
  return m_queue.size() < m_queueLimit;
}

bool cDbCtrlIO::StoreEvent(const vorn::cRecord& rec) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[StoreEvent] rec=", [&] { return rec.ToString(); });
  vorn::cMsg msg(db_ctrl::eStoreEvent);
  msg.Record() = rec;
  if (!Enqueue(msg, "StoreEvent")) return false;
  if (SendFront() == eFront::Sent) return true;
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[StoreEvent] send failed, rec=", [&] { return rec.ToString(); });
  return false;
}

// ---- the key/value store

void cDbCtrlIO::SetStore(const vorn::cMsg& msg) {
  m_store.clear();
  vorn::cRecord entry;
  for (vorn::cRecordPar par = msg.Record().GetPar(db_ctrl::kStoreValue); par.IsValid(); par = par.NextSame()) {
    if (par.IsEmpty() || !par.GetRecord(entry)) continue;
    std::string key;
    std::string value;
    if (TakeText(entry, db_ctrl::kKey, key) && TakeText(entry, db_ctrl::kValue, value)) m_store.Set(key, value);
  }
}

bool cDbCtrlIO::SetStoreValue(const std::string& key, const std::string& value) {
  const std::string& name = m_driver.empty() ? m_storeName : m_driver;
  if (name.empty()) {
    vorn::Trace(UnitTAV(), kFailure, "dbctrl[SetStoreValue] no store name");
    return true;
  }
  m_store.Set(key, value);
  vorn::cMsg msg(db_ctrl::eSetStoreValue);
  msg.Record().AppendTextPar(db_ctrl::kStore, name);
  msg.Record().AppendTextPar(db_ctrl::kKey, key);
  msg.Record().AppendTextPar(db_ctrl::kValue, value);
  if (Send(msg) != 0) return true;
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[SetStoreValue] store=", name, ": ", key, "=", value, ", send failed");
  return false;
}

std::string cDbCtrlIO::GetStoreValue(const std::string& key) const {
  std::string value;
  TryGetStoreValue(key, value);
  return value;
}

bool cDbCtrlIO::TryGetStoreValue(const std::string& key, std::string& value) const { return m_store.Get(key, value); }

}  // namespace tav
