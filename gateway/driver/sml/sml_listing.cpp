// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_listing.h>

#include <algorithm>
#include <iterator>

#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/sml/dlms_units.h>
#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_decimal.h>

namespace tav::sml {

namespace {

constexpr std::size_t kStartSize = kStartSequence.size();
constexpr unsigned int kMaxDepth = 16;

constexpr cSmlField kTime[] = {{"choice", nullptr, 0}, {"time", nullptr, 0}};
constexpr cSmlField kEntry[] = {
    {"objName", nullptr, 0}, {"status", nullptr, 0}, {"valTime", kTime, 2},          {"unit", nullptr, 0},
    {"scaler", nullptr, 0},  {"value", nullptr, 0},  {"valueSignature", nullptr, 0},
};
constexpr cSmlField kEntries[] = {{"valListEntry", kEntry, 7}};
constexpr cSmlField kGetList[] = {
    {"clientId", nullptr, 0}, {"serverId", nullptr, 0},      {"listName", nullptr, 0},     {"actSensorTime", kTime, 2},
    {"valList", kEntries, 1}, {"listSignature", nullptr, 0}, {"actGatewayTime", kTime, 2},
};
constexpr cSmlField kOpen[] = {
    {"codepage", nullptr, 0}, {"clientId", nullptr, 0}, {"reqFileId", nullptr, 0},
    {"serverId", nullptr, 0}, {"refTime", kTime, 2},    {"smlVersion", nullptr, 0},
};
constexpr cSmlField kClose[] = {{"globalSignature", nullptr, 0}};

cSmlField BodyField(std::uint32_t tag) {
  switch (tag) {
    case eSmlOpenResponse:
      return {"Open.Res", kOpen, std::size(kOpen)};
    case eSmlCloseResponse:
      return {"Close.Res", kClose, std::size(kClose)};
    case eSmlGetListResponse:
      return {"GetList.Res", kGetList, std::size(kGetList)};
    default:
      return {SmlBodyText(tag), nullptr, 0};
  }
}

bool IsPrintable(cBytes bytes) {
  return !bytes.empty() &&
         std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b >= 0x20 && b <= 0x7E; });
}

std::string AsText(cBytes bytes) { return {bytes.begin(), bytes.end()}; }

std::string Quoted(const cSmlValue& value) {
  if (value.type == eSmlAbsent) return "not sent";
  if (value.type == eSmlOctets && IsPrintable(value.octets)) return '"' + AsText(value.octets) + '"';
  if (value.type == eSmlOctets) return HexDigits(value.octets);
  return ValueText(value, 0);
}

std::string UnitText(const std::optional<std::uint8_t>& unit) {
  const char* const text = unit ? DlmsUnitText(*unit) : nullptr;
  return text != nullptr ? text : "";
}

}  // namespace

std::string ValueText(const cSmlValue& value, std::int8_t scaler) {
  switch (value.type) {
    case eSmlInt:
    case eSmlUInt:
      return DecimalText(value, scaler).ToString();
    case eSmlBool:
      return value.bits != 0 ? "true" : "false";
    case eSmlOctets:
    case eSmlList:
      return "hex:" + HexDigits(value.octets);
    default:
      return {};
  }
}

std::string MeterText(cBytes serverId) { return IsPrintable(serverId) ? AsText(serverId) : HexDigits(serverId); }

// Where the raw bytes have eight of 1B, the payload has four.
void cSmlListing::BeginFrame(const cSmlFrame& frame, cBytes raw) {
  m_payload = frame.payload;
  m_begin = frame.offset + (raw.empty() ? 0 : kStartSize);
  m_escapes.clear();
  if (!raw.empty()) m_lines.Row(frame.offset, raw.first(kStartSize), "start sequence, version 1");
  if (frame.escapes == 0) return;
  constexpr std::uint8_t kDoubled[8] = {0x1B, 0x1B, 0x1B, 0x1B, 0x1B, 0x1B, 0x1B, 0x1B};
  for (std::size_t at = kStartSize, payload = 0; payload < m_payload.size();) {
    const bool doubled =
        raw.size() - at >= 8 && std::equal(kDoubled, kDoubled + 8, raw.begin() + static_cast<std::ptrdiff_t>(at));
    at += doubled ? 8 : 1;
    payload += doubled ? 4 : 1;
    if (doubled) m_escapes.push_back(static_cast<std::uint32_t>(payload));
  }
}

std::uint64_t cSmlListing::OffsetOf(std::uint32_t payloadOffset) const {
  const auto before = std::upper_bound(m_escapes.begin(), m_escapes.end(), payloadOffset) - m_escapes.begin();
  return m_begin + payloadOffset + 4 * static_cast<std::uint64_t>(before);
}

void cSmlListing::EndFrame(const cSmlFrame& frame, cBytes raw) {
  const std::size_t end = raw.size() - kEndSize, padding = std::min<std::size_t>(frame.padding, end - kStartSize);
  if (frame.kind == eFrameGood && padding != 0)
    m_lines.Row(frame.offset + end - padding, raw.subspan(end - padding, padding), "padding");
  m_lines.Row(frame.offset + end, raw.subspan(end),
              "end sequence, padding count " + std::to_string(frame.padding) + ", checksum " +
                  (frame.crc != eCrcNone ? "right" : "WRONG"));
}

void cSmlListing::Message(const cSmlMessage& message, std::size_t number) {
  m_lines.Line("  message " + std::to_string(number) + ", " + SmlBodyText(message.tag) + ", checksum " +
               (message.crc != eCrcNone ? std::string("right, ") + CrcKindText(message.crc) : "WRONG"));
  Rows(message, message.offset + message.size);
  if (!message.readable) Fault(message.fault);
}

