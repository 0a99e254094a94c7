// SPDX-License-Identifier: Apache-2.0
// The two checksums met in SML: CRC-16/X-25 as the standard says (DIN EN 62056-46), and CRC-16/KERMIT, which some
// meters send in its place, in the transport frame and in the messages alike.
//
// On the wire X-25 comes with its low byte first, KERMIT with its high byte first.
#pragma once

#include <cstdint>

#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

enum eCrcKind : std::uint8_t { eCrcNone, eCrcX25, eCrcKermit };

std::uint16_t Crc16X25(cBytes bytes);
std::uint16_t Crc16Kermit(cBytes bytes);

// Which checksum of the bytes the two bytes from the wire are; eCrcNone when they are neither.
eCrcKind MatchCrc16(cBytes bytes, std::uint8_t first, std::uint8_t second);

// "CRC-16/X-25", "CRC-16/KERMIT", "none".
const char* CrcKindText(eCrcKind kind);

}  // namespace tav::sml
