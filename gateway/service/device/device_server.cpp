// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/device_server.h>

#include <tav/service/device_protocol.h>

namespace tav::gateway {

cDeviceServer::cDeviceServer(cServiceHost* host, const cProtocol& protocol, unsigned int getState)
    : cProtocolServer(host, protocol) {
  On(getState, [this](const vorn::cMsg& request) {
    vorn::cRecord answer;
    for (const auto& [name, value] : GetState()) {
      vorn::cRecord row;
      row.AppendTextPar(device::kName, name);
      row.AppendTextPar(device::kValue, value);
      answer.AppendRecordPar(device::kRow, row);
    }
    Answer(request, answer);
  });
}

void cDeviceServer::StateChanged() const {
  if (m_onStateChanged) m_onStateChanged();
}

}  // namespace tav::gateway
