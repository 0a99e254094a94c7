// SPDX-License-Identifier: Apache-2.0
// cMBusPieces: a capture cut into frames and what is between them. Unlike the framer of a line, which throws away what
// is no frame, it also keeps damaged frames together, so that they can be shown.
#pragma once

#include <cstdint>

#include <gateway/driver/mbus/reader/mbus_frame.h>

namespace tav::mbus {

enum ePiece : std::uint8_t {
  ePieceFrame,   // a whole frame
  ePieceBroken,  // what begins as a frame does and is none: a wrong length, checksum or stop, or bytes are missing
  ePieceCut,     // right as far as the capture goes
  ePieceNoise,   // no part of a frame
};

struct cMBusPiece {
  ePiece kind = ePieceNoise;
  std::size_t offset = 0;  // in the capture
  cMBusFrame frame;        // of a damaged long frame too, as far as its bytes go; its bytes are those of the piece
  cMBusFault fault;        // of a damaged frame: the byte that decides it
};

class cMBusPieces {
 public:
  // The capture's bytes live as long as its pieces are asked for.
  explicit cMBusPieces(cBytes capture) : m_capture(capture) {}

  // The pieces in order, which leave no byte out. False: there are no more.
  bool Next(cMBusPiece& piece);

 private:
  bool TakeFrame(cMBusPiece& piece);
  void TakeDamaged(cMBusPiece& piece, eFrameResult result, const cMBusFault& fault);
  void TakeNoise(cMBusPiece& piece);

  cBytes m_capture;
  std::size_t m_at = 0;
};

}  // namespace tav::mbus
