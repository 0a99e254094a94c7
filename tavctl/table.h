// SPDX-License-Identifier: Apache-2.0
// What a command lists: columns over records, one record a row. The same rows become a table for people
// (text_rows.h) or a JSON array for programs (json_rows.h).
#pragma once

#include <span>
#include <string>
#include <string_view>

#include <tav/framework/record.h>

namespace tav::ctl {

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

class cRowWriter {
 public:
  virtual ~cRowWriter() = default;

  virtual void Write(const vorn::cRecord& row) = 0;
  // Shows what was written so far.
  virtual void Flush() = 0;
  // Ends the listing. Without it the destructor does what keeps the output well-formed.
  virtual void End() = 0;
};

}  // namespace tav::ctl
