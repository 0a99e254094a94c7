// SPDX-License-Identifier: Apache-2.0
// Columns over records, one record a row: which parameters a listing has, what people call them, and how a row is
// written for programs and for people.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include <gateway/form/json.h>
#include <tav/framework/record.h>

namespace tav::form {

enum class eForm {
  Text,
  Number,  // to the right
  Unit,    // a text close to the number before it
  Medium,  // the letter of a medium; for people its name
  Time,    // seconds UTC; 0 is none
  Record,
  Data,  // not for people
};

struct cColumn {
  std::string_view key;    // of the record's parameter, and of the JSON object
  std::string_view title;  // for people
  eForm form = eForm::Text;
};

using Columns = std::span<const cColumn>;

// A row for programs: an object with the keys of all columns, null where the row has nothing.
cJson RowToJson(const vorn::cRecord& row, Columns columns);

// What stands in a column of a row for people, UTF-8: local time, the name of a medium, the JSON of a record. Empty
// when there is nothing. It may hold control characters, and whatever means something to a page or a terminal.
std::string CellText(const vorn::cRecord& row, const cColumn& column);

}  // namespace tav::form
