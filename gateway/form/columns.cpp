// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/columns.h>

#include <nlohmann/json.hpp>

#include <gateway/form/record_json.h>
#include <gateway/form/time_text.h>
#include <gateway/form/utf8.h>
#include <tav/record/meter_tav.h>

namespace tav::form {

namespace {

std::string TimeText(const vorn::cRecordPar& parameter) {
  const unsigned int seconds = parameter.GetUInt();
  return seconds != 0 ? FormatTime(seconds) : std::string();
}

cJson Cell(const cColumn& column, const vorn::cRecord& row) {
  const vorn::cRecordPar parameter = row.GetPar(column.key);
  if (column.form != eForm::Time) return ToJson(parameter);
  const std::string time = TimeText(parameter);
  return time.empty() ? cJson(nullptr) : cJson(time);
}

}  // namespace

cJson RowToJson(const vorn::cRecord& row, Columns columns) {
  cJson object = cJson::object();
  for (const cColumn& column : columns) object[std::string(column.key)] = Cell(column, row);
  return object;
}

std::string CellText(const vorn::cRecord& row, const cColumn& column) {
  const vorn::cRecordPar parameter = row.GetPar(column.key);
  vorn::cRecord nested;
  switch (column.form) {
    case eForm::Time:
      return TimeText(parameter);
    case eForm::Medium:
      return parameter.IsEmpty() ? std::string() : ToUtf8(cMeterTav::MediumToString(parameter.GetText()));
    case eForm::Record:
      return parameter.GetRecord(nested) ? ToLine(ToJson(nested)) : std::string();
    default:
      return ToUtf8(parameter.GetText());
  }
}

}  // namespace tav::form
