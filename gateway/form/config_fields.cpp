// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_fields.h>

#include <charconv>

namespace tav::form {

bool TakeText(const std::string& text, std::string& value, std::string& /*expected*/) {
  value = text;
  return true;
}

bool TakeText(const std::string& text, bool& value, std::string& expected) {
  expected = "true or false";
  if (text != "true" && text != "false") return false;
  value = text == "true";
  return true;
}

bool TakeText(const std::string& text, std::uint64_t most, std::uint64_t& value, std::string& expected) {
  expected = "a whole number from 0 to " + std::to_string(most);
  std::uint64_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault != std::errc() || end != text.data() + text.size() || number > most) return false;
  value = number;
  return true;
}

bool SetTemplateByName(cMeterTemplate& meterTemplate, const std::string& name, const std::string& text,
                       std::string& error) {
  const std::size_t dot = name.find('.');
  const std::string nested = dot == std::string::npos ? std::string() : name.substr(0, dot);
  const std::string field = nested.empty() ? name : name.substr(dot + 1);
  if (nested == kMeterConfig) return SetByName(meterTemplate.meterConfig, kMeterFields, field, text, error);
  if (nested == kPushConfig) return SetByName(meterTemplate.pushConfig, kPushTargetFields, field, text, error);
  return SetByName(meterTemplate, kTemplateFields, name, text, error);
}

}  // namespace tav::form
