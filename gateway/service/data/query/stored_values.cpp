// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/stored_values.h>

#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/value_row.h>

namespace tav::data {

cStoredValues::cStoredValues(const cStoredSelection& selection) : m_meters(selection.meters) {
  m_selection.obis = selection.obis;
  m_selection.from = selection.from;
  m_selection.to = selection.to;
}

bool cStoredValues::Fetch(cTables& tables, cResultPage& page) {
  unsigned int left = cReadingQuery::kMaxScanned;
  for (; m_at < m_meters.size(); ++m_at, m_selection.after.reset()) {
    m_selection.meterId = m_meters[m_at];
    bool full = false;
    std::optional<cValueCursor> last = m_selection.after;
    const auto add = [&](const cValueRow& value, const cValueCursor& at) {
      full = !page.Add(ValueRow(value, true));
      if (!full) last = at;
      return !full;
    };
    const std::optional<cValueCursor> end = tables.query.ListValues(m_selection, add, left);
    m_selection.after = end ? end : last;
    if (full || end) return false;
  }
  return true;
}

}  // namespace tav::data
