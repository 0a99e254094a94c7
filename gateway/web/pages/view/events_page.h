// SPDX-License-Identifier: Apache-2.0
// cEventsPage: the log of events, newest first. The service lists events from old to new: the page asks for the newest
// span of time first, and for longer ones before it until it has enough.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cEventsPage final : public cWebPage {
 public:
  static constexpr std::size_t kEvents = 50;  // on one page
  // The newest span, seconds; each one before it is so many times as long.
  static constexpr std::int64_t kFirstSpan = 3600;
  static constexpr std::int64_t kLonger = 8;

  using cWebPage::cWebPage;

 private:
  struct cEvent {
    unsigned int utc = 0;
    std::size_t number = 0;  // within its second, from 0: what the link to older ones counts by
    vorn::cRecord record;
  };

  void Start() override;
  bool ReadRange(std::string& error);
  void ReadSpan();
  void Fetch(const vorn::cData& after);
  void Take(unsigned int utc, const vorn::cRecord& event);
  void EndSpan();
  void Show();
  void ShowFault(unsigned int status, const std::string& fault);
  cHtml RangeForm() const;
  std::string OlderUrl() const;

  unsigned int m_from = 0;
  unsigned int m_to = 0;
  std::size_t m_before = SIZE_MAX;  // of the last second only events with a smaller number
  std::int64_t m_spanFrom = 0;
  std::int64_t m_spanTo = 0;
  std::int64_t m_span = kFirstSpan;
  cEvent m_last;                // that was told
  std::deque<cEvent> m_found;   // of this span, oldest first; one more than a page has tells that there are older ones
  std::deque<cEvent> m_events;  // of all spans so far
};

// The texts and numbers of an event in one line, cut at a length; without secrets.
std::string EventLine(const vorn::cRecord& event);

}  // namespace tav::pages
