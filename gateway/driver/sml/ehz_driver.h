// SPDX-License-Identifier: Apache-2.0
// cEhzDriver: the process of the SML driver. It has the one interface that the command line tells, or those that the
// gateway's configuration gives it, which it follows without a restart; what they read leaves through the delivery.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include <gateway/driver/delivery.h>
#include <gateway/driver/driver_rules.h>
#include <gateway/driver/interface_follower.h>
#include <gateway/driver/reading_light.h>
#include <gateway/driver/sml/ehz_interface.h>
#include <gateway/driver/sml/ehz_options.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/timer.h>
#include <tav/framework/watch.h>

namespace tav::sml {

class cEhzDriver : public vorn::cScmService, private cEhzOwner, private cInterfaceOwner {
 public:
  // No clock: cClock::Steady().
  cEhzDriver(const cEhzOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock = nullptr);
  ~cEhzDriver() override;

  // Runs to the end of the input or a signal; the process's exit code.
  int Work();
  bool DispatchMessage(const vorn::cMsg& msg) override;
  // One line: frames, readings and what became of them.
  std::string Summary() const;

 private:
  // The loop's own messages, of timers; from eInputTimer on one each interface.
  enum eTimerMessage : unsigned int { eBegin = 0x100, eGiveUp, eTellStatus, eInputTimer };

  struct cOpen {
    unsigned int timerType;
    std::unique_ptr<cEhzInterface> interface;
  };

  // What the interfaces ask.
  bool HasRoom() const override;
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
  void Open(const cEhzSettings& settings);
  void Close(const std::string& name);
  void ReportRefused(const std::string& name, const std::string& reason);
  void OnProgress();
  void Feed();
  void Begin();
  void TellStatus();
  void Collect(gateway::cStatusValues& values) const;
  void OnSignal(int signal);
  void GiveUpLater();
  void GiveUp();
  bool IsReadToEnd() const;

  cEhzOptions m_options;
  cDriverRules m_rules;
  std::map<std::string, cOpen> m_interfaces;  // by name
  cEhzCounts m_closed;                        // counts of interfaces that are no more
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
  bool m_begun = false;         // inputs that can wait have waited for the services
  bool m_ending = false;        // by a signal
  int m_exitCode = eExitOk;
};

}  // namespace tav::sml
