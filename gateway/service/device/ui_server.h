// SPDX-License-Identifier: Apache-2.0
// cUiServer: the service of the gateway's lights and relay, channel "ui".
//
// What its hardware does not obey is refused with a reason that names the directory or chip; the service lives on, and
// tries again at the next request.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include <gateway/service/device/device_server.h>
#include <gateway/service/device/light.h>
#include <gateway/service/device/relay_switch.h>

namespace tav::gateway {

// Section [ui] of the configuration; docs/devices.md is the list for people.
struct cUiOptions {
  std::string leds = "simulated";  // or "kernel": of the kernel's LED class, each by the name of its directory
  std::string ledWan;              // a light without a name is simulated
  std::string ledMeter1;
  std::string ledMeter2;
  std::string relayChip;                    // GPIO chip; empty: simulated
  unsigned int relayLine = 0;               // its line
  std::string ledRoot = "/sys/class/leds";  // where the directories are; not configured, for tests

  // Empty, or what is wrong with them, beginning with the name of the key.
  std::string Check() const;
};

class cUiServer final : public cDeviceServer {
 public:
  // Ask IsListening for the outcome. Options that are wrong count as "simulated".
  explicit cUiServer(cServiceHost* host, const cUiOptions& options = {});

  // Rows led.wan, led.meter-1, led.meter-2 ("blink, lit"), relay ("open" or "closed"), relay.back-in (seconds, "0": it
  // stays), hardware ("simulated", or where each of them is).
  cStateRows GetState() const override;

 private:
  void SwitchLed(const vorn::cMsg& request);
  void SwitchRelay(const vorn::cMsg& request);
  void GetRelayMode(const vorn::cMsg& request);
  std::string GetRelayState() const;
  std::string GetHardware() const;

  std::array<cLight, 3> m_lights;
  cRelaySwitch m_relay;
};

}  // namespace tav::gateway
