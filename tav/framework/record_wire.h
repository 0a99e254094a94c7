// SPDX-License-Identifier: Apache-2.0
// The bytes of a record: a CBOR sequence (RFC 8949, RFC 8742) of name, type, value, name, type, value, ...
// Internal to record.h, which inlines these few functions; docs/wire-format.md describes the form.
#pragma once

#include <sys/single_threaded.h>

#include <cstdint>
#include <cstring>
#include <string_view>

#include <tav/framework/export.h>

namespace vorn::detail {

constexpr std::size_t kMaxParName = 255;  // bytes of a parameter's name
constexpr unsigned kMaxRecordDepth = 16;  // levels of records, the outermost counted

// CBOR major types, in the place they have in an item's first byte, and the simple values in use.
constexpr unsigned char kCborUnsigned = 0x00, kCborNegative = 0x20, kCborBytes = 0x40, kCborText = 0x60;
constexpr unsigned char kCborFalse = 0xF4, kCborTrue = 0xF5, kCborNull = 0xF6;

// Where a parameter starts, remembered by the one pass that validates a record. Every record has a header entry
// (`at` is its number of parameters), its parameters' entries follow it; both it and what stands behind them bear no
// name. A used index holds what the record before left; the next one is often made alike.
struct cRecordIndexEntry {
  std::uint32_t key;    // NameKey; with kMaybeRepeated unless this is surely the first of its name
  std::uint32_t at;     // where the name's bytes start
  std::uint32_t child;  // of a nested record: its header entry
  std::uint16_t form;   // type and first byte of the value, as they stand
  std::uint8_t plan;    // what validation does with that form
  std::uint8_t beyond;  // so many of four bytes' bits do not belong to the key
};

// The one block that copies of a record share; the bytes follow it.
struct cRecordBuffer {
  std::uint32_t refs;
  std::uint32_t capacity;
  std::uint32_t depth;    // levels of records in it, 1 when none is nested
  std::uint32_t indexed;  // index is that of so many bytes
  std::uint32_t indexCapacity;
  cRecordIndexEntry* index;

