// SPDX-License-Identifier: Apache-2.0
// cBodyStream: the body of an answer between the page, which pushes outputs, and the client, which takes bytes; it is
// compressed on the way when that is wanted. It counts the outputs whose bytes have all been taken.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include <gateway/web/front/gzip.h>

namespace tav::gateway::web {

class cBodyStream {
 public:
  // Before the first byte is taken.
  void Compress() { m_gzip = std::make_unique<cGzip>(); }

  // The body's part of one output; an empty one is an output all the same.
  void Push(std::string bytes);
  // Nothing follows.
  void Finish() { m_finished = true; }
  // Moves at most so many bytes; 0: there is nothing to take now.
  std::size_t Take(char* to, std::size_t most);
  // All that there is, at once; for a body that is finished.
  std::string TakeAll();
  // How many outputs have been taken since it was asked last.
  unsigned int TakePassed();

  bool IsFinished() const { return m_finished; }
  // Finished, and every byte taken.
  bool IsAtEnd() const { return m_finished && m_pieces.empty() && m_packed.empty() && (!m_gzip || m_isPacked); }
  // Whether Take would give something.
  bool HasBytes() const { return m_waiting != 0 || !m_packed.empty() || (m_finished && m_gzip && !m_isPacked); }
  // Bytes of the page that were not taken.
  std::size_t GetWaiting() const { return m_waiting; }

 private:
  void Pack();
  std::size_t TakePlain(char* to, std::size_t most);
  std::size_t TakePacked(char* to, std::size_t most);
  // So many bytes of the first piece are through.
  void Advance(std::size_t bytes);
  void DropEmpty();

  std::deque<std::string> m_pieces;
  std::size_t m_at = 0;  // in the first piece
  std::size_t m_waiting = 0;
  bool m_finished = false;
  std::unique_ptr<cGzip> m_gzip;
  std::string m_packed;  // compressed, from m_packedAt on not yet taken
  std::size_t m_packedAt = 0;
  bool m_isPacked = false;    // to its end
  unsigned int m_inGzip = 0;  // outputs that are taken once m_packed is
  unsigned int m_passed = 0;
};

}  // namespace tav::gateway::web
