// SPDX-License-Identifier: Apache-2.0
// cRecord: an ordered list of named, typed parameters; cRecordPar: a view of one of them.
//
// A record is its own wire form: appending writes the encoded bytes (docs/wire-format.md), a nested record is appended
// as it stands, and a received record is validated once and then read in place. Copies share the bytes until one is
// changed. A view keeps the bytes it looks at alive, unchanged even when the record is changed later.
//
// Limits: a name has at most 255 bytes, records nest at most 16 deep, a record has less than 1 GiB. A parameter that
// would go beyond is not appended, and a line of trace (level 2, unit "UnitVORN") says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <tav/framework/data.h>
#include <tav/framework/export.h>
#include <tav/framework/record_wire.h>
#include <tav/framework/time.h>
#include <tav/framework/uuid.h>

namespace vorn {

enum eParType : unsigned int {
  eParNone = 0,  // of an invalid parameter
  eParText = 1,
  eParInt = 2,     // signed 32-bit
  eParUInt = 3,    // unsigned 32-bit
  eParUInt64 = 4,  // unsigned 64-bit
  eParBool = 5,
  eParRecord = 6,
  eParTime = 7,
  eParUuid = 8,
  eParData = 9,
};

class cRecord;

class VORN_API cRecordPar {
 public:
  // An invalid one: IsEmpty(), type 0, every getter gives the empty value.
  cRecordPar() = default;
  cRecordPar(const cRecordPar& other) : m_buffer(other.m_buffer), m_entry(other.m_entry), m_left(other.m_left) {
    detail::Retain(m_buffer);
  }
  cRecordPar(cRecordPar&& other) noexcept
      : m_buffer(std::exchange(other.m_buffer, nullptr)), m_entry(other.m_entry), m_left(other.m_left) {}
  cRecordPar& operator=(cRecordPar other) noexcept {
    std::swap(m_buffer, other.m_buffer);
    std::swap(m_entry, other.m_entry);
    std::swap(m_left, other.m_left);
    return *this;
  }
  ~cRecordPar() { detail::Release(m_buffer); }

  // Whether the parameter is there.
  bool IsValid() const { return m_buffer != nullptr; }
  // No value, or a text, data or record of length zero, or an invalid uuid; numbers, booleans and times are never
  // empty.
  bool IsEmpty() const;
  // False for a text parameter that was appended without a text.
  bool HasText() const { return IsText() && *ValueAt() != detail::kCborNull; }

  std::string GetName() const { return std::string(GetNameView()); }
  // Valid as long as this view.
  std::string_view GetNameView() const;
  unsigned int GetType() const { return IsValid() ? *TypeAt() : static_cast<unsigned int>(eParNone); }
  bool IsText() const { return GetType() == eParText; }
  bool IsInt() const { return GetType() == eParInt; }
  bool IsUInt() const { return GetType() == eParUInt; }
  bool IsUInt64() const { return GetType() == eParUInt64; }
  bool IsBool() const { return GetType() == eParBool; }
  bool IsRecord() const { return GetType() == eParRecord; }
  bool IsTime() const { return GetType() == eParTime; }
  bool IsUuid() const { return GetType() == eParUuid; }
  bool IsData() const { return GetType() == eParData; }

  // The text form of a value of any type: numbers decimal, booleans "true" or "false", data in hexadecimal digits,
  // times ISO 8601, uuids canonical, records as cRecord::ToString.
  std::string GetText() const;
  // The bytes of a text or of data without copying them; empty for every other type. Valid as long as this view.
  std::string_view GetBytesView() const;

  // The value of any of the integer types when it fits, else 0.
  int GetInt() const;
  unsigned int GetUInt() const;
  std::uint64_t GetUInt64() const;
  // Each gives the empty value for another type.
  bool GetBool() const { return IsBool() && *ValueAt() == detail::kCborTrue; }
  cTime GetTime() const;
  cUuid GetUuid() const;
  // Of a text: its bytes.
  cData GetData() const;
  // False, and record left alone, when this is no readable record; an empty one is readable.
  bool GetRecord(cRecord& record) const;

  // The following parameter of any name, or of this one's name; an invalid one at the end.
  cRecordPar Next() const { return m_left != 0 ? Ahead(1) : cRecordPar(); }
  cRecordPar NextSame() const {
    if (m_left == 0) return {};
    return HasSameName(1) ? Ahead(1) : NextSameFrom(2);
  }

 private:
  friend class cRecord;
  // Takes over one reference to the buffer.
  cRecordPar(detail::cRecordBuffer* buffer, std::uint32_t entry, std::uint32_t left)
      : m_buffer(buffer), m_entry(entry), m_left(left) {}

