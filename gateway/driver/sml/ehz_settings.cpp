// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_settings.h>

#include <gateway/driver/option_reader.h>
#include <gateway/driver/sml/ehz_options.h>

namespace tav::sml {

const std::string kEhzDriver = "ehzif";

namespace {

constexpr const char* kSimulatedInterface = "SIM";
constexpr const char* kSimulation = "sim";
constexpr unsigned int kDay = 86400;

void ReadSimulation(cInterfaceOptions& options, cSimulatedInputOptions& simulation) {
  options.Number("seed", 0, ~0u, simulation.simulator.seed);
  options.Number("meters", 1, kMostSimulatedMeters, simulation.simulator.meters);
  options.Number("period", 1, kDay, simulation.periodSeconds);
  options.Flag("solar", simulation.simulator.solar);
}

void ReadInput(cInterfaceOptions& options, const std::string& text, cInputSpec& input) {
  std::string fault;
  if (!cInputSpec::Parse(text, input, fault)) return options.Fault("input", fault);
  if (input.kind == eInputKind::StandardInput) return options.Fault("input", "'-' is for the command line only");
  options.Number("baud", 1, ~0u, input.baud);
  options.Text("framing", input.framing);
  if (input.kind == eInputKind::Serial && !CheckSerialSettings(input, fault)) options.Fault("baud' or 'framing", fault);
}

void ReadMeter(const cMeterConfig& meter, unsigned int intervalSeconds, cEhzSettings& settings, std::string& error) {
  cEhzMeter& read = settings.meters[meter.meterID];
  if (!meter.medium.empty()) read.medium = meter.medium;
  read.raw = meter.storeRawEnabled;
  read.intervalSeconds = intervalSeconds;
  OptionsOf(meter, error).Number("interval", 0, kDay, read.intervalSeconds);
}

}  // namespace

const cEhzMeter* cEhzSettings::Find(const std::string& meterId) const {
  const auto found = meters.find(meterId);
  if (found != meters.end()) return &found->second;
  return onlyNamed ? nullptr : &others;
}

bool cEhzSettings::HasSameInput(const cEhzSettings& other) const {
  if (simulated != other.simulated) return false;
  return simulated ? simulation == other.simulation : input == other.input;
}

std::string cEhzSettings::DescribeInput() const { return simulated ? "simulated meters" : input.ToString(); }

cEhzSettings SettingsOf(const cEhzOptions& options) {
  cEhzSettings settings;
  settings.name = options.interfaceName;
  settings.simulated = options.simulated;
  settings.input = options.input;
  settings.simulation = options.simulation;
  settings.others = {options.medium, options.raw, options.intervalSeconds};
  for (const std::string& meter : options.meters) settings.meters[meter] = settings.others;
  settings.onlyNamed = !options.meters.empty();
  return settings;
}

bool ReadSettings(const cInterfaceRecord& record, cEhzSettings& settings, std::string& error) {
  error.clear();
  settings = {};
  settings.name = record.name;
  settings.onlyNamed = true;
  cInterfaceOptions options = OptionsOf(record, error);
  std::string text = record.name == kSimulatedInterface ? kSimulation : "";
  unsigned int intervalSeconds = 0;
  options.Text("input", text);
  options.Number("interval", 0, kDay, intervalSeconds);
  options.Number("light", 0, 2, settings.light);
  settings.simulated = text == kSimulation;
  if (settings.simulated)
    ReadSimulation(options, settings.simulation);
  else
    ReadInput(options, text, settings.input);
  for (const cMeterConfig& meter : record.meters)
    if (meter.interfaceDriver == kEhzDriver) ReadMeter(meter, intervalSeconds, settings, error);
  return error.empty();
}

}  // namespace tav::sml
