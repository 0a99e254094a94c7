// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/wall_clock.h>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace tav::gateway {

namespace {

int StepKernelClock(std::int64_t seconds) {
  timespec time{};
  time.tv_sec = static_cast<time_t>(seconds);
  return clock_settime(CLOCK_REALTIME, &time) == 0 ? 0 : errno;
}

std::int64_t MachineTime() { return static_cast<std::int64_t>(std::time(nullptr)); }

}  // namespace

std::int64_t cSimulatedClock::Now() const { return MachineTime() + m_offset; }

std::string cSimulatedClock::Set(std::int64_t seconds) {
  m_offset = seconds - MachineTime();
  return {};
}

cKernelClock::cKernelClock(Step step) : m_step(step ? std::move(step) : StepKernelClock) {}

std::int64_t cKernelClock::Now() const { return MachineTime(); }

std::string cKernelClock::Set(std::int64_t seconds) {
  const int code = m_step(seconds);
  if (code == 0) return {};
  if (code == EPERM)
    return "this process may not set the machine's clock: it needs the right CAP_SYS_TIME; its unit file gives it with "
           "AmbientCapabilities=CAP_SYS_TIME";
  return std::string("the machine's clock cannot be set: ") + std::strerror(code);
}

}  // namespace tav::gateway
