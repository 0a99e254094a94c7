// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/clock_state.h>

#include <sys/timex.h>

namespace tav::gateway {

bool IsClockSynchronized() {
  timex state{};  // asks, and changes nothing
  return adjtimex(&state) != TIME_ERROR;
}

}  // namespace tav::gateway
