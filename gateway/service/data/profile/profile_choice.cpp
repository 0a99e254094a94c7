// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_choice.h>

namespace tav::data {

void cProfileChoice::Offer(const std::string& meterId, const std::vector<cProfileName>& profiles) {
  std::vector<std::int64_t> named, logging;
  for (const cProfileName& profile : profiles) {
    if (profile.addr == m_name) named.push_back(profile.id);
    if (profile.eventType == m_name) logging.push_back(profile.id);
    if (++m_offered > kMaxNamed) continue;
    m_possible +=
        (m_possible.empty() ? "'" : ", '") + profile.addr + "' (" + profile.eventType + ") of meter '" + meterId + "'";
  }
  const std::vector<std::int64_t>& fitting = named.empty() ? logging : named;
  if (fitting.size() > 1) m_ambiguous = meterId;
  if (fitting.size() == 1) m_chosen.emplace_back(meterId, fitting.front());
}

std::string cProfileChoice::GetReason() const {
  if (m_ambiguous.empty() && !m_chosen.empty()) return {};
  const std::string possible = m_offered == 0          ? "none of the meters has a collector"
                               : m_offered > kMaxNamed ? "possible are " + m_possible + ", ..."
                                                       : "possible are " + m_possible;
  if (!m_ambiguous.empty())
    return "profile '" + m_name + "': several collectors of meter '" + m_ambiguous + "' are meant; " + possible;
  return "unknown profile '" + m_name + "': " + possible;
}

}  // namespace tav::data
