// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/body_stream.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace tav::gateway::web {

namespace {

// So much is compressed at a time: others wait meanwhile.
constexpr std::size_t kSlice = std::size_t{32} << 10;

}  // namespace

void cBodyStream::Push(std::string bytes) {
  if (bytes.empty() && m_pieces.empty() && m_packed.empty()) {
    ++m_passed;
    return;
  }
  m_waiting += bytes.size();
  m_pieces.push_back(std::move(bytes));
}

std::size_t cBodyStream::Take(char* to, std::size_t most) {
  return m_gzip ? TakePacked(to, most) : TakePlain(to, most);
}

std::string cBodyStream::TakeAll() {
  std::string all;
  char part[4096];
  while (const std::size_t size = Take(part, sizeof part)) all.append(part, size);
  return all;
}

unsigned int cBodyStream::TakePassed() { return std::exchange(m_passed, 0); }

std::size_t cBodyStream::TakePlain(char* to, std::size_t most) {
  std::size_t taken = 0;
  while (taken < most && !m_pieces.empty()) {
    const std::size_t size = std::min(most - taken, m_pieces.front().size() - m_at);
    std::memcpy(to + taken, m_pieces.front().data() + m_at, size);
    taken += size;
    Advance(size);
  }
  return taken;
}

std::size_t cBodyStream::TakePacked(char* to, std::size_t most) {
  std::size_t taken = 0;
  while (taken < most) {
    if (m_packed.empty()) Pack();
    if (m_packed.empty()) break;
    const std::size_t size = std::min(most - taken, m_packed.size() - m_packedAt);
    std::memcpy(to + taken, m_packed.data() + m_packedAt, size);
    taken += size;
    m_packedAt += size;
    if (m_packedAt < m_packed.size()) break;
    m_packed.clear();
    m_packedAt = 0;
    m_passed += std::exchange(m_inGzip, 0);
  }
  return taken;
}

// Compresses slices until something comes out. What has come so far is made readable before one waits for more.
void cBodyStream::Pack() {
  while (m_packed.empty() && !m_isPacked && (!m_pieces.empty() || m_finished)) {
    const std::size_t size = m_pieces.empty() ? 0 : std::min(kSlice, m_pieces.front().size() - m_at);
    const bool isLast = size == m_waiting;
    m_isPacked = isLast && m_finished;
    const auto end = m_isPacked ? cGzip::eEnd::Whole : isLast ? cGzip::eEnd::Flush : cGzip::eEnd::Open;
    const std::string_view slice =
        size != 0 ? std::string_view(m_pieces.front()).substr(m_at, size) : std::string_view();
    if (size != 0 || m_isPacked) m_gzip->Append(slice, end, m_packed);
    const unsigned int before = m_passed;
    if (!m_pieces.empty()) Advance(size);
    if (m_isPacked) DropEmpty();
    m_inGzip += m_passed - before;
    m_passed = before;
  }
  if (m_packed.empty()) m_passed += std::exchange(m_inGzip, 0);
}

void cBodyStream::Advance(std::size_t bytes) {
  m_at += bytes;
  m_waiting -= bytes;
  if (m_at < m_pieces.front().size()) return;
  m_pieces.pop_front();
  m_at = 0;
  ++m_passed;
  if (!m_gzip) DropEmpty();
}

void cBodyStream::DropEmpty() {
  while (!m_pieces.empty() && m_pieces.front().empty()) {
    m_pieces.pop_front();
    ++m_passed;
  }
}

}  // namespace tav::gateway::web
