// SPDX-License-Identifier: Apache-2.0
// cModemManager: the first modem that ModemManager knows, over D-Bus.
//
// Connect asks which modems there are and hands everything to the Simple interface's Connect; Disconnect ends what is
// connected. In between the modem's state is watched, so that a connection that breaks is known.
#pragma once

#include <memory>
#include <string>

#include <gateway/service/device/bus.h>
#include <gateway/service/device/modem.h>

struct sd_bus_message;

namespace tav::gateway {

class cModemManager final : public cModem {
 public:
  // ModemManager itself gives up earlier: it says more about the cause than a time that is over.
  static constexpr unsigned int kConnectSeconds = 180;

  // busAddress: empty: the system bus.
  cModemManager(cServiceHost* host, std::string busAddress);

  void Connect(const cDialUp& how, Done begun) override;
  void Disconnect(Done done) override;
  // The modem's object path, "ModemManager" before it is known.
  std::string GetPlace() const override;

 private:
  struct cCalls;  // libsystemd's way to the members below

  std::string OpenBus();
  void Watch();
  void Begin(const std::string& fault);
  void OnModems(sd_bus_message* reply);
  std::string SendConnect();
  void OnConnectReply(sd_bus_message* reply);
  void OnDisconnectReply(sd_bus_message* reply);
  void OnStateChanged(sd_bus_message* signal);
  void OnRemoved(sd_bus_message* signal);
  void OnEnded(sd_bus_message* signal);
  void OnBusClosed(const std::string& fault);
  void Lose(const std::string& reason);

  cServiceHost* m_host;
  std::string m_busAddress;
  std::unique_ptr<cBus> m_bus;
  cBusSlot m_stateMatch;
  cBusSlot m_ownerMatch;
  cBusSlot m_removedMatch;
  cBusSlot m_call;  // the one that waits for its answer
  cDialUp m_how;    // until it is handed on
  Done m_begun;
  Done m_done;
  std::string m_modem;   // object path
  std::string m_bearer;  // object path of what is connected
  bool m_connected = false;
};

}  // namespace tav::gateway
