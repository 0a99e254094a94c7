// SPDX-License-Identifier: Apache-2.0
// The one pass over a record's bytes that validates them and remembers where each parameter starts.
#include "record_index.h"

#include <cstdlib>

#include <tav/framework/helper.h>
#include <tav/framework/record.h>

namespace vorn::detail {

namespace {

constexpr std::uint64_t kAny = ~std::uint64_t{0};

// What the value of each parameter type may be: CBOR major types, as a set of bits, and the largest number in its head.
struct cTypeRule {
  unsigned majors;
  std::uint64_t most;
};
constexpr unsigned kUnsigned = 1u << 0, kNegative = 1u << 1, kBytes = 1u << 2, kText = 1u << 3, kSimple = 1u << 7;
constexpr cTypeRule kTypeRules[] = {
    {0, 0},                               // no such type
    {kText | kBytes | kSimple, kAny},     // eParText
    {kUnsigned | kNegative, 0x7FFFFFFF},  // eParInt
    {kUnsigned, 0xFFFFFFFF},              // eParUInt
    {kUnsigned, kAny},                    // eParUInt64
    {kSimple, kAny},                      // eParBool
    {kBytes, kAny},                       // eParRecord
    {kUnsigned, 0xFFFFFFFF},              // eParTime
    {kBytes, cUuid::kSize},               // eParUuid
    {kBytes, kAny},                       // eParData
};

// The common case of ScanPlain: what a value of each type is, a hexadecimal digit
// for each CBOR major type from the right.
enum ePlainKind : unsigned { eNoPlain, eNumber, ePlainBytes, ePlainText };
constexpr std::uint32_t kPlainKinds[] = {
    0x00000000,  // no such type
    0x00003000,  // eParText
    0x00000011,  // eParInt
    0x00000001,  // eParUInt
    0x00000001,  // eParUInt64
    0x00000000,  // eParBool: two of many simple values
    0x00000200,  // eParRecord
    0x00000001,  // eParTime
    0x00000000,  // eParUuid: one length only
    0x00000200,  // eParData
};
constexpr std::size_t kPlainRoom = 1 + 23 + 2 + 8;  // the largest name, head and number
static_assert(kPlainRoom <= kScanRoom);
constexpr std::uint64_t kLeastOfWidth[] = {24, 0x100, 0x10000, 0x100000000};  // in 1, 2, 4, 8 bytes behind the head
// The bytes of a name's head and first three letters that belong to it, by its length.
constexpr std::uint32_t kKeyMasks[24] = {0x000000FF, 0x0000FFFF, 0x00FFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF,
                                         0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF,
                                         0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF,
                                         0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};

// What is wrong, where; kept as a literal so that refusing costs nothing.
struct cFault {
  const char* what = nullptr;
  std::size_t at = 0;
};

using Bytes = const unsigned char*;

// Nearly all texts are ASCII.
inline bool IsText(Bytes text, std::size_t size) {
  return IsAscii(text, size) || IsUtf8(reinterpret_cast<const char*>(text), size);
}

class cScanner {
 public:
  explicit cScanner(cRecordBuffer* buffer)
      : m_buffer(buffer),
        m_bytes(buffer->Bytes()),
        m_stop(m_bytes + buffer->capacity),
        m_next(buffer->index),
        m_limit(buffer->index + buffer->indexCapacity) {}

  bool ScanRecord(Bytes at, Bytes end, unsigned depth, std::uint32_t& head);
  const cFault& GetFault() const { return m_fault; }
  unsigned GetDepth() const { return m_depth; }

 private:
  Bytes Refuse(const char* what, Bytes at) {
    m_fault = {what, static_cast<std::size_t>(at - m_bytes)};
    return nullptr;
  }
  bool Grow();
  Bytes ReadLongHead(Bytes at, Bytes end, std::uint64_t& number);
  Bytes ReadItem(Bytes at, Bytes end, std::uint64_t& number);
  Bytes ScanPlain(Bytes at, Bytes end, cRecordIndexEntry& entry, bool& nested);
  Bytes ScanName(Bytes at, Bytes end, cRecordIndexEntry& entry);
  Bytes ScanValue(Bytes at, Bytes end, bool& nested);

