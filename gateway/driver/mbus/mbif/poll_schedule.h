// SPDX-License-Identifier: Apache-2.0
// cPollSchedule: which meter of a bus is to be read when. Each is due once in every slot of its interval, slots counted
// from 1970-01-01 UTC; due meters wait for the bus in the order in which they became due. A meter that does not answer
// is left alone for more and more of its slots, an hour at most.
//
// Every slot of a meter that has begun is either taken or told as missed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tav::mbus {

class cPollSchedule {
 public:
  static constexpr unsigned int kLongestSkip = 3600;  // seconds that a silent meter is left alone

  // A slot of a meter passed without a reading: when it began, and why.
  using Missed = std::function<void(std::size_t meter, std::uint32_t slotBegin, const std::string& cause)>;

  cPollSchedule(const std::vector<unsigned int>& intervals, Missed onMissed);

  // Time goes on; whatever is due at utc (seconds since 1970) waits from now on.
  void Advance(std::uint32_t utc);
  // The next meter to read, and from when its slot is.
  struct cDue {
    std::size_t meter;
    std::uint32_t slotBegin;
  };
  std::optional<cDue> Take();
  // What became of the meter that was taken last.
  void OnAnswered(std::size_t meter);
  void OnSilent(std::size_t meter);
  // All that waits is missed, for that cause.
  void MissAll(const std::string& cause);

  std::size_t CountWaiting() const { return m_waiting.size(); }
  // Slots that have begun, of all meters.
  std::uint64_t CountBegun() const { return m_begun; }
  // Seconds from utc to the next slot of any meter.
  std::uint32_t SecondsToNext(std::uint32_t utc) const;
  // Since when a meter does not answer; 0: it does.
  std::uint32_t GetSilentSince(std::size_t meter) const { return m_meters[meter].silentSince; }

 private:
  struct cMeter {
    unsigned int interval = 0;
    std::optional<std::uint32_t> slot;  // the last one that began
    bool waits = false;
    unsigned int silent = 0;  // slots without an answer, one after another
    unsigned int skip = 0;    // slots to leave out
    std::uint32_t silentSince = 0;
  };

  void Begin(std::size_t meter, std::uint32_t slot);
  void Miss(std::size_t meter, const std::string& cause);

  std::vector<cMeter> m_meters;
  std::deque<std::size_t> m_waiting;
  std::uint64_t m_begun = 0;
  Missed m_onMissed;
};

}  // namespace tav::mbus
