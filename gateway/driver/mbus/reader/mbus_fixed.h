// SPDX-License-Identifier: Apache-2.0
// The units of the fixed data structure (EN 1434-3) as the value information blocks that say the same, so that its
// counters are read, scaled and named as any record.
#pragma once

#include <cstdint>

#include <gateway/driver/mbus/reader/mbus_types.h>

namespace tav::mbus {

// The block of the unit in the low six bits; empty for a unit without one: times of day, dates, reserved.
cBytes FixedVib(std::uint8_t unit);
// The second counter has the first one's unit, at a date of the past.
inline constexpr std::uint8_t kSameButHistoric = 0x3E;

}  // namespace tav::mbus
