// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/driver_process.h>

#include <algorithm>
#include <csignal>
#include <utility>

#include <gateway/driver/option_reader.h>
#include <gateway/driver/unit_driver.h>
#include <tav/framework/helper.h>

namespace tav {

namespace {

constexpr unsigned int kFirstWaitMs = 500;    // of an input that can wait, for the service to be connected
constexpr unsigned int kSignalWaitMs = 2000;  // for acknowledgements after a signal

}  // namespace

cDriverProcess::cDriverProcess(const std::string& name, const cDriverOptions& options, const cObisMap& rules,
                               std::shared_ptr<const vorn::cClock> clock)
    : cServiceHost(name, options.directory, std::move(clock)),
      m_name(name),
      m_options(options),
      m_rules(MakeRules(rules)),
      m_delivery(
          this, name, [this] { OnProgress(); },
          [this] {
            if (m_options.configured) m_follower.Ask();
          }),
      m_follower(m_delivery, *this),
      m_light(this),
      m_status(this),
      m_tellStatus(this),
      m_begin(this),
      m_giveUp(this) {
  m_signals.emplace(this, std::initializer_list<int>{SIGTERM, SIGINT}, [this](int signal) { OnSignal(signal); });
  m_status.AddSource(StatusPrefix(), [this](gateway::cStatusValues& values) { Collect(values); });
  m_tellStatus.Start(0, eTellStatus);
}

// What they have to tell still goes to the delivery.
cDriverProcess::~cDriverProcess() { m_interfaces.clear(); }

int cDriverProcess::Work() {
  Run();
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  const bool lost = counts.refused != 0 || counts.dropped != 0 || m_delivery.GetOpen() != 0;
  if (m_exitCode == eExitOk && (lost || HasFailed())) m_exitCode = eExitNotDelivered;
  return m_exitCode;
}

bool cDriverProcess::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetType() == eGiveUp) {
    GiveUp();
  } else if (msg.GetType() == eBegin) {
    Begin();
  } else if (msg.GetType() == eTellStatus) {
    TellStatus();
  } else if (!cServiceHost::DispatchMessage(msg) && !m_follower.DispatchMessage(msg)) {
    for (auto& [name, open] : m_interfaces)
      if (open.timerType == msg.GetType()) {
        open.interface->OnTimer();
        break;
      }
  }
  return true;
}

std::string cDriverProcess::DeliverySummary() const {
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
  return vorn::FormatString(
      "readings delivered=%llu acknowledged=%llu refused=%llu dropped=%llu unconfirmed=%llu open=%llu",
      number(counts.readings), number(counts.acknowledged), number(counts.refused), number(counts.dropped),
      number(counts.unconfirmed), number(m_delivery.GetOpen()));
}

cDriverRules cDriverProcess::MakeRules(const cObisMap& ofFile) {
  if (m_options.noRules) return cDriverRules();
  if (!m_options.rulesFile.empty()) return cDriverRules(ofFile);
  return cDriverRules(this, [this] { Feed(); });
}

// ---- the status

// Of a driver that has one interface only, its own: several may run.
std::string cDriverProcess::StatusPrefix() const {
  return m_options.interfaceName.empty() ? m_name : m_name + "-" + m_options.interfaceName;
}

void cDriverProcess::TellStatus() {
  m_status.Publish();
  m_tellStatus.Start(gateway::cStatusPublisher::kIntervalMs, eTellStatus, gateway::cStatusPublisher::kSlackMs);
}

