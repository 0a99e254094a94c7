// SPDX-License-Identifier: Apache-2.0
// tavctl mbus: works at a wired M-Bus itself: finds its meters, reads one, sets one up. Needs no service, but the line:
// a driver that has it open must be told to leave it.
#pragma once

#include <cstdint>
#include <string>

#include <gateway/driver/mbus/master/mbus_tool.h>
#include <tavctl/command.h>

namespace tav::ctl {

class cMBusCommand final : public cCommand {
 public:
  cMBusCommand() : cCommand("mbus", "Find, read and set up the meters of a wired M-Bus") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when a scan finds nobody, or a meter does not do what it is asked.
  eExit Run(cContext& context) override;

 private:
  CLI::App& AddBusAction(CLI::App& app, const char* name, const char* help);
  mbus::cMBusLineSettings MakeSettings() const;
  mbus::cMBusScanOptions MakeScanOptions() const;
  void CheckArguments(const std::string& action) const;
  std::uint8_t NewAddress() const;
  unsigned int NewBaud() const;
  int ResetCode() const;
  eExit Scan(cContext& context, mbus::cMBusTool& tool) const;
  eExit Read(cContext& context, mbus::cMBusTool& tool) const;
  void SetUp(const std::string& action, mbus::cMBusTool& tool) const;

  CLI::App* m_app = nullptr;
  std::string m_line;
  std::uint64_t m_baud = 2400;
  std::string m_framing = "8E1";
  bool m_echo = false;
  std::uint64_t m_retries = 2;
  std::uint64_t m_answerMs = 0;
  std::string m_address;
  bool m_secondary = false;
  std::uint64_t m_first = 0;
  std::uint64_t m_last = mbus::kLastPrimary;
  std::string m_mask;
  std::string m_new;   // address or rate
  std::string m_code;  // of a reset
};

}  // namespace tav::ctl
