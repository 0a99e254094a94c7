// SPDX-License-Identifier: Apache-2.0
// cLoad: meter drivers, each a process of its own, that hand readings to the database control service as fast as it
// acknowledges them. Each reads one meter.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <bench/support/child.h>

namespace tav::bench {

struct cLoadShape {
  unsigned int drivers;
  unsigned int window;      // readings of each that are not acknowledged yet
  bool oneMessage = false;  // the whole window in one message
};

class cLoad {
 public:
  static constexpr unsigned int kMaxDrivers = 64;

  // The drivers start with readings of that time (seconds since 1970) and go on by seconds. Ask IsRunning.
  cLoad(const std::string& directory, const cLoadShape& shape, unsigned int time);
  // Kills them.
  ~cLoad();
  cLoad(const cLoad&) = delete;
  cLoad& operator=(const cLoad&) = delete;

  // All of them are registered, and none has been refused anything.
  bool IsRunning() const;
  std::uint64_t GetAcknowledged() const;
  // Seconds of CPU that the drivers have used.
  double GetCpu() const;

 private:
  // What the drivers tell, in memory shared with them.
  struct cTold {
    std::atomic<bool> refused{false};
    std::atomic<std::uint64_t> acknowledged[kMaxDrivers];
  };

  class cDriver;

  cTold* m_told;
  std::vector<std::unique_ptr<cChild>> m_drivers;
};

}  // namespace tav::bench
