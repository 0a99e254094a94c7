// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_transport.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace tav::sml {

namespace {

constexpr std::uint8_t kEscape = 0x1B;
constexpr std::uint8_t kEnd = 0x1A;
constexpr std::size_t kEscapeSize = kEscapeSequence.size();  // of what follows it as well
constexpr std::size_t kStartSize = kStartSequence.size();
constexpr std::uint8_t kMaxPadding = 3;

}  // namespace

void cSmlTransport::Feed(const void* bytes, std::size_t size) {
  const auto* from = static_cast<const std::uint8_t*>(bytes);
  while (size != 0) {
    const std::size_t part = std::min(size, MakeRoom());
    std::memcpy(m_buffer.data() + m_end, from, part);
    m_end += part;
    from += part;
    size -= part;
    Scan();
  }
}

void cSmlTransport::Finish() {
  while (m_inFrame) {
    GiveUp(m_end, "the stream ended");
    Scan();
  }
  Skip(m_end);
  m_base += m_end;
  m_end = m_pos = 0;
}

// There always is some: a frame that fills the buffer has been given up.
std::size_t cSmlTransport::MakeRoom() {
  const std::size_t keep = m_inFrame ? m_frame : m_pos;
  if (keep == m_end || m_end == m_buffer.size()) {
    std::memmove(m_buffer.data(), m_buffer.data() + keep, m_end - keep);
    m_base += keep;
    m_end -= keep;
    m_pos -= keep;
    m_frame = 0;
  }
  return m_buffer.size() - m_end;
}

// Both give true when they got somewhere, false when they need more bytes.
void cSmlTransport::Scan() {
  while (m_inFrame ? ScanFrame() : Hunt()) {
  }
}

bool cSmlTransport::Hunt() {
  const std::size_t start = FindStart(m_pos, m_end);
  if (start != m_end) {
    Skip(start);
    BeginFrame(start);
    return true;
  }
  // The last bytes may be the first of a start sequence.
  Skip(std::max(m_pos, m_end - std::min(m_end, kStartSize - 1)));
  return false;
}

// The first whole start sequence between the two, `to` when there is none.
std::size_t cSmlTransport::FindStart(std::size_t from, std::size_t to) const {
  const std::string_view bytes(reinterpret_cast<const char*>(m_buffer.data()) + from, to - from);
  const std::size_t found = bytes.find(kStartSequence);
  return found != std::string_view::npos ? from + found : to;
}

std::size_t cSmlTransport::RunOfEscapes(std::size_t from, std::size_t to) const {
  std::size_t size = 0;
  while (size < 2 * kEscapeSize && from + size < to && m_buffer[from + size] == kEscape) ++size;
  return size;
}

// A run of 1B is read from its left: eight are one doubled sequence of payload. Of what then remains, the last four are
// the escape sequence of the control bytes behind the run, and those before them payload. Where no control bytes
// follow, the run is payload as it stands: some senders double only what is aligned, and the checksum tells anyway.
bool cSmlTransport::ScanFrame() {
  const std::size_t limit = std::min(m_end, m_frame + kMaxFrame);
  const auto needMore = [&] {
    if (limit != m_frame + kMaxFrame) return false;
    GiveUp(limit, "no end sequence within 64 KiB");
    return true;
  };
  for (;;) {
    const void* const found = std::memchr(m_buffer.data() + m_pos, kEscape, limit - m_pos);
    if (found == nullptr) {
      m_pos = limit;
      return needMore();
    }
    m_pos = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - m_buffer.data());
    const std::size_t run = RunOfEscapes(m_pos, limit);
    const std::size_t control = m_pos + run;
    if (run < 2 * kEscapeSize && control == limit) return needMore();
    if (run >= kEscapeSize && run < 2 * kEscapeSize) {
      const std::size_t there = std::min(limit - control, kEscapeSize);
      if (m_buffer[control] == kEnd) {
        if (there < kEscapeSize) return needMore();
        EndFrame(control + kEscapeSize);
        return true;
      }
      if (std::memcmp(m_buffer.data() + control, kStartSequence.data() + kEscapeSize, there) == 0) {
        if (there < kEscapeSize) return needMore();
        const std::size_t start = control - kEscapeSize;
        GiveUp(start, "a new start sequence within the frame");
        m_pos = start;
        BeginFrame(start);
        return true;
      }
    }
    m_escaped |= run == 2 * kEscapeSize;
    m_pos = control;
  }
}