  const detail::cRecordIndexEntry& Entry() const { return m_buffer->index[m_entry]; }
  cRecordPar Ahead(std::uint32_t by) const {
    detail::Retain(m_buffer);
    return cRecordPar(m_buffer, m_entry + by, m_left - by);
  }
  bool HasSameName(std::uint32_t by) const {
    const detail::cRecordIndexEntry& own = Entry();
    const detail::cRecordIndexEntry& other = (&own)[by];
    return ((other.key ^ own.key) & detail::kNameKeyMask) == 0 &&
           std::memcmp(m_buffer->Bytes() + other.at, m_buffer->Bytes() + own.at, own.key & 0xFF) == 0;
  }
  cRecordPar NextSameFrom(std::uint32_t by) const;
  const unsigned char* TypeAt() const { return m_buffer->Bytes() + Entry().at + (Entry().key & 0xFF); }
  const unsigned char* ValueAt() const { return TypeAt() + 1; }
  // A value of integer type as sign and magnitude; false for other types.
  bool GetInteger(bool& negative, std::uint64_t& magnitude) const;

  detail::cRecordBuffer* m_buffer = nullptr;
  std::uint32_t m_entry = 0;  // position in the index
  std::uint32_t m_left = 0;   // how many parameters follow in the same record
};

class VORN_API cRecord {
 public:
  // An empty one; Create() gives the same.
  cRecord() = default;
  cRecord(const cRecord& other)
      : m_buffer(other.m_buffer),
        m_begin(other.m_begin),
        m_end(other.m_end),
        m_head(other.m_head),
        m_cursor(other.m_cursor),
        m_room(other.m_end) {
    other.Share();
  }
  cRecord(cRecord&& other) noexcept
      : m_buffer(std::exchange(other.m_buffer, nullptr)),
        m_begin(std::exchange(other.m_begin, 0)),
        m_end(std::exchange(other.m_end, 0)),
        m_head(std::exchange(other.m_head, 0)),
        m_cursor(std::exchange(other.m_cursor, 0)),
        m_room(std::exchange(other.m_room, 0)) {}
  cRecord& operator=(cRecord other) noexcept {
    std::swap(m_buffer, other.m_buffer);
    std::swap(m_begin, other.m_begin);
    std::swap(m_end, other.m_end);
    std::swap(m_head, other.m_head);
    std::swap(m_cursor, other.m_cursor);
    std::swap(m_room, other.m_room);
    return *this;
  }
  ~cRecord() { detail::Release(m_buffer); }

  static cRecord Create() { return cRecord(); }
  // Validates received bytes whole and copies them. On failure returns false, leaves record alone and says in error,
  // when given, what is wrong at which byte offset.
  static bool FromBytes(const void* bytes, std::size_t size, cRecord& record, std::string* error = nullptr);

  [[gnu::always_inline]] void AppendTextPar(std::string_view name, std::string_view value) {
    if (unsigned char* to = Begin(name, eParText, value.size() + 9)) {
      unsigned char* const head = to;
      to = detail::WriteHead(to, detail::kCborText, value.size());
      // A text that is not UTF-8 travels as a byte string.
      if (!detail::CopyText(to, value.data(), value.size()) && !detail::IsUtf8(value.data(), value.size()))
        *head ^= detail::kCborText ^ detail::kCborBytes;
      End(to + value.size());
    }
  }
  // A null pointer appends a text parameter without a text, which stays different from an empty text.
  [[gnu::always_inline]] void AppendTextPar(std::string_view name, const char* value) {
    if (value != nullptr)
      AppendTextPar(name, std::string_view(value));
    else
      AppendSimple(name, eParText, detail::kCborNull);
  }
  [[gnu::always_inline]] void AppendIntPar(std::string_view name, int value) {
    if (value >= 0)
      AppendNumber(name, eParInt, detail::kCborUnsigned, static_cast<std::uint64_t>(value));
    else
      AppendNumber(name, eParInt, detail::kCborNegative,
                   static_cast<std::uint64_t>(-1 - static_cast<std::int64_t>(value)));
  }
  [[gnu::always_inline]] void AppendUIntPar(std::string_view name, unsigned int value) {
    AppendNumber(name, eParUInt, detail::kCborUnsigned, value);
  }
  [[gnu::always_inline]] void AppendUInt64Par(std::string_view name, std::uint64_t value) {
    AppendNumber(name, eParUInt64, detail::kCborUnsigned, value);
  }
  [[gnu::always_inline]] void AppendBoolPar(std::string_view name, bool value) {
    AppendSimple(name, eParBool, value ? detail::kCborTrue : detail::kCborFalse);
  }
  void AppendRecordPar(std::string_view name, const cRecord& value);
  [[gnu::always_inline]] void AppendTimePar(std::string_view name, const cTime& value) {
    AppendNumber(name, eParTime, detail::kCborUnsigned, value.GetSeconds());
  }
  [[gnu::always_inline]] void AppendUuidPar(std::string_view name, const cUuid& value) {
    AppendBytes(name, eParUuid, detail::kCborBytes, reinterpret_cast<const char*>(value.GetBytes().data()),
                cUuid::kSize);
  }
  [[gnu::always_inline]] void AppendDataPar(std::string_view name, const cData& value) {
    AppendBytes(name, eParData, detail::kCborBytes, value.AsView().data(), value.GetSize());
  }

