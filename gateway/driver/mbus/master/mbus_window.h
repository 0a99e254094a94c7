// SPDX-License-Identifier: Apache-2.0
// cMBusWindow: what came since a request was sent, and what that is: its answer, the answers of several at once, noise.
// It knows no time: who uses it says when nothing more will come.
#pragma once

#include <cstddef>
#include <string>

#include <gateway/driver/mbus/master/mbus_master.h>

namespace tav::mbus {

class cMBusWindow {
 public:
  static constexpr std::size_t kMostBytes = 4 * kMostFrame;  // more is noise without end

  // echo: the request itself comes first.
  void Begin(const std::string& request, eExpected expected, bool echo);
  void Take(cBytes bytes);

  // Anything beyond the echo.
  bool HasBytes() const { return !m_bytes.empty() || !m_echoFault.empty(); }
  // An answer, and nothing behind it.
  bool IsWhole() const { return m_answerSize != 0 && m_answerAt + m_answerSize == m_bytes.size(); }
  bool IsFull() const { return m_bytes.size() >= kMostBytes; }
  // The request came back without being expected to.
  bool SawEcho() const { return m_sawEcho; }
  // If nothing more comes. The frame lives until the window takes more bytes.
  eOutcome Judge(cMBusFrame& frame, std::string& cause) const;

 private:
  cBytes TakeEcho(cBytes bytes);
  void FindAnswer();
  bool IsAnswer(const cMBusFrame& frame) const;
  bool IsPassedOver(const cMBusFrame& frame);
  eOutcome JudgeNothing(std::string& cause) const;
  eOutcome JudgeGarbage(std::string& cause) const;

  std::string m_request;
  eExpected m_expected = eExpected::Ack;
  std::size_t m_echoLeft = 0;
  std::string m_echoFault;
  bool m_sawEcho = false;
  std::string m_stray;  // what came whole and is no answer to the request
  std::string m_bytes;
  std::size_t m_at = 0;  // before it is no answer
  std::size_t m_answerAt = 0, m_answerSize = 0;
};

}  // namespace tav::mbus
