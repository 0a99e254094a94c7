// SPDX-License-Identifier: Apache-2.0
#include "sml_telegrams.h"

#include <algorithm>
#include <stdexcept>

#include <tav/framework/data.h>

using namespace tav::sml;

namespace {

constexpr std::string_view kServerId("\x0A\x01TST\0\x01\x02\x03\x04", 10);

std::string Hex(cBytes bytes) {
  vorn::cData data(bytes.data(), bytes.size());
  data.SetSeparator("");
  return data.ToString(0);
}

std::string Text(const cSmlEntry& entry) {
  std::string text = ObisText(entry.obis);
  if (entry.status) text += " status " + std::to_string(*entry.status);
  if (entry.time.kind != eSmlNoTime)
    text += " time " + std::to_string(entry.time.kind) + ":" + std::to_string(entry.time.seconds);
  if (entry.value.IsNumber())
    text += " = " + DecimalText(entry.value, entry.scaler.value_or(0)).ToString();
  else if (entry.value.type == eSmlBool)
    text += entry.value.bits != 0 ? " = true" : " = false";
  else if (entry.value.type != eSmlAbsent)
    text += " = hex:" + Hex(entry.value.octets);
  if (entry.unit) text += " unit " + std::to_string(*entry.unit);
  if (!entry.signature.empty()) text += " signature " + Hex(entry.signature);
  return text;
}

void WriteField(cSmlWriter& to, const std::string& element) {
  if (element.empty())
    to.Absent();
  else
    to.Raw(Bytes(element));
}

void WriteList(cSmlWriter& to, const std::vector<cTestEntry>& entries) {
  to.BeginMessage(Bytes("00000002"), 0, eSmlGetListResponse);
  to.List(7);
  to.Absent();
  to.Octets(kServerId);
  to.Absent();
  to.SecIndex(1234);
  to.List(entries.size());
  for (const cTestEntry& entry : entries) {
    to.List(7);
    to.Obis(entry.obis);
    for (const std::string& field : {entry.status, entry.time, entry.unit, entry.scaler, entry.value, entry.signature})
      WriteField(to, field);
  }
  to.Absent();
  to.Absent();
  to.EndMessage();
}

}  // namespace

std::string Bytes(std::string_view digits) {
  vorn::cData data;
  if (!vorn::cData::FromHex(digits, data)) throw std::invalid_argument("no hexadecimal digits: " + std::string(digits));
  return data.AsText();
}

cBytes View(const std::string& bytes) { return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}; }

std::string ListPayload(const std::vector<cTestEntry>& entries, eCrcKind crc) {
  cSmlWriter to(crc);
  WriteList(to, entries);
  return to.GetPayload();
}

std::string Payload(const std::vector<cTestEntry>& entries, eCrcKind crc) {
  cSmlWriter to(crc);
  to.BeginMessage(Bytes("00000001"), 0, eSmlOpenResponse);
  to.List(6);
  to.Absent();
  to.Absent();
  to.Octets("file");
  to.Octets(kServerId);
  to.SecIndex(1234);
  to.Unsigned(1, 1);
  to.EndMessage();
  WriteList(to, entries);
  to.BeginMessage(Bytes("00000003"), 0, eSmlCloseResponse);
  to.List(1);
  to.Absent();
  to.EndMessage();
  return to.GetPayload();
}

std::string Telegram(const std::vector<cTestEntry>& entries, eCrcKind crc) {
  return WriteSmlFrame(Payload(entries, crc), crc);
}

std::string OrdinaryTelegram() {
  const std::string key = "8302" + std::string(96, 'A');
  return Telegram({
      {kObisManufacturer, "", "", "", "", "04545354", ""},
      {kObisServerId, "", "", "", "", "0B0A01545354000102 0304", ""},
      {PackObis(1, 0, 1, 8, 0), "65001C0104", "7262016500001234", "621E", "52FF", "59000000000000AAD2", ""},
      {PackObis(1, 0, 2, 8, 0), "65001C0104", "7262016500001234", "621E", "52FF", "6200", ""},
      {PackObis(1, 0, 16, 7, 0), "", "", "621B", "5200", "55FFFFFF9C", ""},
      {kObisPublicKey, "", "", "", "", key, ""},
  });
}

void cMemory::OnFrame(const cSmlFrame& frame) {
  constexpr const char* kKinds[] = {"good ", "bad ", "incomplete "};
  events.push_back(kKinds[frame.kind] + std::to_string(frame.offset) + "+" + std::to_string(frame.size));
}

void cMemory::OnList(const cSmlFrame&, const cSmlList& list) {
  events.push_back("list " + Hex(list.serverId));
  for (const cSmlEntry& entry : list.entries) events.push_back(Text(entry));
}

void cMemory::OnFault(const cSmlFrame&, const cSmlFault& fault) { events.push_back("fault " + fault.ToString()); }

cReading Read(std::string_view stream, std::size_t block) {
  cMemory memory;
  const auto reader = std::make_unique<cSmlReader>(memory);
  if (block == 0) block = std::max<std::size_t>(stream.size(), 1);
  for (std::size_t at = 0; at < stream.size(); at += block) {
    // A copy of just this block, so that a read past its end is seen.
    const std::string part(stream.substr(at, block));
    const std::vector<char> exact(part.begin(), part.end());
    reader->Feed(exact.data(), exact.size());
  }
  reader->Finish();
  return {memory.events, reader->GetFrameCounts(), reader->GetMessageCounts()};
}

cReading ReadPayload(const std::string& payload) {
  cMemory memory;
  const auto reader = std::make_unique<cSmlReader>(memory);
  const std::vector<std::uint8_t> exact(payload.begin(), payload.end());
  reader->ReadPayload(exact);
  return {memory.events, reader->GetFrameCounts(), reader->GetMessageCounts()};
}
