// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/crc16.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace tav::sml {

namespace {

constexpr std::size_t kStep = 16;        // bytes taken at once
constexpr std::uint16_t kPoly = 0x8408;  // x^16 + x^12 + x^5 + 1, bits reversed

using cTables = std::array<std::array<std::uint16_t, 256>, kStep>;

// tables[k][b]: what byte b contributes when k more bytes follow it.
constexpr cTables MakeTables() {
  cTables tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ kPoly : crc >> 1;
    tables[0][byte] = static_cast<std::uint16_t>(crc);
  }
  for (std::size_t k = 1; k < kStep; ++k)
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint16_t before = tables[k - 1][byte];
      tables[k][byte] = static_cast<std::uint16_t>((before >> 8) ^ tables[0][before & 0xFF]);
    }
  return tables;
}

constexpr cTables kTables = MakeTables();

// What bytes 2 to 15 of a step contribute. They do not depend on the checksum so far, so the processor looks them up
// ahead of it, and only the first two are waited for.
inline std::uint32_t Ahead(std::uint64_t low, std::uint64_t high) {
  const cTables& t = kTables;
  return t[13][low >> 16 & 0xFF] ^ t[12][low >> 24 & 0xFF] ^ t[11][low >> 32 & 0xFF] ^ t[10][low >> 40 & 0xFF] ^
         t[9][low >> 48 & 0xFF] ^ t[8][low >> 56] ^ t[7][high & 0xFF] ^ t[6][high >> 8 & 0xFF] ^
         t[5][high >> 16 & 0xFF] ^ t[4][high >> 24 & 0xFF] ^ t[3][high >> 32 & 0xFF] ^ t[2][high >> 40 & 0xFF] ^
         t[1][high >> 48 & 0xFF] ^ t[0][high >> 56];
}

std::uint64_t LittleEndian(const std::uint8_t* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof word);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

std::uint16_t Run(cBytes bytes, std::uint32_t crc) {
  const std::uint8_t* at = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= kStep; left -= kStep, at += kStep) {
    const std::uint64_t low = LittleEndian(at);
    const std::uint32_t ahead = Ahead(low, LittleEndian(at + 8));
    const std::uint32_t first = crc ^ (low & 0xFFFF);
    crc = ahead ^ (kTables[15][first & 0xFF] ^ kTables[14][first >> 8]);
  }
  if (left == 1) return static_cast<std::uint16_t>((crc >> 8) ^ kTables[0][(crc ^ *at) & 0xFF]);
  if (left == 0) return static_cast<std::uint16_t>(crc);
  const std::uint32_t first = crc ^ at[0] ^ std::uint32_t{at[1]} << 8;
  crc = kTables[left - 1][first & 0xFF] ^ kTables[left - 2][first >> 8];
  for (std::size_t i = 2; i < left; ++i) crc ^= kTables[left - 1 - i][at[i]];
  return static_cast<std::uint16_t>(crc);
}

}  // namespace

std::uint16_t Crc16X25(cBytes bytes) { return static_cast<std::uint16_t>(~Run(bytes, 0xFFFF)); }

std::uint16_t Crc16Kermit(cBytes bytes) { return Run(bytes, 0); }

eCrcKind MatchCrc16(cBytes bytes, std::uint8_t first, std::uint8_t second) {
  if (Crc16X25(bytes) == (second << 8 | first)) return eCrcX25;
  if (Crc16Kermit(bytes) == (first << 8 | second)) return eCrcKermit;
  return eCrcNone;
}

const char* CrcKindText(eCrcKind kind) {
  switch (kind) {
    case eCrcX25:
      return "CRC-16/X-25";
    case eCrcKermit:
      return "CRC-16/KERMIT";
    default:
      return "none";
  }
}

}  // namespace tav::sml
