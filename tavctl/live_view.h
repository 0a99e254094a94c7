// SPDX-License-Identifier: Apache-2.0
// cLiveView: rows that are asked for again and again: on a terminal the whole picture in place, elsewhere, and as JSON,
// a row whenever it is new.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <tavctl/context.h>

namespace tav::ctl {

class cLiveView {
 public:
  using Rows = std::vector<vorn::cRecord>;

  struct cPlan {
    Columns columns;                                           // they outlive the view
    std::function<Rows()> ask;                                 // may throw a cFailure
    std::function<std::string(const vorn::cRecord& row)> key;  // what makes it the same row as before
    std::function<void()> wait;                                // until the next look
    std::string title;                                         // of the picture
    std::uint64_t count = 0;                                   // end after so many looks, 0: never
  };

  // The context outlives it.
  cLiveView(cContext& context, cPlan plan) : m_context(context), m_plan(std::move(plan)) {}

  // Until Ctrl-C or the last look. A service that goes away is waited for; any other failure is thrown.
  void Run();

 private:
  void Repeat(const std::function<void(const Rows&)>& show);
  // Those that are not as they were when it was asked before.
  Rows NewOnes(const Rows& rows);
  void RunOnScreen();
  void RunInLines();

  cContext& m_context;
  cPlan m_plan;
  std::map<std::string, vorn::cRecord> m_seen;
};

}  // namespace tav::ctl
