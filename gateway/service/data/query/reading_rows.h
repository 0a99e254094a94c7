// SPDX-License-Identifier: Apache-2.0
// cReadingRows: the readings of several meters as a result, one row a reading: "meter-record", and its raw telegram
// beside it. Meter by meter, each in the order of time.
#pragma once

#include <string>
#include <vector>

#include <gateway/service/data/query/result.h>
#include <gateway/service/data/query/stored_readings.h>
#include <gateway/service/data/query/stored_selection.h>

namespace tav::data {

class cReadingRows final : public cResult {
 public:
  explicit cReadingRows(const cStoredSelection& selection);
  bool Fetch(cTables& tables, cResultPage& page) override;

 private:
  std::vector<std::string> m_meters;
  std::string m_rawFormat;
  std::size_t m_at = 0;  // the meter to go on with
  cReadingSelection m_selection;
};

// Takes the raw telegram out of a reading.
vorn::cData TakeRaw(cMeterRecord& reading);
// Appends it as "raw": as text for "base64", as data for every other format; not at all when it or the format is empty.
void AppendRaw(const vorn::cData& raw, const std::string& format, vorn::cRecord& row);

}  // namespace tav::data
