// SPDX-License-Identifier: Apache-2.0
// Reads SML elements one after the other, in place (BSI TR-03109-1, Anlage SML, binary encoding): a type-length field
// of one or more bytes, then the value.
//
// Every call either takes one whole element and gives true, or notes the fault, takes nothing and gives false. It never
// reads past the end. All of it is inline and the fault lies outside, so that a cursor on the stack stays in registers.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

// Bits 4 to 6 of a type-length field.
enum eTlType : std::uint8_t { eTlOctets = 0x00, eTlBool = 0x40, eTlInt = 0x50, eTlUInt = 0x60, eTlList = 0x70 };

inline constexpr std::uint8_t kTlMore = 0x80;    // another byte of the type-length field follows
inline constexpr std::uint8_t kTlAbsent = 0x01;  // an optional field that is not sent; also an empty octet string
inline constexpr std::uint8_t kEndOfMessage = 0x00;

// A type-length field as read: in a list size is the number of its elements, else the bytes of the value.
struct cTypeLength {
  std::uint8_t type = 0;
  std::uint8_t own = 0;  // bytes of the field itself, 0 when it could not be read
  std::uint32_t size = 0;
  const char* expected = "";  // when it could not
};

// One of more than one byte, or of length 0. at < end.
cTypeLength ReadLongTypeLength(const std::uint8_t* at, const std::uint8_t* end);
[[gnu::cold]] void NoteFault(cSmlFault& fault, std::uint32_t offset, int found, const char* field,
                             const char* expected);

// The compiler's own measure would leave calls between, and every call puts the cursor back into memory.
#define TAV_SML_INLINE [[gnu::always_inline]] inline

class cSmlCursor {
 public:
  // Offsets count from the begin of the payload; the fault must outlive the cursor.
  cSmlCursor(cBytes payload, std::size_t from, cSmlFault& fault)
      : m_origin(payload.data()), m_at(m_origin + from), m_end(m_origin + payload.size()), m_fault(&fault) {}

  bool AtEnd() const { return m_at == m_end; }
  // The next byte, -1 at the end.
  int Peek() const { return AtEnd() ? -1 : *m_at; }
  std::uint32_t Offset() const { return static_cast<std::uint32_t>(m_at - m_origin); }
  cBytes Since(std::uint32_t offset) const { return {m_origin + offset, m_at}; }

  bool List(const char* field, std::uint32_t& count);
  bool ListOf(const char* field, std::uint32_t count, const char* expected);
  bool Octets(const char* field, cBytes& to);
  bool Obis(const char* field, std::uint64_t& to);
  bool Unsigned(const char* field, std::uint64_t max, std::uint64_t& to);
  bool Signed(const char* field, std::int64_t min, std::int64_t max, std::int64_t& to);
  bool Value(const char* field, cSmlValue& to);
  bool Time(const char* field, cSmlTime& to);
  bool EndOfMessage();
  // True, and the element taken, when it is an optional field that was not sent.
  bool Absent() { return Peek() == kTlAbsent ? ++m_at, true : false; }
  // One element of any type with all that is in it.
  bool Skip(const char* field);

  // The type-length field alone; the bytes of a value behind it are there.
  bool TypeLength(const char* field, cTypeLength& to);

 private:
  bool Fail(const char* field, const char* expected) const {
    NoteFault(*m_fault, Offset(), Peek(), field, expected);
    return false;
  }
  bool FailAt(const std::uint8_t* at, const char* field, const char* expected) {
    m_at = at;
    return Fail(field, expected);
  }
  bool Head(const char* field, std::uint8_t wanted, const char* expected, std::uint32_t& size);
  std::uint64_t Number(std::uint32_t size, bool isSigned);
  bool ChoiceOfTime(const char* field, cSmlTime& to);
  bool LocalTimestamp(const char* field, cSmlTime& to);

  const std::uint8_t* m_origin;
  const std::uint8_t* m_at;
  const std::uint8_t* m_end;
  cSmlFault* m_fault;
};

