// SPDX-License-Identifier: Apache-2.0
// cMBusInterface: one open bus of the M-Bus driver. Its meters are read one after another as they become due; what they
// say becomes readings and leaves through the owner.
//
// Every reading that was due is delivered, or told as missing with the cause (event "readings missing"). A meter whose
// telegrams can only be read in part is delivered as far as they go, and told (event "reading incomplete"), once as
// long as it is for the same cause.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gateway/driver/driver_rules.h>
#include <gateway/driver/mbus/master/mbus_readout.h>
#include <gateway/driver/mbus/mbif/mbus_reading.h>
#include <gateway/driver/mbus/mbif/mbus_settings.h>
#include <gateway/driver/mbus/mbif/missing_readings.h>
#include <gateway/driver/mbus/mbif/poll_schedule.h>
#include <gateway/driver/open_interface.h>
#include <gateway/host/task.h>

namespace tav::mbus {

class cMBusBus;
class cSimulatedBus;

// due is delivered + missing, and those that wait or are under way.
struct cMBusCounts {
  std::uint64_t due = 0;
  std::uint64_t delivered = 0;  // some of them incomplete
  std::uint64_t filtered = 0;   // of those: no value passed the rules, so that there is nothing to store
  std::uint64_t missing = 0;
  std::uint64_t incomplete = 0;
  std::uint64_t bytesSent = 0;
  std::uint64_t bytesReceived = 0;
  cMBusReadingCounts content;

  cMBusCounts& operator+=(const cMBusCounts& other);
};

class cMBusInterface : public cOpenInterface {
 public:
  // How the process was started; the same for all interfaces.
  struct cMode {
    const cDriverRules* rules = nullptr;
    bool keepNames = false;
    bool once = false;             // each meter is read once
    std::function<cMoment()> now;  // the wall clock
  };

  // The host, the owner and the mode's rules outlive it.
  cMBusInterface(gateway::cServiceHost* host, cMBusSettings settings, const cMode& mode, cInterfaceHost& owner);
  ~cMBusInterface() override;

  // Takes other settings with the same line.
  void Change(const cMBusSettings& settings);
  // Whether there is a meter of that identifier.
  bool HasMeter(const std::string& meterId) const;

  std::string Describe() const override { return m_settings.DescribeLine(); }
  void Feed() override;
  void Abandon() override;
  void Collect(gateway::cStatusValues& values) const override;
  bool CanWait() const override { return false; }
  bool IsReadToEnd() const override { return m_ended; }

  const cMBusSettings& GetSettings() const { return m_settings; }
  cMBusCounts GetCounts() const;

 private:
  struct cMeter {
    cMBusMeter settings;
    cMBusLink link;
    cMissingReadings missing;
    std::uint32_t lastReading = 0;
    std::string trouble = {};  // why its last reading was incomplete
  };

  std::unique_ptr<cMBusMaster> MakeMaster();
  void TakeMeters();
  void DropMeters();
  void Begin();
  void Wake();
  void Next();
  void Read(std::size_t meter, std::uint32_t slotBegin);
  void OnRead(std::size_t meter, std::uint32_t slotBegin, const cMBusReadoutResult& result);
  void Take(std::size_t meter, std::uint32_t slotBegin, const cMBusReadoutResult& result);
  void Deliver(cMeter& meter, cMeterRecord& reading);
  void Miss(std::size_t meter, std::uint32_t slotBegin, const std::string& cause);
  void TellMissing(const cMBusMeter& meter, unsigned int count, std::uint32_t first, std::uint32_t last,
                   const std::string& cause);
  void OnLineOpen();
  void OnLineLost(const std::string& why);
  void End();
  void Report(const char* event, const std::string& reason);

  gateway::cServiceHost* m_host;
  cMBusSettings m_settings;
  cMode m_mode;
  cInterfaceHost& m_owner;
  std::unique_ptr<cMBusBus> m_bus;  // simulated, with its line
  std::unique_ptr<cSimulatedBus> m_simulated;
  std::unique_ptr<cMBusMaster> m_master;
  std::vector<cMeter> m_meters;
  std::unique_ptr<cPollSchedule> m_schedule;
  std::unique_ptr<cMBusReadout> m_readout;
  std::optional<cPollSchedule::cDue> m_reading;  // the meter that is asked
  std::uint64_t m_settled = 0;                   // slots of meters that are no more
  cMBusReadingMaker m_maker;
  cMBusCounts m_counts;
  gateway::cTask m_wake;
  gateway::cTask m_next;
  gateway::cTask m_begin;
  bool m_begun = false;  // the rules have come, or were waited for
  bool m_open = false;   // the line
  bool m_lost = false;   // and reported
  std::string m_lostWhy;
  bool m_ended = false;
};

}  // namespace tav::mbus
