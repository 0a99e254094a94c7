// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_window.h>

#include <algorithm>

namespace tav::mbus {

namespace {

constexpr std::size_t kHeadSize = 4;  // of a long frame: what has it was meant to be one

bool AreEqual(cBytes bytes, const std::string& text) { return std::ranges::equal(bytes, BytesOf(text)); }

std::string FaultText(cMBusFault fault, std::size_t at) {
  fault.offset += static_cast<std::uint32_t>(at);
  return fault.ToString();
}

}  // namespace

void cMBusWindow::Begin(const std::string& request, eExpected expected, bool echo) {
  *this = {};
  m_request = request;
  m_expected = expected;
  m_echoLeft = echo ? request.size() : 0;
}

void cMBusWindow::Take(cBytes bytes) {
  bytes = TakeEcho(bytes);
  bytes = bytes.first(std::min(bytes.size(), kMostBytes - m_bytes.size()));
  m_bytes.append(bytes.begin(), bytes.end());
  if (m_echoFault.empty()) FindAnswer();
}

cBytes cMBusWindow::TakeEcho(cBytes bytes) {
  while (m_echoLeft != 0 && !bytes.empty()) {
    const std::size_t at = m_request.size() - m_echoLeft;
    if (bytes[0] != static_cast<std::uint8_t>(m_request[at])) {
      m_echoLeft = 0;
      m_echoFault = FaultText({"the echo is not what was sent, by a collision or noise", 0, bytes[0]}, at);
    } else {
      --m_echoLeft;
      bytes = bytes.subspan(1);
    }
  }
  return bytes;
}

void cMBusWindow::FindAnswer() {
  while (m_answerSize == 0 && m_at != m_bytes.size()) {
    cMBusFrame frame;
    cMBusFault fault;
    const eFrameResult result = ReadFrame(BytesOf(m_bytes).subspan(m_at), frame, fault);
    if (result == eFramePartial) return;
    if (result == eFrameWhole && IsPassedOver(frame)) continue;
    if (result == eFrameWhole && IsAnswer(frame)) {
      m_answerAt = m_at;
      m_answerSize = frame.bytes.size();
    } else {
      ++m_at;
    }
  }
}

// The single character is one byte: it counts only where nothing else could have left it.
bool cMBusWindow::IsAnswer(const cMBusFrame& frame) const {
  return frame.kind == eFrameAck ? m_at == 0 : m_expected == eExpected::Data && frame.kind == eFrameLong;
}

// Whole frames that answer nothing are taken away, so that the answer may still come.
bool cMBusWindow::IsPassedOver(const cMBusFrame& frame) {
  if (frame.kind == eFrameAck || (frame.kind == eFrameLong && m_at != 0)) return false;
  const bool fromMaster = (frame.control & kFromMaster) != 0;
  if (!fromMaster && frame.kind == eFrameLong && m_expected == eExpected::Data) return false;
  if (AreEqual(frame.bytes, m_request))
    m_sawEcho = true;
  else
    m_stray = fromMaster ? "a request that was not sent from here" : "an answer that was not asked for";
  m_bytes.erase(0, m_at + frame.bytes.size());
  m_at = 0;
  return true;
}

eOutcome cMBusWindow::Judge(cMBusFrame& frame, std::string& cause) const {
  if (!m_echoFault.empty()) {
    cause = m_echoFault;
    return eOutcome::Damaged;
  }
  if (m_answerSize == 0) return m_bytes.empty() ? JudgeNothing(cause) : JudgeGarbage(cause);
  if (IsWhole()) {
    cMBusFault fault;
    ReadFrame(BytesOf(m_bytes).subspan(m_answerAt), frame, fault);
    return eOutcome::Answered;
  }
  const std::size_t behind = m_bytes.size() - m_answerAt - m_answerSize;
  cause = std::to_string(behind) + (behind == 1 ? " byte" : " bytes") + " behind the first answer";
  return eOutcome::Collision;
}

eOutcome cMBusWindow::JudgeNothing(std::string& cause) const {
  if (!m_stray.empty()) {
    cause = m_stray;
    return eOutcome::Damaged;
  }
  if (m_echoLeft != 0 && m_echoLeft != m_request.size()) {
    cause = "the echo of the request ends too early";
    return eOutcome::Damaged;
  }
  cause = m_echoLeft != 0 ? "no answer, nor the echo of the request" : "no answer";
  return eOutcome::Silent;
}

// Several at once leave nothing that looks like the beginning of a frame, or seldom.
eOutcome cMBusWindow::JudgeGarbage(std::string& cause) const {
  cMBusFrame frame;
  cMBusFault fault;
  for (std::size_t at = 0; at != m_bytes.size(); ++at) {
    const eFrameResult result = ReadFrame(BytesOf(m_bytes).subspan(at), frame, fault);
    const bool isMeant =
        BytesOf(m_bytes).subspan(at)[0] == kLongStart && (result == eFramePartial || fault.offset >= kHeadSize);
    if (!isMeant || result == eFrameWhole) continue;
    cause = FaultText(fault, at);
    return eOutcome::Damaged;
  }
  ReadFrame(BytesOf(m_bytes), frame, fault);
  cause = fault.ToString();
  return eOutcome::Collision;
}

}  // namespace tav::mbus
