// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_pieces.h>

#include <algorithm>

namespace tav::mbus {

namespace {

constexpr std::size_t kSecondStart = 3;

// Both start bytes, or the first one and twice the same length: more than chance puts among other bytes.
bool LooksLong(cBytes bytes) {
  if (bytes.size() < kSecondStart || bytes[0] != kLongStart) return false;
  if (bytes.size() > kSecondStart && bytes[kSecondStart] == kLongStart) return true;
  return bytes[1] == bytes[2] && bytes[1] >= kLeastLength;
}

bool LooksShort(cBytes bytes) {
  return bytes.size() >= kShortSize && bytes[0] == kShortStart && bytes[kShortSize - 1] == kStop;
}

bool LooksLikeFrame(cBytes bytes) { return LooksLong(bytes) || LooksShort(bytes); }

bool IsWholeLong(cBytes bytes) {
  cMBusFrame frame;
  cMBusFault fault;
  return !bytes.empty() && bytes[0] == kLongStart && ReadFrame(bytes, frame, fault) == eFrameWhole;
}

// How many of the first bytes are of the damaged frame: it ends where a whole one begins.
std::size_t DamagedSize(cBytes bytes, std::size_t sent) {
  std::size_t size = 1;
  while (size < sent && !IsWholeLong(bytes.subspan(size))) ++size;
  return size;
}

// The fields that are where a whole frame has them.
void ReadFields(cBytes bytes, bool isTrusted, cMBusFrame& frame) {
  frame.bytes = bytes;
  frame.kind = bytes[0] == kLongStart ? eFrameLong : eFrameShort;
  const std::size_t control = frame.kind == eFrameLong ? kDataOffset - kLeastLength : 1;
  if (!isTrusted || bytes.size() < control + 2) return;
  frame.control = bytes[control];
  frame.address = bytes[control + 1];
  if (frame.kind != eFrameLong || bytes.size() < kDataOffset) return;
  frame.information = bytes[kDataOffset - 1];
  const std::size_t end = std::min<std::size_t>(bytes.size(), kSecondStart + 1 + bytes[1]);
  frame.data = bytes.subspan(kDataOffset, end - kDataOffset);
}

}  // namespace

bool cMBusPieces::Next(cMBusPiece& piece) {
  piece = {};
  piece.offset = m_at;
  if (m_at == m_capture.size()) return false;
  if (!TakeFrame(piece)) TakeNoise(piece);
  m_at += piece.frame.bytes.size();
  return true;
}

bool cMBusPieces::TakeFrame(cMBusPiece& piece) {
  const cBytes rest = m_capture.subspan(m_at);
  cMBusFault fault;
  const eFrameResult result = ReadFrame(rest, piece.frame, fault);
  piece.kind = ePieceFrame;
  if (result == eFrameWhole) return true;
  piece.frame = {};
  if (!LooksLikeFrame(rest)) return false;
  TakeDamaged(piece, result, fault);
  return true;
}

void cMBusPieces::TakeDamaged(cMBusPiece& piece, eFrameResult result, const cMBusFault& fault) {
  const cBytes rest = m_capture.subspan(m_at);
  const bool isLong = rest[0] == kLongStart;
  const std::size_t sent = std::min<std::size_t>(rest.size(), isLong ? rest[1] + kLongOverhead : kShortSize);
  const bool hasLength = !isLong || fault.offset > kSecondStart;
  const std::size_t size =
      hasLength && rest[sent - 1] == kStop && result == eFrameBroken ? sent : DamagedSize(rest, sent);
  piece.kind = result == eFramePartial && size == rest.size() ? ePieceCut : ePieceBroken;
  piece.fault = fault;
  if (size < sent)
    piece.fault = {"another frame begins within the frame", static_cast<std::uint32_t>(size), rest[size]};
  ReadFields(rest.first(size), hasLength, piece.frame);
}

// A single character among noise is noise as well.
void cMBusPieces::TakeNoise(cMBusPiece& piece) {
  const cBytes rest = m_capture.subspan(m_at);
  std::size_t size = 1;
  while (size < rest.size() && !LooksLikeFrame(rest.subspan(size))) ++size;
  piece.kind = ePieceNoise;
  piece.frame.bytes = rest.first(size);
}

}  // namespace tav::mbus
