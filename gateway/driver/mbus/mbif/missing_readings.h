// SPDX-License-Identifier: Apache-2.0
// cMissingReadings: tells why readings of a meter are not there. The first one is told at once; those that follow for
// the same cause are counted and told together, when the cause changes, the meter answers, or an hour has passed. So a
// meter that was taken down does not fill the store, and yet every missing reading is told.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tav::mbus {

class cMissingReadings {
 public:
  static constexpr std::uint32_t kLongestSpan = 3600;  // seconds between the first and the last that are told together

  // count readings whose slots began from first to last.
  using Tell =
      std::function<void(unsigned int count, std::uint32_t first, std::uint32_t last, const std::string& cause)>;

  explicit cMissingReadings(Tell tell) : m_tell(std::move(tell)) {}

  // slotBegin: seconds since 1970-01-01 UTC.
  void Add(std::uint32_t slotBegin, const std::string& cause);
  // The meter answers, or there will be no more: tells what is counted and not told.
  void Settle();

 private:
  void Flush();

  Tell m_tell;
  std::string m_cause;
  unsigned int m_count = 0;  // not told yet
  std::uint32_t m_first = 0, m_last = 0;
};

}  // namespace tav::mbus
