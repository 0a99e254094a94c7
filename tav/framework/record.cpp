// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/record.h>

#include <tav/framework/trace.h>

#include "detail/record_buffer.h"
#include "detail/record_index.h"

namespace vorn {

using detail::ReadHead;

namespace {

const cUnit* FrameworkUnit() {
  static const cUnit* unit = cUnit::Find("UnitVORN");
  return unit;
}

// The parameter at `at` of validated bytes; behind it. Leaves the name's place in name.
const unsigned char* SkipPar(const unsigned char* at, std::string_view& name) {
  const auto size = static_cast<std::size_t>(ReadHead(at));
  name = {reinterpret_cast<const char*>(at), size};
  at += size + 1;
  const unsigned char first = *at;
  const std::uint64_t number = ReadHead(at);
  const unsigned char major = first & 0xE0;
  return major == detail::kCborBytes || major == detail::kCborText ? at + number : at;
}

}  // namespace

// ---- cRecordPar

bool cRecordPar::IsEmpty() const {
  switch (GetType()) {
    case eParText:
    case eParData:
      return GetBytesView().empty();
    case eParRecord:
      return *ValueAt() == detail::kCborBytes;
    case eParUuid:
      return !GetUuid().IsValid();
    case eParNone:
      return true;
    default:
      return false;
  }
}

std::string cRecordPar::GetText() const {
  switch (GetType()) {
    case eParText:
      return std::string(GetBytesView());
    case eParInt:
      return std::to_string(GetInt());
    case eParUInt:
    case eParUInt64:
      return std::to_string(GetUInt64());
    case eParBool:
      return GetBool() ? "true" : "false";
    case eParTime:
      return GetTime().ToISO8601String();
    case eParUuid:
      return GetUuid().ToString();
    case eParData:
      return GetData().ToString(0);
    case eParRecord: {
      cRecord record;
      GetRecord(record);
      return record.ToString();
    }
    default:
      return {};
  }
}

cTime cRecordPar::GetTime() const {
  if (!IsTime()) return {};
  const unsigned char* at = ValueAt();
  return cTime::FromSeconds(static_cast<unsigned int>(ReadHead(at)), true);
}

cUuid cRecordPar::GetUuid() const {
  if (!IsUuid()) return {};
  std::array<unsigned char, cUuid::kSize> bytes;
  std::memcpy(bytes.data(), ValueAt() + 1, bytes.size());
  return cUuid(bytes);
}

cData cRecordPar::GetData() const {
  const std::string_view bytes = GetBytesView();
  return cData(bytes.data(), bytes.size());
}

cRecordPar cRecordPar::NextSameFrom(std::uint32_t by) const {
  for (; by <= m_left; ++by)
    if (HasSameName(by)) return Ahead(by);
  return {};
}

// ---- cRecord: reading

bool cRecord::FromBytes(const void* bytes, std::size_t size, cRecord& record, std::string* error) {
  if (size == 0) {
    record = cRecord();
    return true;
  }
  detail::cRecordBuffer* buffer = detail::NewBuffer(size + detail::kScanRoom);
  if (buffer == nullptr) {
    if (error != nullptr) *error = "no memory for " + std::to_string(size) + " bytes";
    return false;
  }
  std::memcpy(buffer->Bytes(), bytes, size);
  const auto end = static_cast<std::uint32_t>(size);
  const bool valid = detail::IndexBuffer(buffer, end, error);
  if (valid) record.LookAt(buffer, 0, end, 0);
  detail::Release(buffer);
  return valid;
}

bool cRecord::BuildIndex() const { return detail::IndexBuffer(m_buffer, m_end, nullptr); }

bool cRecord::MakeCursor() const {
  if (!Indexed()) return false;
  m_cursor = m_head + 1;
  return true;
}

unsigned int cRecord::MeasureDepth() const {
  unsigned int deepest = 1;
  cRecord nested;
  for (cRecordPar par = First(); par.IsValid(); par = par.Next())
    if (par.GetRecord(nested) && nested.GetDepth() + 1 > deepest) deepest = nested.GetDepth() + 1;
  return deepest;
}

std::string cRecord::GetTextPar(std::string_view name) const { return std::string(GetTextView(name)); }

cRecord cRecord::GetRecordPar(std::string_view name) const {
  cRecord record;
  GetPar(name).GetRecord(record);
  return record;
}

cTime cRecord::GetTimePar(std::string_view name) const { return GetPar(name).GetTime(); }

cUuid cRecord::GetUuidPar(std::string_view name) const { return GetPar(name).GetUuid(); }

cData cRecord::GetDataPar(std::string_view name) const {
  const cRecordPar par = GetPar(name);
  return par.IsData() ? par.GetData() : cData();
}

std::string cRecord::ToString(std::size_t maxData, unsigned int level) const {
  const std::string indent(std::size_t{level} * 2, ' ');
  std::string text;
  for (cRecordPar par = First(); par.IsValid(); par = par.Next()) {
    text += indent;
    text += par.GetNameView();
    cRecord nested;
    if (par.GetRecord(nested)) {
      text += nested.IsEmpty() ? "={}\n" : "={\n" + nested.ToString(maxData, level + 1) + indent + "}\n";
    } else if (par.IsData() && maxData != 0 && par.GetBytesView().size() > maxData) {
      text += "=" + cData(par.GetBytesView().data(), maxData).ToString(0) + " ...\n";
    } else if (par.IsText() && !par.HasText()) {
      text += " (no text)\n";
    } else {
      text += "=" + par.GetText() + "\n";
    }
  }
  return text;
}

// ---- cRecord: writing

void cRecord::AppendRecordPar(std::string_view name, const cRecord& value) {
  if (&value == this) {
    const cRecord kept = value;  // NOLINT(performance-unnecessary-copy-initialization): appending changes value
    return AppendRecordPar(name, kept);
  }
  // Before it is indexed, a record that lost its deepest parameter knows an upper bound only.
  if (value.GetDepth() == detail::kMaxRecordDepth) value.Indexed();
  const unsigned int depth = value.GetDepth() + 1;
  if (depth > detail::kMaxRecordDepth) {
    Trace(FrameworkUnit(), 2, "record: parameter '", name, "' not appended, records nest deeper than 16");
    return;
  }
  const std::string_view bytes = value.GetBytes();
  if (unsigned char* to = Begin(name, eParRecord, bytes.size() + 9)) {
    to = detail::WriteHead(to, detail::kCborBytes, bytes.size());
    if (!bytes.empty()) std::memcpy(to, bytes.data(), bytes.size());
    End(to + bytes.size());
    if (depth > m_buffer->depth) m_buffer->depth = depth;
  }
}

// Out of the way of the appenders: a first buffer, a larger one, or one of its own.
bool cRecord::MakeRoom(std::string_view name, std::size_t need) {
  if (name.size() > detail::kMaxParName) {
    Trace(FrameworkUnit(), 2, "record: parameter '", name.substr(0, 40),
          "...' not appended, its name is longer than 255 bytes");
    return false;
  }
  const std::size_t size = m_end - m_begin;
  const bool own = m_buffer != nullptr && m_buffer->refs == 1 && m_head == 0;
  detail::cRecordBuffer* buffer = m_buffer;
  if (!own)
    buffer = detail::NewBuffer(size + need + 1);
  else if (buffer->capacity <= size + need)
    buffer = detail::GrowBuffer(buffer, size + need + 1);
  if (buffer == nullptr) {
    Trace(FrameworkUnit(), 2, "record: parameter '", name, "' not appended, no room for ", need, " bytes behind ",
          size);
    return false;
  }
  if (!own && m_buffer != nullptr) {
    const std::string_view bytes = GetBytes();
    if (!bytes.empty()) std::memcpy(buffer->Bytes(), bytes.data(), bytes.size());
    buffer->depth = GetDepth();
    detail::Release(m_buffer);
    m_begin = 0;
    m_end = static_cast<std::uint32_t>(size);
    m_head = 0;
  }
  m_cursor = 0;
  m_room = buffer->capacity;
  m_buffer = buffer;
  return true;
}

bool cRecord::FindBytes(std::string_view name, std::uint32_t& begin, std::uint32_t& end) const {
  if (IsEmpty()) return false;
  const unsigned char* const bytes = m_buffer->Bytes();
  for (const unsigned char* at = bytes + m_begin; at < bytes + m_end;) {
    std::string_view found;
    const unsigned char* behind = SkipPar(at, found);
    if (found == name) {
      begin = static_cast<std::uint32_t>(at - bytes);
      end = static_cast<std::uint32_t>(behind - bytes);
      return true;
    }
    at = behind;
  }
  return false;
}

void cRecord::Replace(std::uint32_t begin, std::uint32_t end, const cRecord& single) {
  if (single.IsEmpty()) return;  // it was refused, and that has been said
  const std::size_t size = m_end - m_begin - (end - begin) + single.GetBytes().size();
  detail::cRecordBuffer* buffer = detail::NewBuffer(size);
  if (buffer == nullptr) {
    Trace(FrameworkUnit(), 2, "record: parameter not replaced, no room for ", size, " bytes");
    return;
  }
  const unsigned char* const old = m_buffer->Bytes();
  unsigned char* to = buffer->Bytes();
  std::memcpy(to, old + m_begin, begin - m_begin);
  to += begin - m_begin;
  std::memcpy(to, single.GetBytes().data(), single.GetBytes().size());
  to += single.GetBytes().size();
  std::memcpy(to, old + end, m_end - end);
  // What was replaced may have been the deepest; an upper bound is kept until the bytes are indexed.
  buffer->depth = std::max(GetDepth(), single.GetDepth());
  detail::Release(m_buffer);
  m_buffer = buffer;
  m_begin = 0;
  m_end = static_cast<std::uint32_t>(size);
  m_head = 0;
  m_cursor = 0;
  m_room = buffer->capacity;
}

// ---- names and texts

namespace detail {

std::uint32_t FindFirst(const cRecordBuffer* buffer, std::uint32_t head, std::string_view name, std::uint32_t key) {
  const cRecordIndexEntry* const index = buffer->index;
  for (std::uint32_t entry = head + 1, last = head + index[head].at; entry <= last; ++entry)
    if ((index[entry].key & kNameKeyMask) == key &&
        AreSame(buffer->Bytes() + index[entry].at, name.data(), name.size()))
      return entry;
  return 0;
}

// RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF.
bool IsUtf8(const char* text, std::size_t size) {
  const auto* at = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* const end = at + size;
  while (at < end) {
    const unsigned char lead = *at++;
    if (lead < 0x80) continue;
    const int more = lead >= 0xC2 && lead <= 0xDF   ? 1
                     : lead >= 0xE0 && lead <= 0xEF ? 2
                     : lead >= 0xF0 && lead <= 0xF4 ? 3
                                                    : 0;
    if (more == 0 || end - at < more) return false;
    const unsigned char second = *at;
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
        (lead == 0xF4 && second > 0x8F))
      return false;
    for (int i = 0; i < more; ++i)
      if ((*at++ & 0xC0) != 0x80) return false;
  }
  return true;
}

}  // namespace detail

}  // namespace vorn