  unsigned char* Bytes() { return reinterpret_cast<unsigned char*>(this + 1); }
  const unsigned char* Bytes() const { return reinterpret_cast<const unsigned char*>(this + 1); }
};

VORN_API void FreeBuffer(cRecordBuffer* buffer);
// The entry of the first parameter of a name in the record of that header entry, 0 when there is none.
[[gnu::pure]] VORN_API std::uint32_t FindFirst(const cRecordBuffer* buffer, std::uint32_t head, std::string_view name,
                                               std::uint32_t key);
VORN_API bool IsUtf8(const char* text, std::size_t size);

inline void Retain(cRecordBuffer* buffer) {
  if (buffer == nullptr) return;
  if (__libc_single_threaded)
    ++buffer->refs;
  else
    __atomic_fetch_add(&buffer->refs, 1u, __ATOMIC_RELAXED);
}

inline void Release(cRecordBuffer* buffer) {
  if (buffer == nullptr) return;
  const std::uint32_t left =
      __libc_single_threaded ? --buffer->refs : __atomic_sub_fetch(&buffer->refs, 1u, __ATOMIC_ACQ_REL);
  if (left == 0) FreeBuffer(buffer);
}

template <typename T>
T Load(const unsigned char* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

// The head of a CBOR item in its shortest form; behind it.
inline unsigned char* WriteHead(unsigned char* to, unsigned char major, std::uint64_t value) {
  if (value < 24) {
    *to++ = static_cast<unsigned char>(major | value);
    return to;
  }
  if (value <= 0xFF) {
    *to++ = major | 24;
    *to++ = static_cast<unsigned char>(value);
    return to;
  }
  if (value <= 0xFFFF) {
    *to++ = major | 25;
    const std::uint16_t swapped = __builtin_bswap16(static_cast<std::uint16_t>(value));
    std::memcpy(to, &swapped, sizeof swapped);
    return to + sizeof swapped;
  }
  if (value <= 0xFFFFFFFF) {
    *to++ = major | 26;
    const std::uint32_t swapped = __builtin_bswap32(static_cast<std::uint32_t>(value));
    std::memcpy(to, &swapped, sizeof swapped);
    return to + sizeof swapped;
  }
  *to++ = major | 27;
  const std::uint64_t swapped = __builtin_bswap64(value);
  std::memcpy(to, &swapped, sizeof swapped);
  return to + sizeof swapped;
}

// The number in the head of a validated item; from goes behind the head.
inline std::uint64_t ReadHead(const unsigned char*& from) {
  const unsigned low = *from++ & 0x1F;
  if (low < 24) return low;
  switch (low) {
    case 24:
      return *from++;
    case 25:
      from += 2;
      return __builtin_bswap16(Load<std::uint16_t>(from - 2));
    case 26:
      from += 4;
      return __builtin_bswap32(Load<std::uint32_t>(from - 4));
    default:
      from += 8;
      return __builtin_bswap64(Load<std::uint64_t>(from - 8));
  }
}

// Length and first three letters of a name: tells nearly all names apart in one comparison. A constant when the name is
// a literal.
constexpr std::uint32_t kNameKeyMask = 0x7FFFFFFF, kMaybeRepeated = 0x80000000;
constexpr std::uint32_t kNoName = 0xFFFFFFFF;  // no key that is looked for is marked
inline std::uint32_t NameKey(const char* name, std::size_t size) {
  const auto byte = [&](std::size_t at) {
    return static_cast<std::uint32_t>(at < size ? static_cast<unsigned char>(name[at]) : 0) << (8 * at + 8);
  };
  return (static_cast<std::uint32_t>(size) | byte(0) | byte(1) | byte(2)) & kNameKeyMask;
}

// Covers size bytes by words, the last one overlapping the one before: visit(word of the right width, its offset).
template <typename Visit>
inline void ForEachWord(std::size_t size, Visit visit) {
  if (size >= 8) {
    for (std::size_t at = 0; at + 8 < size; at += 8) visit(std::uint64_t{}, at);
    visit(std::uint64_t{}, size - 8);
  } else if (size >= 4) {
    visit(std::uint32_t{}, 0);
    visit(std::uint32_t{}, size - 4);
  } else if (size != 0) {
    visit(std::uint8_t{}, 0);
    visit(std::uint8_t{}, size / 2);
    visit(std::uint8_t{}, size - 1);
  }
}

inline bool AreSame(const unsigned char* a, const char* b, std::size_t size) {
  std::uint64_t differ = 0;
  ForEachWord(size, [&](auto word, std::size_t at) {
    word = static_cast<decltype(word)>(Load<decltype(word)>(a + at) ^
                                       Load<decltype(word)>(reinterpret_cast<const unsigned char*>(b) + at));
    differ |= word;
  });
  return differ == 0;
}

constexpr std::uint64_t kHighBits = 0x8080808080808080u;  // set in some byte of what is not ASCII

inline bool IsAscii(const unsigned char* text, std::size_t size) {
  std::uint64_t seen = 0;
  ForEachWord(size, [&](auto word, std::size_t at) { seen |= Load<decltype(word)>(text + at); });
  return (seen & kHighBits) == 0;
}

// Copies a text and tells whether it is ASCII in one pass; `to` has room for the text.
inline bool CopyText(unsigned char* to, const char* text, std::size_t size) {
  const auto* from = reinterpret_cast<const unsigned char*>(text);
  std::uint64_t seen = 0;
  ForEachWord(size, [&](auto word, std::size_t at) {
    word = Load<decltype(word)>(from + at);
    std::memcpy(to + at, &word, sizeof word);
    seen |= word;
  });
  return (seen & kHighBits) == 0;
}

}  // namespace vorn::detail
