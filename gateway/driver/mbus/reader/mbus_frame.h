// SPDX-License-Identifier: Apache-2.0
// Frames of the link layer (EN 13757-2; frame format FT1.2 of EN 60870-5-1):
//
//   single character  E5
//   short frame       10 C A CS 16
//   long frame        68 L L 68 C A CI data CS 16    L counts C to the last byte of data; a control frame has no data
//
// CS is the sum of the bytes from C to the last before it.
#pragma once

#include <cstddef>
#include <cstdint>

#include <gateway/driver/mbus/reader/mbus_types.h>

namespace tav::mbus {

inline constexpr std::uint8_t kAck = 0xE5;
inline constexpr std::uint8_t kShortStart = 0x10;
inline constexpr std::uint8_t kLongStart = 0x68;
inline constexpr std::uint8_t kStop = 0x16;
inline constexpr std::size_t kShortSize = 5;
inline constexpr std::size_t kLeastLength = 3;   // of L: C, A and CI
inline constexpr std::size_t kLongOverhead = 6;  // bytes of a long frame that L does not count
inline constexpr std::size_t kDataOffset = 7;    // of the data of a long frame
inline constexpr std::size_t kMostFrame = 255 + kLongOverhead;

// C fields (EN 13757-2, table of function codes). Those of requests bear the frame count bit kFcb where kFcv is set.
enum eControl : std::uint8_t {
  eSndNke = 0x40,  // initialise the link
  eSndUd = 0x53,   // send data to the meter
  eReqUd2 = 0x5B,  // ask for class 2 data, the readings
  eReqUd1 = 0x5A,  // ask for class 1 data, alarms
  eRspUd = 0x08,   // the answer with data; bits 4 and 5 (DFC, ACD) may be set
};
inline constexpr std::uint8_t kFcb = 0x20;
inline constexpr std::uint8_t kFromMaster = 0x40;

// Addresses with a meaning of their own (EN 13757-2).
inline constexpr std::uint8_t kUnconfigured = 0;
inline constexpr std::uint8_t kLastPrimary = 250;
inline constexpr std::uint8_t kSecondary = 0xFD;       // whoever is selected
inline constexpr std::uint8_t kBroadcastReply = 0xFE;  // every meter answers
inline constexpr std::uint8_t kBroadcast = 0xFF;       // no meter answers

enum eFrameKind : std::uint8_t { eFrameAck, eFrameShort, eFrameLong };

struct cMBusFrame {
  eFrameKind kind = eFrameAck;
  std::uint8_t control = 0;      // C; 0 of a single character
  std::uint8_t address = 0;      // A
  std::uint8_t information = 0;  // CI, of a long frame
  cBytes data;                   // behind CI
  cBytes bytes;                  // the whole frame
};

enum eFrameResult : std::uint8_t {
  eFrameWhole,
  eFramePartial,  // right as far as it goes; more bytes are needed
  eFrameBroken,   // no frame begins here
};

// The frame that begins with the first byte. For one that is not whole frame is empty, and the fault says which byte
// decides it; for a partial one that is the first byte that is missing. Allocates nothing.
eFrameResult ReadFrame(cBytes bytes, cMBusFrame& frame, cMBusFault& fault);

// The checksum of bytes from C to the last of the data.
std::uint8_t Checksum(cBytes bytes);

}  // namespace tav::mbus
