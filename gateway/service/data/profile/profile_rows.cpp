// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_rows.h>

#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/value_row.h>

namespace tav::data {

bool cProfileRows::Fetch(cTables& tables, cResultPage& page) {
  unsigned int left = cReadingQuery::kMaxScanned;
  for (; m_at < m_profiles.size(); ++m_at) {
    cProfileSelection& profile = m_profiles[m_at];
    bool full = false;
    std::optional<cProfileCursor> last = profile.after;
    const auto add = [&](const cValueRow& value, unsigned int valueTime, const cProfileCursor& at) {
      vorn::cRecord row = ValueRow(value, true);
      row.AppendUIntPar("value-timestamp", valueTime);
      full = !page.Add(row);
      if (!full) last = at;
      return !full;
    };
    const std::optional<cProfileCursor> end = tables.profileQuery.ListValues(profile, add, left);
    profile.after = end ? end : last;
    if (full || end) return false;
  }
  return true;
}

}  // namespace tav::data
