// SPDX-License-Identifier: Apache-2.0
// cProfileChoice: which of the meters' profiles a name means: the collector of that address, else the one collector of
// the meter that logs on that event.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gateway/service/data/profile/profile_query.h>

namespace tav::data {

class cProfileChoice {
 public:
  // Profiles that a refusal names.
  static constexpr std::size_t kMaxNamed = 16;

  explicit cProfileChoice(std::string name) : m_name(std::move(name)) {}

  void Offer(const std::string& meterId, const std::vector<cProfileName>& profiles);

  // Meter and profile, one a meter that has it.
  const std::vector<std::pair<std::string, std::int64_t>>& GetChosen() const { return m_chosen; }
  // Empty when at least one meter has it, and none has it twice; else what is possible.
  std::string GetReason() const;

 private:
  std::string m_name;
  std::vector<std::pair<std::string, std::int64_t>> m_chosen;
  std::string m_ambiguous;  // meter
  std::string m_possible;
  std::size_t m_offered = 0;
};

}  // namespace tav::data
