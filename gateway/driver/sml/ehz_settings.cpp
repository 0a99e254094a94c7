// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_settings.h>

#include <algorithm>
#include <charconv>
#include <string_view>

#include <gateway/driver/sml/ehz_options.h>

namespace tav::sml {

const std::string kEhzDriver = "ehzif";

namespace {

constexpr const char* kSimulatedInterface = "SIM";
constexpr const char* kSimulation = "sim";
constexpr unsigned int kDay = 86400;

bool ReadNumber(const std::string& text, unsigned int least, unsigned int most, unsigned int& number) {
  unsigned int value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (fault != std::errc() || end != text.data() + text.size() || value < least || value > most) return false;
  number = value;
  return true;
}

// Reads the options of one thing that are there; the first wrong one is the error.
template <typename Thing, typename Getter>
class cOptionReader {
 public:
  cOptionReader(const Thing& thing, Getter getter, std::string what, std::string& error)
      : m_thing(thing), m_getter(getter), m_what(std::move(what)), m_error(error) {}

  void Text(const char* key, std::string& text) { (m_thing.*m_getter)(key, text); }
  void Number(const char* key, unsigned int least, unsigned int most, unsigned int& number) {
    std::string text;
    if (!(m_thing.*m_getter)(key, text) || ReadNumber(text, least, most, number)) return;
    Fault(key, "'" + text + "' is no number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  void Fault(const char* key, const std::string& why) {
    if (m_error.empty()) m_error = m_what + ": option '" + key + "': " + why;
  }

 private:
  const Thing& m_thing;
  Getter m_getter;
  std::string m_what;
  std::string& m_error;
};

using cInterfaceOptions = cOptionReader<cInterfaceRecord, decltype(&cInterfaceRecord::GetOption)>;
using cMeterOptions = cOptionReader<cMeterConfig, decltype(&cMeterConfig::GetInterfaceOption)>;

void ReadSimulation(cInterfaceOptions& options, cSimulatedInputOptions& simulation) {
  unsigned int solar = 0;
  options.Number("seed", 0, ~0u, simulation.simulator.seed);
  options.Number("meters", 1, kMostSimulatedMeters, simulation.simulator.meters);
  options.Number("period", 1, kDay, simulation.periodSeconds);
  options.Number("solar", 0, 1, solar);
  simulation.simulator.solar = solar != 0;
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
  cMeterOptions options(meter, &cMeterConfig::GetInterfaceOption, "meter '" + meter.meterID + "'", error);
  options.Number("interval", 0, kDay, read.intervalSeconds);
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
  cInterfaceOptions options(record, &cInterfaceRecord::GetOption, "interface '" + record.name + "'", error);
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

bool HasMeterOfOurs(const cInterfaceRecord& record) {
  return std::any_of(record.meters.begin(), record.meters.end(),
                     [](const cMeterConfig& meter) { return meter.interfaceDriver == kEhzDriver; });
}

}  // namespace tav::sml
