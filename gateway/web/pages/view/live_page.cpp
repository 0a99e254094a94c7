// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/live_page.h>

namespace tav::pages {

namespace {

// After a loss the browser waits so long before it asks again.
constexpr const char* kFirst = "retry: 2000\n\n";

}  // namespace

void cLivePage::Start() {
  BeginAnswer("text/event-stream");
  ++m_waiting;
  Tell(kFirst);
  if (!IsFinished()) m_listener.emplace(Live(), [this](const std::string& events) { Tell(events); });
}

void cLivePage::OnPassed() {
  if (m_waiting != 0) --m_waiting;
}

void cLivePage::Tell(const std::string& events) {
  ++m_waiting;
  if (m_waiting <= kMaxWaiting && Put(events)) return;
  Break();
}

}  // namespace tav::pages