void cSmlTransport::BeginFrame(std::size_t at) {
  m_frame = at;
  m_escaped = false;
  m_pos = at + kStartSize;
  m_inFrame = true;
}

void cSmlTransport::EndFrame(std::size_t end) {
  const std::uint8_t* const tail = m_buffer.data() + end - kEscapeSize;
  const cBytes checked(m_buffer.data() + m_frame, end - m_frame - 2);
  const std::size_t contentEnd = end - kEndSize;
  cSmlFrame frame = MakeFrame(eFrameGood, end);
  frame.padding = tail[1];
  frame.crc = MatchCrc16(checked, tail[2], tail[3]);
  if (frame.crc == eCrcNone)
    frame.fault = "checksum wrong";
  else if (frame.padding > kMaxPadding || frame.padding > contentEnd - m_frame - kStartSize)
    frame.fault = "padding count wrong";
  if (*frame.fault != '\0') {
    frame.kind = eFrameBad;
    Fail(frame, end, contentEnd);
    return;
  }
  frame.payload = Unescape(contentEnd, frame.escapes);
  frame.payload = frame.payload.first(frame.payload.size() - frame.padding);
  ++m_counts.good;
  Cover(end);
  m_inFrame = false;
  m_pos = end;
  m_onFrame(frame);
}

void cSmlTransport::GiveUp(std::size_t end, const char* fault) {
  cSmlFrame frame = MakeFrame(eFrameIncomplete, end);
  frame.fault = fault;
  Fail(frame, end, end);
}

// A guess that failed leaves no trace, and none is made within it: so no byte is read more than three times.
void cSmlTransport::Fail(cSmlFrame& frame, std::size_t end, std::size_t contentEnd) {
  m_inFrame = false;
  if (IsGuess()) {
    m_pos = static_cast<std::size_t>(m_guard - m_base);
    return;
  }
  ++(frame.kind == eFrameBad ? m_counts.bad : m_counts.incomplete);
  Cover(end);
  const std::size_t swallowed = FindStart(m_frame + kStartSize, end);
  m_pos = swallowed != end ? swallowed : end - std::min(end - m_frame - kStartSize, kStartSize - 1);
  m_guard = m_base + end - std::min(end - m_frame, kStartSize - 1);
  frame.payload = Unescape(std::min(contentEnd, swallowed), frame.escapes);
  m_onFrame(frame);
}

// In place, and only when there is something to take out.
cBytes cSmlTransport::Unescape(std::size_t end, std::uint32_t& escapes) {
  std::uint8_t* const begin = m_buffer.data() + m_frame + kStartSize;
  if (!m_escaped) return {begin, m_buffer.data() + end};
  std::uint8_t* to = begin;
  std::size_t from = m_frame + kStartSize;
  while (from < end) {
    const void* const found = std::memchr(m_buffer.data() + from, kEscape, end - from);
    const std::size_t run =
        found == nullptr ? end : static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - m_buffer.data());
    const std::size_t size = RunOfEscapes(run, end);
    const bool doubled = size == 2 * kEscapeSize;
    const std::size_t keep = run - from + (doubled ? kEscapeSize : size);
    if (to != m_buffer.data() + from) std::memmove(to, m_buffer.data() + from, keep);
    to += keep;
    from = run + size;
    if (doubled) ++escapes;
  }
  return {begin, static_cast<std::size_t>(to - begin)};
}

cSmlFrame cSmlTransport::MakeFrame(eFrameKind kind, std::size_t end) const {
  cSmlFrame frame;
  frame.kind = kind;
  frame.offset = m_base + m_frame;
  frame.size = static_cast<std::uint32_t>(end - m_frame);
  return frame;
}

// Bytes outside of frames, up to there.
void cSmlTransport::Skip(std::size_t to) {
  const std::uint64_t end = m_base + to;
  if (end > m_covered) m_counts.skippedBytes += end - m_covered;
  m_pos = to;
  Cover(to);
}

void cSmlTransport::Cover(std::size_t to) { m_covered = std::max(m_covered, m_base + to); }

}  // namespace tav::sml
