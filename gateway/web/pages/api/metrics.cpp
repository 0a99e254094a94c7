// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/metrics.h>

#include <gateway/form/utf8.h>
#include <gateway/web/pages/view/value_export.h>

namespace tav::pages {

namespace {

// A label's value: backslash, quote and line break are escaped, and nothing else is.
std::string Escape(std::string_view text) {
  std::string escaped;
  for (const char letter : form::ToUtf8(text)) {
    if (letter == '\\' || letter == '"') escaped += '\\';
    if (letter == '\n')
      escaped += "\\n";
    else
      escaped += letter;
  }
  return escaped;
}

bool IsNumber(const std::string& text) {
  const std::string json = JsonValue(text);
  return !json.empty() && json[0] != '"';
}

}  // namespace

void cMetrics::BeginGauge(std::string_view name, std::string_view help, std::string_view unit) {
  m_family = name;
  m_text += "# TYPE " + m_family + " gauge\n";
  if (!unit.empty()) m_text += "# UNIT " + m_family + " " + std::string(unit) + "\n";
  m_text += "# HELP " + m_family + " " + Escape(help) + "\n";
}

void cMetrics::Add(Labels labels, const std::string& number) {
  if (!IsNumber(number)) return;
  std::string text;
  for (const auto& [name, value] : labels) {
    text += text.empty() ? "{" : ",";
    text += std::string(name) + "=\"" + Escape(value) + "\"";
  }
  m_text += m_family + (text.empty() ? "" : text + "}") + " " + number + "\n";
}

}  // namespace tav::pages
