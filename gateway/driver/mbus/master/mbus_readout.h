// SPDX-License-Identifier: Apache-2.0
// cMBusReadout: one reading of one meter: initialise or select it, then ask for its telegrams until it says that there
// are no more, toggling the frame count bit so that a repeated request gets the same telegram again.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_address.h>
#include <gateway/driver/mbus/master/mbus_master.h>

namespace tav::mbus {

// What a meter's answers taught, kept by the caller from one reading to the next.
struct cMBusLink {
  static constexpr unsigned int kLeastWaitMs = 100;  // converters have their own pauses

  bool fcb = true;           // of the next REQ_UD2
  bool initialised = false;  // SND_NKE was answered, or a primary meter read since the line is open
  double answerMs = 0;       // mean time to its answer, 0: not measured
  double deviationMs = 0;

  // How long its next answer may take to begin, from what was measured; the line's limit before.
  unsigned int WaitMs(unsigned int longestMs) const;
  void Learn(std::int64_t answerMs);
};

struct cMBusReadoutResult {
  eOutcome outcome = eOutcome::Silent;
  std::string cause;                // of anything but Answered
  std::vector<std::string> frames;  // whole long frames in their order; those before a failure as well
};

class cMBusReadout {
 public:
  static constexpr unsigned int kMostTelegrams = 64;  // of one reading: a meter that never ends is stopped

  using Done = std::function<void(const cMBusReadoutResult&)>;

  // master and link outlive it.
  cMBusReadout(cMBusMaster& master, cMBusLink& link, const cMBusAddress& address, Done done);
  ~cMBusReadout();  // abandons what is under way
  cMBusReadout(const cMBusReadout&) = delete;
  cMBusReadout& operator=(const cMBusReadout&) = delete;

  void Start();

 private:
  class cState;
  std::unique_ptr<cState> m_state;
};

}  // namespace tav::mbus
