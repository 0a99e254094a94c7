// SPDX-License-Identifier: Apache-2.0
#include <tav/service/ui_ctrl_io.h>

#include <tav/framework/trace.h>
#include <tav/service/device_protocol.h>
#include <tav/unit_tav.h>

namespace tav {

cUiCtrlIO::cUiCtrlIO(vorn::cScmService* service)
    : cScmServiceIO(service, std::string(ui::kProtocol.GetService())), m_service(service) {}

cUiCtrlIO::~cUiCtrlIO() = default;

bool cUiCtrlIO::DispatchMessage(const vorn::cMsg& /*msg*/) { return true; }

int cUiCtrlIO::SwitchLed(LED_No led, LED_Mode mode) {
  vorn::cMsg msg(ui::eSwitchLed);
  msg.Record().AppendUIntPar(device::kLed, led);
  msg.Record().AppendUIntPar(device::kLedMode, mode);
  return Send(msg);
}

int cUiCtrlIO::SwitchRelay(Relay_Mode mode, unsigned int timeout) {
  vorn::cMsg msg(ui::eSwitchRelay);
  msg.Record().AppendUIntPar(device::kRelayMode, mode);
  msg.Record().AppendUIntPar(device::kTimeout, timeout);
  return Send(msg);
}

bool cUiCtrlIO::GetRelayMode(Relay_Mode* mode, std::string& error) {
  error.clear();
  const vorn::cMsg answer =
      m_service->SendSyncMsg(GetChannel(), vorn::cMsg(ui::eGetRelayMode), kRelayPatienceMs, ui::eRelayMode, 0, 0);
  if (answer.GetType() != ui::eRelayMode) {
    vorn::Trace(UnitTAV(), 2, "GetRelayMode failed, timeout");
    error = "timout";  // the spelling that callers compare with
    return false;
  }
  if (mode != nullptr) *mode = static_cast<Relay_Mode>(answer.Record().GetPar(device::kRelayMode).GetUInt());
  return true;
}

int cUiCtrlIO::MeterDataRecv(Meter_Mode m) {
  if (m == eMeter1) return SwitchLed(eLedMeter1, eLedMeterData);
  if (m == eMeter2) return SwitchLed(eLedMeter2, eLedMeterData);
  return 0;
}

int cUiCtrlIO::WAN_On() { return SwitchLed(eLedWan, eLedOn); }

int cUiCtrlIO::WAN_Off() { return SwitchLed(eLedWan, eLedOff); }

int cUiCtrlIO::WAN_Try() { return SwitchLed(eLedWan, eLedTry); }

int cUiCtrlIO::WAN_Error() { return SwitchLed(eLedWan, eLedError); }

}  // namespace tav
