// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/meter_status_query.h>

#include <gateway/service/data/data_store.h>
#include <gateway/service/data/query/reading_rows.h>

namespace tav::data {

namespace {

// A status is complete only in a reading that was read from its record form.
cMeterStatus StatusOf(const cMeterRecord& reading) {
  cMeterRecord received;
  received.FromRecord(reading.ToRecord());
  return received.GetMeterStatus();
}

}  // namespace

bool cMeterStatusQuery::Fetch(cTables& tables, cResultPage& page) {
  for (; m_at < m_selection.meters.size(); ++m_at) {
    std::optional<cMeterRecord> reading = tables.storedReadings.Newest(m_selection.meters[m_at]);
    if (!reading || reading->GetTimestamp() < m_selection.from || reading->GetTimestamp() > m_selection.to) continue;
    const vorn::cData raw = TakeRaw(*reading);
    const cMeterStatus status = StatusOf(*reading);
    vorn::cRecord row = m_withReading ? status.ToRecordWithMeterRec(*reading) : status.ToRecord();
    if (m_withReading) AppendRaw(raw, m_selection.rawFormat, row);
    if (!page.Add(row)) return false;
  }
  return true;
}

}  // namespace tav::data
