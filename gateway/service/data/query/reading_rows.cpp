// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/reading_rows.h>

#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/base64.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

cReadingRows::cReadingRows(const cStoredSelection& selection)
    : m_meters(selection.meters), m_rawFormat(selection.rawFormat) {
  m_selection.obis = selection.obis;
  m_selection.from = selection.from;
  m_selection.to = selection.to;
}

bool cReadingRows::Fetch(cTables& tables, cResultPage& page) {
  unsigned int left = cReadingQuery::kMaxScanned;
  for (; m_at < m_meters.size(); ++m_at, m_selection.after.reset()) {
    m_selection.meterId = m_meters[m_at];
    bool full = false;
    std::optional<cReadingCursor> last = m_selection.after;
    const auto add = [&](cMeterRecord& reading, const cReadingCursor& at) {
      const vorn::cData raw = TakeRaw(reading);
      vorn::cRecord row;
      row.AppendRecordPar(db_ctrl::kMeterRecord, reading.ToRecord());
      AppendRaw(raw, m_rawFormat, row);
      full = !page.Add(row);
      if (!full) last = at;
      return !full;
    };
    const std::optional<cReadingCursor> end = tables.storedReadings.List(m_selection, add, left);
    m_selection.after = end ? end : last;
    if (full || end) return false;
  }
  return true;
}

vorn::cData TakeRaw(cMeterRecord& reading) {
  vorn::cData raw = reading.GetRaw();
  reading.SetRaw(vorn::cData());
  return raw;
}

void AppendRaw(const vorn::cData& raw, const std::string& format, vorn::cRecord& row) {
  constexpr const char* kRaw = "raw";
  if (raw.IsEmpty() || format.empty()) return;
  if (format == "base64")
    row.AppendTextPar(kRaw, ToBase64(raw.AsView()));
  else
    row.AppendDataPar(kRaw, raw);
}

}  // namespace tav::data