TAV_SML_INLINE bool cSmlCursor::TypeLength(const char* field, cTypeLength& to) {
  if (m_at == m_end) return Fail(field, "a type-length field");
  to = {static_cast<std::uint8_t>(*m_at & 0x70), 1, *m_at & 0x0Fu, ""};
  if ((*m_at & kTlMore) != 0 || (to.size == 0 && to.type != eTlList)) {
    to = ReadLongTypeLength(m_at, m_end);
    if (to.own == 0) return Fail(field, to.expected);
  }
  if (to.type != eTlList) {
    to.size -= to.own;
    if (to.size > static_cast<std::size_t>(m_end - m_at) - to.own) return Fail(field, "more bytes");
  }
  m_at += to.own;
  return true;
}

// The head of an element of one type.
TAV_SML_INLINE bool cSmlCursor::Head(const char* field, std::uint8_t wanted, const char* expected,
                                     std::uint32_t& size) {
  cTypeLength head;
  if (m_at != m_end && (*m_at & 0x70) != wanted) return Fail(field, expected);
  if (!TypeLength(field, head)) return false;
  size = head.size;
  return true;
}

// Big-endian. Where eight bytes are there it takes them at once and shifts the others away.
TAV_SML_INLINE std::uint64_t cSmlCursor::Number(std::uint32_t size, bool isSigned) {
  std::uint64_t bits = 0;
  if (m_end - m_at >= 8) {
    std::memcpy(&bits, m_at, sizeof bits);
    if constexpr (std::endian::native == std::endian::little) bits = __builtin_bswap64(bits);
  } else {
    for (std::uint32_t i = 0; i < size; ++i) bits |= std::uint64_t{m_at[i]} << (56 - 8 * i);
  }
  m_at += size;
  const unsigned int shift = 64 - 8 * size;
  return isSigned ? static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> shift) : bits >> shift;
}

TAV_SML_INLINE bool cSmlCursor::List(const char* field, std::uint32_t& count) {
  return Head(field, eTlList, "a list", count);
}

TAV_SML_INLINE bool cSmlCursor::ListOf(const char* field, std::uint32_t count, const char* expected) {
  const std::uint8_t* const before = m_at;
  std::uint32_t found = 0;
  if (!Head(field, eTlList, expected, found)) return false;
  return found == count || FailAt(before, field, expected);
}

TAV_SML_INLINE bool cSmlCursor::Octets(const char* field, cBytes& to) {
  std::uint32_t size = 0;
  if (!Head(field, eTlOctets, "an octet string", size)) return false;
  to = {m_at, size};
  m_at += size;
  return true;
}

// An OBIS identifier, packed as 0x0000AABBCCDDEEFF.
TAV_SML_INLINE bool cSmlCursor::Obis(const char* field, std::uint64_t& to) {
  const std::uint8_t* const before = m_at;
  std::uint32_t size = 0;
  if (!Head(field, eTlOctets, "an octet string of 6 bytes", size)) return false;
  if (size != 6) return FailAt(before, field, "an octet string of 6 bytes");
  to = Number(6, false);
  return true;
}

TAV_SML_INLINE bool cSmlCursor::Unsigned(const char* field, std::uint64_t max, std::uint64_t& to) {
  const std::uint8_t* const before = m_at;
  std::uint32_t size = 0;
  if (!Head(field, eTlUInt, "an unsigned integer", size)) return false;
  if (size == 0 || size > 8) return FailAt(before, field, "a number of 1 to 8 bytes");
  to = Number(size, false);
  return to <= max || FailAt(before, field, "a smaller number");
}

TAV_SML_INLINE bool cSmlCursor::Signed(const char* field, std::int64_t min, std::int64_t max, std::int64_t& to) {
  const std::uint8_t* const before = m_at;
  std::uint32_t size = 0;
  if (!Head(field, eTlInt, "a signed integer", size)) return false;
  if (size == 0 || size > 8) return FailAt(before, field, "a number of 1 to 8 bytes");
  to = static_cast<std::int64_t>(Number(size, true));
  return (to >= min && to <= max) || FailAt(before, field, "a number nearer to zero");
}

