// SPDX-License-Identifier: Apache-2.0
// cTextRows: rows as aligned columns under a line of titles; nothing at all when there is no row.
//
// The widths come from the first rows, which are held back for that; a later cell that is wider widens its column.
#pragma once

#include <ostream>
#include <vector>

#include <tavctl/table.h>

namespace tav::ctl {

class cTextRows final : public cRowWriter {
 public:
  static constexpr std::size_t kHeldRows = 1000;

  // The columns outlive the writer. bold: sets the titles off with a terminal's escape sequence.
  cTextRows(std::ostream& out, Columns columns, bool bold);
  ~cTextRows() override { Flush(); }

  void Write(const vorn::cRecord& row) override;
  void Flush() override;
  void End() override { Flush(); }

 private:
  using Cells = std::vector<std::string>;

  void WriteTitles();
  std::string Line(const Cells& cells) const;
  void Widen(const Cells& cells);

  std::ostream& m_out;
  std::vector<cColumn> m_columns;  // those for people
  bool m_bold;
  bool m_titled = false;
  std::vector<std::size_t> m_widths;
  std::vector<Cells> m_held;
};

}  // namespace tav::ctl
