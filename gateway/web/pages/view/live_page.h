// SPDX-License-Identifier: Apache-2.0
// cLivePage: the stream of events (text/event-stream) that keeps an open page's values as they are now.
#pragma once

#include <optional>
#include <string>

#include <gateway/web/pages/core/live.h>
#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cLivePage final : public cWebPage {
 public:
  // Outputs that a slow browser has not taken yet; beyond that the stream ends, and the browser begins a fresh one.
  static constexpr unsigned int kMaxWaiting = 32;

  using cWebPage::cWebPage;

 private:
  void Start() override;
  void OnPassed() override;
  void OnGone() override { m_listener.reset(); }
  bool IsWholeAtAnyTime() const override { return true; }
  void Tell(const std::string& events);

  unsigned int m_waiting = 0;
  std::optional<cLive::cListener> m_listener;
};

}  // namespace tav::pages