void cSmlListing::BrokenMessage(const cSmlMessage& message, std::size_t number, const cSmlFault& fault) {
  m_lines.Line("  message " + std::to_string(number) + ", BROKEN");
  Rows(message, fault.offset);
  if (!message.readable) Fault(message.fault);
  Fault(fault);
  const auto left = static_cast<std::uint32_t>(m_payload.size()) - fault.offset;
  if (left != 0) Row(fault.offset, left, 0, "not read, " + std::to_string(left) + " bytes");
}

void cSmlListing::Rows(const cSmlMessage& message, std::uint32_t end) {
  m_message = &message;
  const cSmlField body[] = {{"tag", nullptr, 0}, BodyField(message.tag)};
  const cSmlField fields[] = {
      {"transactionId", nullptr, 0}, {"groupNo", nullptr, 0}, {"abortOnError", nullptr, 0},
      {"messageBody", body, 2},      {"crc", nullptr, 0},     {"endOfSmlMsg", nullptr, 0},
  };
  cSmlFault fault;
  cSmlCursor cursor(m_payload.first(end), message.offset, fault);
  Element(cursor, {"message", fields, std::size(fields)}, 0);
}

void cSmlListing::Fault(const cSmlFault& fault) {
  cSmlFault there = fault;
  there.offset = static_cast<std::uint32_t>(OffsetOf(fault.offset));
  m_lines.Line("  FAULT: " + there.ToString());
}

bool cSmlListing::Element(cSmlCursor& cursor, const cSmlField& field, unsigned int depth) {
  const std::uint32_t offset = cursor.Offset();
  if (cursor.Peek() == kEndOfMessage) {
    Row(offset, 1, depth, field.name);
    return cursor.EndOfMessage();
  }
  const cSmlCursor before = cursor;
  cTypeLength head;
  if (!cursor.TypeLength(field.name, head)) return false;
  if (head.type == eTlList && depth < kMaxDepth) {
    if (const cSmlEntry* const entry = EntryAt(offset)) Entry(*entry);
    Row(offset, head.own, depth, std::string(field.name) + ", list of " + std::to_string(head.size));
    return Elements(cursor, field, head.size, depth + 1);
  }
  cSmlValue value;
  cursor = before;
  if (!cursor.Value(field.name, value)) return false;
  Row(offset, cursor.Offset() - offset, depth, std::string(field.name) + " " + Meaning(field, value));
  return true;
}

bool cSmlListing::Elements(cSmlCursor& cursor, const cSmlField& list, std::uint32_t count, unsigned int depth) {
  constexpr cSmlField kUnnamed = {"element", nullptr, 0};
  const bool repeated = list.fields == kEntries;
  for (std::uint32_t i = 0; i < count; ++i) {
    const bool named = repeated || i < list.count;
    if (!Element(cursor, named ? list.fields[repeated ? 0 : i] : kUnnamed, depth)) return false;
  }
  return true;
}

void cSmlListing::Entry(const cSmlEntry& entry) {
  const std::string obis = ObisText(entry.obis);
  const cObisNaming naming = m_namer ? m_namer(obis) : cObisNaming();
  const char* const common = ObisCommonName(entry.obis);
  const std::string name = naming.rule ? naming.rule->name : common != nullptr ? common : "";
  const std::string unit = UnitText(entry.unit);
  m_lines.Line("    " + obis + (name.empty() ? "" : " " + name) + " = " +
               (entry.value.IsNumber() ? ValueText(entry.value, entry.scaler.value_or(0)) : Quoted(entry.value)) +
               (unit.empty() ? "" : " " + unit));
  for (const std::string& note : naming.notes) m_lines.Line("      " + note);
}

void cSmlListing::Row(std::uint32_t offset, std::uint32_t size, unsigned int depth, const std::string& text) {
  m_lines.Row(OffsetOf(offset), m_payload.subspan(offset, size), std::string(std::size_t{2} * depth, ' ') + text);
}

std::string cSmlListing::Meaning(const cSmlField& field, const cSmlValue& value) const {
  const std::string_view name = field.name;
  if (!value.IsNumber() && name != "objName") return Quoted(value);
  if (name == "crc") return m_message->crc != eCrcNone ? "right" : "WRONG";
  if (name == "tag") return SmlBodyText(static_cast<std::uint32_t>(value.bits));
  if (name == "scaler") return "10^" + ValueText(value, 0);
  if (name == "unit" && value.bits <= 0xFF && DlmsUnitText(static_cast<unsigned int>(value.bits)) != nullptr)
    return ValueText(value, 0) + " " + DlmsUnitText(static_cast<unsigned int>(value.bits));
  if (name == "choice") {
    constexpr const char* kChoices[] = {"", " seconds index", " timestamp", " local timestamp"};
    return ValueText(value, 0) + (value.bits < std::size(kChoices) ? kChoices[value.bits] : "");
  }
  if (name == "objName" && value.octets.size() == 6) {
    std::uint64_t obis = 0;
    for (const std::uint8_t byte : value.octets) obis = obis << 8 | byte;
    return ObisText(obis);
  }
  return Quoted(value);
}

const cSmlEntry* cSmlListing::EntryAt(std::uint32_t offset) const {
  const auto& entries = m_message->list.entries;
  if (m_message->tag != eSmlGetListResponse) return nullptr;
  const auto found =
      std::find_if(entries.begin(), entries.end(), [=](const cSmlEntry& e) { return e.offset == offset; });
  return found != entries.end() ? &*found : nullptr;
}

}  // namespace tav::sml
