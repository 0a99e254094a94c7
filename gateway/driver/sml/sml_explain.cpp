// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_explain.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/capture_document.h>
#include <gateway/driver/sml/dlms_units.h>
#include <gateway/driver/sml/obis_code.h>
#include <gateway/driver/sml/sml_input.h>
#include <gateway/driver/sml/sml_listing.h>
#include <gateway/driver/sml/sml_transport.h>

namespace tav::sml {

namespace {

using cJson = cCaptureJson;

template <typename T>
cJson OrNull(const std::optional<T>& value) {
  return value ? cJson(*value) : cJson(nullptr);
}

cJson ValueOrNull(const cSmlValue& value, std::int8_t scaler) {
  return value.type != eSmlAbsent ? cJson(ValueText(value, scaler)) : cJson(nullptr);
}

cJson ToJson(const cSmlEntry& entry, const cObisNamer& namer) {
  const char* const unit = entry.unit ? DlmsUnitText(*entry.unit) : nullptr;
  cJson json;
  json["obis"] = ObisText(entry.obis);
  json["raw"] = ValueOrNull(entry.value, 0);
  json["scaler"] = OrNull(entry.scaler);
  json["unit_code"] = OrNull(entry.unit);
  json["unit"] = unit != nullptr ? cJson(unit) : cJson(nullptr);
  json["value"] = ValueOrNull(entry.value, entry.scaler.value_or(0));
  json["rule"] = RuleOrNull(namer ? namer(ObisText(entry.obis)).rule : std::nullopt);
  return json;
}

const char* FrameText(eFrameKind kind) {
  return kind == eFrameGood ? "good" : kind == eFrameBad ? "BAD" : "INCOMPLETE";
}

class cExplainer {
 public:
  explicit cExplainer(const cObisNamer& namer) : m_namer(namer), m_listing(namer) {}

  cExplanation Run(std::string_view capture);

 private:
  void OnFrame(const cSmlFrame& frame);
  void Payload();
  void Telegram(const cSmlFrame& frame, cBytes raw);
  void OnMessage(const cSmlMessage& message, cJson& telegram);
  std::string Json() const;

  const cObisNamer& m_namer;
  cSmlListing m_listing;
  cSmlMessages m_messages;
  cBytes m_bytes;
  std::uint64_t m_shown = 0;  // every byte of the capture before this one is in the listing
  cExplanation m_result;
  cJson m_telegrams = cJson::array();
};

cExplanation cExplainer::Run(std::string_view capture) {
  const cCaptureBytes input(capture);
  m_bytes = input.Get();
  if (IsPayload(m_bytes)) {
    Payload();
  } else {
    cSmlTransport transport([this](const cSmlFrame& frame) { OnFrame(frame); });
    transport.Feed(m_bytes.data(), m_bytes.size());
    transport.Finish();
    const cSmlCounts& counts = transport.GetCounts();
    m_result.counts = {counts.good, counts.bad, counts.incomplete, counts.skippedBytes};
    if (m_shown < m_bytes.size()) m_listing.Range(m_shown, m_bytes.size(), "no part of a frame");
  }
  m_result.listing = m_listing.GetText();
  m_result.json = Json();
  return m_result;
}

void cExplainer::OnFrame(const cSmlFrame& frame) {
  const std::uint64_t end = frame.offset + frame.size;
  if (m_shown < frame.offset) m_listing.Range(m_shown, frame.offset, "no part of a frame");
  m_shown = std::max(m_shown, end);
  m_listing.Range(frame.offset, end,
                  "transport frame, " + std::to_string(frame.size) + " bytes, " + FrameText(frame.kind) + ", " +
                      (frame.kind == eFrameGood ? CrcKindText(frame.crc) : frame.fault));
  Telegram(frame, m_bytes.subspan(frame.offset, frame.size));
}

// Without a transport frame all of it is one telegram, good when it can be read to its end.
void cExplainer::Payload() {
  cSmlFrame frame;
  frame.size = static_cast<std::uint32_t>(m_bytes.size());
  frame.payload = m_bytes;
  m_messages.Begin(m_bytes);
  cSmlMessage message;
  while (m_messages.Next(message)) {
  }
  frame.kind = m_messages.HasFault() ? eFrameBad : eFrameGood;
  ++(m_messages.HasFault() ? m_result.counts.bad : m_result.counts.good);
  m_listing.Range(0, m_bytes.size(), "messages without a transport frame");
  Telegram(frame, {});
}

void cExplainer::Telegram(const cSmlFrame& frame, cBytes raw) {
  cJson telegram;
  telegram["offset"] = frame.offset;
  telegram["good"] = frame.kind == eFrameGood;
  telegram["meter"] = nullptr;
  telegram["values"] = cJson::array();
  m_listing.BeginFrame(frame, raw);
  m_messages.Begin(frame.payload);
  cSmlMessage message;
  std::size_t number = 1;
  for (; m_messages.Next(message); ++number) {
    m_listing.Message(message, number);
    OnMessage(message, telegram);
    if (frame.kind == eFrameGood && (message.crc == eCrcNone || !message.readable)) ++m_result.faults;
  }
  if (m_messages.HasFault()) {
    m_listing.BrokenMessage(message, number, m_messages.GetFault());
    if (!message.readable) OnMessage(message, telegram);
    if (frame.kind == eFrameGood) ++m_result.faults;
  }
  if (frame.kind == eFrameIncomplete) return;
  if (frame.kind != eFrameGood && m_result.firstBad.empty())
    m_result.firstBad = "at offset " + std::to_string(frame.offset);
  if (!raw.empty()) m_listing.EndFrame(frame, raw);
  m_telegrams.push_back(std::move(telegram));
}

// The list names the meter; the open response does where there is no list, or one without a server id.
void cExplainer::OnMessage(const cSmlMessage& message, cJson& telegram) {
  const bool isList = message.tag == eSmlGetListResponse;
  const cBytes serverId = isList                            ? message.list.serverId
                          : message.tag == eSmlOpenResponse ? message.open.serverId
                                                            : cBytes();
  if (!serverId.empty()) telegram["meter"] = MeterText(serverId);
  if (!isList) return;
  for (const cSmlEntry& entry : message.list.entries) telegram["values"].push_back(ToJson(entry, m_namer));
}

std::string cExplainer::Json() const {
  cJson json;
  json["kind"] = "sml";
  json["good"] = m_result.counts.good;
  json["bad"] = m_result.counts.bad;
  json["incomplete"] = m_result.counts.incomplete;
  json["skipped_bytes"] = m_result.counts.skippedBytes;
  json["telegrams"] = m_telegrams;
  return DumpLine(json);
}

}  // namespace

bool HoldsSml(std::string_view capture) { return IsSml(cCaptureBytes(capture).Get()); }

cExplanation ExplainSml(std::string_view capture, const cObisNamer& namer) {
  return std::make_unique<cExplainer>(namer)->Run(capture);
}

}  // namespace tav::sml
