// SPDX-License-Identifier: Apache-2.0
// cDriverProcess: what the process of every driver is. It has the one interface that the command line tells, or those
// that the gateway's configuration gives it, which it follows without a restart; what they read leaves through the
// delivery, filtered by the rules.
//
// A driver derives from it, opens what its command line says, and answers how a configured interface is opened.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include <gateway/driver/delivery.h>
#include <gateway/driver/driver_options.h>
#include <gateway/driver/driver_rules.h>
#include <gateway/driver/interface_follower.h>
#include <gateway/driver/open_interface.h>
#include <gateway/driver/reading_light.h>
#include <gateway/host/service_host.h>
#include <tav/framework/timer.h>
#include <tav/framework/watch.h>

namespace tav {

class cDriverProcess : public gateway::cServiceHost, protected cInterfaceHost, private cInterfaceOwner {
 public:
  ~cDriverProcess() override;

  // Runs to the end of the input or a signal; the process's exit code.
  int Work();
  bool DispatchMessage(const vorn::cMsg& msg) override;

 protected:
  // No clock: cClock::Steady(). rules: those of the file that the options name.
  cDriverProcess(const std::string& name, const cDriverOptions& options, const cObisMap& rules,
                 std::shared_ptr<const vorn::cClock> clock);

  // Opens the interface, or goes on with an open one that it fits. False, and why not, when its configuration is wrong.
  virtual bool OpenConfigured(const cInterfaceRecord& record, std::string& fault) = 0;
  // Does something at a meter of an open interface; empty, or why not.
  virtual std::string Command(cOpenInterface& interface, const cDbCtrlIODriverNotify& command) = 0;
  // The interface is about to go.
  virtual void OnClosing(const cOpenInterface& interface) = 0;
  // Whether something went wrong that the exit code is to tell.
  virtual bool HasFailed() const { return false; }

  // Puts it in the place of one of that name. Its timer messages have the type that was taken for it.
  void Open(const std::string& name, unsigned int timerType, std::unique_ptr<cOpenInterface> interface);
  void Close(const std::string& name);
  unsigned int TakeTimerType() { return m_nextTimer++; }
  cOpenInterface* Find(const std::string& name) const;
  template <typename Visit>
  void ForEach(Visit visit) const {
    for (const auto& [name, open] : m_interfaces) visit(*open.interface);
  }
  const cDriverRules& GetRules() const { return m_rules; }
  // "readings delivered=..", what became of them.
  std::string DeliverySummary() const;

  bool HasRoom() const override;

 private:
  // The loop's own messages, of timers; from eInputTimer on one each interface.
  enum eTimerMessage : unsigned int { eBegin = 0x100, eGiveUp, eTellStatus, eInputTimer };

  struct cOpen {
    unsigned int timerType;
    std::unique_ptr<cOpenInterface> interface;
  };

  // What the interfaces ask.
  void Deliver(const cMeterRecord& reading) override { m_delivery.Deliver(reading); }
  void OnReading(unsigned int light) override { m_light.Flash(light); }
  void Report(const vorn::cRecord& event) override { m_delivery.Report(event); }
  void OnHeld() override;
  void OnEnded() override;
  void OnFailed(const std::string& why) override;

  // What the configuration says.
  void OnInterfaces(const std::vector<cInterfaceRecord>& interfaces) override;
  std::string OnInterfaceChanged(const cInterfaceRecord& interface) override;
  void OnInterfaceDeleted(const std::string& name) override { Close(name); }
  std::string OnCommand(const cDbCtrlIODriverNotify& command) override;

  cDriverRules MakeRules(const cObisMap& ofFile);
  std::string StatusPrefix() const;
  void ReportRefused(const std::string& name, const std::string& reason);
  void OnProgress();
  void ReportDropped();
  void Feed();
  void Begin();
  void TellStatus();
  void Collect(gateway::cStatusValues& values) const;
  void OnSignal(int signal);
  void GiveUpLater();
  void GiveUp();
  bool IsReadToEnd() const;

  std::string m_name;
  cDriverOptions m_options;
  cDriverRules m_rules;
  std::map<std::string, cOpen> m_interfaces;  // by name
  cDelivery m_delivery;
  cInterfaceFollower m_follower;
  cReadingLight m_light;
  gateway::cStatusPublisher m_status;
  vorn::cTimer m_tellStatus;
  vorn::cTimer m_begin;
  vorn::cTimer m_giveUp;
  std::optional<vorn::cSignalWatch> m_signals;
  unsigned int m_nextTimer = eInputTimer;
  std::uint64_t m_answers = 0;  // of the service, when we last looked
  std::uint64_t m_droppedTold = 0;
  bool m_begun = false;   // inputs that can wait have waited for the services
  bool m_ending = false;  // by a signal
  int m_exitCode = eExitOk;
};

}  // namespace tav
