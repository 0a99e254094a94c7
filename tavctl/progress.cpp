// SPDX-License-Identifier: Apache-2.0
#include <tavctl/progress.h>

#include <algorithm>

namespace tav::ctl {

cProgress::cProgress(const cContext& context, std::string what, std::size_t steps, std::chrono::milliseconds delay)
    : m_context(context),
      m_what(std::move(what)),
      m_steps(steps),
      m_showFrom(std::chrono::steady_clock::now() + delay) {}

void cProgress::Clear() {
  if (m_shown) m_context.streams.err << "\r\x1b[K" << std::flush;
  m_shown = false;
}

void cProgress::Show(const std::string& what, std::size_t done) {
  m_what = what;
  m_done = std::min(done, m_steps);
  if (!m_context.streams.terminal || std::chrono::steady_clock::now() < m_showFrom) return;
  m_shown = true;
  const std::size_t filled = m_steps != 0 ? m_done * kWidth / m_steps : 0;
  m_context.streams.err << "\r\x1b[K" << m_what << " [" << std::string(filled, '#') << std::string(kWidth - filled, '.')
                        << "] " << m_done << "/" << m_steps << std::flush;
}

}  // namespace tav::ctl
