// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/fields.h>

#include <charconv>

namespace tav::ctl {

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

}  // namespace tav::ctl