  // Each replaces the first parameter of that name, in its place; appends when there is none.
  void SetTextPar(std::string_view name, std::string_view value) {
    Set(name, [&](cRecord& to) { to.AppendTextPar(name, value); });
  }
  void SetTextPar(std::string_view name, const char* value) {
    Set(name, [&](cRecord& to) { to.AppendTextPar(name, value); });
  }
  void SetIntPar(std::string_view name, int value) {
    Set(name, [&](cRecord& to) { to.AppendIntPar(name, value); });
  }
  void SetUIntPar(std::string_view name, unsigned int value) {
    Set(name, [&](cRecord& to) { to.AppendUIntPar(name, value); });
  }
  void SetUInt64Par(std::string_view name, std::uint64_t value) {
    Set(name, [&](cRecord& to) { to.AppendUInt64Par(name, value); });
  }
  void SetBoolPar(std::string_view name, bool value) {
    Set(name, [&](cRecord& to) { to.AppendBoolPar(name, value); });
  }
  void SetRecordPar(std::string_view name, const cRecord& value) {
    Set(name, [&](cRecord& to) { to.AppendRecordPar(name, value); });
  }
  void SetTimePar(std::string_view name, const cTime& value) {
    Set(name, [&](cRecord& to) { to.AppendTimePar(name, value); });
  }
  void SetUuidPar(std::string_view name, const cUuid& value) {
    Set(name, [&](cRecord& to) { to.AppendUuidPar(name, value); });
  }
  void SetDataPar(std::string_view name, const cData& value) {
    Set(name, [&](cRecord& to) { to.AppendDataPar(name, value); });
  }

  bool IsEmpty() const { return m_begin == m_end; }
  std::size_t GetCount() const { return Indexed() ? Head()->at : 0; }
  // The first parameter of all, and the first of a name; an invalid one when there is none.
  cRecordPar First() const { return GetCount() != 0 ? View(m_head + 1) : cRecordPar(); }
  cRecordPar GetPar(std::string_view name) const {
    const std::uint32_t entry = Find(name);
    return entry != 0 ? View(entry) : cRecordPar();
  }

  // The value of the first parameter of a name when it has exactly that type, else the empty value of the type.
  std::string GetTextPar(std::string_view name) const;
  // The same without a copy; valid until the record is changed.
  std::string_view GetTextView(std::string_view name) const;
  int GetIntPar(std::string_view name) const;
  unsigned int GetUIntPar(std::string_view name) const;
  std::uint64_t GetUInt64Par(std::string_view name) const;
  bool GetBoolPar(std::string_view name) const;
  cRecord GetRecordPar(std::string_view name) const;
  cTime GetTimePar(std::string_view name) const;
  cUuid GetUuidPar(std::string_view name) const;
  cData GetDataPar(std::string_view name) const;

  // Readable text, one parameter a line, nested records indented by level; data cut after maxData bytes (0 = whole).
  std::string ToString(std::size_t maxData = 0, unsigned int level = 0) const;
  // The wire form; valid until the record is changed.
  std::string_view GetBytes() const {
    return IsEmpty() ? std::string_view()
                     : std::string_view(reinterpret_cast<const char*>(m_buffer->Bytes()) + m_begin, m_end - m_begin);
  }
  // Levels of records in this one, 1 when none is nested.
  unsigned int GetDepth() const { return IsEmpty() ? 1 : m_head == 0 ? m_buffer->depth : MeasureDepth(); }

  friend bool operator==(const cRecord& a, const cRecord& b) { return a.GetBytes() == b.GetBytes(); }
  friend bool operator!=(const cRecord& a, const cRecord& b) { return !(a == b); }

