// SPDX-License-Identifier: Apache-2.0
// The requests of cDbCtrlIO that act on one meter, query stored data and run SQL. Their lines of trace are kept letter
// for letter, labels that name another operation included: that is how the log's readers know them.
#include <tav/service/db_ctrl_io.h>

#include <tav/record/record_fields.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kFailure = 2;
constexpr int kProgress = 16;

vorn::cMsg Request(unsigned int type, const vorn::cUuid& tid) {
  vorn::cMsg msg(type);
  msg.SetId(tid);
  return msg;
}

vorn::cMsg MeterRequest(unsigned int type, const vorn::cUuid& tid, const std::string& meterId, const std::string& mfct,
                        const std::string& medium) {
  vorn::cMsg msg = Request(type, tid);
  msg.Record().AppendTextPar(db_ctrl::kMeterId, meterId);
  msg.Record().AppendTextPar(db_ctrl::kManufactor, mfct);
  msg.Record().AppendTextPar(db_ctrl::kMedium, medium);
  return msg;
}

vorn::cMsg Query(unsigned int type, const vorn::cUuid& tid, cDbCtrlRequest& request) {
  vorn::cMsg msg = Request(type, tid);
  msg.Record().AppendRecordPar(db_ctrl::kMeterRequest, request.ToRecord());
  return msg;
}

vorn::cMsg Fetch(unsigned int type, const vorn::cUuid& tid, const vorn::cUuid& handle, unsigned int count) {
  vorn::cMsg msg = Request(type, tid);
  msg.Record().AppendUuidPar(db_ctrl::kHandle, handle);
  msg.Record().AppendUIntPar(db_ctrl::kCount, count);
  return msg;
}

// failure: parts of the line for a message that the channel did not take.
template <typename... Parts>
bool SendOnce(cDbCtrlIO& io, const vorn::cMsg& msg, const Parts&... failure) {
  if (io.Send(msg) != 0) return true;
  vorn::Trace(UnitTAV(), kFailure, failure..., ", send failed");
  return false;
}

}  // namespace

// ---- one meter

bool cDbCtrlIO::ActivateMeter(const vorn::cUuid& tid, const std::string& meterId, const std::string& medium,
                              const std::string& mfct, const std::string& vendor, const std::string& key) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[ActivateMeter] meterId=", meterId, " mfct=", mfct, " medium=", medium);
  vorn::cMsg msg = MeterRequest(db_ctrl::eActivateMeter, tid, meterId, mfct, medium);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kVendor, vendor);
  AppendUnlessEmpty(msg.Record(), db_ctrl::kKey, key);
  return SendOnce(*this, msg, "dbctrl[ActivateMeter] meterID=", meterId, " mfct=", mfct, " medium=", medium);
}

bool cDbCtrlIO::SetValve(const vorn::cUuid& tid, const std::string& meterId, const std::string& mfct,
                         const std::string& medium, const std::string& valve) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[SetMeterValve] meterId=", meterId, " mfct=", mfct, " medium=", medium,
              "valve=", valve);
  vorn::cMsg msg = MeterRequest(db_ctrl::eSetValve, tid, meterId, mfct, medium);
  msg.Record().AppendTextPar(db_ctrl::kValve, valve);
  return SendOnce(*this, msg, "dbctrl[SetMeterValve] addr=", meterId, " mfct=", mfct, " medium=", medium,
                  " valve=", valve);
}

bool cDbCtrlIO::SetTimeDate(const vorn::cUuid& tid, const std::string& meterId, const std::string& mfct,
                            const std::string& medium, unsigned int timestamp) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[SetTimeData] meterId=", meterId, " mfct=", mfct, " medium=", medium,
              "timestamp=", timestamp);
  vorn::cMsg msg = MeterRequest(db_ctrl::eSetTimeDate, tid, meterId, mfct, medium);
  msg.Record().AppendUIntPar(db_ctrl::kTimestamp, timestamp);
  return SendOnce(*this, msg, "dbctrl[SetTimeData] meterId=", meterId, " mfct=", mfct, " medium=", medium,
                  "timestamp=", timestamp);
}

// ---- stored data

bool cDbCtrlIO::GetStoredValues(const vorn::cUuid& tid, cDbCtrlRequest& request) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[GetStoredValues] addr=", request.m_addr, " mode=", request.m_mode);
  return SendOnce(*this, Query(db_ctrl::eGetStoredValues, tid, request),
                  "dbctrl[GetStoredValues] addr=", request.m_addr, " mode=", request.m_mode);
}

bool cDbCtrlIO::GetLastValues(const vorn::cUuid& tid, cDbCtrlRequest& request) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[GetLastValues] mode=", request.m_mode);
  return SendOnce(*this, Query(db_ctrl::eGetLastValues, tid, request), "dbctrl[GetLastValues] mode=", request.m_mode);
}

bool cDbCtrlIO::GetMeterStatus(const vorn::cUuid& tid, cDbCtrlRequest& request) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[GetMeterStatus] mode=", request.m_mode);
  return SendOnce(*this, Query(db_ctrl::eGetMeterStatus, tid, request), "dbctrl[GetMeterStatus] mode=", request.m_mode);
}

bool cDbCtrlIO::FetchStoredValues(const vorn::cUuid& tid, const vorn::cUuid& handle, unsigned int count) {
  const auto handleText = [&] { return handle.ToString(); };
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[FetchStoredValues] handle=", handleText);
  return SendOnce(*this, Fetch(db_ctrl::eFetchStoredValues, tid, handle, count),
                  "dbctrl[FetchStoredValues] handle=", handleText);
}

// ---- SQL

bool cDbCtrlIO::sqlExec(const vorn::cUuid& tid, const std::string& db, const std::string& sql, unsigned int options) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[sqlExec] ", sql);
  vorn::cMsg msg = Request(db_ctrl::eSqlExec, tid);
  msg.Record().AppendTextPar(db_ctrl::kDb, db);
  msg.Record().AppendTextPar(db_ctrl::kSql, sql);
  msg.Record().AppendUIntPar(db_ctrl::kOptions, options);
  if (Send(msg) != 0) return true;
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[sqlExec] send failed");
  return false;
}

bool cDbCtrlIO::sqlFetch(const vorn::cUuid& tid, const vorn::cUuid& handle, unsigned int count) {
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[FetchEvents] count=", static_cast<int>(count));
  if (Send(Fetch(db_ctrl::eSqlFetch, tid, handle, count)) != 0) return true;
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[sqlExec] send failed");
  return false;
}

bool cDbCtrlIO::CloseResult(const vorn::cUuid& tid, const vorn::cUuid& handle) {
  if (!handle.IsValid()) return false;
  const auto handleText = [&] { return handle.ToString(); };
  vorn::Trace(UnitTAV(), kProgress, "dbctrl[CloseResult] handle=", handleText);
  vorn::cMsg msg = Request(db_ctrl::eCloseResult, tid);
  msg.Record().AppendUuidPar(db_ctrl::kHandle, handle);
  return SendOnce(*this, msg, "dbctrl[CloseResult] handle=", handleText);
}

}  // namespace tav
