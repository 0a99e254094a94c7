// SPDX-License-Identifier: Apache-2.0
// cSimulatedModem: no hardware: the connection is there after a while. The access point "fail" can never be reached, to
// try out what happens then.
#pragma once

#include <string>

#include <gateway/host/task.h>
#include <gateway/service/device/modem.h>

namespace tav::gateway {

class cSimulatedModem final : public cModem {
 public:
  static constexpr unsigned int kConnectMs = 2000;
  static constexpr unsigned int kDisconnectMs = 500;
  static constexpr const char* kFailingApn = "fail";

  explicit cSimulatedModem(cServiceHost* host);

  void Connect(const cDialUp& how, Done begun) override;
  void Disconnect(Done done) override;
  std::string GetPlace() const override { return "simulated"; }

 private:
  bool m_fails = false;
  Done m_done;
  cTask m_connect;
  cTask m_disconnect;
};

}  // namespace tav::gateway
