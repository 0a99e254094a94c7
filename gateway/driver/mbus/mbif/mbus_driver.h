// SPDX-License-Identifier: Apache-2.0
// cMBusDriver: the process of the M-Bus driver.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include <gateway/driver/driver_process.h>
#include <gateway/driver/mbus/mbif/mbus_interface.h>
#include <gateway/driver/mbus/mbif/mbus_options.h>

namespace tav::mbus {

class cMBusDriver : public cDriverProcess {
 public:
  // No clock: cClock::Steady(). now is the wall clock that the schedule and the readings go by.
  cMBusDriver(const cMBusOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock = nullptr,
              std::function<cMoment()> now = &cMoment::Now);
  ~cMBusDriver() override;

  // One line: readings that were due and what became of them.
  std::string Summary() const;
  cMBusCounts GetCounts() const;

 private:
  bool OpenConfigured(const cInterfaceRecord& record, std::string& fault) override;
  std::string Command(cOpenInterface& interface, const cDbCtrlIODriverNotify& command) override;
  void OnClosing(const cOpenInterface& interface) override;
  bool HasFailed() const override;
  void Open(const cMBusSettings& settings);

  cMBusOptions m_options;
  std::function<cMoment()> m_now;
  cMBusCounts m_closed;  // counts of interfaces that are no more
};

}  // namespace tav::mbus
