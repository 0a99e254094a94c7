// SPDX-License-Identifier: Apache-2.0
// cStoredValues: the values of several meters as a result, one row a value: meter by meter, each in the order of time.
#pragma once

#include <string>
#include <vector>

#include <gateway/service/data/query/result.h>
#include <gateway/service/data/query/stored_selection.h>
#include <gateway/service/data/storage/reading_query.h>

namespace tav::data {

class cStoredValues final : public cResult {
 public:
  explicit cStoredValues(const cStoredSelection& selection);
  bool Fetch(cTables& tables, cResultPage& page) override;

 private:
  std::vector<std::string> m_meters;
  std::size_t m_at = 0;  // the meter to go on with
  cValueSelection m_selection;
};

}  // namespace tav::data
