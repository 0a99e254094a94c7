// SPDX-License-Identifier: Apache-2.0
#include <bench/sml/bare_scan.h>

#include <gateway/driver/sml/crc16.h>

namespace tav::bench {

namespace {

using Bytes = const unsigned char*;

constexpr std::string_view kStart("\x1b\x1b\x1b\x1b\x01\x01\x01\x01", 8);
constexpr std::string_view kEnd("\x1b\x1b\x1b\x1b\x1a", 5);
constexpr std::size_t kEndSize = 8;  // with the number of fill bytes and the checksum
constexpr int kMostDepth = 16;

Bytes BytesOf(std::string_view text) { return reinterpret_cast<Bytes>(text.data()); }

// Either checksum: X-25 comes with its low byte first.
bool IsRight(Bytes from, Bytes checksum, Bytes at) {
  const sml::cBytes bytes(from, static_cast<std::size_t>(checksum - from));
  return sml::MatchCrc16(bytes, at[0], at[1]) != sml::eCrcNone;
}

// One element; behind it, or null where it does not fit.
Bytes ScanElement(Bytes at, Bytes end, int depth, std::uint64_t& sum) {
  if (at >= end || depth > kMostDepth) return nullptr;
  const Bytes start = at;
  unsigned head = *at++;
  const unsigned type = head & 0x70;
  std::size_t size = head & 0x0F;
  while ((head & 0x80) != 0) {
    if (at >= end) return nullptr;
    head = *at++;
    size = size << 4 | (head & 0x0F);
  }
  if (type == 0x70) {
    for (; size > 0 && at != nullptr; --size) at = ScanElement(at, end, depth + 1, sum);
    return at;
  }
  if (size == 0) return at;
  const auto used = static_cast<std::size_t>(at - start);
  if (size < used || size - used > static_cast<std::size_t>(end - at)) return nullptr;
  std::uint64_t value = 0;
  for (const Bytes behind = start + size; at < behind; ++at)
    if (type != 0) value = value << 8 | *at;
  sum += value + size;
  return at;
}

// All messages; something made of them, 0 when one is wrong.
std::uint64_t ScanMessages(Bytes at, Bytes end) {
  std::uint64_t sum = 1;
  while (at < end) {
    const Bytes start = at;
    if (*at++ != 0x76) return 0;
    for (int field = 0; field < 4; ++field)
      if ((at = ScanElement(at, end, 1, sum)) == nullptr) return 0;
    const Bytes checksum = at;
    if (end - at < 4 || *at != 0x63 || !IsRight(start, checksum, at + 1)) return 0;
    at += 4;
  }
  return sum;
}

std::uint64_t ScanFrame(std::string_view frame) {
  const Bytes start = BytesOf(frame);
  const Bytes end = start + frame.size();
  if (!IsRight(start, end - 2, end - 2)) return 0;
  return ScanMessages(start + kStart.size(), end - kEndSize - end[-3]);
}

}  // namespace

cBareScan::cBareScan(std::string_view stream) {
  for (std::size_t at = 0; (at = stream.find(kStart, at)) != std::string_view::npos; at += kStart.size()) {
    const std::size_t end = stream.find(kEnd, at + kStart.size());
    if (end == std::string_view::npos || end + kEndSize > stream.size()) return;
    const std::string_view frame = stream.substr(at, end + kEndSize - at);
    if (ScanFrame(frame) != 0) m_frames.push_back(frame);
  }
}

std::uint64_t cBareScan::Scan() const {
  std::uint64_t sum = 0;
  for (const std::string_view frame : m_frames) {
    const std::uint64_t one = ScanFrame(frame);
    if (one == 0) return 0;
    sum += one;
  }
  return sum;
}

std::size_t cBareScan::CountBytes() const {
  std::size_t bytes = 0;
  for (const std::string_view frame : m_frames) bytes += frame.size();
  return bytes;
}

}  // namespace tav::bench
