// SPDX-License-Identifier: Apache-2.0
// The names of what value information blocks say, as the tables of EN 13757-3 have them, for people to read.
#pragma once

#include <cstdint>

#include <gateway/driver/mbus/reader/mbus_types.h>

namespace tav::mbus {

// What a record is about: "Volume", "Flow temperature". codes: as cMBusVib::Decode takes them. Null for an empty block;
// "reserved" for a code that the standard keeps for itself.
const char* VifName(cBytes codes);

// What a combinable VIFE adds: "per hour", "lower limit value". Never null.
const char* VifeName(std::uint8_t code);
// The same of the table that VIFE 7C selects, whose code is in the byte behind it.
const char* SecondVifeName(std::uint8_t code);

}  // namespace tav::mbus
