// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_driver.h>

#include <algorithm>
#include <csignal>
#include <utility>

#include <gateway/driver/sml/dlms_units.h>
#include <gateway/driver/unit_driver.h>
#include <tav/framework/helper.h>

namespace tav::sml {

namespace {

constexpr unsigned int kFirstWaitMs = 500;    // of an input that can wait, for the service to be connected
constexpr unsigned int kSignalWaitMs = 2000;  // for acknowledgements after a signal

// Of a driver that has one interface only, its own: several may run.
std::string StatusPrefix(const cEhzOptions& options) {
  return options.interfaceName.empty() ? kEhzDriver : kEhzDriver + "-" + options.interfaceName;
}

}  // namespace

cEhzDriver::cEhzDriver(const cEhzOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock)
    : cScmService(kEhzDriver, options.directory, std::move(clock)),
      m_options(options),
      m_rules(MakeRules(rules)),
      m_delivery(
          this, kEhzDriver, [this] { OnProgress(); },
          [this] {
            if (m_options.configured) m_follower.Ask();
          }),
      m_follower(m_delivery, *this),
      m_light(this),
      m_status(this),
      m_tellStatus(this),
      m_begin(this),
      m_giveUp(this) {
  AddDlmsUnits();
  m_signals.emplace(this, std::initializer_list<int>{SIGTERM, SIGINT}, [this](int signal) { OnSignal(signal); });
  if (!m_options.configured) Open(SettingsOf(m_options));
  m_status.AddSource(StatusPrefix(m_options), [this](gateway::cStatusValues& values) { Collect(values); });
  TellStatus();
}

cEhzDriver::~cEhzDriver() = default;

int cEhzDriver::Work() {
  Run();
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  if (m_exitCode == eExitOk && (counts.refused != 0 || counts.dropped != 0 || m_delivery.GetOpen() != 0))
    m_exitCode = eExitNotDelivered;
  return m_exitCode;
}

bool cEhzDriver::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetType() == eGiveUp) {
    GiveUp();
  } else if (msg.GetType() == eBegin) {
    Begin();
  } else if (msg.GetType() == eTellStatus) {
    TellStatus();
  } else if (!m_follower.DispatchMessage(msg)) {
    for (auto& [name, open] : m_interfaces)
      if (open.timerType == msg.GetType()) {
        open.interface->OnTimer();
        break;
      }
  }
  return true;
}

std::string cEhzDriver::Summary() const {
  cEhzCounts counts = m_closed;
  for (const auto& [name, open] : m_interfaces) counts += open.interface->GetCounts();
  const cDeliveryCounts& readings = m_delivery.GetCounts();
  const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
  return vorn::FormatString(
      "ehzif: frames good=%llu bad=%llu incomplete=%llu skipped-bytes=%llu faults=%llu; readings delivered=%llu "
      "acknowledged=%llu refused=%llu dropped=%llu unconfirmed=%llu open=%llu filtered=%llu skipped=%llu "
      "valueless=%llu",
      number(counts.frames.good), number(counts.frames.bad), number(counts.frames.incomplete),
      number(counts.frames.skippedBytes), number(counts.faults), number(readings.readings),
      number(readings.acknowledged), number(readings.refused), number(readings.dropped), number(readings.unconfirmed),
      number(m_delivery.GetOpen()), number(counts.filtered), number(counts.skipped), number(counts.valueless));
}

cDriverRules cEhzDriver::MakeRules(const cObisMap& ofFile) {
  if (m_options.noRules) return cDriverRules();
  if (!m_options.rulesFile.empty()) return cDriverRules(ofFile);
  return cDriverRules(this, [this] { Feed(); });
}

// ---- the status

void cEhzDriver::TellStatus() {
  m_status.Publish();
  m_tellStatus.Start(gateway::cStatusPublisher::kIntervalMs, eTellStatus, gateway::cStatusPublisher::kSlackMs);
}

void cEhzDriver::Collect(gateway::cStatusValues& values) const {
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  const cObisMap* const rules = m_rules.Get();
  values.Set("connection", m_delivery.IsConnected() ? "connected" : "waiting for the service");
  values.Set("queue", std::to_string(m_delivery.GetOpen()));
  values.Set("readings", std::to_string(counts.readings));
  values.Set("readings-acknowledged", std::to_string(counts.acknowledged));
  values.Set("readings-refused", std::to_string(counts.refused));
  values.Set("readings-dropped", std::to_string(counts.dropped));
  values.Set("rules", std::to_string(rules != nullptr ? rules->GetEntries().size() : 0));
  for (const auto& [name, open] : m_interfaces) open.interface->Collect(values);
}

// ---- the configuration

void cEhzDriver::OnInterfaces(const std::vector<cInterfaceRecord>& interfaces) {
  std::vector<std::string> gone;
  for (const auto& open : m_interfaces)
    if (std::none_of(interfaces.begin(), interfaces.end(), [&](const auto& known) { return known.name == open.first; }))
      gone.push_back(open.first);
  for (const std::string& name : gone) Close(name);
  for (const cInterfaceRecord& interface : interfaces) OnInterfaceChanged(interface);
}

