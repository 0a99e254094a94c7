// SPDX-License-Identifier: Apache-2.0
#include <tavctl/text_rows.h>

#include <algorithm>
#include <iterator>

#include <tavctl/record_text.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

constexpr const char* kNothing = "-";

// A record as it is shown elsewhere on a terminal, not as JSON.
std::string CellText(const cColumn& column, const vorn::cRecord& row) {
  if (column.form != eForm::Record) return ForTerminal(form::CellText(row, column));
  vorn::cRecord nested;
  return row.GetPar(column.key).GetRecord(nested) ? cRecordText().AsLine(nested) : std::string();
}

std::string CellOf(const cColumn& column, const vorn::cRecord& row) {
  const std::string text = CellText(column, row);
  return text.empty() && column.form != eForm::Unit ? kNothing : text;
}

}  // namespace

cTextRows::cTextRows(std::ostream& out, Columns columns, bool bold) : m_out(out), m_bold(bold) {
  std::copy_if(columns.begin(), columns.end(), std::back_inserter(m_columns),
               [](const cColumn& column) { return column.form != eForm::Data; });
  for (const cColumn& column : m_columns) m_widths.push_back(DisplayWidth(column.title));
}

void cTextRows::Write(const vorn::cRecord& row) {
  Cells cells;
  for (const cColumn& column : m_columns) cells.push_back(CellOf(column, row));
  Widen(cells);
  if (m_titled) {
    m_out << Line(cells) << '\n';
    return;
  }
  m_held.push_back(std::move(cells));
  if (m_held.size() == kHeldRows) Flush();
}

void cTextRows::Flush() {
  if (!m_held.empty()) WriteTitles();
  for (const Cells& cells : m_held) m_out << Line(cells) << '\n';
  m_held.clear();
  m_out.flush();
}

void cTextRows::WriteTitles() {
  m_titled = true;
  Cells titles;
  for (const cColumn& column : m_columns) titles.emplace_back(column.title);
  m_out << (m_bold ? "\x1b[1m" : "") << Line(titles) << (m_bold ? "\x1b[0m" : "") << '\n';
}

// Nothing is padded at the end of a line.
std::string cTextRows::Line(const Cells& cells) const {
  std::string line;
  std::size_t padding = 0;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const eForm form = m_columns[i].form;
    if (i != 0) padding += form == eForm::Unit ? 1 : 2;
    const std::size_t missing = m_widths[i] - DisplayWidth(cells[i]);
    if (form == eForm::Number) padding += missing;
    if (!cells[i].empty()) {
      line.append(padding, ' ') += cells[i];
      padding = 0;
    }
    if (form != eForm::Number) padding += missing;
  }
  return line;
}

void cTextRows::Widen(const Cells& cells) {
  for (std::size_t i = 0; i < cells.size(); ++i) m_widths[i] = std::max(m_widths[i], DisplayWidth(cells[i]));
}

}  // namespace tav::ctl
