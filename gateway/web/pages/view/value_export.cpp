// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/value_export.h>

#include <nlohmann/json.hpp>
#include <utility>

#include <gateway/form/json.h>
#include <gateway/form/value_columns.h>

namespace tav::pages {

namespace {

// What begins as a formula would be run by a spreadsheet: it gets an apostrophe, as their makers advise. A number is
// none, whatever its sign.
bool IsFormula(const std::string& text) {
  return !text.empty() && std::string_view("=+-@\t\r").find(text[0]) != std::string_view::npos &&
         JsonValue(text)[0] == '"';
}

std::string CsvField(const std::string& given) {
  std::string text = IsFormula(given) ? "'" + given : given;
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char letter : text) {
    if (letter == '"') quoted += '"';
    quoted += letter;
  }
  return quoted + '"';
}

class cCsvExport final : public cValueExport {
 public:
  std::string ContentType() const override { return "text/csv; charset=utf-8"; }
  std::string Begin() override {
    std::string line;
    for (const form::cColumn& column : form::kExportColumns) (line += line.empty() ? "" : ",") += column.key;
    return line + "\r\n";
  }
  std::string Row(const vorn::cRecord& row) override {
    std::string line;
    for (const form::cColumn& column : form::kExportColumns)
      (line += &column == form::kExportColumns ? "" : ",") += CsvField(form::CellText(row, column));
    return line + "\r\n";
  }
  std::string End() override { return {}; }
};

class cJsonExport final : public cValueExport {
 public:
  std::string ContentType() const override { return "application/json"; }
  std::string Begin() override { return "["; }
  std::string Row(const vorn::cRecord& row) override {
    return (std::exchange(m_isFirst, false) ? "\n" : ",\n") + form::ToLine(form::RowToJson(row, form::kExportColumns));
  }
  std::string End() override { return "\n]\n"; }

 private:
  bool m_isFirst = true;
};

std::size_t SkipDigits(const std::string& text, std::size_t at) {
  while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
  return at;
}

// RFC 8259, 6: without an exponent, which no stored value has.
bool IsJsonNumber(const std::string& text) {
  const std::size_t begin = !text.empty() && text[0] == '-' ? 1 : 0;
  std::size_t at = SkipDigits(text, begin);
  if (at == begin || (text[begin] == '0' && at > begin + 1)) return false;
  if (at == text.size()) return true;
  if (text[at] != '.') return false;
  const std::size_t fraction = at + 1;
  at = SkipDigits(text, fraction);
  return at > fraction && at == text.size();
}

}  // namespace

std::string JsonValue(const std::string& value) {
  return IsJsonNumber(value) ? value : form::ToLine(nlohmann::ordered_json(value));
}

std::unique_ptr<cValueExport> MakeValueExport(const std::string& format) {
  if (format == "csv") return std::make_unique<cCsvExport>();
  if (format == "json") return std::make_unique<cJsonExport>();
  return nullptr;
}

}  // namespace tav::pages
