// SPDX-License-Identifier: Apache-2.0
// cChild: another process that a benchmark needs, killed with the object, and with this process should it die first.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace tav::bench {

class cChild {
 public:
  // Called by the child once it can be used.
  using Ready = std::function<void()>;

  // A fork of this process, which ends when the work does. Waits until it is ready, 10 s at most.
  explicit cChild(const std::function<void(const Ready& ready)>& work);
  // Another program with its arguments, the program first; its standard input stays open and silent, what it says on
  // standard output is dropped. Ready at once.
  explicit cChild(const std::vector<std::string>& arguments);
  ~cChild();
  cChild(const cChild&) = delete;
  cChild& operator=(const cChild&) = delete;

  // False: it could not be started, or said nothing in time.
  bool IsReady() const { return m_ready; }
  pid_t GetPid() const { return m_pid; }

 private:
  pid_t m_pid = -1;
  int m_input = -1;
  bool m_ready = false;
};

// Seconds of CPU that a process has used so far.
double CpuSeconds(pid_t pid);

// Waits until a process has used no CPU for a while; false when it did not come to rest within 5 s.
bool AwaitRest(pid_t pid, unsigned int milliseconds);

}  // namespace tav::bench
