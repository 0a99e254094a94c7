// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/last_values.h>

#include <algorithm>

#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/value_row.h>

namespace tav::data {

bool cLastValues::Fetch(cTables& tables, cResultPage& page) {
  for (; m_at < m_selection.meters.size(); ++m_at, m_after = {}) {
    bool full = false;
    cLastCursor last = m_after;
    tables.query.ListLast(m_selection.meters[m_at], m_after, [&](const cValueRow& value, const cLastCursor& at) {
      full = Matches(value) && !page.Add(ValueRow(value, true));
      if (!full) last = at;
      return !full;
    });
    m_after = last;
    if (full) return false;
  }
  return true;
}

bool cLastValues::Matches(const cValueRow& value) const {
  const std::vector<std::string>& obis = m_selection.obis;
  return value.time >= m_selection.from && value.time <= m_selection.to &&
         (obis.empty() || std::find(obis.begin(), obis.end(), value.obis) != obis.end());
}

}  // namespace tav::data
