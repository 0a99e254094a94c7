// SPDX-License-Identifier: Apache-2.0
// cByteBuffer: bytes that come in behind and go out in front, as the input and output of a channel do. Fresh room is
// not filled with zeros, and a buffer that had to grow for large frames shrinks again when it runs empty.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace vorn::detail {

class cByteBuffer {
 public:
  explicit cByteBuffer(std::size_t ordinary) : m_ordinary(ordinary) {}
  ~cByteBuffer() { std::free(m_bytes); }
  cByteBuffer(const cByteBuffer&) = delete;
  cByteBuffer& operator=(const cByteBuffer&) = delete;

  const unsigned char* Data() const { return m_bytes + m_begin; }
  std::size_t Size() const { return m_end - m_begin; }
  bool IsEmpty() const { return m_begin == m_end; }

  // Room for size bytes behind the present ones, to be taken into use by Commit; null when there is no memory.
  unsigned char* Reserve(std::size_t size) {
    if (m_capacity - m_end < size && !MakeRoom(size)) return nullptr;
    return m_bytes + m_end;
  }
  // Bytes that Reserve would give without growing.
  std::size_t Room() const { return m_capacity - m_end; }
  void Commit(std::size_t size) { m_end += size; }
  void Consume(std::size_t size) {
    m_begin += size;
    if (m_begin == m_end) Rewind();
  }
  void Clear() {
    m_begin = m_end;
    Rewind();
  }

 private:
  void Rewind() {
    m_begin = m_end = 0;
    if (m_capacity > m_ordinary) {
      std::free(m_bytes);
      m_bytes = nullptr;
      m_capacity = 0;
    }
  }
  bool MakeRoom(std::size_t size) {
    const std::size_t used = Size();
    if (m_begin != 0) {
      std::memmove(m_bytes, m_bytes + m_begin, used);
      m_begin = 0;
      m_end = used;
      if (m_capacity - m_end >= size) return true;
    }
    std::size_t capacity = m_capacity != 0 ? m_capacity * 2 : m_ordinary;
    if (capacity < used + size) capacity = used + size;
    void* grown = std::realloc(m_bytes, capacity);
    if (grown == nullptr) return false;
    m_bytes = static_cast<unsigned char*>(grown);
    m_capacity = capacity;
    return true;
  }

  unsigned char* m_bytes = nullptr;
  std::size_t m_capacity = 0;
  std::size_t m_begin = 0;
  std::size_t m_end = 0;
  std::size_t m_ordinary;
};

}  // namespace vorn::detail
