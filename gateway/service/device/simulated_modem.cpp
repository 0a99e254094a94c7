// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/simulated_modem.h>

#include <utility>

namespace tav::gateway {

cSimulatedModem::cSimulatedModem(cServiceHost* host)
    : m_connect(host,
                [this] {
                  if (m_fails)
                    Failed(std::string("the access point \"") + kFailingApn + "\" of the simulated modem always fails");
                  else
                    Connected();
                }),
      m_disconnect(host, [this] { std::exchange(m_done, {})({}); }) {}

void cSimulatedModem::Connect(const cDialUp& how, Done begun) {
  m_fails = how.apn == kFailingApn;
  m_connect.Start(kConnectMs);
  begun({});
}

void cSimulatedModem::Disconnect(Done done) {
  m_connect.Stop();
  m_done = std::move(done);
  m_disconnect.Start(kDisconnectMs);
}

}  // namespace tav::gateway
