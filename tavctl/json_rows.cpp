// SPDX-License-Identifier: Apache-2.0
#include <tavctl/json_rows.h>

#include <nlohmann/json.hpp>

#include <tavctl/record_text.h>
#include <tavctl/time_text.h>

namespace tav::ctl {

namespace {

using cJson = nlohmann::ordered_json;

cJson Cell(const cColumn& column, const vorn::cRecord& row) {
  const vorn::cRecordPar parameter = row.GetPar(column.key);
  if (column.form == eForm::Time) {
    const unsigned int seconds = parameter.GetUInt();
    return seconds != 0 ? cJson(FormatTime(seconds)) : cJson(nullptr);
  }
  return cRecordText().AsJson(parameter);
}

}  // namespace

cJsonRows::~cJsonRows() {
  if (m_begun) End();
}

void cJsonRows::Write(const vorn::cRecord& row) {
  cJson object = cJson::object();
  for (const cColumn& column : m_columns) object[std::string(column.key)] = Cell(column, row);
  Write(object);
}

void cJsonRows::Write(const cJson& row) {
  m_out << (m_begun ? "," : "[\n ") << ToLine(row) << '\n';
  m_begun = true;
}

void cJsonRows::End() {
  if (m_ended) return;
  m_ended = true;
  m_out << (m_begun ? "]\n" : "[]\n") << std::flush;
}

std::string ToLine(const cJson& json) { return json.dump(-1, ' ', false, cJson::error_handler_t::replace); }

}  // namespace tav::ctl
