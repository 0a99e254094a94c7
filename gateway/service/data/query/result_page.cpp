// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/result_page.h>

namespace tav::data {

bool cResultPage::Add(const vorn::cRecord& row) {
  if (m_count == m_rows) return false;
  if (m_count != 0 && m_answer.GetBytes().size() + row.GetBytes().size() > kMaxBytes) return false;
  m_answer.AppendRecordPar(m_name, row);
  ++m_count;
  return true;
}

}  // namespace tav::data
