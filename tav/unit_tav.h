// SPDX-License-Identifier: Apache-2.0
// The trace unit of the library. Internal to it.
#pragma once

#include <tav/framework/trace.h>

namespace tav {

// Looked up once; the framework keeps units for the life of the process.
inline vorn::cUnit* UnitTAV() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitTAV");
  return unit;
}

}  // namespace tav
