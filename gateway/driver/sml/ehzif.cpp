// SPDX-License-Identifier: Apache-2.0
// ehzif: the SML meter driver.
#include <cstdio>

#include <gateway/driver/sml/ehz_driver.h>
#include <gateway/driver/sml/ehz_options.h>
#include <gateway/rules/rules_file.h>
#include <tav/framework/trace.h>

int main(int argc, char** argv) {
  tav::sml::cEhzOptions options;
  int exitCode = 0;
  if (!tav::sml::cEhzOptions::Parse(argc, argv, options, exitCode)) return exitCode;
  for (const char* unit : {"UnitVORN", "UnitTAV", "UnitDriver"}) vorn::cUnit::Find(unit)->SetLevel(options.traceLevel);
  tav::cObisMap rules;
  std::string error;
  if (!options.rulesFile.empty() && !tav::rules::ReadRulesFile(options.rulesFile, rules, error)) {
    std::fprintf(stderr, "ehzif: --rules: %s\n", error.c_str());
    return tav::sml::eExitUsage;
  }
  tav::sml::cEhzDriver driver(options, rules);
  exitCode = driver.Work();
  std::printf("%s\n", driver.Summary().c_str());
  return exitCode;
}
