// SPDX-License-Identifier: Apache-2.0
// Time-outs of sessions and pages as their timers take them. Internal to the library.
#pragma once

#include <limits>

namespace tav {

// Milliseconds of so many seconds; the most there are when they do not fit.
constexpr unsigned int TimeoutMs(unsigned int seconds) {
  constexpr unsigned int kMost = std::numeric_limits<unsigned int>::max();
  return seconds > kMost / 1000 ? kMost : seconds * 1000;
}

}  // namespace tav
