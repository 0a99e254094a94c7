// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_options.h>

#include <CLI/CLI.hpp>
#include <cstdio>

namespace tav::sml {

namespace {

void Describe(CLI::App& app, cEhzOptions& options, std::uint32_t& simBegin) {
  AddDriverOptions(app, options);
  app.add_option("--interface", options.interfaceName,
                 "Name of the interface (default: SIM for the simulation, else RS232); without --input: only this one "
                 "of the configured interfaces");
  app.add_option("--input", options.inputText,
                 "A serial device, tcp://host:port, a file, '-' for standard input, or 'sim' for simulated meters; "
                 "without it the driver works by the gateway's configuration");
  app.add_option("--baud", options.input.baud, "Bits per second of a serial device")->capture_default_str();
  app.add_option("--framing", options.input.framing, "Data bits, parity and stop bits of a serial device")
      ->capture_default_str();
  app.add_option("--medium", options.medium, "Medium letter of the readings")
      ->check(CheckMediumLetter)
      ->capture_default_str();
  app.add_option("--interval", options.intervalSeconds,
                 "Store one reading a meter every so many seconds, aligned to the clock; 0 stores all")
      ->capture_default_str();
  app.add_option("--meter", options.meters, "Only the meters with this identifier; may be repeated");
  app.add_flag(
      "--once", options.once,
      "End with the first loss of a device or connection, once everything is acknowledged, as with a file's end");
  app.add_option("--seed", options.simulation.simulator.seed, "Simulation: which household")->capture_default_str();
  app.add_option("--meters", options.simulation.simulator.meters, "Simulation: number of meters")
      ->check(CLI::Range(1u, kMostSimulatedMeters))
      ->capture_default_str();
  app.add_option("--period", options.simulation.periodSeconds, "Simulation: seconds between two telegrams of a meter")
      ->check(CLI::Range(1u, 86400u))
      ->capture_default_str();
  app.add_option("--rounds", options.simulation.rounds, "Simulation: telegrams of each meter, then it ends; 0 does not")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  app.add_option("--begin", simBegin,
                 "Simulation: seconds since 1970 UTC of the first telegram; time then runs as fast as it is taken");
  app.add_flag("--solar", options.simulation.simulator.solar, "Simulation: panels on the roof");
}

bool Complete(const CLI::App& app, cEhzOptions& options, std::uint32_t simBegin, std::string& error) {
  options.simulated = options.inputText == "sim";
  if (app.count("--begin") != 0) options.simulation.begin = simBegin;
  options.configured = options.inputText.empty();
  if (options.configured)
    return CheckConfigured(app,
                           {"--input", "--baud", "--framing", "--medium", "--interval", "--meter", "--raw", "--once",
                            "--seed", "--meters", "--period", "--rounds", "--begin", "--solar"},
                           error);
  if (options.interfaceName.empty()) options.interfaceName = options.simulated ? "SIM" : "RS232";
  if (options.simulated) return true;
  if (!cInputSpec::Parse(options.inputText, options.input, error)) {
    error = "--input: " + error;
    return false;
  }
  return options.input.kind != eInputKind::Serial || CheckSerialSettings(options.input, error);
}

}  // namespace

bool cEhzOptions::Parse(int argc, char** argv, cEhzOptions& options, int& exitCode) {
  CLI::App app("Meter driver for SML: reads telegrams and hands the readings to the database service.", "ehzif");
  app.footer(
      "Exit codes: 0 all is well; 1 readings were refused, dropped or not acknowledged; 2 a wrong option; 3 the "
      "input cannot be read.");
  std::uint32_t simBegin = 0;
  Describe(app, options, simBegin);
  if (!ParseCommandLine(app, argc, argv, exitCode)) return false;
  std::string error;
  if (Complete(app, options, simBegin, error)) return true;
  std::fprintf(stderr, "ehzif: %s\n", error.c_str());
  exitCode = eExitUsage;
  return false;
}

}  // namespace tav::sml
