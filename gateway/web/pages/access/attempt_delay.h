// SPDX-License-Identifier: Apache-2.0
// cAttemptDelay: makes guessing slow. Behind every wrong password an address waits twice as long as before.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <tav/framework/clock.h>

namespace tav::pages {

class cAttemptDelay {
 public:
  static constexpr unsigned int kFirstSeconds = 1;
  static constexpr unsigned int kMostSeconds = 300;
  // Addresses that are remembered; when there are more, those that are let in again soonest are forgotten.
  static constexpr std::size_t kMaxAddresses = 1024;
  // Without a further wrong password an address counts as new after that.
  static constexpr unsigned int kForgetSeconds = 3600;

  explicit cAttemptDelay(const vorn::cClock& clock) : m_clock(clock) {}

  // Seconds until this address may try again; 0: now. Networks count as one address: of IPv6 the first 64 bits.
  unsigned int GetWait(const std::string& address) const;
  void Failed(const std::string& address);
  void Succeeded(const std::string& address);

 private:
  struct cEntry {
    unsigned int failures = 0;
    std::int64_t until = 0;  // of the clock, milliseconds
  };

  void MakeRoom();

  const vorn::cClock& m_clock;
  std::map<std::string, cEntry> m_entries;
};

}  // namespace tav::pages
