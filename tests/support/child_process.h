// SPDX-License-Identifier: Apache-2.0
// cChildProcess: another program, started by a test and ended with the object at the latest.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

class cChildProcess {
 public:
  // arguments: the program first. environment: "NAME=value", beside what this process has. Standard error goes to a
  // file when one is given.
  explicit cChildProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {},
                         const std::string& errorFile = {});
  ~cChildProcess();
  cChildProcess(const cChildProcess&) = delete;
  cChildProcess& operator=(const cChildProcess&) = delete;

  pid_t GetPid() const { return m_pid; }
  void Signal(int number) const { kill(m_pid, number); }
  // Its exit code, 128 + the signal that ended it; nothing when it still runs after so long.
  std::optional<int> Wait(unsigned int milliseconds = 20'000);

 private:
  pid_t m_pid = -1;
  std::optional<int> m_ended;
};
