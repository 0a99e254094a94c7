// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/device_server.h>

#include <tav/service/device_protocol.h>

namespace tav::gateway {

std::string CheckChoice(const char* key, std::string_view found, std::string_view first, std::string_view second) {
  if (found == first || found == second) return {};
  return std::string(key) + ": expected \"" + std::string(first) + "\" or \"" + std::string(second) + "\", found \"" +
         std::string(found) + "\"";
}

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
