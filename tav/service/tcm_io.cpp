// SPDX-License-Identifier: Apache-2.0
#include <tav/service/tcm_io.h>

#include <tav/identified_msg.h>
#include <tav/service/device_protocol.h>

namespace tav {

cTcmIO::cTcmIO(vorn::cScmService* service)
    : cScmServiceIO(service, std::string(time_service::kProtocol.GetService())) {}

cTcmIO::~cTcmIO() = default;

bool cTcmIO::DispatchMessage(const vorn::cMsg& /*msg*/) { return true; }

int cTcmIO::SetTimeUTC(vorn::cUuid& tid, vorn::cTime& utc) {
  vorn::cMsg msg = IdentifiedMsg(time_service::eSetTime, tid);
  msg.Record().AppendTimePar(device::kNewUtc, utc);
  return Send(msg);
}

int cTcmIO::SetTimeUTC(vorn::cTime& utc) {
  vorn::cUuid tid;
  return SetTimeUTC(tid, utc);
}

int cTcmIO::WanUp() { return Send(vorn::cMsg(time_service::eWanUp)); }

int cTcmIO::WanDown() { return Send(vorn::cMsg(time_service::eWanDown)); }

}  // namespace tav
