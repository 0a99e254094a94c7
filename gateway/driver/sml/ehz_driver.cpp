// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_driver.h>

#include <gateway/driver/sml/dlms_units.h>
#include <tav/framework/helper.h>

namespace tav::sml {

namespace {

// All that are open are of this driver.
cEhzInterface& AsEhz(cOpenInterface& interface) { return static_cast<cEhzInterface&>(interface); }
const cEhzInterface& AsEhz(const cOpenInterface& interface) { return static_cast<const cEhzInterface&>(interface); }

}  // namespace

cEhzDriver::cEhzDriver(const cEhzOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock)
    : cDriverProcess(kEhzDriver, options, rules, std::move(clock)), m_options(options) {
  AddDlmsUnits();
  if (!m_options.configured) Open(SettingsOf(m_options));
}

cEhzDriver::~cEhzDriver() = default;

std::string cEhzDriver::Summary() const {
  cEhzCounts counts = m_closed;
  ForEach([&](const cOpenInterface& interface) { counts += AsEhz(interface).GetCounts(); });
  const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
  return vorn::FormatString("ehzif: frames good=%llu bad=%llu incomplete=%llu skipped-bytes=%llu faults=%llu; ",
                            number(counts.frames.good), number(counts.frames.bad), number(counts.frames.incomplete),
                            number(counts.frames.skippedBytes), number(counts.faults)) +
         DeliverySummary() +
         vorn::FormatString(" filtered=%llu skipped=%llu valueless=%llu", number(counts.filtered),
                            number(counts.skipped), number(counts.valueless));
}

bool cEhzDriver::OpenConfigured(const cInterfaceRecord& record, std::string& fault) {
  cEhzSettings settings;
  if (!ReadSettings(record, settings, fault)) return false;
  cOpenInterface* const known = Find(record.name);
  if (known != nullptr && AsEhz(*known).GetSettings().HasSameInput(settings))
    AsEhz(*known).Change(settings);
  else
    Open(settings);
  return true;
}

// A meter that sends by itself is taken into operation by its configuration alone; it cannot be told anything.
std::string cEhzDriver::Command(cOpenInterface& interface, const cDbCtrlIODriverNotify& command) {
  const std::string meter = "meter '" + command.m_content.GetTextPar("meterID") + "'";
  if (command.m_command != "activate-meter")
    return meter + " only sends: " + kEhzDriver + " cannot do '" + command.m_command + "'";
  if (AsEhz(interface).GetSettings().Find(command.m_content.GetTextPar("meterID")) != nullptr) return {};
  return meter + " is not configured for interface '" + command.m_interfaceName + "'";
}

void cEhzDriver::OnClosing(const cOpenInterface& interface) { m_closed += AsEhz(interface).GetCounts(); }

void cEhzDriver::Open(const cEhzSettings& settings) {
  const cEhzInterface::cMode mode{&GetRules(), m_options.keepNames, m_options.once};
  const unsigned int timerType = TakeTimerType();
  cInterfaceHost& host = *this;
  cDriverProcess::Open(settings.name, timerType,
                       std::make_unique<cEhzInterface>(this, settings, mode, host, timerType));
}

}  // namespace tav::sml