void cDriverProcess::Collect(gateway::cStatusValues& values) const {
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

void cDriverProcess::OnInterfaces(const std::vector<cInterfaceRecord>& interfaces) {
  std::vector<std::string> gone;
  for (const auto& open : m_interfaces)
    if (std::none_of(interfaces.begin(), interfaces.end(), [&](const auto& known) { return known.name == open.first; }))
      gone.push_back(open.first);
  for (const std::string& name : gone) Close(name);
  for (const cInterfaceRecord& interface : interfaces) OnInterfaceChanged(interface);
}

std::string cDriverProcess::OnInterfaceChanged(const cInterfaceRecord& interface) {
  if (m_ending || (!m_options.interfaceName.empty() && m_options.interfaceName != interface.name)) return {};
  std::string fault;
  const bool wanted = interface.enabled && HasMeterOf(interface, m_name);
  if (wanted && OpenConfigured(interface, fault)) return {};
  Close(interface.name);
  if (!fault.empty()) ReportRefused(interface.name, fault);
  return fault;
}

std::string cDriverProcess::OnCommand(const cDbCtrlIODriverNotify& command) {
  cOpenInterface* const interface = Find(command.m_interfaceName);
  return interface != nullptr ? Command(*interface, command)
                              : "interface '" + command.m_interfaceName + "' is not open";
}

cOpenInterface* cDriverProcess::Find(const std::string& name) const {
  const auto open = m_interfaces.find(name);
  return open != m_interfaces.end() ? open->second.interface.get() : nullptr;
}

void cDriverProcess::Open(const std::string& name, unsigned int timerType, std::unique_ptr<cOpenInterface> interface) {
  Close(name);
  const cOpenInterface& opened = *interface;
  m_interfaces[name] = {timerType, std::move(interface)};
  vorn::Trace(DriverUnit(), 8, "interface '", name, "': ", [&] { return opened.Describe(); });
  if (opened.CanWait()) m_begin.Start(kFirstWaitMs, eBegin);
}

void cDriverProcess::Close(const std::string& name) {
  const auto open = m_interfaces.find(name);
  if (open == m_interfaces.end()) return;
  OnClosing(*open->second.interface);
  m_interfaces.erase(open);
  vorn::Trace(DriverUnit(), 8, "interface '", name, "' closed");
}

void cDriverProcess::ReportRefused(const std::string& name, const std::string& reason) {
  vorn::Trace(DriverUnit(), 2, reason);
  m_delivery.Report(MakeInterfaceEvent(m_name, name, "interface refused", reason));
}

// ---- what the interfaces ask and tell

// What can wait is not read before its rules are there, unless they do not come.
bool cDriverProcess::HasRoom() const {
  return (m_begun || m_rules.IsSettled()) && m_delivery.GetOpen() < cDelivery::kWindow;
}

void cDriverProcess::Begin() {
  m_begun = true;
  Feed();
}

void cDriverProcess::OnProgress() {
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  const std::uint64_t answers = counts.acknowledged + counts.refused;
  if (std::exchange(m_answers, answers) != answers && !m_ending) m_giveUp.Stop();
  if (m_delivery.IsConnected() && m_delivery.GetOpen() < cDelivery::kWindow) ReportDropped();
  Feed();
}

// Told when there is room for it: what is lost because the service was away is not lost in silence.
void cDriverProcess::ReportDropped() {
  const std::uint64_t dropped = m_delivery.GetCounts().dropped;
  const std::uint64_t told = std::exchange(m_droppedTold, dropped);
  if (told == dropped) return;
  const std::string count = std::to_string(dropped - told) + (dropped - told == 1 ? " reading" : " readings");
  Report(MakeInterfaceEvent(m_name, m_options.interfaceName, "readings dropped",
                            count + ": the queue was full while the service was away"));
}

void cDriverProcess::Feed() {
  for (auto& [name, open] : m_interfaces) open.interface->Feed();
  if (m_ending) OnEnded();
}

void cDriverProcess::OnHeld() {
  if (m_options.once) GiveUpLater();
}

void cDriverProcess::OnFailed(const std::string& why) {
  const bool said = !m_options.configured && std::exchange(m_exitCode, eExitInput) == eExitInput;
  if (!said) vorn::Trace(DriverUnit(), 2, why);
}

// ---- the end

void cDriverProcess::OnSignal(int signal) {
  vorn::Trace(DriverUnit(), 8, "signal ", signal);
  for (auto& [name, open] : m_interfaces) open.interface->Abandon();
  if (std::exchange(m_ending, true) || m_delivery.GetOpen() == 0)
    Stop();
  else
    m_giveUp.Start(kSignalWaitMs, eGiveUp);
}

// A configured driver goes on: an interface may come.
bool cDriverProcess::IsReadToEnd() const {
  return m_ending || std::all_of(m_interfaces.begin(), m_interfaces.end(),
                                 [](const auto& open) { return open.second.interface->IsReadToEnd(); });
}

void cDriverProcess::OnEnded() {
  if (m_options.configured && !m_ending) return;
  if (IsReadToEnd() && m_delivery.GetOpen() == 0)
    Stop();
  else
    GiveUpLater();
}

// Counted from the service's last answer.
void cDriverProcess::GiveUpLater() {
  if (!m_giveUp.IsRunning()) m_giveUp.Start(m_options.waitSeconds * 1000, eGiveUp);
}

void cDriverProcess::GiveUp() {
  vorn::Trace(DriverUnit(), 2, "gave up waiting, ", m_delivery.GetOpen(), " readings are not acknowledged",
              IsReadToEnd() ? "" : " and the input is not read to its end");
  Stop();
}

}  // namespace tav
