// SPDX-License-Identifier: Apache-2.0
// The frame around a message on the wire, and the framework's own message types. docs/wire-format.md is its page.
//
//   offset 0   4 bytes   length of the whole frame, these 24 bytes included, big-endian
//          4   4 bytes   message type, big-endian
//          8  16 bytes   identifier, all zero when there is none
//         24  ...        the record
#pragma once

#include <cstdint>
#include <cstring>

#include <tav/framework/msg.h>
#include <tav/framework/scm_channel.h>

namespace vorn::detail {

constexpr std::uint32_t kProtocolVersion = 1;
constexpr std::size_t kFrameHeaderSize = 24;
constexpr unsigned int kFirstUserType = 0x100;  // smaller types belong to the framework

// Message types of the framework; N is answered by N+1, or by N+2 with "reason".
enum eFrameType : unsigned int {
  eFrameHello = 0x01,    // first frame of both sides: "version" uint, "process" text
  eFrameRefused = 0x02,  // instead of the server's hello: "reason" text
  eFramePing = 0x04,     // answered by a pong
  eFramePong = 0x05,
  eFrameMonitor = 0x10,  // mirror this server's messages to me
  eFrameMonitorOn = 0x11,
  eFrameMonitorRefused = 0x12,  // "reason" text
  eFrameMirrored = 0x13,        // "direction" text, "process" text, "pid" uint, "type" uint, "id" uuid, "record" record
};

inline std::uint32_t LoadBigEndian(const unsigned char* from) {
  std::uint32_t value;
  std::memcpy(&value, from, sizeof value);
  return __builtin_bswap32(value);
}

inline void StoreBigEndian(unsigned char* to, std::uint32_t value) {
  value = __builtin_bswap32(value);
  std::memcpy(to, &value, sizeof value);
}

inline void WriteFrameHeader(unsigned char* to, std::uint32_t frameSize, unsigned int type, const cUuid& id) {
  StoreBigEndian(to, frameSize);
  StoreBigEndian(to + 4, type);
  std::memcpy(to + 8, id.GetBytes().data(), cUuid::kSize);
}

}  // namespace vorn::detail
