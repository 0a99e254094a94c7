// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rules_file.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <set>

#include <gateway/rules/toml.h>

namespace tav::rules {

namespace {

using cId = unsigned long long;

std::string Place(const std::string& source, const toml::source_region& region) {
  return source + ":" + std::to_string(region.begin.line);
}

// The text of a key; false when the key has another type, or is missing and needed.
bool ReadText(const toml::table& rule, const char* key, bool needed, std::string& text, std::string& error) {
  const toml::node* node = rule.get(key);
  if (node == nullptr && !needed) return true;
  if (node == nullptr || !node->is_string()) {
    error = std::string("key '") + key + "' " + (node == nullptr ? "is missing" : "is no text");
    return false;
  }
  text = **node->as_string();
  return true;
}

// A number that TOML has no number for.
bool ReadLargeId(const std::string& text, cId& id) {
  const char* const end = text.data() + text.size();
  cId number = 0;
  const auto [last, fault] = std::from_chars(text.data(), end, number);
  if (fault != std::errc() || last != end || number <= INT64_MAX) return false;
  id = number;
  return true;
}

// before: the ID of the rule before; 0 when this is the first one.
bool ReadId(const toml::table& rule, cId before, cId& id, std::string& error) {
  const toml::node* node = rule.get("id");
  if (node == nullptr && before == std::numeric_limits<cId>::max()) {
    error = "there is no id behind " + std::to_string(before) + "; give this rule one";
    return false;
  }
  if (node == nullptr) {
    id = before + 1;
    return true;
  }
  if (node->is_string() && ReadLargeId(**node->as_string(), id)) return true;
  if (!node->is_integer() || **node->as_integer() < 0) {
    error = "key 'id' is no whole number from 0";
    return false;
  }
  id = static_cast<cId>(**node->as_integer());
  return true;
}

bool ReadRule(const toml::table& table, cId before, cRawRule& rule, std::string& error) {
  static const std::set<std::string_view> known = {"id", "name", "obis", "map"};
  for (const auto& [key, value] : table)
    if (known.count(key.str()) == 0) {
      error = "unknown key '" + std::string(key.str()) + "'";
      return false;
    }
  return ReadId(table, before, rule.id, error) && ReadText(table, "name", true, rule.name, error) &&
         ReadText(table, "obis", true, rule.obis, error) && ReadText(table, "map", false, rule.map, error);
}

bool ReadRules(const std::string& source, const toml::table& document, std::vector<cRawRule>& rules,
               std::string& error) {
  for (const auto& [key, value] : document)
    if (key.str() != "rule" || !value.is_array()) {
      error = Place(source, value.source()) + ": expected [[rule]] tables only, found '" + std::string(key.str()) + "'";
      return false;
    }
  const toml::array* array = document["rule"].as_array();
  if (array == nullptr || array->empty()) {
    error = source + ": no [[rule]] in it";
    return false;
  }
  for (const toml::node& node : *array) {
    const toml::table* table = node.as_table();
    cRawRule rule;
    rule.place = Place(source, node.source());
    if (table == nullptr || !ReadRule(*table, rules.empty() ? 0 : rules.back().id, rule, error)) {
      error = rule.place + ": " + (table == nullptr ? "a rule is a table" : error);
      return false;
    }
    rules.push_back(std::move(rule));
  }
  return true;
}

bool AddRule(const cRawRule& rule, cObisMap& map, std::string& error) {
  cObisMapEntry entry;
  if (!entry.Set(rule.id, rule.name, rule.obis, rule.map)) {
    error = rule.place + ": rule for '" + rule.obis + "': " + entry.GetError();
    return false;
  }
  if (map.Add(entry)) return true;
  error = rule.place + ": a second rule with id " + std::to_string(rule.id);
  return false;
}

bool ReadFile(const std::string& file, std::string& text, std::string& error) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "re"), std::fclose);
  char block[4096];
  std::size_t size = 0;
  while (stream && (size = std::fread(block, 1, sizeof block, stream.get())) != 0) text.append(block, size);
  if (stream && std::ferror(stream.get()) == 0) return true;
  error = file + ": " + std::strerror(errno);
  return false;
}

}  // namespace

bool ReadRawRules(std::string_view text, const std::string& source, std::vector<cRawRule>& rules, std::string& error) {
  std::vector<cRawRule> read;
  try {
    if (!ReadRules(source, toml::parse(text, source), read, error)) return false;
  } catch (const toml::parse_error& fault) {
    error = Place(source, fault.source()) + ": " + std::string(fault.description());
    return false;
  } catch (const std::exception& fault) {
    error = source + ": " + fault.what();
    return false;
  }
  rules = std::move(read);
  return true;
}

bool ReadRulesText(std::string_view text, const std::string& source, cObisMap& map, std::string& error) {
  std::vector<cRawRule> rules;
  if (!ReadRawRules(text, source, rules, error)) return false;
  cObisMap read;
  for (const cRawRule& rule : rules)
    if (!AddRule(rule, read, error)) return false;
  map = read;
  return true;
}

bool ReadRulesFile(const std::string& file, cObisMap& map, std::string& error) {
  std::string text;
  return ReadFile(file, text, error) && ReadRulesText(text, file, map, error);
}

}  // namespace tav::rules
