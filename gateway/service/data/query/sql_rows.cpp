// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/sql_rows.h>

namespace tav::data {

bool cSqlRows::Fetch(cTables&, cResultPage& page) {
  vorn::cRecord row;
  for (; m_next.GetRecord(row); m_next = m_next.Next())
    if (!page.Add(row)) return false;
  return true;
}

}  // namespace tav::data
