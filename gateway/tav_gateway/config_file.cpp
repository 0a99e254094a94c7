// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/config_file.h>

#include <fstream>
#include <sstream>

#include <gateway/rules/toml.h>

namespace tav::gateway {

namespace {

// Takes a value into the options; an error, or empty.
using Take = std::string (*)(const toml::node& value, cOptions& options);

std::string Expected(const char* what) { return std::string("expected ") + what; }

std::string TakeDir(const toml::node& value, cOptions& options) {
  const auto text = value.value_exact<std::string>();
  if (!text || text->empty()) return Expected("a path as text");
  options.dir = *text;
  return {};
}

std::string TakeTrace(const toml::node& value, cOptions& options) {
  const auto level = value.value_exact<std::int64_t>();
  if (!level || *level < 0 || *level > kMaxTrace) return Expected("a level from 0 to 32");
  options.trace = static_cast<int>(*level);
  return {};
}

std::string TakeDurability(const toml::node& value, cOptions& options) {
  const auto durability = ReadDurability(value.value_exact<std::string>().value_or(""));
  if (!durability) return Expected("\"full\" or \"normal\"");
  options.durability = *durability;
  return {};
}

std::string TakeFile(const toml::node& value, cOptions& options) {
  const auto text = value.value_exact<std::string>();
  if (!text || text->empty()) return Expected("a path as text");
  options.dataFile = *text;
  return {};
}

std::string TakeMaxMegabytes(const toml::node& value, cOptions& options) {
  const auto megabytes = value.value_exact<std::int64_t>();
  if (!megabytes || *megabytes < 0 || *megabytes > 1'000'000) return Expected("0 (no limit) to 1000000 megabytes");
  options.maxMegabytes = static_cast<std::uint64_t>(*megabytes);
  return {};
}

// A service's check names the key, as the error will.
template <auto Section, auto Field>
std::string TakeDeviceText(const toml::node& value, cOptions& options) {
  const auto text = value.value_exact<std::string>();
  if (!text) return Expected("a text");
  options.*Section.*Field = *text;
  const std::string fault = (options.*Section).Check();
  return fault.substr(fault.empty() ? 0 : fault.find(": ") + 2);
}

std::string TakeRelayLine(const toml::node& value, cOptions& options) {
  const auto line = value.value_exact<std::int64_t>();
  if (!line || *line < 0 || *line > 0xFFFF) return Expected("the number of a line from 0 to 65535");
  options.ui.relayLine = static_cast<unsigned int>(*line);
  return {};
}

template <auto Field>
std::string TakeWebText(const toml::node& value, cOptions& options) {
  const auto text = value.value_exact<std::string>();
  if (!text || text->empty()) return Expected("a text");
  options.web.*Field = *text;
  return {};
}

std::string TakeWebListen(const toml::node& value, cOptions& options) {
  web::cWebOptions asked;
  asked.listen = value.value_exact<std::string>().value_or("");
  if (std::string fault = asked.Check(); !fault.empty()) return fault;
  options.web.listen = asked.listen;
  return {};
}

std::string TakeWebEnabled(const toml::node& value, cOptions& options) {
  const auto enabled = value.value_exact<bool>();
  if (!enabled) return Expected("true or false");
  options.isWebLeft = !*enabled;
  return {};
}

std::string TakeWebMaxBody(const toml::node& value, cOptions& options) {
  const auto megabytes = value.value_exact<std::int64_t>();
  if (!megabytes || *megabytes < 1 || *megabytes > 1024) return Expected("1 to 1024 megabytes");
  options.web.maxBodyBytes = static_cast<std::uint64_t>(*megabytes) << 20;
  return {};
}

struct cKnownKey {
  const char* section;
  const char* key;
  Take take;
};

constexpr cKnownKey kKnownKeys[] = {
    {"data", "durability", TakeDurability},
    {"data", "file", TakeFile},
    {"data", "max-megabytes", TakeMaxMegabytes},
    {"gateway", "dir", TakeDir},
    {"gateway", "trace", TakeTrace},
    {"gsm", "modem", TakeDeviceText<&cOptions::gsm, &cGsmOptions::modem>},
    {"time", "clock", TakeDeviceText<&cOptions::time, &cTimeOptions::clock>},
    {"ui", "led-meter-1", TakeDeviceText<&cOptions::ui, &cUiOptions::ledMeter1>},
    {"ui", "led-meter-2", TakeDeviceText<&cOptions::ui, &cUiOptions::ledMeter2>},
    {"ui", "led-wan", TakeDeviceText<&cOptions::ui, &cUiOptions::ledWan>},
    {"ui", "leds", TakeDeviceText<&cOptions::ui, &cUiOptions::leds>},
    {"ui", "relay-chip", TakeDeviceText<&cOptions::ui, &cUiOptions::relayChip>},
    {"ui", "relay-line", TakeRelayLine},
    {"web", "certificate", TakeWebText<&web::cWebOptions::certificate>},
    {"web", "enabled", TakeWebEnabled},
    {"web", "key", TakeWebText<&web::cWebOptions::key>},
    {"web", "listen", TakeWebListen},
    {"web", "max-body-megabytes", TakeWebMaxBody},
    {"web", "static", TakeWebText<&web::cWebOptions::staticDirectory>},
};

std::string At(const std::string& file, const toml::source_region& source) {
  return file + ":" + std::to_string(source.begin.line) + ": ";
}

bool IsSection(std::string_view name) {
  for (const cKnownKey& known : kKnownKeys)
    if (name == known.section) return true;
  return false;
}

std::string TakeKey(std::string_view section, std::string_view key, const toml::node& value, cOptions& options) {
  for (const cKnownKey& known : kKnownKeys)
    if (section == known.section && key == known.key) return known.take(value, options);
  return "there is no such key";
}

std::string TakeSection(const std::string& file, std::string_view section, const toml::table& table,
                        cOptions& options) {
  for (const auto& [key, value] : table)
    if (const std::string error = TakeKey(section, key.str(), value, options); !error.empty())
      return At(file, value.source()) + "key \"" + std::string(section) + "." + std::string(key.str()) + "\": " + error;
  return {};
}

std::string TakeAll(const std::string& file, const toml::table& root, cOptions& options) {
  for (const auto& [name, node] : root) {
    const toml::table* section = node.as_table();
    if (section == nullptr || !IsSection(name.str()))
      return At(file, node.source()) + "\"" + std::string(name.str()) + "\": there is no such section";
    if (std::string error = TakeSection(file, name.str(), *section, options); !error.empty()) return error;
  }
  return {};
}

}  // namespace

std::string ReadConfigFile(const std::string& file, cOptions& options) {
  std::ifstream stream(file);
  std::stringstream text;
  if (!(text << stream.rdbuf())) return file + ": cannot be read";
  try {
    return TakeAll(file, toml::parse(text.str()), options);
  } catch (const toml::parse_error& error) {
    return At(file, error.source()) + std::string(error.description());
  }
}

}  // namespace tav::gateway
