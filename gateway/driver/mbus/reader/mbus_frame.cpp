// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_frame.h>

#include <numeric>

namespace tav::mbus {

namespace {

eFrameResult Broken(cMBusFault& fault, const char* what, cBytes bytes, std::size_t offset) {
  fault = {what, static_cast<std::uint32_t>(offset), bytes[offset]};
  return eFrameBroken;
}

eFrameResult Partial(cMBusFault& fault, cBytes bytes) {
  fault = {"the frame ends too early", static_cast<std::uint32_t>(bytes.size()), -1};
  return eFramePartial;
}

// What both forms end with: the checksum of the bytes in between, and the stop.
eFrameResult ReadEnd(cBytes bytes, std::size_t begin, std::size_t end, cMBusFrame& frame, cMBusFault& fault) {
  if (bytes[end] != Checksum(bytes.subspan(begin, end - begin)))
    return Broken(fault, "the checksum is wrong", bytes, end);
  if (bytes[end + 1] != kStop) return Broken(fault, "the frame has no stop byte", bytes, end + 1);
  frame.control = bytes[begin];
  frame.address = bytes[begin + 1];
  frame.bytes = bytes.first(end + 2);
  return eFrameWhole;
}

eFrameResult ReadShort(cBytes bytes, cMBusFrame& frame, cMBusFault& fault) {
  if (bytes.size() < kShortSize) return Partial(fault, bytes);
  if (ReadEnd(bytes, 1, kShortSize - 2, frame, fault) != eFrameWhole) return eFrameBroken;
  frame.kind = eFrameShort;
  return eFrameWhole;
}

eFrameResult ReadLong(cBytes bytes, cMBusFrame& frame, cMBusFault& fault) {
  if (bytes.size() > 1 && bytes[1] < kLeastLength) return Broken(fault, "the length is below 3", bytes, 1);
  if (bytes.size() > 2 && bytes[2] != bytes[1]) return Broken(fault, "the two lengths differ", bytes, 2);
  if (bytes.size() > 3 && bytes[3] != kLongStart) return Broken(fault, "the second start byte is wrong", bytes, 3);
  if (bytes.size() < 4 || bytes.size() < bytes[1] + kLongOverhead) return Partial(fault, bytes);
  const std::size_t end = std::size_t{4} + bytes[1];
  if (ReadEnd(bytes, 4, end, frame, fault) != eFrameWhole) return eFrameBroken;
  frame.kind = eFrameLong;
  frame.information = bytes[6];
  frame.data = bytes.subspan(kDataOffset, end - kDataOffset);
  return eFrameWhole;
}

}  // namespace

std::uint8_t Checksum(cBytes bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u));
}

eFrameResult ReadFrame(cBytes bytes, cMBusFrame& frame, cMBusFault& fault) {
  frame = {};
  if (bytes.empty()) return Partial(fault, bytes);
  switch (bytes[0]) {
    case kAck:
      frame.bytes = bytes.first(1);
      return eFrameWhole;
    case kShortStart:
      return ReadShort(bytes, frame, fault);
    case kLongStart:
      return ReadLong(bytes, frame, fault);
    default:
      return Broken(fault, "no frame starts with this byte", bytes, 0);
  }
}

}  // namespace tav::mbus
