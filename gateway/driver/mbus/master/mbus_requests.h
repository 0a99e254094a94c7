// SPDX-License-Identifier: Apache-2.0
// The requests of a master as whole frames (EN 13757-2 for the link, EN 13757-3 for what they tell a meter).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <gateway/driver/mbus/master/mbus_address.h>

namespace tav::mbus {

// CI fields of what the master tells a meter (EN 13757-3).
enum eCommand : std::uint8_t {
  eCiReset = 0x50,      // of the application
  eCiSendData = 0x51,   // records, such as the primary address
  eCiSelect = 0x52,     // the eight bytes of a secondary address
  eCiFirstBaud = 0xB8,  // kBauds by their order
};
inline constexpr unsigned int kBauds[] = {300, 600, 1200, 2400, 4800, 9600, 19200, 38400};
inline constexpr std::size_t kSelectionSize = 8;
inline constexpr std::uint8_t kPrimaryAddress[] = {0x01, 0x7A};  // DIF and VIF of its record

std::string MakeShortFrame(std::uint8_t control, std::uint8_t address);
// data: at most 252 bytes.
std::string MakeLongFrame(std::uint8_t control, std::uint8_t address, std::uint8_t information, cBytes data);

// SND_NKE: the meter begins anew with the frame count bit; at kSecondary the selected one is let go.
std::string MakeInitialise(std::uint8_t primary);
// REQ_UD2.
std::string MakeReadoutRequest(std::uint8_t primary, bool fcb);
// Selects the meters that match a secondary address; each answers with the single character.
std::string MakeSelection(const cMBusAddress& address);
// What the application begins with at its next readout; the sub code as EN 13757-3 has it, none when negative.
std::string MakeApplicationReset(std::uint8_t primary, int subCode);
// Another rate, at once after the meter's acknowledgement; empty for one that has no code (300 to 38400).
std::string MakeSetBaud(std::uint8_t primary, unsigned int baud);
// Another primary address, 0 to 250; 0 is that of a meter without one.
std::string MakeSetAddress(std::uint8_t primary, std::uint8_t newAddress);

}  // namespace tav::mbus
