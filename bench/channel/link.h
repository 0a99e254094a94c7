// SPDX-License-Identifier: Apache-2.0
// cLink: a connection to a process of its own that answers readings. Over the framework and over a bare socket, so that
// one measurement drives both.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace tav::bench {

// Message types: a reading that is answered by a whole reading, and one that is acknowledged by its number.
constexpr unsigned int kEcho = 0x1000;
constexpr unsigned int kEchoed = 0x1001;
constexpr unsigned int kStore = 0x1003;
constexpr unsigned int kStored = 0x1004;

class cLink {
 public:
  virtual ~cLink() = default;
  cLink(const cLink&) = delete;
  cLink& operator=(const cLink&) = delete;

  // False: the server process was not there in time.
  virtual bool IsConnected() const = 0;
  // A reading there and a reading back; false when the answer is missing or another one's.
  virtual bool RoundTrip(std::uint64_t number) = 0;
  // Keeps so many readings under way until that time (Now()), then waits for the rest; how many were acknowledged, 0
  // when one was lost.
  virtual std::uint64_t Stream(unsigned int window, double end) = 0;
  virtual pid_t GetServer() const = 0;

 protected:
  cLink() = default;
};

}  // namespace tav::bench
