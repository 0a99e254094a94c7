// SPDX-License-Identifier: Apache-2.0
#include <tavctl/json_rows.h>

#include <nlohmann/json.hpp>

namespace tav::ctl {

cJsonRows::~cJsonRows() {
  if (m_begun) End();
}

void cJsonRows::Write(const vorn::cRecord& row) { Write(form::RowToJson(row, m_columns)); }

void cJsonRows::Write(const form::cJson& row) {
  m_out << (m_begun ? "," : "[\n ") << form::ToLine(row) << '\n';
  m_begun = true;
}

void cJsonRows::End() {
  if (m_ended) return;
  m_ended = true;
  m_out << (m_begun ? "]\n" : "[]\n") << std::flush;
}

}  // namespace tav::ctl
