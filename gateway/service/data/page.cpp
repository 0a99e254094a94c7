// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/page.h>

#include <algorithm>

#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

cPage::cPage(const vorn::cRecord& request, vorn::cRecord& answer, unsigned int defaultRows, unsigned int maxRows,
             std::size_t maxBytes)
    : m_answer(answer), m_left(request.GetUIntPar(db_ctrl::kMaxLen)), m_maxBytes(maxBytes) {
  m_left = m_left == 0 ? defaultRows : std::min(m_left, maxRows);
}

bool cPage::Add(const vorn::cRecord& row, std::string_view cursor) {
  const bool first = m_answer.IsEmpty();
  if (m_left == 0 || (!first && m_answer.GetBytes().size() + row.GetBytes().size() > m_maxBytes)) {
    EndAt(m_cursor);
    return false;
  }
  m_answer.AppendRecordPar(db_ctrl::kRow, row);
  m_cursor = cursor;
  --m_left;
  return true;
}

void cPage::EndAt(std::string_view cursor) {
  m_answer.AppendDataPar(db_ctrl::kNext, vorn::cData(cursor.data(), cursor.size()));
}

}  // namespace tav::data
