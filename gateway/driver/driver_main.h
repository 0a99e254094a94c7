// SPDX-License-Identifier: Apache-2.0
// What main of every driver does: command line, trace levels, rules of a file; then it drives until it ends, and says
// what became of the readings.
#pragma once

#include <cstdio>

#include <gateway/driver/driver_options.h>
#include <gateway/rules/rules_file.h>
#include <tav/framework/trace.h>

namespace tav {

// Options: a cDriverOptions with Parse; Driver: made of them and the rules, with Work and Summary.
template <typename Options, typename Driver>
int DriverMain(const char* name, int argc, char** argv) {
  Options options;
  int exitCode = 0;
  if (!Options::Parse(argc, argv, options, exitCode)) return exitCode;
  for (const char* unit : {"UnitVORN", "UnitTAV", "UnitDriver"}) vorn::cUnit::Find(unit)->SetLevel(options.traceLevel);
  cObisMap rules;
  std::string error;
  if (!options.rulesFile.empty() && !tav::rules::ReadRulesFile(options.rulesFile, rules, error)) {
    std::fprintf(stderr, "%s: --rules: %s\n", name, error.c_str());
    return eExitUsage;
  }
  Driver driver(options, rules);
  exitCode = driver.Work();
  std::printf("%s\n", driver.Summary().c_str());
  return exitCode;
}

}  // namespace tav
