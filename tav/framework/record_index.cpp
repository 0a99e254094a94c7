// SPDX-License-Identifier: Apache-2.0
// The one pass over a record's bytes that validates them and remembers where each parameter starts.
#include "record_index.h"

#include <cstdlib>

#include <tav/framework/helper.h>
#include <tav/framework/record.h>

namespace vorn::detail {

namespace {

struct cItem {
  unsigned char major = 0;
  unsigned char first = 0;  // the whole first byte
  std::uint64_t number = 0;
};

// What is wrong, where; kept as a literal so that refusing costs nothing.
struct cFault {
  const char* what = nullptr;
  std::size_t at = 0;
};

class cScanner {
 public:
  explicit cScanner(cRecordBuffer* buffer) : m_buffer(buffer), m_bytes(buffer->Bytes()) {}

  bool ScanRecord(std::size_t begin, std::size_t end, unsigned depth, std::uint32_t& head);
  const cFault& GetFault() const { return m_fault; }
  unsigned GetDepth() const { return m_depth; }

 private:
  bool Refuse(const char* what, std::size_t at) {
    m_fault = {what, at};
    return false;
  }
  bool AddEntry(const cRecordIndexEntry& entry);
  bool ReadItem(std::size_t& at, std::size_t end, cItem& item);
  bool ScanName(std::size_t& at, std::size_t end);
  bool ScanValue(std::size_t& at, std::size_t end, bool& nested);

  cRecordBuffer* m_buffer;
  const unsigned char* m_bytes;
  std::uint32_t m_used = 0;
  unsigned m_depth = 1;
  cFault m_fault;
};

bool cScanner::AddEntry(const cRecordIndexEntry& entry) {
  if (m_used == m_buffer->indexCapacity) {
    const std::uint32_t capacity = m_buffer->indexCapacity != 0 ? m_buffer->indexCapacity * 2 : 64;
    void* grown = std::realloc(m_buffer->index, capacity * sizeof(cRecordIndexEntry));
    if (grown == nullptr) return Refuse("no memory for its index", entry.at);
    m_buffer->index = static_cast<cRecordIndexEntry*>(grown);
    m_buffer->indexCapacity = capacity;
  }
  m_buffer->index[m_used++] = entry;
  return true;
}

// One head, its bytes inside the bounds and its number in the shortest form, so that equal records have equal bytes.
inline bool cScanner::ReadItem(std::size_t& at, std::size_t end, cItem& item) {
  if (at >= end) return Refuse("ends early", at);
  const unsigned char* from = m_bytes + at;
  const unsigned low = *from & 0x1F;
  item.first = *from;
  item.major = *from & 0xE0;
  if (low < 24) {
    item.number = low;
    ++at;
    return true;
  }
  if (low > 27) return Refuse("indefinite or reserved length", at);
  const std::size_t more = std::size_t{1} << (low - 24);
  if (end - at - 1 < more) return Refuse("ends early", at);
  item.number = ReadHead(from);
  if (item.number < (low == 24 ? 24u : std::uint64_t{1} << (4 * more))) return Refuse("number not in its shortest form", at);
  at += 1 + more;
  return true;
}

inline bool cScanner::ScanName(std::size_t& at, std::size_t end) {
  cItem item;
  const std::size_t start = at;
  if (!ReadItem(at, end, item)) return false;
  if (item.major != kCborText) return Refuse("name is not a text", start);
  if (item.number > kMaxParName) return Refuse("name is longer than 255 bytes", start);
  const auto size = static_cast<std::uint32_t>(item.number);
  if (end - at < size) return Refuse("name ends early", start);
  const std::uint32_t key = size >= 3 ? (Load<std::uint32_t>(m_bytes + at - 1) & ~0xFFu) | size
                                      : NameKey(reinterpret_cast<const char*>(m_bytes + at), size);
  if (!AddEntry({key, static_cast<std::uint32_t>(at), 0})) return false;
  at += size;
  return true;
}

inline bool cScanner::ScanValue(std::size_t& at, std::size_t end, bool& nested) {
  if (at >= end) return Refuse("ends before a type", at);
  const unsigned type = m_bytes[at];
  const std::size_t start = at++;
  cItem item;
  if (!ReadItem(at, end, item)) return false;
  bool fits = false;
  bool hasBytes = false;
  switch (type) {
    case eParText:
      hasBytes = item.major == kCborText || item.major == kCborBytes;
      fits = hasBytes || item.first == kCborNull;
      break;
    case eParInt:
      fits = (item.major == kCborUnsigned || item.major == kCborNegative) && item.number <= 0x7FFFFFFF;
      break;
    case eParUInt:
    case eParTime: fits = item.major == kCborUnsigned && item.number <= 0xFFFFFFFF; break;
    case eParUInt64: fits = item.major == kCborUnsigned; break;
    case eParBool: fits = item.first == kCborFalse || item.first == kCborTrue; break;
    case eParUuid:
      hasBytes = true;
      fits = item.major == kCborBytes && item.number == cUuid::kSize;
      break;
    case eParRecord: nested = true; [[fallthrough]];
    case eParData:
      hasBytes = true;
      fits = item.major == kCborBytes;
      break;
    default: return Refuse("unknown parameter type", start);
  }
  if (!fits) return Refuse("value does not fit its type", start);
  if (hasBytes) {
    if (end - at < item.number) return Refuse("value ends early", start);
    at += static_cast<std::size_t>(item.number);
  }
  return true;
}

// A record's entries stand side by side, so those of its nested records come in a second round.
bool cScanner::ScanRecord(std::size_t begin, std::size_t end, unsigned depth, std::uint32_t& head) {
  if (depth > kMaxRecordDepth) return Refuse("records nest deeper than 16", begin);
  if (depth > m_depth) m_depth = depth;
  head = m_used;
  if (!AddEntry({0, 0, 0})) return false;
  bool nested = false;
  for (std::size_t at = begin; at < end;)
    if (!ScanName(at, end) || !ScanValue(at, end, nested)) return false;
  const std::uint32_t last = m_used;
  m_buffer->index[head].at = last - head - 1;
  if (!nested) return true;
  for (std::uint32_t i = head + 1; i < last; ++i) {
    const cRecordIndexEntry entry = m_buffer->index[i];
    const unsigned char* at = m_bytes + entry.at + (entry.key & 0xFF);
    if (*at++ != eParRecord) continue;
    const auto size = static_cast<std::size_t>(ReadHead(at));
    const auto start = static_cast<std::size_t>(at - m_bytes);
    std::uint32_t child = 0;
    if (!ScanRecord(start, start + size, depth + 1, child)) return false;
    m_buffer->index[i].child = child;
  }
  return true;
}

}  // namespace

bool IndexBuffer(cRecordBuffer* buffer, std::string* error) {
  cScanner scanner(buffer);
  std::uint32_t head = 0;
  if (!scanner.ScanRecord(0, buffer->size, 1, head)) {
    if (error != nullptr)
      *error = FormatString("byte %zu: %s", scanner.GetFault().at, scanner.GetFault().what);
    return false;
  }
  buffer->depth = static_cast<std::uint16_t>(scanner.GetDepth());
  buffer->indexed = 1;
  return true;
}

}  // namespace vorn::detail
