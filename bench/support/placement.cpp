// SPDX-License-Identifier: Apache-2.0
#include <bench/support/placement.h>

namespace tav::bench {

namespace {

// The first core tends to get the interrupts.
int LastOf(const cpu_set_t& cores) {
  int core = CPU_SETSIZE - 1;
  while (core > 0 && !CPU_ISSET(core, &cores)) --core;
  return core;
}

}  // namespace

cPlacement::cPlacement(ePlace place) {
  sched_getaffinity(0, sizeof m_before, &m_before);
  if (place == ePlace::Free) return;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(LastOf(m_before), &one);
  sched_setaffinity(0, sizeof one, &one);
}

cPlacement::~cPlacement() { sched_setaffinity(0, sizeof m_before, &m_before); }

}  // namespace tav::bench
