// SPDX-License-Identifier: Apache-2.0
// OBIS identifiers (IEC 62056-61) packed as 0x0000AABBCCDDEEFF, as SML entries bear them.
#pragma once

#include <cstdint>
#include <string>

namespace tav::sml {

constexpr std::uint64_t PackObis(unsigned int a, unsigned int b, unsigned int c, unsigned int d, unsigned int e,
                                 unsigned int f = 255) {
  return std::uint64_t{a} << 40 | std::uint64_t{b} << 32 | std::uint64_t{c} << 24 | std::uint64_t{d} << 16 |
         std::uint64_t{e} << 8 | f;
}

inline constexpr std::uint64_t kObisManufacturer = PackObis(129, 129, 199, 130, 3);
inline constexpr std::uint64_t kObisManufacturerNew = PackObis(1, 0, 96, 50, 1, 1);
inline constexpr std::uint64_t kObisPublicKey = PackObis(129, 129, 199, 130, 5);
inline constexpr std::uint64_t kObisServerId = PackObis(1, 0, 0, 0, 9);
inline constexpr std::uint64_t kObisStatusWord = PackObis(1, 0, 96, 5, 5);

// Whether it names a status word: group C 96 (service), D 5 (status).
constexpr bool IsStatusWord(std::uint64_t obis) { return (obis >> 16 & 0xFFFF) == (96 << 8 | 5); }

// "1-0:1.8.0*255", always with its group F.
std::string ObisText(std::uint64_t obis);

// The common name of an electricity identifier, "active energy import, total"; null when it has none here.
const char* ObisCommonName(std::uint64_t obis);

}  // namespace tav::sml
