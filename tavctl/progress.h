// SPDX-License-Identifier: Apache-2.0
// cProgress: a bar on a terminal while something takes long, beside the output; nothing at all elsewhere, and nothing
// for what is done soon.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include <tavctl/context.h>

namespace tav::ctl {

class cProgress {
 public:
  static constexpr std::chrono::milliseconds kDelay{500};
  static constexpr std::size_t kWidth = 30;

  // The context outlives it. steps: how many there will be.
  cProgress(const cContext& context, std::string what, std::size_t steps, std::chrono::milliseconds delay = kDelay);
  // Takes the bar away.
  ~cProgress() { Clear(); }
  cProgress(const cProgress&) = delete;
  cProgress& operator=(const cProgress&) = delete;

  // One more is done.
  void Step() { Show(m_what, m_done + 1); }
  // So many are done, and what is being done is another thing.
  void Show(const std::string& what, std::size_t done);
  // Takes the bar away until there is more, so that output may have its line.
  void Clear();

 private:
  const cContext& m_context;
  std::string m_what;
  std::size_t m_steps;
  std::size_t m_done = 0;
  std::chrono::steady_clock::time_point m_showFrom;
  bool m_shown = false;
};

}  // namespace tav::ctl
