// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_settings.h>

#include <gateway/driver/mbus/mbif/mbus_options.h>
#include <gateway/driver/option_reader.h>

namespace tav::mbus {

const std::string kMBusDriver = "mbif";

namespace {

constexpr const char* kSimulation = "sim";
constexpr unsigned int kDay = 86400;

void ReadLine(cInterfaceOptions& options, const std::string& text, cMBusLineSettings& line) {
  std::string fault;
  options.Number("baud", 1, ~0u, line.input.baud);
  options.Text("framing", line.input.framing);
  options.Flag("echo", line.echo);
  options.Number("retries", 0, cMBusLineSettings::kMostRetries, line.retries);
  options.Number("answer", 0, cMBusLineSettings::kMostAnswerMs, line.longestAnswerMs);
  if (text == kSimulation) return;
  if (!cInputSpec::ParseLive(text, line.input, fault)) return options.Fault("input", fault);
  if (line.input.kind == eInputKind::Serial && !CheckSerialSettings(line.input, fault))
    options.Fault("baud' or 'framing", fault);
}

void ReadUnmapped(cInterfaceOptions& options, bool& keep) {
  std::string text = "drop";
  options.Text("unmapped", text);
  keep = text == "keep";
  if (!keep && text != "drop") options.Fault("unmapped", "'" + text + "' is neither keep nor drop");
}

void ReadMeter(const cMeterConfig& meter, unsigned int intervalSeconds, cMBusSettings& settings, std::string& error) {
  cMBusMeter read;
  std::string fault;
  read.id = meter.meterID;
  read.medium = meter.medium;
  read.raw = meter.storeRawEnabled;
  read.intervalSeconds = intervalSeconds;
  cMeterOptions options = OptionsOf(meter, error);
  options.Number("interval", 1, kDay, read.intervalSeconds);
  const std::string& address = meter.addr.empty() ? meter.meterID : meter.addr;
  if (!cMBusAddress::Parse(address, read.address, fault) && error.empty())
    error = "meter '" + meter.meterID + "': " + fault;
  settings.meters.push_back(read);
}

}  // namespace

std::string cMBusMeter::Describe() const {
  return id.empty() ? "meter at " + address.ToString() : "meter '" + id + "'";
}

bool cMBusSettings::HasSameLine(const cMBusSettings& other) const {
  if (simulated != other.simulated || line != other.line) return false;
  return !simulated || simulation == other.simulation;
}

std::string cMBusSettings::DescribeLine() const { return simulated ? "simulated bus" : line.input.ToString(); }

cMBusSettings SettingsOf(const cMBusOptions& options) {
  cMBusSettings settings;
  settings.name = options.interfaceName;
  settings.simulated = options.simulated;
  settings.simulation = options.simulation;
  settings.line = options.line;
  settings.keepUnmapped = options.keepUnmapped;
  for (const cMBusAddress& address : options.meters)
    settings.meters.push_back({{}, address, options.medium, options.raw, options.intervalSeconds});
  return settings;
}

bool ReadSettings(const cInterfaceRecord& record, cMBusSettings& settings, std::string& error) {
  error.clear();
  settings = {};
  settings.name = record.name;
  cInterfaceOptions options = OptionsOf(record, error);
  std::string text;
  unsigned int intervalSeconds = kUsualInterval;
  options.Text("input", text);
  options.Number("interval", 1, kDay, intervalSeconds);
  options.Number("light", 0, 2, settings.light);
  options.Number("meters", 1, kMostSimulatedMeters, settings.simulation.meters);
  options.Number("seed", 0, ~0u, settings.simulation.seed);
  ReadUnmapped(options, settings.keepUnmapped);
  settings.simulated = text == kSimulation;
  ReadLine(options, text, settings.line);
  for (const cMeterConfig& meter : record.meters)
    if (meter.interfaceDriver == kMBusDriver) ReadMeter(meter, intervalSeconds, settings, error);
  return error.empty();
}

}  // namespace tav::mbus
