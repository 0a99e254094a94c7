// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_driver.h>

#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

// All that are open are of this driver.
cMBusInterface& AsMBus(cOpenInterface& interface) { return static_cast<cMBusInterface&>(interface); }
const cMBusInterface& AsMBus(const cOpenInterface& interface) { return static_cast<const cMBusInterface&>(interface); }

}  // namespace

cMBusDriver::cMBusDriver(const cMBusOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock,
                         std::function<cMoment()> now)
    : cDriverProcess(kMBusDriver, options, rules, std::move(clock)), m_options(options), m_now(std::move(now)) {
  if (!m_options.configured) Open(SettingsOf(m_options));
}

cMBusDriver::~cMBusDriver() = default;

cMBusCounts cMBusDriver::GetCounts() const {
  cMBusCounts counts = m_closed;
  ForEach([&](const cOpenInterface& interface) { counts += AsMBus(interface).GetCounts(); });
  return counts;
}

std::string cMBusDriver::Summary() const {
  const cMBusCounts counts = GetCounts();
  const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
  return vorn::FormatString(
             "mbif: readings due=%llu read=%llu missing=%llu incomplete=%llu filtered=%llu; telegrams=%llu values=%llu "
             "unmapped=%llu unreadable=%llu; ",
             number(counts.due), number(counts.delivered), number(counts.missing), number(counts.incomplete),
             number(counts.filtered), number(counts.content.telegrams), number(counts.content.values),
             number(counts.content.unmapped), number(counts.content.unreadable)) +
         DeliverySummary();
}

bool cMBusDriver::HasFailed() const { return m_options.once && GetCounts().missing != 0; }

bool cMBusDriver::OpenConfigured(const cInterfaceRecord& record, std::string& fault) {
  cMBusSettings settings;
  if (!ReadSettings(record, settings, fault)) return false;
  cOpenInterface* const known = Find(record.name);
  if (known != nullptr && AsMBus(*known).GetSettings().HasSameLine(settings))
    AsMBus(*known).Change(settings);
  else
    Open(settings);
  return true;
}

// A meter is taken into operation by its configuration alone.
std::string cMBusDriver::Command(cOpenInterface& interface, const cDbCtrlIODriverNotify& command) {
  const std::string id = command.m_content.GetTextPar("meterID");
  if (command.m_command != "activate-meter")
    return "meter '" + id + "': " + kMBusDriver + " cannot do '" + command.m_command + "'";
  if (AsMBus(interface).HasMeter(id)) return {};
  return "meter '" + id + "' is not configured for interface '" + command.m_interfaceName + "'";
}

void cMBusDriver::OnClosing(const cOpenInterface& interface) { m_closed += AsMBus(interface).GetCounts(); }

void cMBusDriver::Open(const cMBusSettings& settings) {
  cInterfaceHost& host = *this;
  const cMBusInterface::cMode mode{&GetRules(), m_options.keepNames, m_options.once, m_now};
  cDriverProcess::Open(settings.name, TakeTimerType(), std::make_unique<cMBusInterface>(this, settings, mode, host));
}

}  // namespace tav::mbus