TAV_SML_INLINE bool cSmlCursor::Value(const char* field, cSmlValue& to) {
  const std::uint8_t* const before = m_at;
  cTypeLength head;
  if (Absent()) return true;
  if (!TypeLength(field, head)) return false;
  if (head.type == eTlInt || head.type == eTlUInt || head.type == eTlBool) {
    if (head.size == 0 || head.size > (head.type == eTlBool ? 1u : 8u))
      return FailAt(before, field, "a number of 1 to 8 bytes or a boolean of one");
    to.type = head.type == eTlInt ? eSmlInt : head.type == eTlUInt ? eSmlUInt : eSmlBool;
    to.width = static_cast<std::uint8_t>(head.size);
    to.bits = Number(head.size, head.type == eTlInt);
    if (head.type == eTlBool) to.bits = to.bits != 0 ? 1 : 0;
    return true;
  }
  if (head.type == eTlOctets) {
    to.type = eSmlOctets;
    to.octets = {m_at, head.size};
    m_at += head.size;
    return true;
  }
  m_at = before;
  if (head.type != eTlList) return Fail(field, "an octet string, a boolean, a number or a list");
  if (!Skip(field)) return false;
  to.type = eSmlList;
  to.octets = {before, m_at};
  return true;
}

// A choice of seconds index (1), timestamp (2) and local timestamp (3), or the bare number that some meters send.
TAV_SML_INLINE bool cSmlCursor::Time(const char* field, cSmlTime& to) {
  if (Absent()) return true;
  if (!AtEnd() && (*m_at & 0x70) != eTlUInt) return ChoiceOfTime(field, to);
  std::uint64_t seconds = 0;
  if (!Unsigned(field, 0xFFFFFFFF, seconds)) return false;
  to.kind = eSmlBareSeconds;
  to.seconds = static_cast<std::uint32_t>(seconds);
  return true;
}

inline bool cSmlCursor::ChoiceOfTime(const char* field, cSmlTime& to) {
  if (!ListOf(field, 2, "a choice of time (list of 2) or a number of seconds")) return false;
  const std::uint8_t* const choice = m_at;
  std::uint64_t kind = 0, seconds = 0;
  if (!Unsigned(field, 0xFF, kind)) return false;
  if (kind == eSmlLocalTimestamp) return LocalTimestamp(field, to);
  if (kind != eSmlSecIndex && kind != eSmlTimestamp)
    return FailAt(choice, field, "choice 1 (seconds index), 2 (timestamp) or 3 (local timestamp)");
  if (!Unsigned(field, 0xFFFFFFFF, seconds)) return false;
  to.kind = static_cast<eSmlTimeKind>(kind);
  to.seconds = static_cast<std::uint32_t>(seconds);
  return true;
}

inline bool cSmlCursor::LocalTimestamp(const char* field, cSmlTime& to) {
  std::uint64_t seconds = 0;
  std::int64_t local = 0, season = 0;
  if (!ListOf(field, 3, "a local timestamp (list of 3)") || !Unsigned(field, 0xFFFFFFFF, seconds) ||
      !Signed(field, INT16_MIN, INT16_MAX, local) || !Signed(field, INT16_MIN, INT16_MAX, season))
    return false;
  to = {eSmlLocalTimestamp, static_cast<std::uint32_t>(seconds), static_cast<std::int16_t>(local),
        static_cast<std::int16_t>(season)};
  return true;
}

inline bool cSmlCursor::EndOfMessage() {
  if (Peek() != kEndOfMessage) return Fail("end of message", "0x00");
  ++m_at;
  return true;
}

// Without recursion: only how many elements are still to come matters. Each takes a byte at least, so that a list that
// claims more ends at the end of the bytes.
inline bool cSmlCursor::Skip(const char* field) {
  std::uint64_t left = 1;
  while (left != 0) {
    cTypeLength head;
    if (!TypeLength(field, head)) return false;
    --left;
    if (head.type == eTlList)
      left += head.size;
    else
      m_at += head.size;
  }
  return true;
}

#undef TAV_SML_INLINE

}  // namespace tav::sml
