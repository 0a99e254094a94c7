// SPDX-License-Identifier: Apache-2.0
// cLight: one of the gateway's lights: what it was told to show, and the timers that make it blink and flash.
//
// A flash shows on a dark light as well as on a lit one: the light is the other way round for that moment, and then as
// before. A flash during a flash adds nothing.
#pragma once

#include <memory>
#include <string>

#include <gateway/host/task.h>
#include <gateway/service/device/led.h>
#include <tav/service/ui_ctrl_io.h>

namespace tav::gateway {

class cLight {
 public:
  static constexpr unsigned int kFlashMs = 100;
  // How long it is lit and how long it is dark.
  static constexpr unsigned int kBlinkMs = 500;
  static constexpr unsigned int kTryMs = 1000;
  static constexpr unsigned int kErrorMs = 125;

  // Off. name: for lines of trace.
  cLight(cServiceHost* host, std::string name, std::unique_ptr<cLed> led);

  // Empty: done. Else why not; it then goes on as before.
  std::string Switch(cUiCtrlIO::LED_Mode mode);

  // The mode and what it is now: "blink, lit". While the hardware does not obey, why.
  std::string GetState() const;
  std::string GetPlace() const { return m_led->GetPlace(); }

 private:
  std::string Flash();
  std::string Show(bool lit);
  void OnTime();

  std::string m_name;
  std::unique_ptr<cLed> m_led;
  cUiCtrlIO::LED_Mode m_mode = cUiCtrlIO::eLedOff;
  bool m_phase = false;  // what the mode wants now
  bool m_lit = false;    // what it is
  bool m_flashing = false;
  std::string m_fault;
  cTask m_timer;
};

}  // namespace tav::gateway
