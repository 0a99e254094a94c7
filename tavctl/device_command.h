// SPDX-License-Identifier: Apache-2.0
// tavctl device: the gateway's own hardware: its lights and relay, clock and modem, and what an identifier of hardware
// stands for. Without an action it shows how all of them are.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cDeviceCommand final : public cCommand {
 public:
  cDeviceCommand() : cCommand("device", "Show and switch the gateway's lights, relay, clock and modem") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when an identifier is not known.
  eExit Run(cContext& context) override;

 private:
  void AddModemOptions(CLI::App& modem);
  eExit Identify(const cContext& context) const;
  void SwitchLed(cContext& context) const;
  void SwitchRelay(cContext& context) const;
  void ShowRelay(cContext& context) const;
  void SetTime(cContext& context) const;
  void SetWan(cContext& context) const;
  void StartModem(cContext& context) const;
  void StopModem(cContext& context) const;

  CLI::App* m_app = nullptr;
  std::string m_id;
  std::optional<unsigned int> m_led;
  std::optional<unsigned int> m_ledMode;
  std::optional<unsigned int> m_relayMode;
  std::uint64_t m_seconds = 0;
  std::optional<unsigned int> m_time;
  std::optional<unsigned int> m_wan;
  std::optional<unsigned int> m_modem;
  std::string m_apn;
  std::string m_pinFile;
  std::string m_user;
  std::string m_passwordFile;
};

}  // namespace tav::ctl
