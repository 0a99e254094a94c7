// SPDX-License-Identifier: Apache-2.0
// The times of a line (EN 13757-2, link layer: response time and idle time), in whole milliseconds, rounded up. A byte
// is eleven bits long: start, eight of data, parity, stop.
//
// Behind a network the line's rate is that of the converter there, and its bytes come when the network brings them: all
// at once or in pieces.
#pragma once

#include <algorithm>
#include <cstddef>

namespace tav::mbus {

struct cMBusTiming {
  static constexpr unsigned int kByteBits = 11;
  static constexpr unsigned int kLongestBits = 330;  // from a request to the beginning of its answer
  static constexpr unsigned int kLongestMore = 50;   // and these milliseconds
  static constexpr unsigned int kLeastGapMs = 50;    // a converter's own pauses
  static constexpr unsigned int kNetworkMs = 1500;   // a whole long frame at 2400 may be kept until it is complete
  static constexpr unsigned int kNetworkGapMs = 300;
  static constexpr unsigned int kNetworkIdleMs = 20;

  unsigned int baud = 2400;
  bool network = false;

  unsigned int Bits(std::size_t bits) const {
    const unsigned int rate = std::max(baud, 1u);
    return static_cast<unsigned int>((bits * 1000 + rate - 1) / rate);
  }
  // Until the last byte is on the line.
  unsigned int SendMs(std::size_t bytes) const { return network ? 0 : Bits(bytes * kByteBits); }
  unsigned int LongestAnswerMs() const { return Bits(kLongestBits) + kLongestMore + (network ? kNetworkMs : 0); }
  // After which nothing more belongs to what came.
  unsigned int GapMs() const { return std::max(Bits(kLongestBits), kLeastGapMs) + (network ? kNetworkGapMs : 0); }
  // Between an answer and the next request.
  unsigned int IdleMs() const { return network ? kNetworkIdleMs : Bits(kByteBits); }
};

}  // namespace tav::mbus
