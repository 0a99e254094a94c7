// SPDX-License-Identifier: Apache-2.0
// cMBusMaster: the link layer of the master of a bus. It sends one request at a time and waits for its answer, as long
// as the meter is known to need, repeats it when there is none, and says what became of it.
//
// Only one thing is asked at a time: who has an exchange under way waits for its result before the next.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gateway/driver/input/input_opener.h>
#include <gateway/driver/mbus/reader/mbus_frame.h>
#include <gateway/host/service_host.h>

namespace tav::mbus {

// A line without a name yet, at the rate that every meter has when it is new.
inline cInputSpec UsualLine() {
  cInputSpec line;
  line.baud = 2400;
  line.framing = "8E1";
  return line;
}

struct cMBusLineSettings {
  // Of what people may set.
  static constexpr unsigned int kMostRetries = 10;
  static constexpr unsigned int kMostAnswerMs = 60'000;

  cInputSpec input = UsualLine();    // a serial device or tcp://host:port; 2400 8E1 unless set otherwise
  bool echo = false;                 // the level converter gives back what is sent: so many bytes are taken away
  unsigned int retries = 2;          // of a request without a good answer, after the first attempt
  unsigned int longestAnswerMs = 0;  // 0: what EN 13757-2 allows at the line's rate (330 bits and 50 ms), and what a
                                     // network on the way may take

  friend bool operator==(const cMBusLineSettings&, const cMBusLineSettings&) = default;
};

enum class eOutcome : std::uint8_t {
  Answered,   // frame is the answer, a long frame or the single character
  Silent,     // nothing came, not once
  Collision,  // several answered at once: bytes that are no frame, or more than one answer
  Damaged,    // an answer came that cannot be read: a wrong checksum, noise, an end too early
  LineLost,   // the line is not there
};

struct cMBusAnswer {
  eOutcome outcome = eOutcome::Silent;
  cMBusFrame frame;   // lives during the call
  std::string cause;  // of anything but an answer, for people: "byte 12: the checksum is wrong (3B)"
  unsigned int attempts = 1;
  std::int64_t answerMs = 0;  // from the request's last byte to the answer's first
};

// What a request waits for.
enum class eExpected : std::uint8_t { Ack, Data, Nothing };

struct cMBusRequest {
  std::string bytes;  // a whole frame
  eExpected expected = eExpected::Ack;
  unsigned int answerMs = 0;     // how long its meter may take to begin; 0: longestAnswerMs of the line
  unsigned int retries = ~0u;    // ~0u: as many as the line's
  bool repeatsCollision = true;  // false: who asks many at once expects one
};

class cMBusMaster {
 public:
  using Done = std::function<void(const cMBusAnswer&)>;

  cMBusMaster(gateway::cServiceHost* host, const cMBusLineSettings& settings);
  ~cMBusMaster();
  cMBusMaster(const cMBusMaster&) = delete;
  cMBusMaster& operator=(const cMBusMaster&) = delete;

  // done is called once, from the loop, never from within this call. Nothing may be under way.
  void Exchange(const cMBusRequest& request, Done done);
  // What is under way is forgotten, its done not called.
  void Abandon();
  bool IsBusy() const;
  // Another rate from the next request on; of a serial line only.
  void SetBaud(unsigned int baud);

  // The line came up, or is lost and why; it is opened again by itself.
  std::function<void()> onOpen;
  std::function<void(const std::string& why)> onLost;
  // Every frame sent and every piece received, for a trace.
  std::function<void(bool sent, cBytes bytes)> onBytes;

  bool IsOpen() const;
  const cMBusLineSettings& GetSettings() const;
  // The longest time from a request to the beginning of its answer at this rate, as far as the line's settings go.
  unsigned int LongestAnswerMs() const;

 private:
  class cState;
  std::unique_ptr<cState> m_state;
};

}  // namespace tav::mbus
