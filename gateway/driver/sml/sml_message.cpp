// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_message.h>

namespace tav::sml {

namespace {

struct cBodyName {
  std::uint32_t tag;
  const char* name;
};

// SML_MessageBody of the standard.
constexpr cBodyName kBodies[] = {
    {0x00000100, "Open.Req"},
    {0x00000101, "Open.Res"},
    {0x00000200, "Close.Req"},
    {0x00000201, "Close.Res"},
    {0x00000300, "GetProfilePack.Req"},
    {0x00000301, "GetProfilePack.Res"},
    {0x00000400, "GetProfileList.Req"},
    {0x00000401, "GetProfileList.Res"},
    {0x00000500, "GetProcParameter.Req"},
    {0x00000501, "GetProcParameter.Res"},
    {0x00000600, "SetProcParameter.Req"},
    {0x00000700, "GetList.Req"},
    {0x00000701, "GetList.Res"},
    {0x00000800, "GetCosem.Req"},
    {0x00000801, "GetCosem.Res"},
    {0x00000900, "SetCosem.Req"},
    {0x00000901, "SetCosem.Res"},
    {0x00000A00, "ActionCosem.Req"},
    {0x00000A01, "ActionCosem.Res"},
    {0x0000FF01, "Attention.Res"},
};

// The readers of what every message has are inline, so that the cursor stays in registers meanwhile.

[[gnu::always_inline]] inline bool ReadHead(cSmlCursor& cursor, cSmlMessage& message) {
  std::uint64_t group = 0, abortOnError = 0, tag = 0;
  message.offset = cursor.Offset();
  if (!cursor.ListOf("message", 6, "a message (list of 6)") || !cursor.Octets("transactionId", message.transactionId) ||
      !cursor.Unsigned("groupNo", 0xFF, group) || !cursor.Unsigned("abortOnError", 0xFF, abortOnError) ||
      !cursor.ListOf("messageBody", 2, "a message body (list of 2)") ||
      !cursor.Unsigned("messageBody tag", 0xFFFFFFFF, tag))
    return false;
  message.group = static_cast<std::uint8_t>(group);
  message.abortOnError = static_cast<std::uint8_t>(abortOnError);
  message.tag = static_cast<std::uint32_t>(tag);
  return true;
}

[[gnu::always_inline]] inline bool ReadTail(cSmlCursor& cursor, cSmlMessage& message) {
  const cBytes checked = cursor.Since(message.offset);
  std::uint64_t crc = 0;
  message.crcOffset = cursor.Offset();
  if (!cursor.Unsigned("crc", 0xFFFF, crc) || !cursor.EndOfMessage()) return false;
  message.crc = MatchCrc16(checked, static_cast<std::uint8_t>(crc >> 8), static_cast<std::uint8_t>(crc & 0xFF));
  message.size = cursor.Offset() - message.offset;
  return true;
}

bool ReadOpen(cSmlCursor& cursor, cSmlOpen& open) {
  std::uint64_t version = 1;
  open = {};
  if (!cursor.ListOf("Open.Res", 6, "an open response (list of 6)") || !cursor.Octets("codepage", open.codepage) ||
      !cursor.Octets("clientId", open.clientId) || !cursor.Octets("reqFileId", open.requestFileId) ||
      !cursor.Octets("serverId", open.serverId) || !cursor.Time("refTime", open.referenceTime) ||
      !(cursor.Absent() || cursor.Unsigned("smlVersion", 0xFF, version)))
    return false;
  open.version = static_cast<std::uint8_t>(version);
  return true;
}

[[gnu::always_inline]] inline bool ReadEntry(cSmlCursor& cursor, cSmlEntry& entry) {
  std::uint64_t number = 0;
  std::int64_t scaler = 0;
  entry = {};
  entry.offset = cursor.Offset();
  if (!cursor.ListOf("valListEntry", 7, "a list entry (list of 7)") || !cursor.Obis("objName", entry.obis))
    return false;
  if (!cursor.Absent()) {
    if (!cursor.Unsigned("status", UINT64_MAX, number)) return false;
    entry.status = number;
  }
  if (!cursor.Time("valTime", entry.time)) return false;
  if (!cursor.Absent()) {
    if (!cursor.Unsigned("unit", 0xFF, number)) return false;
    entry.unit = static_cast<std::uint8_t>(number);
  }
  if (!cursor.Absent()) {
    if (!cursor.Signed("scaler", INT8_MIN, INT8_MAX, scaler)) return false;
    entry.scaler = static_cast<std::int8_t>(scaler);
  }
  if (!cursor.Value("value", entry.value) || !cursor.Octets("valueSignature", entry.signature)) return false;
  entry.size = cursor.Offset() - entry.offset;
  return true;
}

}  // namespace

const char* SmlBodyText(std::uint32_t tag) {
  for (const cBodyName& body : kBodies)
    if (body.tag == tag) return body.name;
  return "unknown";
}

std::optional<std::uint32_t> cSmlList::MeterTime() const {
  if (sensorTime.IsAbsolute()) return sensorTime.seconds;
  for (const cSmlEntry& entry : entries)
    if (entry.time.IsAbsolute()) return entry.time.seconds;
  return std::nullopt;
}

void cSmlMessages::Begin(cBytes payload) {
  m_payload = payload;
  m_at = 0;
  m_failed = false;
}

// Zeros between messages are padding that nobody counted, as in captures without their transport frame.
bool cSmlMessages::Next(cSmlMessage& message) {
  while (m_at < m_payload.size() && m_payload[m_at] == kEndOfMessage) ++m_at;
  if (m_failed || m_at == m_payload.size()) return false;
  cSmlCursor cursor(m_payload, m_at, m_fault);
  message.size = message.tag = 0;
  message.crc = eCrcNone;
  message.readable = true;
  m_failed = !(ReadHead(cursor, message) && ReadBody(cursor, message) && ReadTail(cursor, message));
  m_at = cursor.Offset();
  return !m_failed;
}

// A body that is not what its tag says is passed over when at least its elements can be told apart.
bool cSmlMessages::ReadBody(cSmlCursor& cursor, cSmlMessage& message) {
  const cSmlCursor before = cursor;
  switch (message.tag) {
    case eSmlOpenResponse:
      message.readable = ReadOpen(cursor, message.open);
      break;
    case eSmlGetListResponse:
      message.readable = ReadList(cursor, message.list);
      break;
    default:
      return cursor.Skip("messageBody");
  }
  if (message.readable) return true;
  message.fault = m_fault;
  cursor = before;
  return cursor.Skip("messageBody");
}

bool cSmlMessages::ReadList(cSmlCursor& at, cSmlList& list) {
  cSmlCursor cursor = at;
  std::uint32_t count = 0;
  list = {};
  if (!cursor.ListOf("GetList.Res", 7, "a list response (list of 7)") || !cursor.Octets("clientId", list.clientId) ||
      !cursor.Octets("serverId", list.serverId) || !cursor.Octets("listName", list.listName) ||
      !cursor.Time("actSensorTime", list.sensorTime) || !cursor.List("valList", count))
    return false;
  if (count > kMaxEntries) {
    m_fault = {cursor.Offset(), "valList", "at most 250 entries", cursor.Peek()};
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!ReadEntry(cursor, m_entries[i])) {
      list.entries = {m_entries.data(), i};
      return false;
    }
  }
  list.entries = {m_entries.data(), count};
  if (!cursor.Octets("listSignature", list.signature) || !cursor.Time("actGatewayTime", list.gatewayTime)) return false;
  at = cursor;
  return true;
}

}  // namespace tav::sml
