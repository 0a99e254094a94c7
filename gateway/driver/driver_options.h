// SPDX-License-Identifier: Apache-2.0
// What the command lines of all drivers have in common.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tav {

// Exit codes of a driver.
enum eDriverExit : int {
  eExitOk = 0,
  eExitNotDelivered = 1,  // readings were refused, dropped, not acknowledged, or not to be had
  eExitUsage = 2,         // a wrong option or rules file
  eExitInput = 3,         // the input cannot be read
};

struct cDriverOptions {
  std::string directory;  // of the service sockets; empty: the framework's default
  std::string interfaceName;
  std::string inputText;
  bool configured = false;  // no input is given: the gateway's configuration is obeyed
  std::string rulesFile;    // empty: the gateway's rules hold
  bool noRules = false;     // no rules at all
  bool keepNames = false;
  bool raw = false;
  bool once = false;
  unsigned int waitSeconds = 30;  // for the service's next answer, once there is nothing else to do
  int traceLevel = 4;
};

// Adds those that mean the same for every driver: --dir, --rules, --no-rules, --keep-names, --raw, --wait, --trace.
void AddDriverOptions(CLI::App& app, cDriverOptions& options);

// Checks for --medium: empty, or what is wrong.
std::string CheckMediumLetter(const std::string& medium);

// Reads the command line; false when the process is to end at once, with that code: a wrong option has been explained
// on standard error, or help was asked for.
bool ParseCommandLine(CLI::App& app, int argc, char** argv, int& exitCode);

// For a driver without --input: all others of these options need it. False, and which one was given.
bool CheckConfigured(const CLI::App& app, std::initializer_list<const char*> options, std::string& error);

}  // namespace tav
