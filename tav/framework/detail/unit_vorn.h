// SPDX-License-Identifier: Apache-2.0
// The framework's own trace unit, "UnitVORN".
#pragma once

#include <tav/framework/trace.h>

namespace vorn::detail {

inline const cUnit* FrameworkUnit() {
  static const cUnit* unit = cUnit::Find("UnitVORN");
  return unit;
}

}  // namespace vorn::detail