 private:
  friend class cRecordPar;
  // Becomes a part of an indexed buffer.
  void LookAt(detail::cRecordBuffer* buffer, std::uint32_t begin, std::uint32_t end, std::uint32_t head) {
    if (buffer != m_buffer) {
      detail::Retain(buffer);
      detail::Release(m_buffer);
      m_buffer = buffer;
    }
    m_begin = begin;
    m_end = end;
    m_head = head;
    m_cursor = head + 1;
    m_room = end;
  }

  // ---- reading
  // Whether there is an index of these bytes, and a parameter.
  bool Indexed() const { return !IsEmpty() && (m_head != 0 || m_buffer->indexed == m_end || BuildIndex()); }
  const detail::cRecordIndexEntry* Head() const { return m_buffer->index + m_head; }
  bool BuildIndex() const;
  unsigned int MeasureDepth() const;
  // The entry of the first parameter of a name, 0 when there is none. Readers mostly ask in the writer's order, so the
  // one behind the last that was found is tried before all others; behind a record's last stands one of no name.
  [[gnu::always_inline]] std::uint32_t Find(std::string_view name) const {
    if (name.size() > detail::kMaxParName || (m_cursor == 0 && !MakeCursor())) return 0;
    const std::uint32_t key = detail::NameKey(name.data(), name.size());
    std::uint32_t entry = m_cursor;
    if (m_buffer->index[entry].key != key || !HasName(entry, name)) {
      entry = detail::FindFirst(m_buffer, m_head, name, key);
      if (entry == 0) return 0;
    }
    m_cursor = entry + 1;
    return entry;
  }
  [[gnu::always_inline]] bool HasName(std::uint32_t entry, std::string_view name) const {
    return detail::AreSame(m_buffer->Bytes() + m_buffer->index[entry].at, name.data(), name.size());
  }
  bool MakeCursor() const;
  void Share() const {
    m_room = m_end;
    detail::Retain(m_buffer);
  }
  cRecordPar View(std::uint32_t entry) const {
    Share();
    return cRecordPar(m_buffer, entry, m_head + Head()->at - entry);
  }
  // The value of the first parameter of a name behind its type, when it has exactly that type, else null.
  [[gnu::always_inline]] const unsigned char* ValueOf(std::string_view name, eParType type) const {
    const std::uint32_t found = Find(name);
    if (found == 0) return nullptr;
    const unsigned char* at = m_buffer->Bytes() + m_buffer->index[found].at + name.size();
    return *at == type ? at + 1 : nullptr;
  }

  // ---- writing
  // Room for a parameter of that name and so many bytes of value: behind name and type. Null when it is refused.
  [[gnu::always_inline]] unsigned char* Begin(std::string_view name, eParType type, std::size_t valueSize) {
    const std::size_t need = 2 + name.size() + 1 + valueSize;
    if (name.size() > detail::kMaxParName || need >= m_room - m_end) {
      if (!MakeRoom(name, need)) return nullptr;
    }
    unsigned char* to = detail::WriteHead(m_buffer->Bytes() + m_end, detail::kCborText, name.size());
    if (!name.empty()) std::memcpy(to, name.data(), name.size());
    to += name.size();
    *to++ = static_cast<unsigned char>(type);
    return to;
  }
  [[gnu::always_inline]] void End(const unsigned char* to) {
    m_end = static_cast<std::uint32_t>(to - m_buffer->Bytes());
    m_cursor = 0;
  }
  bool MakeRoom(std::string_view name, std::size_t need);
  [[gnu::always_inline]] void AppendNumber(std::string_view name, eParType type, unsigned char major,
                                           std::uint64_t value) {
    if (unsigned char* to = Begin(name, type, 9)) End(detail::WriteHead(to, major, value));
  }
  [[gnu::always_inline]] void AppendSimple(std::string_view name, eParType type, unsigned char value) {
    if (unsigned char* to = Begin(name, type, 1)) {
      *to = value;
      End(to + 1);
    }
  }
  [[gnu::always_inline]] void AppendBytes(std::string_view name, eParType type, unsigned char major, const char* bytes,
                                          std::size_t size) {
    if (unsigned char* to = Begin(name, type, size + 9)) {
      to = detail::WriteHead(to, major, size);
      if (size != 0) std::memcpy(to, bytes, size);
      End(to + size);
    }
  }
  template <typename Append>
  void Set(std::string_view name, Append append) {
    std::uint32_t begin = 0, end = 0;
    if (!FindBytes(name, begin, end)) {
      append(*this);
    } else {
      cRecord single;
      append(single);
      Replace(begin, end, single);
    }
  }
  // The bytes of the first parameter of a name, found without an index: a record that is being built has none.
  bool FindBytes(std::string_view name, std::uint32_t& begin, std::uint32_t& end) const;
  void Replace(std::uint32_t begin, std::uint32_t end, const cRecord& single);

