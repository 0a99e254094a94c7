// SPDX-License-Identifier: Apache-2.0
// The trace unit of the web front end.
#pragma once

#include <tav/framework/trace.h>

namespace tav::gateway::web {

inline vorn::cUnit* UnitWeb() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitWeb");
  return unit;
}

}  // namespace tav::gateway::web
