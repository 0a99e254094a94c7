// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/missing_readings.h>

#include <utility>

namespace tav::mbus {

void cMissingReadings::Add(std::uint32_t slotBegin, const std::string& cause) {
  if (cause != m_cause) {
    Settle();
    m_cause = cause;
    m_tell(1, slotBegin, slotBegin, cause);
    return;
  }
  if (m_count++ == 0) m_first = slotBegin;
  m_last = slotBegin;
  if (m_last - m_first >= kLongestSpan) Flush();
}

void cMissingReadings::Settle() {
  Flush();
  m_cause.clear();
}

void cMissingReadings::Flush() {
  if (m_count != 0) m_tell(std::exchange(m_count, 0), m_first, m_last, m_cause);
}

}  // namespace tav::mbus
