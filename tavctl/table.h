// SPDX-License-Identifier: Apache-2.0
// What a command lists: columns over records, one record a row. The same rows become a table for people
// (text_rows.h) or a JSON array for programs (json_rows.h).
#pragma once

#include <gateway/form/columns.h>

namespace tav::ctl {

using form::cColumn;
using form::Columns;
using form::eForm;

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
