// SPDX-License-Identifier: Apache-2.0
// cMoment: a time and the clock that it is of, as readings bear it.
#pragma once

#include <cstdint>

#include <tav/record/meter_tav.h>

namespace tav {

struct cMoment {
  std::uint32_t seconds = 0;  // since 1970-01-01 UTC
  cMeterTav::eTimeSource source = cMeterTav::eTsUnknown;

  // The machine's clock, and whether it is kept by the network.
  static cMoment Now();
};

}  // namespace tav
