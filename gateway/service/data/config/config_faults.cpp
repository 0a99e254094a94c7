// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_faults.h>

#include <gateway/service/data/config/config_limits.h>

namespace tav::data {

std::string cConfigFaults::GetText() const {
  return m_count <= kMaxFaults ? m_text : m_text + "; and " + std::to_string(m_count - kMaxFaults) + " more";
}

void cConfigFaults::Add(const std::string& fault) {
  if (++m_count <= kMaxFaults) m_text += (m_text.empty() ? "" : "; ") + fault;
}

std::string QuotedName(std::string_view name) {
  std::string text = "'";
  for (const char c : name.substr(0, kMaxName)) text += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  return text + (name.size() > kMaxName ? "...'" : "'");
}

}  // namespace tav::data
