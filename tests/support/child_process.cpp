// SPDX-License-Identifier: Apache-2.0
#include <tests/support/child_process.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace {

[[noreturn]] void Execute(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                          const std::string& errorFile) {
  for (const std::string& variable : environment) putenv(const_cast<char*>(variable.c_str()));
  if (!errorFile.empty()) {
    const int file = open(errorFile.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
  }
  std::vector<char*> texts;
  for (const std::string& argument : arguments) texts.push_back(const_cast<char*>(argument.c_str()));
  texts.push_back(nullptr);
  execv(texts[0], texts.data());
  _exit(127);
}

}  // namespace

cChildProcess::cChildProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                             const std::string& errorFile) {
  m_pid = fork();
  if (m_pid == 0) Execute(arguments, environment, errorFile);
}

cChildProcess::~cChildProcess() {
  if (m_ended) return;
  Signal(SIGKILL);
  Wait();
}

std::optional<int> cChildProcess::Wait(unsigned int milliseconds) {
  if (m_ended) return m_ended;
  const int descriptor = static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0));
  pollfd ended{descriptor, POLLIN, 0};
  const bool done = poll(&ended, 1, static_cast<int>(milliseconds)) == 1;
  close(descriptor);
  int status = 0;
  if (!done || waitpid(m_pid, &status, 0) != m_pid) return std::nullopt;
  m_ended = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return m_ended;
}
