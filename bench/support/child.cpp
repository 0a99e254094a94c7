// SPDX-License-Identifier: Apache-2.0
#include <bench/support/child.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <utility>

#include <bench/support/figures.h>

namespace tav::bench {

namespace {

constexpr int kPatienceMs = 10'000;
constexpr double kRestWithin = 5;  // seconds

bool AwaitByte(int descriptor) {
  pollfd readable{descriptor, POLLIN, 0};
  char byte;
  return poll(&readable, 1, kPatienceMs) == 1 && read(descriptor, &byte, 1) == 1;
}

std::vector<char*> Pointers(const std::vector<std::string>& arguments) {
  std::vector<char*> texts;
  for (const std::string& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
  texts.push_back(nullptr);
  return texts;
}

// In a child that shares our memory until then: system calls and nothing else.
[[noreturn]] void Execute(char* const* arguments, int input, int output) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  execv(arguments[0], arguments);
  _exit(127);
}

}  // namespace

cChild::cChild(const std::function<void(const Ready&)>& work) {
  int ends[2];
  if (pipe(ends) != 0) return;
  m_pid = fork();
  if (m_pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    close(ends[0]);
    work([&] { (void)!write(ends[1], "r", 1); });
    _exit(0);
  }
  close(ends[1]);
  m_ready = m_pid > 0 && AwaitByte(ends[0]);
  close(ends[0]);
}

cChild::cChild(const std::vector<std::string>& arguments) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;
  m_input = ends[1];
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  const std::vector<char*> texts = Pointers(arguments);
  m_pid = vfork();  // a fork would take longer, and be a part of what a start costs
  if (m_pid == 0) Execute(texts.data(), ends[0], nowhere);
  close(ends[0]);
  close(nowhere);
  m_ready = m_pid > 0;
}

cChild::~cChild() {
  if (m_pid > 0) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }
  if (m_input >= 0) close(m_input);
}

double CpuSeconds(pid_t pid) {
  clockid_t clock;
  timespec used{};
  if (clock_getcpuclockid(pid, &clock) != 0 || clock_gettime(clock, &used) != 0) return 0;
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

bool AwaitRest(pid_t pid, unsigned int milliseconds) {
  const double end = Now() + kRestWithin;
  for (double used = CpuSeconds(pid); Now() < end;) {
    usleep(milliseconds * 1000);
    if (used == std::exchange(used, CpuSeconds(pid))) return true;
  }
  return false;
}

}  // namespace tav::bench
