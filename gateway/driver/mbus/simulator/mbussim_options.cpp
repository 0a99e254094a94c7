// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbussim_options.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

constexpr int kExitUsage = 2;

struct cFaultRow {
  eBusFault fault;
  const char* option;
  const char* text;
};

// clang-format off
constexpr cFaultRow kFaultRows[] = {
  {eBusFault::Noise,      "--noise",      "Probability that a byte of an answer is wrong"},
  {eBusFault::Truncation, "--truncation", "Probability that an answer ends in its middle"},
  {eBusFault::Collision,  "--collision",  "Probability that an answer is garbled as if somebody else had answered as well"},
  {eBusFault::Silence,    "--silence",    "Probability that there is no answer"},
  {eBusFault::Slow,       "--slow",       "Probability that an answer comes two seconds late"},
  {eBusFault::Checksum,   "--checksum",   "Probability that an answer has a wrong checksum"},
};
// clang-format on

void Describe(CLI::App& app, cMBusSimOptions& options) {
  app.add_option("--link", options.bus.link, "Where the device is to stand, as a symbolic link; removed at the end");
  app.add_option("--meters", options.meters, "Number of meters, at the primary addresses from 1 on")
      ->check(CLI::Range(1u, unsigned{kLastPrimary}))
      ->capture_default_str();
  app.add_option("--seed", options.seed, "Which meters")->capture_default_str();
  app.add_option("--baud", options.baud, "Bits per second that the meters hear")
      ->check(CLI::IsMember(std::vector<unsigned int>(std::begin(kBauds), std::end(kBauds))))
      ->capture_default_str();
  for (const cFaultRow& row : kFaultRows)
    app.add_option(row.option, options.probabilities[static_cast<std::size_t>(row.fault)], row.text)
        ->check(CLI::Range(0.0, 1.0))
        ->capture_default_str();
  app.add_flag("--echo", options.bus.echo, "Give back what is sent, as some level converters do");
  app.add_flag("--instant", options.bus.instant, "Answer at once, not at the line's rate");
  app.add_option("--trace", options.traceLevel, "Trace level: 2 failures, 4 warnings, 8 notes, 16 every frame")
      ->capture_default_str();
}

}  // namespace

bool cMBusSimOptions::Parse(int argc, char** argv, cMBusSimOptions& options, int& exitCode) {
  CLI::App app("Simulated meters on an M-Bus, behind a serial device that a driver may open.", "mbussim");
  app.footer("Ends with Ctrl-C or SIGTERM. Exit codes: 0 it was ended; 1 there is no device; 2 a wrong option.");
  Describe(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& fault) {
    exitCode = app.exit(fault) == 0 ? 0 : kExitUsage;
    return false;
  }
  return true;
}

cMBusBus MakeBus(const cMBusSimOptions& options) {
  cMBusBus bus = MakeHouse(options.meters, options.seed, options.baud);
  for (const cFaultRow& row : kFaultRows)
    bus.SetProbability(row.fault, options.probabilities[static_cast<std::size_t>(row.fault)]);
  return bus;
}

std::string ListMeters(const cMBusBus& bus) {
  std::string text;
  for (std::size_t i = 0; i < bus.CountMeters(); ++i) {
    const cMBusSlave& slave = bus.GetSlave(i);
    const cMBusHeader& header = slave.GetMeter().GetHeader();
    const std::string maker = header.manufacturer != 0 ? ManufacturerText(header.manufacturer) : "-";
    text += vorn::FormatString("%3u  %s  %-3s  %s\n", slave.GetPrimary(), IdText(header.id).c_str(), maker.c_str(),
                               MeterKindText(slave.GetMeter().GetKind()));
  }
  return text;
}

}  // namespace tav::mbus
