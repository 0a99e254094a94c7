// SPDX-License-Identifier: Apache-2.0
// cProfileRows: what collectors have logged as a result, one row a value: "timestamp" is the event's time,
// "value-timestamp" the value's own. Meter by meter, each in the order of time.
#pragma once

#include <utility>
#include <vector>

#include <gateway/service/data/profile/profile_query.h>
#include <gateway/service/data/query/result.h>

namespace tav::data {

class cProfileRows final : public cResult {
 public:
  explicit cProfileRows(std::vector<cProfileSelection> profiles) : m_profiles(std::move(profiles)) {}
  bool Fetch(cTables& tables, cResultPage& page) override;

 private:
  std::vector<cProfileSelection> m_profiles;
  std::size_t m_at = 0;  // the one to go on with
};

}  // namespace tav::data
