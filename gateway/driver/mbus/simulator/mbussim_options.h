// SPDX-License-Identifier: Apache-2.0
// The command line of mbussim.
#pragma once

#include <array>
#include <string>

#include <gateway/driver/mbus/simulator/mbus_bus.h>
#include <gateway/driver/mbus/simulator/simulated_bus.h>

namespace tav::mbus {

struct cMBusSimOptions {
  cSimulatedBusOptions bus;
  unsigned int meters = kMeterKinds;  // of each kind in turn, at primary addresses from 1 on
  std::uint32_t seed = 1;
  unsigned int baud = 2400;  // which the meters hear
  std::array<double, kBusFaults> probabilities{};
  int traceLevel = 4;

  // False when the process is to end at once, with that code: a wrong option has been explained on standard error, or
  // help was asked for.
  static bool Parse(int argc, char** argv, cMBusSimOptions& options, int& exitCode);
};

// The bus that the options describe.
cMBusBus MakeBus(const cMBusSimOptions& options);
// "  3  15402003  TAV  cold water", one a line.
std::string ListMeters(const cMBusBus& bus);

}  // namespace tav::mbus
