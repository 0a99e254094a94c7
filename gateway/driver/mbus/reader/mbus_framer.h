// SPDX-License-Identifier: Apache-2.0
// cMBusFramer: takes the bytes of a line as they come and finds the frames among them. What is no frame is passed over,
// byte by byte, so that noise before an answer does not cost it.
#pragma once

#include <array>

#include <gateway/driver/mbus/reader/mbus_frame.h>

namespace tav::mbus {

class cMBusFramer {
 public:
  // Takes as many of the bytes as there is room for, and says how many; kMostFrame at least when Next has been asked
  // until it had none.
  std::size_t Feed(cBytes bytes);
  // The next frame; it lives until more bytes are fed. False: more bytes are needed.
  bool Next(cMBusFrame& frame);
  // Begins anew: what is there belongs to nobody.
  void Clear();

  // Bytes passed over since the beginning, and why the last of them.
  std::size_t GetSkipped() const { return m_skipped; }
  const cMBusFault& GetFault() const { return m_fault; }
  // Whether the beginning of a frame waits for its rest.
  bool HasPart() const { return m_begin != m_end; }

 private:
  std::array<std::uint8_t, 2 * kMostFrame> m_bytes{};
  std::size_t m_begin = 0, m_end = 0;  // of what is not read yet
  std::size_t m_skipped = 0;
  cMBusFault m_fault;
};

}  // namespace tav::mbus