std::string cEhzDriver::OnInterfaceChanged(const cInterfaceRecord& interface) {
  if (m_ending || (!m_options.interfaceName.empty() && m_options.interfaceName != interface.name)) return {};
  cEhzSettings settings;
  std::string fault;
  const bool wanted = interface.enabled && HasMeterOfOurs(interface);
  if (!wanted || !ReadSettings(interface, settings, fault)) {
    Close(interface.name);
    if (!fault.empty()) ReportRefused(interface.name, fault);
    return fault;
  }
  const auto known = m_interfaces.find(interface.name);
  if (known != m_interfaces.end() && known->second.interface->GetSettings().HasSameInput(settings))
    known->second.interface->Change(settings);
  else
    Open(settings);
  return {};
}

// A meter that sends by itself is taken into operation by its configuration alone; it cannot be told anything.
std::string cEhzDriver::OnCommand(const cDbCtrlIODriverNotify& command) {
  const std::string meter = "meter '" + command.m_content.GetTextPar("meterID") + "'";
  const auto open = m_interfaces.find(command.m_interfaceName);
  if (open == m_interfaces.end()) return "interface '" + command.m_interfaceName + "' is not open";
  if (command.m_command != "activate-meter")
    return meter + " only sends: " + kEhzDriver + " cannot do '" + command.m_command + "'";
  if (open->second.interface->GetSettings().Find(command.m_content.GetTextPar("meterID")) != nullptr) return {};
  return meter + " is not configured for interface '" + command.m_interfaceName + "'";
}

void cEhzDriver::Open(const cEhzSettings& settings) {
  Close(settings.name);
  const cEhzInterface::cMode mode{&m_rules, m_options.keepNames, m_options.once};
  const unsigned int timerType = m_nextTimer++;
  cEhzOwner& owner = *this;
  cOpen& open = m_interfaces[settings.name];
  open.timerType = timerType;
  open.interface = std::make_unique<cEhzInterface>(this, settings, mode, owner, timerType);
  vorn::Trace(DriverUnit(), 8, "interface '", settings.name, "': ", [&] { return settings.DescribeInput(); });
  if (open.interface->CanWait()) m_begin.Start(kFirstWaitMs, eBegin);
}

void cEhzDriver::Close(const std::string& name) {
  const auto open = m_interfaces.find(name);
  if (open == m_interfaces.end()) return;
  m_closed += open->second.interface->GetCounts();
  m_interfaces.erase(open);
  vorn::Trace(DriverUnit(), 8, "interface '", name, "' closed");
}

void cEhzDriver::ReportRefused(const std::string& name, const std::string& reason) {
  vorn::Trace(DriverUnit(), 2, reason);
  m_delivery.Report(MakeInterfaceEvent(name, "interface refused", reason));
}

// ---- what the interfaces ask and tell

// What can wait is not read before its rules are there, unless they do not come.
bool cEhzDriver::HasRoom() const {
  return (m_begun || m_rules.IsSettled()) && m_delivery.GetOpen() < cDelivery::kWindow;
}

void cEhzDriver::Begin() {
  m_begun = true;
  Feed();
}

void cEhzDriver::OnProgress() {
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  const std::uint64_t answers = counts.acknowledged + counts.refused;
  if (std::exchange(m_answers, answers) != answers && !m_ending) m_giveUp.Stop();
  Feed();
}

void cEhzDriver::Feed() {
  for (auto& [name, open] : m_interfaces)
    if (open.interface) open.interface->Feed();
  if (m_ending) OnEnded();
}

void cEhzDriver::OnHeld() {
  if (m_options.once) GiveUpLater();
}

void cEhzDriver::OnFailed(const std::string& why) {
  const bool said = !m_options.configured && std::exchange(m_exitCode, eExitInput) == eExitInput;
  if (!said) vorn::Trace(DriverUnit(), 2, why);
}

// ---- the end

void cEhzDriver::OnSignal(int signal) {
  vorn::Trace(DriverUnit(), 8, "signal ", signal);
  for (auto& [name, open] : m_interfaces) open.interface->Abandon();
  if (std::exchange(m_ending, true) || m_delivery.GetOpen() == 0)
    Stop();
  else
    m_giveUp.Start(kSignalWaitMs, eGiveUp);
}

// A configured driver goes on: an interface may come.
bool cEhzDriver::IsReadToEnd() const {
  return m_ending || std::all_of(m_interfaces.begin(), m_interfaces.end(),
                                 [](const auto& open) { return open.second.interface->IsReadToEnd(); });
}

void cEhzDriver::OnEnded() {
  if (m_options.configured && !m_ending) return;
  if (IsReadToEnd() && m_delivery.GetOpen() == 0)
    Stop();
  else
    GiveUpLater();
}

// Counted from the service's last answer.
void cEhzDriver::GiveUpLater() {
  if (!m_giveUp.IsRunning()) m_giveUp.Start(m_options.waitSeconds * 1000, eGiveUp);
}

void cEhzDriver::GiveUp() {
  vorn::Trace(DriverUnit(), 2, "gave up waiting, ", m_delivery.GetOpen(), " readings are not acknowledged",
              IsReadToEnd() ? "" : " and the input is not read to its end");
  Stop();
}

}  // namespace tav::sml
