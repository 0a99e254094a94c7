// SPDX-License-Identifier: Apache-2.0
// cWallClock: the clock that tells the gateway what time it is.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tav::gateway {

class cWallClock {
 public:
  cWallClock() = default;
  virtual ~cWallClock() = default;
  cWallClock(const cWallClock&) = delete;
  cWallClock& operator=(const cWallClock&) = delete;

  // Seconds since 1970 UTC.
  virtual std::int64_t Now() const = 0;
  // Empty: done. Else why not.
  virtual std::string Set(std::int64_t seconds) = 0;
  // "simulated" or "kernel".
  virtual std::string GetKind() const = 0;
};

// Keeps an offset to the machine's clock, and never touches that one.
class cSimulatedClock final : public cWallClock {
 public:
  std::int64_t Now() const override;
  std::string Set(std::int64_t seconds) override;
  std::string GetKind() const override { return "simulated"; }

 private:
  std::int64_t m_offset = 0;
};

// The machine's clock. Setting it needs the right CAP_SYS_TIME.
class cKernelClock final : public cWallClock {
 public:
  // Sets the machine's clock: 0, or the number of the error.
  using Step = std::function<int(std::int64_t seconds)>;

  // step: in place of the kernel's, for tests.
  explicit cKernelClock(Step step = {});

  std::int64_t Now() const override;
  std::string Set(std::int64_t seconds) override;
  std::string GetKind() const override { return "kernel"; }

 private:
  Step m_step;
};

}  // namespace tav::gateway
