// SPDX-License-Identifier: Apache-2.0
#include <tav/service/gsm_io.h>

#include <tav/service/device_protocol.h>

namespace tav {

cGsmIO::cGsmIO(vorn::cScmService* service) : cScmServiceIO(service, std::string(gsm::kProtocol.GetService())) {}

cGsmIO::~cGsmIO() = default;

bool cGsmIO::DispatchMessage(const vorn::cMsg& /*msg*/) { return true; }

int cGsmIO::Start(const std::string& pin, const std::string& apn, const std::string& user,
                  const std::string& password) {
  vorn::cMsg msg(gsm::eStart);
  msg.Record().AppendTextPar(device::kMobilePin, pin);
  msg.Record().AppendTextPar(device::kApn, apn);
  msg.Record().AppendTextPar(device::kUser, user);
  msg.Record().AppendTextPar(device::kPassword, password);
  return Send(msg);
}

int cGsmIO::Stop() { return Send(vorn::cMsg(gsm::eStop)); }

}  // namespace tav
