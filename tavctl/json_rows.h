// SPDX-License-Identifier: Apache-2.0
// cJsonRows: rows as one JSON array, each row an object on a line of its own with the keys of all columns.
#pragma once

#include <ostream>

#include <tavctl/table.h>

namespace tav::ctl {

class cJsonRows final : public cRowWriter {
 public:
  // The columns outlive the writer.
  cJsonRows(std::ostream& out, Columns columns) : m_out(out), m_columns(columns) {}
  // An array that was begun is closed.
  ~cJsonRows() override;

  void Write(const vorn::cRecord& row) override;
  void Flush() override { m_out.flush(); }
  void End() override;
  // A row of another origin.
  void Write(const form::cJson& row);

 private:
  std::ostream& m_out;
  Columns m_columns;
  bool m_begun = false;
  bool m_ended = false;
};

}  // namespace tav::ctl
