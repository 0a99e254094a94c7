// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/driver_options.h>

#include <CLI/CLI.hpp>

#include <tav/record/meter_tav.h>

namespace tav {

namespace {

constexpr unsigned int kLongestWait = 86400;

}  // namespace

void AddDriverOptions(CLI::App& app, cDriverOptions& options) {
  app.add_option("--dir", options.directory,
                 "Directory of the service sockets (default: VORN_DIR, $XDG_RUNTIME_DIR/vorn, /run/vorn)");
  CLI::Option* const rules = app.add_option(
      "--rules", options.rulesFile, "OBIS rules (TOML) in place of the gateway's; values without a rule are left out");
  app.add_flag("--no-rules", options.noRules, "Store every value under the meter's own identifier")->excludes(rules);
  app.add_flag("--keep-names", options.keepNames, "Keep the identifiers of the meter where a rule fits");
  app.add_flag("--raw", options.raw, "Store the telegram's bytes with each reading");
  app.add_option("--wait", options.waitSeconds,
                 "Seconds without an answer of the service after which the end is not waited for any longer")
      ->check(CLI::Range(0u, kLongestWait))
      ->capture_default_str();
  app.add_option("--trace", options.traceLevel, "Trace level: 2 failures, 4 warnings, 8 notes, 16 progress")
      ->capture_default_str();
}

std::string CheckMediumLetter(const std::string& medium) {
  return cMeterTav::MediumToString(medium) == "unknown" ? "'" + medium +
                                                              "' is no medium letter (E electricity, H heat, "
                                                              "W warm water, w water, G gas, ...)"
                                                        : std::string();
}

bool ParseCommandLine(CLI::App& app, int argc, char** argv, int& exitCode) {
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::ParseError& fault) {
    exitCode = app.exit(fault) == 0 ? eExitOk : eExitUsage;
    return false;
  }
}

// What says how to read a meter comes from one place.
bool CheckConfigured(const CLI::App& app, std::initializer_list<const char*> options, std::string& error) {
  for (const char* option : options) {
    if (app.count(option) == 0) continue;
    error = app.count("--input") != 0 ? "--input: the input is empty; expected a device, a file, '-' or tcp://host:port"
                                      : std::string(option) + " needs --input; without it the configuration is obeyed";
    return false;
  }
  return true;
}

}  // namespace tav
