// SPDX-License-Identifier: Apache-2.0
// The one pass over a record's bytes that validates them and remembers where each parameter starts.
#include "record_index.h"

#include <algorithm>
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

// What SkipPlain does with a value, by its type and the first byte of its item: a kind in the upper three bits and a
// number in the others.
enum ePlainKind : unsigned {
  eNoPlain,     // anything else, and what is wrong: the slow way
  eSkip,        // so many bytes and no more to look at
  ePlainText,   // so many bytes of text
  ePlainChild,  // so many bytes of a nested record
  eWide,        // a number in two to the power of so many bytes
  eLong,        // bytes or a nested record, their length in the next byte
};
struct cPlans {
  std::uint8_t of[(eParData + 1) << 8] = {};
  constexpr void Set(unsigned type, unsigned first, unsigned kind, unsigned number) {
    of[type << 8 | first] = static_cast<std::uint8_t>(kind << 5 | number);
  }
};
constexpr cPlans MakePlans() {
  cPlans plans;
  for (unsigned n = 0; n < 24; ++n) {
    for (const unsigned type : {eParInt, eParUInt, eParUInt64, eParTime}) plans.Set(type, kCborUnsigned | n, eSkip, 0);
    plans.Set(eParInt, kCborNegative | n, eSkip, 0);
    plans.Set(eParText, kCborText | n, n != 0 ? ePlainText : eSkip, n);
    plans.Set(eParRecord, kCborBytes | n, ePlainChild, n);
    plans.Set(eParData, kCborBytes | n, eSkip, n);
  }
  for (unsigned n = 0; n < 4; ++n) {  // of a signed number, four bytes may be too much
    plans.Set(eParUInt64, kCborUnsigned | 24 | n, eWide, n);
    if (n == 3) continue;
    plans.Set(eParUInt, kCborUnsigned | 24 | n, eWide, n);
    plans.Set(eParTime, kCborUnsigned | 24 | n, eWide, n);
    if (n == 2) continue;
    plans.Set(eParInt, kCborUnsigned | 24 | n, eWide, n);
    plans.Set(eParInt, kCborNegative | 24 | n, eWide, n);
  }
  plans.Set(eParText, kCborNull, eSkip, 0);
  plans.Set(eParBool, kCborFalse, eSkip, 0);
  plans.Set(eParBool, kCborTrue, eSkip, 0);
  plans.Set(eParUuid, kCborBytes | cUuid::kSize, eSkip, cUuid::kSize);
  plans.Set(eParRecord, kCborBytes | 24, eLong, 0);
  plans.Set(eParData, kCborBytes | 24, eLong, 0);
  return plans;
}
constexpr cPlans kPlans = MakePlans();

inline std::uint8_t PlanOf(std::uint16_t form) {
  const unsigned at = __builtin_bswap16(form);
  return at < sizeof kPlans.of ? kPlans.of[at] : std::uint8_t{0};
}
constexpr std::size_t kPlainRoom = 1 + 23 + 2 + 23;  // the largest name, type and head, and value
static_assert(kPlainRoom <= kScanRoom);
constexpr std::uint64_t kLeastOfWidth[] = {24, 0x100, 0x10000, 0x100000000};  // in 1, 2, 4, 8 bytes behind the head
// What is wrong, where; kept as a literal so that refusing costs nothing.
struct cFault {
  const char* what = nullptr;
  std::size_t at = 0;
};

using Bytes = const unsigned char*;

// Whether a name of less than 24 bytes stands at `at` and has the key of that entry, marked or not.
inline bool IsPlainName(Bytes at, const cRecordIndexEntry& entry) {
  return (entry.key & 0xFF) < 24 && (Load<std::uint32_t>(at) ^ kCborText ^ entry.key) << entry.beyond == 0;
}

// As IsAscii, of 1 to 23 bytes with as much memory behind them.
inline bool IsPlainAscii(Bytes text, unsigned size) {
  if (size > 8) return IsAscii(text, size);
  return (Load<std::uint64_t>(text) << (64 - 8 * size) & kHighBits) == 0;
}

// Nearly all texts are ASCII.
inline bool IsText(Bytes text, std::size_t size) {
  return IsAscii(text, size) || IsUtf8(reinterpret_cast<const char*>(text), size);
}

// Tells names that surely were not there before from those that may have been, by one bit a name.
class cNamesSeen {
 public:
  // The key as the index keeps it.
  std::uint32_t Mark(std::uint32_t key) {
    const unsigned bit = (key * 0x9E3779B1u) >> 26;
    const std::uint32_t marked = key | static_cast<std::uint32_t>(m_bits >> bit) << 31;
    m_bits |= std::uint64_t{1} << bit;
    return marked;
  }

 private:
  static_assert(kMaybeRepeated == 1u << 31);
  std::uint64_t m_bits = 0;
};

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
  Bytes SkipPlain(Bytes value, Bytes end, unsigned plan, bool& nested);
  Bytes ScanAlike(Bytes at, Bytes end, bool& nested);
  bool ScanPars(Bytes at, Bytes end, bool& nested);
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
  // One more than parameters may use: one stands behind the last.
  auto* grown = static_cast<cRecordIndexEntry*>(std::realloc(m_buffer->index, (capacity + 1) * sizeof *m_next));
  if (grown == nullptr) return Refuse("no memory for its index", m_bytes) != nullptr;
  std::fill(grown + used, grown + capacity + 1, cRecordIndexEntry{kNoName, 0, 0, 0, 0, 0});
  m_buffer->index = grown;
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
  entry.key = length >= 3 ? (Load<std::uint32_t>(at - 1) & kNameKeyMask & ~0xFFu) | length
                          : NameKey(reinterpret_cast<const char*>(at), length);
  entry.at = static_cast<std::uint32_t>(at - m_bytes);
  entry.beyond = static_cast<std::uint8_t>(length < 3 ? 24 - 8 * length : 1);
  return at + length;
}

