// SPDX-License-Identifier: Apache-2.0
// What the fields of frames, headers and data information blocks say, in words (EN 13757-2, EN 13757-3).
#pragma once

#include <cstdint>
#include <string>

#include <gateway/driver/mbus/reader/mbus_telegram.h>

namespace tav::mbus {

// "REQ_UD2, frame count bit 1"; "RSP_UD, access demand".
std::string ControlText(std::uint8_t control);
// "primary address 5", "whoever is selected".
std::string AddressText(std::uint8_t address);
// "records behind a header of 12 bytes", "selection of slaves"; never null.
const char* InformationText(std::uint8_t information);
// "permanent error, low power"; "no error".
std::string StatusText(std::uint8_t status);
// The same of the fixed data structure, whose lowest bits say how the counters are coded: "counters in BCD, current".
std::string FixedStatusText(std::uint8_t status);
// "mode 5, 3 encrypted blocks"; "not encrypted".
std::string ConfigurationText(std::uint16_t configuration);
// The letter and its text: "h, Heat return".
std::string MediumText(std::uint8_t medium);
// "8 digits BCD", by the low four bits of a DIF; never null.
const char* DataFieldText(std::uint8_t field);

}  // namespace tav::mbus
