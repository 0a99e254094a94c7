// SPDX-License-Identifier: Apache-2.0
// The command line of mbif.
#pragma once

#include <string>
#include <vector>

#include <gateway/driver/driver_options.h>
#include <gateway/driver/mbus/mbif/mbus_settings.h>

namespace tav::mbus {

struct cMBusOptions : cDriverOptions {
  bool simulated = false;
  cBusSimulation simulation;
  cMBusLineSettings line;
  std::string medium;  // letter; empty: what each meter says
  unsigned int intervalSeconds = kUsualInterval;
  bool keepUnmapped = false;
  std::vector<cMBusAddress> meters;

  // False when the process is to end at once, with that code: a wrong option has been explained on standard error, or
  // help was asked for.
  static bool Parse(int argc, char** argv, cMBusOptions& options, int& exitCode);
};

}  // namespace tav::mbus
