// SPDX-License-Identifier: Apache-2.0
// cUiCtrlIO: the gateway's lights and relay, channel "ui". Operations return what the channel's Send gives; only
// GetRelayMode waits for an answer. Everything else that the service sends is swallowed.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>

namespace tav {

class TAV_API cUiCtrlIO : public vorn::cScmServiceIO {
 public:
  enum LED_No : unsigned int { eLedWan = 0, eLedMeter1 = 1, eLedMeter2 = 2 };
  enum LED_Mode : unsigned int {
    eLedOn = 0,
    eLedOff = 1,
    eLedBlink = 2,
    eLedTry = 3,
    eLedError = 4,
    eLedMeterData = 5,  // one flash
  };
  enum Meter_Mode : unsigned int { eMeter1 = 0, eMeter2 = 1 };
  // Other numbers are passed on too; what they mean is the service's.
  enum Relay_Mode : unsigned int { eRelayOpen = 0, eRelayClosed = 1 };

  static constexpr unsigned int kRelayPatienceMs = 1000;

  explicit cUiCtrlIO(vorn::cScmService* service);
  ~cUiCtrlIO() override;

  void OnConnect() override {}
  void OnClose() override {}
  bool DispatchMessage(const vorn::cMsg& msg) override;

  int SwitchLed(LED_No led, LED_Mode mode);
  // timeout: seconds after which the relay goes back, 0: it stays.
  int SwitchRelay(Relay_Mode mode, unsigned int timeout);
  // Waits for the answer, at most a second; the service must live on another loop than the caller. False with the error
  // "timout" (spelt so) when none comes. mode may be null.
  bool GetRelayMode(Relay_Mode* mode, std::string& error);
  // A flash of the light for meter data 1 or 2; 0 and nothing sent for any other.
  int MeterDataRecv(Meter_Mode m);
  int WAN_On();
  int WAN_Off();
  int WAN_Try();
  int WAN_Error();

 private:
  vorn::cScmService* m_service;
};

}  // namespace tav
