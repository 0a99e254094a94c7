// SPDX-License-Identifier: Apache-2.0
// The clock that timers, back-off and health checks go by: a parameter of the service, so that a test moves it by hand.
#pragma once

#include <cstdint>
#include <memory>

#include <tav/framework/export.h>

namespace vorn {

class VORN_API cClock {
 public:
  virtual ~cClock() = default;
  // Milliseconds from a fixed point; never goes back.
  virtual std::int64_t Now() const = 0;
  // The machine's monotonic clock.
  static std::shared_ptr<const cClock> Steady();
};

// Stands still until it is moved; a service sees the move in its next Poll.
class VORN_API cManualClock : public cClock {
 public:
  std::int64_t Now() const override { return m_now; }
  void Advance(std::int64_t milliseconds) { m_now += milliseconds; }

 private:
  std::int64_t m_now = 0;
};

}  // namespace vorn
