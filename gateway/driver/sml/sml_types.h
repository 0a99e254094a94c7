// SPDX-License-Identifier: Apache-2.0
// What reading SML yields, as plain structs (BSI TR-03109-1, Anlage SML, version 1.04).
//
// Byte fields are views: they point into the bytes that were read and live as long as those. A field that the meter did
// not send (0x01 on the wire) is an empty view, the kind "absent" or an empty optional.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tav::sml {

using cBytes = std::span<const std::uint8_t>;

// Why bytes could not be read. The texts are literals, so that a fault costs nothing until it is printed.
struct cSmlFault {
  std::uint32_t offset = 0;   // of the byte, counted from the begin of the payload
  const char* field = "";     // what was being read, e.g. "scaler"
  const char* expected = "";  // e.g. "a signed integer"
  int found = -1;             // the byte found there, -1 where the bytes end

  // "byte 37, scaler: expected a signed integer, found 0x62".
  std::string ToString() const;
};

enum eSmlType : std::uint8_t {
  eSmlAbsent,
  eSmlOctets,
  eSmlBool,
  eSmlInt,   // signed, 1 to 8 bytes on the wire
  eSmlUInt,  // unsigned, 1 to 8 bytes on the wire
  eSmlList,  // SML_ListType: kept as sent, octets holds the whole element
};

// SML_Value.
struct cSmlValue {
  eSmlType type = eSmlAbsent;
  std::uint8_t width = 0;  // bytes on the wire of a number or boolean
  std::uint64_t bits = 0;  // a number, of a signed one extended to 64 bits; a boolean as 0 or 1
  cBytes octets;

  bool IsNumber() const { return type == eSmlInt || type == eSmlUInt; }
  bool IsNegative() const { return type == eSmlInt && (bits >> 63) != 0; }
  // A number without its sign.
  std::uint64_t Magnitude() const { return IsNegative() ? ~bits + 1 : bits; }
  std::int64_t Signed() const { return static_cast<std::int64_t>(bits); }
};

enum eSmlTimeKind : std::uint8_t {
  eSmlNoTime,
  eSmlSecIndex,        // seconds the meter has run: no point in time
  eSmlTimestamp,       // seconds since 1970-01-01 UTC
  eSmlLocalTimestamp,  // the same, with the meter's offsets from UTC in minutes
  eSmlBareSeconds,     // an unsigned number where the choice belongs, as some meters send it: read as seconds index
};

// SML_Time.
struct cSmlTime {
  eSmlTimeKind kind = eSmlNoTime;
  std::uint32_t seconds = 0;
  std::int16_t localOffset = 0;
  std::int16_t seasonOffset = 0;

  // Whether this is a point in time, not just a running number.
  bool IsAbsolute() const { return kind == eSmlTimestamp || kind == eSmlLocalTimestamp; }
};

// SML_ListEntry.
struct cSmlEntry {
  std::uint32_t offset = 0;  // of the entry in the payload
  std::uint32_t size = 0;
  std::uint64_t obis = 0;  // objName packed as 0x0000AABBCCDDEEFF
  std::optional<std::uint64_t> status;
  cSmlTime time;
  std::optional<std::uint8_t> unit;  // DLMS unit code
  std::optional<std::int8_t> scaler;
  cSmlValue value;
  cBytes signature;
};

}  // namespace tav::sml
