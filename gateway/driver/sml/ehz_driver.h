// SPDX-License-Identifier: Apache-2.0
// cEhzDriver: the process of the SML driver.
#pragma once

#include <memory>
#include <string>

#include <gateway/driver/driver_process.h>
#include <gateway/driver/sml/ehz_interface.h>
#include <gateway/driver/sml/ehz_options.h>

namespace tav::sml {

class cEhzDriver : public cDriverProcess {
 public:
  // No clock: cClock::Steady().
  cEhzDriver(const cEhzOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock = nullptr);
  ~cEhzDriver() override;

  // One line: frames, readings and what became of them.
  std::string Summary() const;

 private:
  bool OpenConfigured(const cInterfaceRecord& record, std::string& fault) override;
  std::string Command(cOpenInterface& interface, const cDbCtrlIODriverNotify& command) override;
  void OnClosing(const cOpenInterface& interface) override;
  void Open(const cEhzSettings& settings);

  cEhzOptions m_options;
  cEhzCounts m_closed;  // counts of interfaces that are no more
};

}  // namespace tav::sml
