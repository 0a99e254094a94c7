// SPDX-License-Identifier: Apache-2.0
// cMeterStatusQuery: the status of several meters as a result, one row a meter: what its newest reading says.
#pragma once

#include <utility>

#include <gateway/service/data/query/result.h>
#include <gateway/service/data/query/stored_selection.h>

namespace tav::data {

class cMeterStatusQuery final : public cResult {
 public:
  // withReading: the reading in "meter-rec", its raw telegram beside it. Meters whose newest reading is not in the
  // selection's range are left out.
  cMeterStatusQuery(cStoredSelection selection, bool withReading)
      : m_selection(std::move(selection)), m_withReading(withReading) {}
  bool Fetch(cTables& tables, cResultPage& page) override;

 private:
  cStoredSelection m_selection;
  bool m_withReading;
  std::size_t m_at = 0;  // the meter to go on with
};

}  // namespace tav::data
