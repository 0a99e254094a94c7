// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/toml_text.h>

#include <exception>
#include <sstream>

#include <gateway/rules/toml.h>

namespace tav::form {

namespace {

template <typename Value>
std::string Printed(const Value& value) {
  std::ostringstream text;
  text << toml::default_formatter(toml::value<Value>(value), toml::format_flags::allow_unicode_strings);
  return text.str();
}

std::string SimpleValue(const cJson& value) {
  if (value.is_string()) return Printed(value.get<std::string>());
  const bool tooLarge = value.is_number_unsigned() && value.get<std::uint64_t>() > INT64_MAX;
  return tooLarge ? "\"" + value.dump() + "\"" : value.dump();
}

bool IsTable(const cJson& value) { return value.is_object(); }
bool IsTables(const cJson& value) { return value.is_array() && !value.empty() && value.front().is_object(); }

// Values first: a table's values end where the next table begins.
void Write(const cJson& table, const std::string& path, std::string& text) {
  for (const auto& [name, value] : table.items())
    if (!IsTable(value) && !IsTables(value) && !value.is_array()) text += name + " = " + SimpleValue(value) + "\n";
  for (const auto& [name, value] : table.items()) {
    const std::string below = Below(path, name);
    if (IsTable(value)) {
      text += "\n[" + below + "]\n";
      Write(value, below, text);
    } else if (IsTables(value)) {
      for (const cJson& each : value) {
        text += "\n[[" + below + "]]\n";
        Write(each, below, text);
      }
    }
  }
}

cJson Converted(const toml::node& node, const std::string& place, Lines& lines) {
  lines[place] = node.source().begin.line;
  if (const toml::table* table = node.as_table()) {
    cJson object = cJson::object();
    for (const auto& [key, value] : *table) {
      const std::string name(key.str());
      object[name] = Converted(value, Below(place, name), lines);
    }
    return object;
  }
  if (const toml::array* array = node.as_array()) {
    cJson list = cJson::array();
    for (const toml::node& value : *array)
      list.push_back(Converted(value, place + "[" + std::to_string(list.size()) + "]", lines));
    return list;
  }
  if (const auto* text = node.as_string()) return text->get();
  if (const auto* number = node.as_integer()) return number->get();
  if (const auto* truth = node.as_boolean()) return truth->get();
  if (const auto* real = node.as_floating_point()) return real->get();
  std::ostringstream moment;
  node.visit([&](const auto& value) { moment << value; });
  return moment.str();
}

}  // namespace

std::string ToToml(const cJson& document) {
  std::string text;
  Write(document, {}, text);
  return text.rfind('\n', 0) == 0 ? text.substr(1) : text;
}

bool FromToml(const std::string& text, cJson& document, Lines& lines, std::string& error) {
  try {
    const toml::table table = toml::parse(text);
    document = Converted(table, {}, lines);
    return true;
  } catch (const toml::parse_error& fault) {
    error = "line " + std::to_string(fault.source().begin.line) + ", column " +
            std::to_string(fault.source().begin.column) + ": " + std::string(fault.description());
  } catch (const std::exception& fault) {
    error = fault.what();
  }
  return false;
}

}  // namespace tav::form
