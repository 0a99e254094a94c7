// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/obis_rules_file.h>

#include <toml++/toml.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

namespace tav {

namespace {

std::string Place(const std::string& file, const toml::source_region& region) {
  return file + ":" + std::to_string(region.begin.line) + ": ";
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

bool ReadId(const toml::table& rule, unsigned long long& id, std::string& error) {
  const toml::node* node = rule.get("id");
  if (node == nullptr) {
    ++id;
    return true;
  }
  if (!node->is_integer() || **node->as_integer() < 0) {
    error = "key 'id' is no whole number from 0";
    return false;
  }
  id = static_cast<unsigned long long>(**node->as_integer());
  return true;
}

bool ReadRule(const toml::table& rule, unsigned long long& id, cObisMap& map, std::string& error) {
  static const std::set<std::string_view> known = {"id", "name", "obis", "map"};
  for (const auto& [key, value] : rule)
    if (known.count(key.str()) == 0) {
      error = "unknown key '" + std::string(key.str()) + "'";
      return false;
    }
  std::string name, obis, mapping;
  if (!ReadId(rule, id, error) || !ReadText(rule, "name", true, name, error) ||
      !ReadText(rule, "obis", true, obis, error) || !ReadText(rule, "map", false, mapping, error))
    return false;
  cObisMapEntry entry;
  if (!entry.Set(id, name, obis, mapping)) {
    error = "rule for '" + obis + "': " + entry.GetError();
    return false;
  }
  if (map.Add(entry)) return true;
  error = "a second rule with id " + std::to_string(id);
  return false;
}

bool ReadRules(const std::string& file, const toml::table& document, cObisMap& map, std::string& error) {
  for (const auto& [key, value] : document)
    if (key.str() != "rule" || !value.is_array()) {
      error = Place(file, value.source()) + "expected [[rule]] tables only, found '" + std::string(key.str()) + "'";
      return false;
    }
  const toml::array* rules = document["rule"].as_array();
  if (rules == nullptr || rules->empty()) {
    error = file + ": no [[rule]] in it";
    return false;
  }
  unsigned long long id = 0;
  for (const toml::node& rule : *rules) {
    const toml::table* table = rule.as_table();
    if (table == nullptr || !ReadRule(*table, id, map, error)) {
      error = Place(file, rule.source()) + (table == nullptr ? "a rule is a table" : error);
      return false;
    }
  }
  return true;
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

bool ReadObisRules(const std::string& file, cObisMap& map, std::string& error) {
  cObisMap read;
  std::string text;
  if (!ReadFile(file, text, error)) return false;
  try {
    if (!ReadRules(file, toml::parse(text, file), read, error)) return false;
  } catch (const toml::parse_error& fault) {
    error = Place(file, fault.source()) + std::string(fault.description());
    return false;
  } catch (const std::exception& fault) {
    error = file + ": " + fault.what();
    return false;
  }
  map = read;
  return true;
}

}  // namespace tav
