// SPDX-License-Identifier: Apache-2.0
// Finds SML transport frames (version 1) in a stream of bytes, fed in blocks of any size:
//
//   1B1B1B1B 01010101  payload, 1B1B1B1B in it doubled  0..3 bytes of padding  1B1B1B1B 1A pp cc cc
//
// It finds its way back after any damage: a start sequence within a frame begins a new one, and the bytes of a frame
// whose checksum is wrong are searched for a start they may have swallowed. Nothing is allocated once it is made.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

#include <gateway/driver/sml/crc16.h>
#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

// What opens a frame of version 1, and the half of it that opens every control sequence.
inline constexpr std::string_view kEscapeSequence("\x1B\x1B\x1B\x1B", 4);
inline constexpr std::string_view kStartSequence("\x1B\x1B\x1B\x1B\x01\x01\x01\x01", 8);
// The end: escape sequence, 1A, padding count and the two bytes of the checksum.
inline constexpr std::size_t kEndSize = 8;

// A frame with more bytes than this, from the first of its start to the last of its checksum, is abandoned. Household
// meters send 200 to 700.
inline constexpr std::size_t kMaxFrame = 64 * 1024;

enum eFrameKind : std::uint8_t {
  eFrameGood,        // checksum right
  eFrameBad,         // end sequence found, but checksum or padding count wrong
  eFrameIncomplete,  // no end before the next start, the end of the stream or kMaxFrame
};

struct cSmlFrame {
  eFrameKind kind = eFrameIncomplete;
  std::uint64_t offset = 0;   // of the start sequence in the stream
  std::uint32_t size = 0;     // bytes in the stream
  cBytes payload;             // without escapes and padding; valid during the callback
  std::uint32_t escapes = 0;  // how many doubled escape sequences the payload had
  eCrcKind crc = eCrcNone;    // which checksum fitted
  std::uint8_t padding = 0;   // padding count as sent
  const char* fault = "";     // of a frame that is not good: what is wrong
};

struct cSmlCounts {
  std::uint64_t good = 0;
  std::uint64_t bad = 0;
  std::uint64_t incomplete = 0;
  std::uint64_t skippedBytes = 0;  // that belong to no frame
};

class cSmlTransport {
 public:
  // Called for every frame, in the order of their ends; must not feed.
  using cOnFrame = std::function<void(const cSmlFrame&)>;

  explicit cSmlTransport(cOnFrame onFrame) : m_onFrame(std::move(onFrame)) {}
  cSmlTransport(const cSmlTransport&) = delete;
  cSmlTransport& operator=(const cSmlTransport&) = delete;

  void Feed(const void* bytes, std::size_t size);
  // The stream ends here: what is open is incomplete. Feeding may go on with a new stream; offsets go on as well.
  void Finish();

  const cSmlCounts& GetCounts() const { return m_counts; }

 private:
  std::size_t MakeRoom();
  void Scan();
  bool Hunt();
  bool ScanFrame();
  std::size_t FindStart(std::size_t from, std::size_t to) const;
  std::size_t RunOfEscapes(std::size_t from, std::size_t to) const;
  void BeginFrame(std::size_t at);
  void EndFrame(std::size_t end);
  void GiveUp(std::size_t end, const char* fault);
  void Fail(cSmlFrame& frame, std::size_t end, std::size_t contentEnd);
  cBytes Unescape(std::size_t end, std::uint32_t& escapes);
  cSmlFrame MakeFrame(eFrameKind kind, std::size_t end) const;
  void Skip(std::size_t to);
  void Cover(std::size_t to);
  bool IsGuess() const { return m_base + m_frame < m_guard; }

  cOnFrame m_onFrame;
  cSmlCounts m_counts;
  std::uint64_t m_base = 0;     // offset of the buffer's first byte in the stream
  std::uint64_t m_covered = 0;  // every byte of the stream before this one is counted, in a frame or as skipped
  std::uint64_t m_guard = 0;    // a start before this one lies within a bad frame: a guess, which counts only if good
  std::size_t m_end = 0;        // bytes in the buffer
  std::size_t m_pos = 0;        // how far they are read
  std::size_t m_frame = 0;      // where the open frame begins
  bool m_inFrame = false;
  bool m_escaped = false;  // the open frame has doubled escape sequences
  std::array<std::uint8_t, kMaxFrame> m_buffer;
};

}  // namespace tav::sml