  detail::cRecordBuffer* m_buffer = nullptr;
  std::uint32_t m_begin = 0;  // the part of the buffer that is this record
  std::uint32_t m_end = 0;
  std::uint32_t m_head = 0;  // its header entry in the buffer's index; 0 only for a record that is the whole buffer
  mutable std::uint32_t m_cursor = 0;  // the entry behind the last that was found; 0 while there is no index
  mutable std::uint32_t m_room = 0;    // where the buffer ends while it is this record's alone, else m_end
};

// ---- the hot accessors, inline so that a literal name's length and bytes are constants

inline std::string_view cRecordPar::GetNameView() const {
  return IsValid() ? std::string_view(reinterpret_cast<const char*>(m_buffer->Bytes()) + Entry().at, Entry().key & 0xFF)
                   : std::string_view();
}

inline std::string_view cRecordPar::GetBytesView() const {
  if (!IsText() && !IsData()) return {};
  const unsigned char* at = ValueAt();
  if (*at == detail::kCborNull) return {};
  const std::uint64_t size = detail::ReadHead(at);
  return {reinterpret_cast<const char*>(at), static_cast<std::size_t>(size)};
}

inline bool cRecordPar::GetInteger(bool& negative, std::uint64_t& magnitude) const {
  const unsigned int type = GetType();
  if (type != eParInt && type != eParUInt && type != eParUInt64) return false;
  const unsigned char* at = ValueAt();
  negative = (*at & 0xE0) == detail::kCborNegative;
  magnitude = detail::ReadHead(at);
  if (negative) ++magnitude;
  return true;
}

inline std::uint64_t cRecordPar::GetUInt64() const {
  bool negative = false;
  std::uint64_t magnitude = 0;
  return GetInteger(negative, magnitude) && !negative ? magnitude : 0;
}

inline unsigned int cRecordPar::GetUInt() const {
  const std::uint64_t value = GetUInt64();
  return value <= 0xFFFFFFFF ? static_cast<unsigned int>(value) : 0;
}

inline int cRecordPar::GetInt() const {
  bool negative = false;
  std::uint64_t magnitude = 0;
  if (!GetInteger(negative, magnitude) || magnitude > 0x7FFFFFFFull + (negative ? 1 : 0)) return 0;
  return static_cast<int>(negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude));
}

inline bool cRecordPar::GetRecord(cRecord& record) const {
  if (!IsRecord()) return false;
  const unsigned char* at = ValueAt();
  const std::uint64_t size = detail::ReadHead(at);
  const auto begin = static_cast<std::uint32_t>(at - m_buffer->Bytes());
  if (size != 0)
    record.LookAt(m_buffer, begin, begin + static_cast<std::uint32_t>(size), Entry().child);
  else
    record = cRecord();
  return true;
}

[[gnu::always_inline]] inline unsigned int cRecord::GetUIntPar(std::string_view name) const {
  const unsigned char* at = ValueOf(name, eParUInt);
  return at != nullptr ? static_cast<unsigned int>(detail::ReadHead(at)) : 0;
}

[[gnu::always_inline]] inline std::uint64_t cRecord::GetUInt64Par(std::string_view name) const {
  const unsigned char* at = ValueOf(name, eParUInt64);
  return at != nullptr ? detail::ReadHead(at) : 0;
}

[[gnu::always_inline]] inline std::string_view cRecord::GetTextView(std::string_view name) const {
  const unsigned char* at = ValueOf(name, eParText);
  if (at == nullptr || *at == detail::kCborNull) return {};
  const std::uint64_t size = detail::ReadHead(at);
  return {reinterpret_cast<const char*>(at), static_cast<std::size_t>(size)};
}

[[gnu::always_inline]] inline int cRecord::GetIntPar(std::string_view name) const {
  const unsigned char* at = ValueOf(name, eParInt);
  if (at == nullptr) return 0;
  const bool negative = (*at & 0xE0) == detail::kCborNegative;
  const auto number = static_cast<int>(detail::ReadHead(at));
  return negative ? -1 - number : number;
}

[[gnu::always_inline]] inline bool cRecord::GetBoolPar(std::string_view name) const {
  const unsigned char* at = ValueOf(name, eParBool);
  return at != nullptr && *at == detail::kCborTrue;
}

}  // namespace vorn