[[gnu::noinline]] Bytes cScanner::ScanValue(Bytes at, Bytes end, bool& nested) {
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

// Most values have less than 24 bytes, or are a number. Behind such a value, or null for any other; what is wrong is
// found by the slow way. As many bytes of memory as such a value has can be read from it on.
inline Bytes cScanner::SkipPlain(Bytes value, Bytes end, unsigned plan, bool& nested) {
  const unsigned kind = plan >> 5;
  const unsigned number = plan & 0x1F;
  const Bytes bytes = value + 2;
  Bytes behind = bytes + number;
  if (kind == ePlainText) return behind <= end && IsPlainAscii(bytes, number) ? behind : nullptr;
  if (kind == eWide) {
    const unsigned width = 1u << number;
    const std::uint64_t wide = __builtin_bswap64(Load<std::uint64_t>(bytes)) >> (64 - 8 * width);
    behind = bytes + width;
    return behind <= end && wide >= kLeastOfWidth[number] ? behind : nullptr;
  }
  if (kind == eLong) {
    nested |= *value == eParRecord;
    behind = bytes + 1 + *bytes;
    return behind <= end && *bytes >= 24 ? behind : nullptr;
  }
  nested |= kind == ePlainChild;
  return behind <= end && kind != eNoPlain ? behind : nullptr;
}

// Records of a kind are made alike, and the index holds what the record before left. While the names of this one are
// the same from its first on, their keys stand here already and are marked as they must be; where a value has the same
// form, so does what to do with it. The way through such a record waits for no load after the other. Behind the last
// parameter that is alike; null when one is refused.
Bytes cScanner::ScanAlike(Bytes at, Bytes end, bool& nested) {
  const Bytes stop = std::min(end, m_stop - kPlainRoom + 1);
  cRecordIndexEntry* next = m_next;  // in a register: this loop is what a received record costs
  while (at < stop && IsPlainName(at, *next)) {
    next->at = static_cast<std::uint32_t>(at + 1 - m_bytes);
    const Bytes value = at + 1 + (next->key & 0xFF);
    const auto form = Load<std::uint16_t>(value);
    if (form != next->form) {
      next->form = form;
      next->plan = PlanOf(form);
    }
    Bytes behind = SkipPlain(value, end, next->plan, nested);
    if (behind == nullptr) {
      if (value > end) return Refuse("name ends early", at);
      if ((behind = ScanValue(value, end, nested)) == nullptr) return nullptr;
    }
    at = behind;
    ++next;
  }
  m_next = next;
  return at;
}

// The parameters of a record: an entry each, behind the record's own.
bool cScanner::ScanPars(Bytes at, Bytes end, bool& nested) {
  const auto first = m_next - m_buffer->index;
  if ((at = ScanAlike(at, end, nested)) == nullptr) return false;
  cNamesSeen seen;
  if (at < end)
    for (auto* before = m_buffer->index + first; before != m_next; ++before) seen.Mark(before->key & kNameKeyMask);
  for (; at < end; ++m_next) {
    if (m_next == m_limit && !Grow()) return false;
    if ((at = ScanName(at, end, *m_next)) == nullptr) return false;
    m_next->key = seen.Mark(m_next->key);
    const Bytes value = at;
    if ((at = ScanValue(value, end, nested)) == nullptr) return false;
    m_next->form = Load<std::uint16_t>(value);
    m_next->plan = PlanOf(m_next->form);
  }
  m_next->key = kNoName;
  return true;
}

// A record's entries stand side by side, so those of its nested records come in a second round.
bool cScanner::ScanRecord(Bytes at, Bytes end, unsigned depth, std::uint32_t& head) {
  if (depth > kMaxRecordDepth) return Refuse("records nest deeper than 16", at) != nullptr;
  if (depth > m_depth) m_depth = depth;
  if (m_next == m_limit && !Grow()) return false;
  head = static_cast<std::uint32_t>(m_next - m_buffer->index);
  (m_next++)->key = kNoName;
  bool nested = false;
  if (!ScanPars(at, end, nested)) return false;
  const auto last = static_cast<std::uint32_t>(m_next - m_buffer->index);
  m_buffer->index[head].at = last - head - 1;
  if (!nested) return true;
  for (std::uint32_t i = head + 1; i < last; ++i) {
    const cRecordIndexEntry& entry = m_buffer->index[i];
    if ((entry.form & 0xFF) != eParRecord) continue;
    Bytes value = m_bytes + entry.at + (entry.key & 0xFF) + 1;
    const std::uint64_t size = ReadHead(value);
    std::uint32_t child = 0;
    if (!ScanRecord(value, value + size, depth + 1, child)) return false;
    m_buffer->index[i].child = child;
  }
  return true;
}

}  // namespace

bool IndexBuffer(cRecordBuffer* buffer, std::uint32_t size, std::string* error) {
  cScanner scanner(buffer);
  std::uint32_t head = 0;
  if (!scanner.ScanRecord(buffer->Bytes(), buffer->Bytes() + size, 1, head)) {
    if (error != nullptr) *error = FormatString("byte %zu: %s", scanner.GetFault().at, scanner.GetFault().what);
    // What stands in it now is of no one record.
    std::free(buffer->index);
    buffer->index = nullptr;
    buffer->indexCapacity = 0;
    return false;
  }
  buffer->depth = scanner.GetDepth();
  buffer->indexed = size;
  return true;
}

}  // namespace vorn::detail
