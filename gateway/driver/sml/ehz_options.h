// SPDX-License-Identifier: Apache-2.0
// The command line of ehzif.
#pragma once

#include <set>
#include <string>

#include <gateway/driver/driver_options.h>
#include <gateway/driver/input/input_opener.h>
#include <gateway/driver/sml/simulated_input.h>

namespace tav::sml {

struct cEhzOptions : cDriverOptions {
  bool simulated = false;
  cInputSpec input;
  cSimulatedInputOptions simulation;
  std::string medium = "E";
  unsigned int intervalSeconds = 0;  // 0: every reading is stored
  std::set<std::string> meters;      // empty: all

  // False when the process is to end at once, with that code: a wrong option has been explained on standard error, or
  // help was asked for.
  static bool Parse(int argc, char** argv, cEhzOptions& options, int& exitCode);
};

}  // namespace tav::sml
