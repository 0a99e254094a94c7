// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/clock.h>

#include <chrono>

namespace vorn {

namespace {

class cSteadyClock final : public cClock {
 public:
  std::int64_t Now() const override {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
  }
};

}  // namespace

std::shared_ptr<const cClock> cClock::Steady() { return std::make_shared<cSteadyClock>(); }

}  // namespace vorn