  cRecordBuffer* m_buffer;
  Bytes m_bytes;
  Bytes m_stop;  // so far memory can be read, whatever stands there
  cRecordIndexEntry* m_next;
  cRecordIndexEntry* m_limit;
  unsigned m_depth = 1;
  cFault m_fault;
};

[[gnu::noinline]] bool cScanner::Grow() {
  const auto used = static_cast<std::size_t>(m_next - m_buffer->index);
  const std::uint32_t capacity = m_buffer->indexCapacity != 0 ? m_buffer->indexCapacity * 2 : 64;
  void* grown = std::realloc(m_buffer->index, capacity * sizeof(cRecordIndexEntry));
  if (grown == nullptr) return Refuse("no memory for its index", m_bytes) != nullptr;
  m_buffer->index = static_cast<cRecordIndexEntry*>(grown);
  m_buffer->indexCapacity = capacity;
  m_next = m_buffer->index + used;
  m_limit = m_buffer->index + capacity;
  return true;
}

// The rest of a head whose number did not fit its first byte: inside the bounds, and in the shortest form, so that
// equal records have equal bytes.
[[gnu::noinline]] Bytes cScanner::ReadLongHead(Bytes at, Bytes end, std::uint64_t& number) {
  const unsigned low = *at & 0x1F;
  if (low > 27) return Refuse("indefinite or reserved length", at);
  const std::size_t more = std::size_t{1} << (low - 24);
  if (static_cast<std::size_t>(end - at) <= more) return Refuse("ends early", at);
  Bytes from = at;
  number = ReadHead(from);
  if (number < (low == 24 ? 24u : std::uint64_t{1} << (4 * more))) return Refuse("number not in its shortest form", at);
  return from;
}

// The number in an item's head; behind the head.
inline Bytes cScanner::ReadItem(Bytes at, Bytes end, std::uint64_t& number) {
  const unsigned low = *at & 0x1F;
  if (low < 24) {
    number = low;
    return at + 1;
  }
  if (low == 24 && end - at > 1 && at[1] >= 24) {  // lengths of 24 to 255
    number = at[1];
    return at + 2;
  }
  std::uint64_t longNumber = 0;  // so that number itself can stay in a register
  at = ReadLongHead(at, end, longNumber);
  number = longNumber;
  return at;
}

inline Bytes cScanner::ScanName(Bytes at, Bytes end, cRecordIndexEntry& entry) {
  const Bytes start = at;
  if ((*at & 0xE0) != kCborText) return Refuse("name is not a text", at);
  std::uint64_t size = 0;
  at = ReadItem(at, end, size);
  if (at == nullptr) return nullptr;
  if (size > kMaxParName) return Refuse("name is longer than 255 bytes", start);
  if (static_cast<std::size_t>(end - at) < size) return Refuse("name ends early", start);
  const auto length = static_cast<std::uint32_t>(size);
  entry.key = length >= 3 ? (Load<std::uint32_t>(at - 1) & ~0xFFu) | length
                          : NameKey(reinterpret_cast<const char*>(at), length);
  entry.at = static_cast<std::uint32_t>(at - m_bytes);
  entry.child = 0;
  return at + length;
}

inline Bytes cScanner::ScanValue(Bytes at, Bytes end, bool& nested) {
  const Bytes start = at;
  if (end - at < 2) return Refuse("ends before its value", at);
  const unsigned type = *at++;
  if (type == eParNone || type > eParData) return Refuse("unknown parameter type", start);
  const unsigned char first = *at;
  std::uint64_t number = 0;
  at = ReadItem(at, end, number);
  if (at == nullptr) return nullptr;
  const cTypeRule& rule = kTypeRules[type];
  const unsigned major = first >> 5;
  bool fits = (rule.majors >> major & 1) != 0 && number <= rule.most;
  if (major == 7) fits = fits && (type == eParText ? first == kCborNull : first == kCborFalse || first == kCborTrue);
  if (type == eParUuid) fits = fits && number == cUuid::kSize;
  if (!fits) return Refuse("value does not fit its type", start);
  if (major == 2 || major == 3) {
    if (static_cast<std::size_t>(end - at) < number) return Refuse("value ends early", start);
    // One text has one form, so that equal records have equal bytes.
    if (type == eParText && IsText(at, static_cast<std::size_t>(number)) != (major == 3))
      return Refuse(major == 3 ? "text is not UTF-8" : "UTF-8 text stands as bytes", start);
    at += number;
  }
  nested |= type == eParRecord;
  return at;
}

// Most parameters have a name and a value of less than 24 bytes, or a number. Behind such a parameter, or null for any
// other; what is wrong is found by the slow way. kPlainRoom bytes of memory can be read from at on.
inline Bytes cScanner::ScanPlain(Bytes at, Bytes end, cRecordIndexEntry& entry, bool& nested) {
  const unsigned size = *at ^ kCborText;
  if (size >= 24 || end - at < static_cast<std::ptrdiff_t>(size) + 3) return nullptr;
  entry = {(Load<std::uint32_t>(at) & kKeyMasks[size]) ^ kCborText, static_cast<std::uint32_t>(at + 1 - m_bytes), 0};
  const Bytes value = at + 1 + size;
  const unsigned type = value[0];
  const unsigned head = value[1];
  const unsigned number = head & 0x1F;
  if (type > eParData) return nullptr;
  const unsigned kind = kPlainKinds[type] >> (head >> 5) * 4 & 0xF;
  at = value + 2;
  if (kind == eNumber) {
    if (number < 24) return at;
    if (number > 27) return nullptr;
    const unsigned width = 1u << (number - 24);
    if (end - at < static_cast<std::ptrdiff_t>(width)) return nullptr;
    const std::uint64_t wide = __builtin_bswap64(Load<std::uint64_t>(at)) >> (64 - 8 * width);
    return wide >= kLeastOfWidth[number - 24] && wide <= kTypeRules[type].most ? at + width : nullptr;
  }
  if (kind == eNoPlain || number >= 24 || static_cast<std::size_t>(end - at) < number) return nullptr;
  if (kind == ePlainText && !IsAscii(at, number)) return nullptr;
  nested |= type == eParRecord;
  return at + number;
}

// A record's entries stand side by side, so those of its nested records come in a second round.
bool cScanner::ScanRecord(Bytes at, Bytes end, unsigned depth, std::uint32_t& head) {
  if (depth > kMaxRecordDepth) return Refuse("records nest deeper than 16", at) != nullptr;
  if (depth > m_depth) m_depth = depth;
  head = static_cast<std::uint32_t>(m_next - m_buffer->index);
  if (m_next == m_limit && !Grow()) return false;
  bool nested = false;
  cRecordIndexEntry* next = m_next + 1;  // in a register: this loop is what a received record costs
  while (at < end) {
    if (next == m_limit) {
      m_next = next;
      if (!Grow()) return false;
      next = m_next;
    }
    if (static_cast<std::size_t>(m_stop - at) >= kPlainRoom) {
      if (const Bytes behind = ScanPlain(at, end, *next, nested)) {
        at = behind;
        ++next;
        continue;
      }
    }
    if ((at = ScanName(at, end, *next++)) == nullptr) return false;
    if ((at = ScanValue(at, end, nested)) == nullptr) return false;
  }
  m_next = next;
  const auto last = static_cast<std::uint32_t>(next - m_buffer->index);
  m_buffer->index[head].at = last - head - 1;
  if (!nested) return true;
  for (std::uint32_t i = head + 1; i < last; ++i) {
    const cRecordIndexEntry& entry = m_buffer->index[i];
    Bytes value = m_bytes + entry.at + (entry.key & 0xFF);
    if (*value++ != eParRecord) continue;
    const std::uint64_t size = ReadHead(value);
    std::uint32_t child = 0;
    if (!ScanRecord(value, value + size, depth + 1, child)) return false;
    m_buffer->index[i].child = child;
  }
  return true;
}

}  // namespace

bool IndexBuffer(cRecordBuffer* buffer, std::string* error) {
  cScanner scanner(buffer);
  std::uint32_t head = 0;
  if (!scanner.ScanRecord(buffer->Bytes(), buffer->Bytes() + buffer->size, 1, head)) {
    if (error != nullptr) *error = FormatString("byte %zu: %s", scanner.GetFault().at, scanner.GetFault().what);
    return false;
  }
  buffer->depth = static_cast<std::uint16_t>(scanner.GetDepth());
  buffer->indexed = 1;
  return true;
}

}  // namespace vorn::detail
