// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rules_text.h>

#include <cstdint>

#include <tav/framework/helper.h>

namespace tav::rules {

namespace {

std::string Quoted(const std::string& text) {
  const bool utf8 = vorn::detail::IsUtf8(text.data(), text.size());
  std::string quoted = "\"";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '"' || character == '\\') quoted += '\\';
    if (byte < 0x20 || byte == 0x7F || (byte > 0x7F && !utf8))
      quoted += vorn::FormatString("\\u%04X", byte);
    else
      quoted += character;
  }
  return quoted + '"';
}

std::string IdText(unsigned long long id) {
  const std::string digits = std::to_string(id);
  return id > INT64_MAX ? '"' + digits + '"' : digits;
}

// A comment has one line, and no control characters.
std::string CommentLine(std::string comment) {
  for (char& character : comment)
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) character = ' ';
  return "# " + comment + '\n';
}

}  // namespace

std::string WriteRulesText(const cObisMap& map, const std::string& comment) {
  std::string text = CommentLine(comment);
  for (const auto& [id, rule] : map.GetEntries())
    text += "\n[[rule]]\nid = " + IdText(id) + "\nname = " + Quoted(rule.GetName()) +
            "\nobis = " + Quoted(rule.GetObisID()) + "\nmap = " + Quoted(rule.GetMap()) + '\n';
  return text;
}

}  // namespace tav::rules
