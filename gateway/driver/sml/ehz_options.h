// SPDX-License-Identifier: Apache-2.0
// The command line of ehzif.
#pragma once

#include <set>
#include <string>

#include <gateway/driver/input/input_opener.h>
#include <gateway/driver/sml/simulated_input.h>

namespace tav::sml {

// Exit codes of the process.
enum eEhzExit : int {
  eExitOk = 0,
  eExitNotDelivered = 1,  // readings were refused, dropped or not acknowledged
  eExitUsage = 2,         // a wrong option or rules file
  eExitInput = 3,         // the input cannot be read
};

struct cEhzOptions {
  std::string directory;  // of the service sockets; empty: the framework's default
  std::string interfaceName;
  std::string inputText;
  bool configured = false;  // no input is given: the gateway's configuration is obeyed
  bool simulated = false;
  cInputSpec input;
  cSimulatedInputOptions simulation;
  std::string medium = "E";
  unsigned int intervalSeconds = 0;  // 0: every reading is stored
  std::string rulesFile;             // empty: the gateway's rules hold
  bool noRules = false;              // no rules at all
  bool keepNames = false;
  std::set<std::string> meters;  // empty: all
  bool raw = false;
  bool once = false;
  unsigned int waitSeconds = 30;  // for the service's next answer, once there is nothing else to do
  int traceLevel = 4;

  // False when the process is to end at once, with that code: a wrong option has been explained on standard error, or
  // help was asked for.
  static bool Parse(int argc, char** argv, cEhzOptions& options, int& exitCode);
};

}  // namespace tav::sml
