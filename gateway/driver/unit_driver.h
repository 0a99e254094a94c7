// SPDX-License-Identifier: Apache-2.0
// The trace unit that all drivers share, "UnitDriver".
#pragma once

#include <tav/framework/trace.h>

namespace tav {

inline vorn::cUnit* DriverUnit() {
  static vorn::cUnit* unit = vorn::cUnit::Find("UnitDriver");
  return unit;
}

}  // namespace tav
