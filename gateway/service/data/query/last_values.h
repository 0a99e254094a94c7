// SPDX-License-Identifier: Apache-2.0
// cLastValues: the last value of each meter and OBIS identifier as a result, when its time lies in the range.
#pragma once

#include <utility>

#include <gateway/service/data/query/result.h>
#include <gateway/service/data/query/stored_selection.h>
#include <gateway/service/data/storage/reading_query.h>

namespace tav::data {

class cLastValues final : public cResult {
 public:
  explicit cLastValues(cStoredSelection selection) : m_selection(std::move(selection)) {}
  bool Fetch(cTables& tables, cResultPage& page) override;

 private:
  bool Matches(const cValueRow& value) const;

  cStoredSelection m_selection;
  std::size_t m_at = 0;  // the meter to go on with
  cLastCursor m_after;
};

}  // namespace tav::data
