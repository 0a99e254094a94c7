// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_reader.h>

namespace tav::sml {

cSmlReader::cSmlReader(cSmlSink& sink)
    : m_sink(sink), m_transport([this](const cSmlFrame& frame) { OnFrame(frame); }) {}

void cSmlReader::ReadPayload(cBytes payload) {
  cSmlFrame frame;
  frame.kind = eFrameGood;
  frame.size = static_cast<std::uint32_t>(payload.size());
  frame.payload = payload;
  OnFrame(frame);
}

void cSmlReader::OnFrame(const cSmlFrame& frame) {
  m_sink.OnFrame(frame);
  if (frame.kind != eFrameGood) return;
  m_openServerId = {};
  m_messages.Begin(frame.payload);
  while (m_messages.Next(m_message)) OnMessage(frame);
  if (m_messages.HasFault()) Fault(frame, m_messages.GetFault());
}

void cSmlReader::OnMessage(const cSmlFrame& frame) {
  ++m_counts.messages;
  if (m_message.crc == eCrcNone) {
    ++m_counts.badCrc;
    const int found = frame.payload[m_message.crcOffset];
    Fault(frame, {m_message.crcOffset, "crc", "the checksum of the message", found});
  } else if (!m_message.readable) {
    Fault(frame, m_message.fault);
  } else if (m_message.tag == eSmlGetListResponse) {
    OnList(frame);
  } else if (m_message.tag == eSmlOpenResponse) {
    m_openServerId = m_message.open.serverId;
  } else if (m_message.tag != eSmlCloseResponse) {
    ++m_counts.others;
  }
}

void cSmlReader::OnList(const cSmlFrame& frame) {
  ++m_counts.lists;
  if (m_message.list.serverId.empty()) m_message.list.serverId = m_openServerId;
  m_sink.OnList(frame, m_message.list);
}

void cSmlReader::Fault(const cSmlFrame& frame, const cSmlFault& fault) {
  ++m_counts.faults;
  m_sink.OnFault(frame, fault);
}

}  // namespace tav::sml
