// SPDX-License-Identifier: Apache-2.0
// cMBusTool: what a person does at a bus, one thing after another: look who is there, read a meter, set it up. It
// drives a loop of its own until the thing is done.
//
// The line is the tool's alone while it lives; a driver that has it open keeps it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_master.h>
#include <gateway/driver/mbus/master/mbus_readout.h>
#include <gateway/driver/mbus/master/mbus_scan.h>
#include <gateway/host/service_host.h>

namespace tav::mbus {

class cMBusTool {
 public:
  // interrupted is asked again and again while something takes its time; true ends it.
  cMBusTool(const cMBusLineSettings& settings, std::function<bool()> interrupted);

  // Each gives false, and in error why, when it could not be done.

  // Waits for the line to be there.
  bool Open(unsigned int timeoutMs, std::string& error);
  bool Scan(const cMBusScanOptions& options, const std::function<void(const cMBusFound&)>& onFound,
            const std::function<void(const cMBusScanProgress&)>& onProgress, std::string& error);
  // The meter's telegrams; those before a failure as well.
  bool Read(const cMBusAddress& address, std::vector<std::string>& frames, std::string& error);
  // newAddress: 0 to 250, 0 is that of a meter without one.
  bool SetAddress(const cMBusAddress& address, std::uint8_t newAddress, std::string& error);
  // The meter answers at that rate from then on, and so is it asked; it goes back by itself when nobody asks it so.
  bool SetBaud(const cMBusAddress& address, unsigned int baud, std::string& error);
  // Whether there is a code for the rate.
  static bool CheckBaud(unsigned int baud, std::string& error);
  // subCode: what its application begins with; none when negative.
  bool ResetApplication(const cMBusAddress& address, int subCode, std::string& error);

 private:
  bool Await(const std::function<bool()>& holds, std::string& error);
  bool Ask(const std::string& frame, const std::string& what, std::string& error);
  bool Select(const cMBusAddress& address, std::string& error);

  gateway::cServiceHost m_host;
  std::function<bool()> m_interrupted;
  cMBusMaster m_master;
  std::string m_lost;  // why the line is not there
};

}  // namespace tav::mbus
