// SPDX-License-Identifier: Apache-2.0
// cGsmServer: the service of the mobile modem, channel "gsm". It shows what becomes of the connection on the WAN light
// and to the time service.
//
// A start while the same access point is being connected or connected is done and changes nothing; one for another
// access point ends that connection first. PIN, user and password are handed to the modem and never kept or traced.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gateway/service/device/device_server.h>
#include <gateway/service/device/modem.h>
#include <gateway/service/device/wan_display.h>
#include <tav/framework/time.h>

namespace tav::gateway {

// Section [gsm] of the configuration; docs/devices.md is the list for people.
struct cGsmOptions {
  std::string modem = "simulated";  // or "modemmanager"
  std::string busAddress;           // of D-Bus; empty: the system bus. Not configured, for tests

  // Empty, or what is wrong with them, beginning with the name of the key.
  std::string Check() const;
};

class cGsmServer final : public cDeviceServer {
 public:
  // Ask IsListening for the outcome. Options that are wrong count as "simulated". modem: in place of theirs, for tests.
  explicit cGsmServer(cServiceHost* host, const cGsmOptions& options = {}, std::unique_ptr<cModem> modem = nullptr);

  // Rows modem ("simulated", or which one), state ("off", "connecting", "connected", "failed" or "disconnecting"),
  // since (ISO 8601 in UTC), apn (the last one), reason (of the last failure, until the next start).
  cStateRows GetState() const override;

 private:
  enum class eState { Off, Connecting, Connected, Failed, Disconnecting };

  // A start that waits until the connection before it has ended.
  struct cNext {
    vorn::cMsg request;
    cDialUp how;
  };

  void Start(const vorn::cMsg& request);
  void Stop(const vorn::cMsg& request);
  void Dial(const vorn::cMsg& request, const cDialUp& how);
  void OnBegun(const std::string& fault);
  void OnConnected();
  void OnFailed(const std::string& reason);
  void HangUp(const char* why);
  void OnHungUp(const std::string& fault);
  void DropNext(const char* why);
  void Finish(std::vector<vorn::cMsg>& requests, const std::string& fault);
  void Enter(eState state, const std::string& reason = {});

  std::unique_ptr<cModem> m_modem;
  cWanDisplay m_display;
  eState m_state = eState::Off;
  vorn::cTime m_since;
  std::string m_apn;
  std::string m_reason;
  // Requests that are not answered yet, without their parameters.
  std::vector<vorn::cMsg> m_starts;
  std::vector<vorn::cMsg> m_stops;
  std::optional<cNext> m_next;
};

}  // namespace tav::gateway
