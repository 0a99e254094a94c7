// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_framer.h>

#include <algorithm>
#include <cstring>

namespace tav::mbus {

std::size_t cMBusFramer::Feed(cBytes bytes) {
  std::memmove(m_bytes.data(), m_bytes.data() + m_begin, m_end - m_begin);
  m_end -= m_begin;
  m_begin = 0;
  const std::size_t taken = std::min(bytes.size(), m_bytes.size() - m_end);
  std::copy_n(bytes.begin(), taken, m_bytes.begin() + static_cast<std::ptrdiff_t>(m_end));
  m_end += taken;
  return taken;
}

bool cMBusFramer::Next(cMBusFrame& frame) {
  for (; m_begin != m_end; ++m_begin, ++m_skipped) {
    cMBusFault fault;
    const eFrameResult result = ReadFrame(cBytes(m_bytes).subspan(m_begin, m_end - m_begin), frame, fault);
    if (result == eFramePartial) return false;
    if (result == eFrameWhole) {
      m_begin += frame.bytes.size();
      return true;
    }
    m_fault = fault;
  }
  return false;
}

void cMBusFramer::Clear() {
  m_begin = m_end = m_skipped = 0;
  m_fault = {};
}

}  // namespace tav::mbus
