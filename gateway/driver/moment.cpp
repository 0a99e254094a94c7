// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/moment.h>

#include <gateway/host/clock_state.h>
#include <tav/framework/time.h>

namespace tav {

cMoment cMoment::Now() {
  return {vorn::cTime::Now().GetSeconds(),
          gateway::IsClockSynchronized() ? cMeterTav::eTsNetworkTime : cMeterTav::eTsRtc};
}

}  // namespace tav
