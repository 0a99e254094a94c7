// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_options.h>

#include <CLI/CLI.hpp>
#include <cstdio>

namespace tav::mbus {

namespace {

constexpr const char* kKeep = "keep";

void Describe(CLI::App& app, cMBusOptions& options, std::vector<std::string>& addresses, std::string& unmapped) {
  AddDriverOptions(app, options);
  app.add_option("--interface", options.interfaceName,
                 "Name of the interface (default: MBUS); without --input: only this one of the configured interfaces");
  app.add_option("--input", options.inputText,
                 "A serial device, tcp://host:port, or 'sim' for a simulated bus; without it the driver works by the "
                 "gateway's configuration");
  app.add_option("--baud", options.line.input.baud, "Bits per second of a serial device")->capture_default_str();
  app.add_option("--framing", options.line.input.framing, "Data bits, parity and stop bits of a serial device")
      ->capture_default_str();
  app.add_flag("--echo", options.line.echo, "The level converter gives back what is sent");
  app.add_option("--retries", options.line.retries, "Requests after one that was not answered well")
      ->check(CLI::Range(0u, cMBusLineSettings::kMostRetries))
      ->capture_default_str();
  app.add_option("--answer", options.line.longestAnswerMs,
                 "Longest time to the beginning of an answer, in milliseconds; 0: what the standard allows")
      ->check(CLI::Range(0u, cMBusLineSettings::kMostAnswerMs))
      ->capture_default_str();
  app.add_option("--meter", addresses,
                 "A meter by its primary address (5) or its secondary one (44950146, 449501464D341804; F is any "
                 "digit); may be repeated");
  app.add_option("--medium", options.medium, "Medium letter of the readings (default: what each meter says)")
      ->check(CheckMediumLetter);
  app.add_option("--interval", options.intervalSeconds, "Seconds between two readings of a meter, aligned to the clock")
      ->check(CLI::Range(1u, 86400u))
      ->capture_default_str();
  app.add_option("--unmapped", unmapped, "Values that no rule names: keep them, or drop them")
      ->check(CLI::IsMember({kKeep, "drop"}))
      ->capture_default_str();
  app.add_flag("--once", options.once, "Read each meter once and end when that is acknowledged");
  app.add_option("--meters", options.simulation.meters, "Simulation: number of meters")
      ->check(CLI::Range(1u, kMostSimulatedMeters))
      ->capture_default_str();
  app.add_option("--seed", options.simulation.seed, "Simulation: which house")->capture_default_str();
}

bool CompleteLine(cMBusOptions& options, std::string& error) {
  if (!cInputSpec::ParseLive(options.inputText, options.line.input, error)) {
    error.insert(0, "--input: ");
    return false;
  }
  return options.line.input.kind != eInputKind::Serial || CheckSerialSettings(options.line.input, error);
}

bool TakeMeters(const std::vector<std::string>& addresses, cMBusOptions& options, std::string& error) {
  for (const std::string& text : addresses) {
    cMBusAddress address;
    if (!cMBusAddress::Parse(text, address, error)) {
      error.insert(0, "--meter: ");
      return false;
    }
    options.meters.push_back(address);
  }
  if (options.simulated && options.meters.empty())
    for (unsigned int i = 1; i <= options.simulation.meters; ++i)
      options.meters.push_back(cMBusAddress::Primary(static_cast<std::uint8_t>(i)));
  if (!options.meters.empty()) return true;
  error = "--input needs --meter: name the meters of the bus; tavctl mbus scan finds them";
  return false;
}

bool Complete(const CLI::App& app, const std::vector<std::string>& addresses, cMBusOptions& options,
              std::string& error) {
  options.configured = options.inputText.empty();
  if (options.configured)
    return CheckConfigured(app,
                           {"--input", "--baud", "--framing", "--echo", "--retries", "--answer", "--meter", "--medium",
                            "--interval", "--unmapped", "--raw", "--once", "--meters", "--seed"},
                           error);
  if (options.interfaceName.empty()) options.interfaceName = "MBUS";
  options.simulated = options.inputText == "sim";
  return (options.simulated || CompleteLine(options, error)) && TakeMeters(addresses, options, error);
}

}  // namespace

bool cMBusOptions::Parse(int argc, char** argv, cMBusOptions& options, int& exitCode) {
  CLI::App app("Meter driver for wired M-Bus: reads meters and hands the readings to the database service.", "mbif");
  app.footer(
      "Exit codes: 0 all is well; 1 readings were refused, dropped, not acknowledged, or not to be had; 2 a wrong "
      "option; 3 the line cannot be opened.");
  std::vector<std::string> addresses;
  std::string unmapped = "drop";
  Describe(app, options, addresses, unmapped);
  if (!ParseCommandLine(app, argc, argv, exitCode)) return false;
  options.keepUnmapped = unmapped == kKeep;
  std::string error;
  if (Complete(app, addresses, options, error)) return true;
  std::fprintf(stderr, "mbif: %s\n", error.c_str());
  exitCode = eExitUsage;
  return false;
}

}  // namespace tav::mbus
