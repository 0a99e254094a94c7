// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/config_table.h>

#include <gateway/web/pages/config/config_urls.h>

namespace tav::pages {

namespace {

// A title that stands in capitals on a terminal.
std::string AsTitle(std::string_view title) {
  std::string text(title);
  for (char& letter : text)
    if (letter >= 'A' && letter <= 'Z' && &letter != text.data()) letter = static_cast<char>(letter - 'A' + 'a');
  return text == "Obis" ? "OBIS" : text;
}

cHtml HeadOf(form::Columns columns) {
  cHtml cells;
  for (const form::cColumn& column : columns)
    if (column.form == form::eForm::Number)
      cells.Put("<th scope=\"col\" class=\"num\">{}</th>", AsTitle(column.title));
    else
      cells.Put("<th scope=\"col\">{}</th>", AsTitle(column.title));
  return cells;
}

cHtml CellsOf(form::Columns columns, const cThingRow& row) {
  cHtml cells;
  for (const form::cColumn& column : columns) {
    const std::string text = CellText(row.texts, column);
    if (&column == columns.data() && !row.url.empty())
      cells.Put("<th scope=\"row\"><a href=\"{}\">{}</a></th>", row.url, text);
    else if (&column == columns.data())
      cells.Put("<th scope=\"row\">{}</th>", text);
    else if (column.form == form::eForm::Number)
      cells.Put("<td class=\"num\">{}</td>", text);
    else
      cells.Put("<td>{}</td>", text);
  }
  return cells;
}

}  // namespace

cHtml ThingTable(form::Columns columns, const std::vector<cThingRow>& rows, std::string_view empty) {
  if (rows.empty()) return cHtml().Put("<p class=\"empty\">{}</p>\n", empty);
  cHtml body;
  for (const cThingRow& row : rows) body.Put("<tr>{}</tr>\n", CellsOf(columns, row));
  return cHtml().Put(
      "<div class=\"table-wrap\" tabindex=\"0\"><table><thead><tr>{}</tr></thead>\n<tbody>\n{}</tbody></table></div>\n",
      HeadOf(columns), body);
}

cHtml MeterTable(const std::vector<cMeterConfig>& meters, std::string_view empty) {
  std::vector<cThingRow> rows;
  for (const cMeterConfig& meter : meters) rows.push_back(MakeRow(meter, form::kMeterFields, MeterConfigUrl(meter)));
  return ThingTable(form::kMeterColumns, rows, empty);
}

cHtml CollectorTable(const cMeterConfig& meter, eLinks links) {
  std::vector<cThingRow> rows;
  for (const cCollectorConfig& collector : meter.collectors)
    rows.push_back(MakeRow(collector, form::kCollectorFields,
                           links == eLinks::With ? CollectorUrl(meter, collector.addr) : std::string()));
  // Whose they are stands above the table.
  return ThingTable(form::Columns(form::kCollectorColumns).subspan(1), rows, "It has no collectors.");
}

}  // namespace tav::pages
