// SPDX-License-Identifier: Apache-2.0
#include "socket_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <tav/framework/helper.h>

#include "peer.h"

namespace vorn::detail {

namespace {

constexpr mode_t kSocketMode = 0660;
constexpr mode_t kDirectoryMode = 0750;

std::string Reason(const std::string& what) { return what + ": " + std::strerror(errno); }

bool IsServiceName(const std::string& name) {
  return !name.empty() && name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string::npos;
}

// Who holds the lock, as its file tells; for the error only.
std::string HolderOf(int lock) {
  char text[32] = {};
  if (pread(lock, text, sizeof text - 1, 0) <= 0) return {};
  const auto pid = static_cast<pid_t>(std::atoi(text));
  return pid > 0 ? FormatString(" (%s[%d])", ProcessName(pid).c_str(), pid) : std::string();
}

}  // namespace

cSocketFile::~cSocketFile() {
  // The lock is still held, so this is our own file.
  if (!m_path.empty()) unlink(m_path.c_str());
  if (m_lock >= 0) close(m_lock);
}

int cSocketFile::Open(const std::string& directory, const std::string& name, std::string& error) {
  if (!IsServiceName(name)) {
    error = "service name '" + name + "' is not of the form [a-z0-9-]+";
    return -1;
  }
  if (mkdir(directory.c_str(), kDirectoryMode) != 0 && errno != EEXIST) {
    error = Reason("service '" + name + "': cannot make directory " + directory);
    return -1;
  }
  if (!Lock(directory + "/" + name + ".lock", error)) {
    error = "service '" + name + "': " + error;
    return -1;
  }
  const std::string path = directory + "/" + name + ".sock";
  struct stat info {};
  if (lstat(path.c_str(), &info) == 0 && !S_ISSOCK(info.st_mode)) {
    error = "service '" + name + "': " + path + " is in the way, it is no socket";
    return -1;
  }
  const std::string temporary = directory + "/." + name + ".new";
  const int socket = BindAndListen(temporary, error);
  if (socket < 0) {
    error = "service '" + name + "': " + error;
    return -1;
  }
  if (rename(temporary.c_str(), path.c_str()) != 0) {
    error = Reason("service '" + name + "': cannot put its socket at " + path);
    unlink(temporary.c_str());
    close(socket);
    return -1;
  }
  m_path = path;
  if (stat(path.c_str(), &info) == 0) m_group = info.st_gid;
  return socket;
}

bool cSocketFile::Lock(const std::string& path, std::string& error) {
  m_lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kSocketMode);
  if (m_lock < 0) {
    error = Reason("cannot open " + path);
    return false;
  }
  if (flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
    error = errno == EWOULDBLOCK ? "another server of this name is running" + HolderOf(m_lock) + ", it holds " + path
                                 : Reason("cannot lock " + path);
    return false;
  }
  const std::string pid = std::to_string(getpid()) + "\n";
  if (ftruncate(m_lock, 0) != 0 || pwrite(m_lock, pid.data(), pid.size(), 0) < 0) {
    // It only helps to name the holder: a full disk does not keep a service from running.
  }
  return true;
}

int cSocketFile::BindAndListen(const std::string& temporary, std::string& error) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (temporary.size() >= sizeof address.sun_path) {
    error =
        FormatString("its socket path is longer than %zu bytes: %s", sizeof address.sun_path - 1, temporary.c_str());
    return -1;
  }
  temporary.copy(address.sun_path, temporary.size());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) {
    error = Reason("cannot make a socket");
    return -1;
  }
  unlink(temporary.c_str());
  if (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    error = Reason("cannot bind " + temporary);
  } else if (chmod(temporary.c_str(), kSocketMode) != 0 || listen(socket, SOMAXCONN) != 0) {
    error = Reason("cannot listen at " + temporary);
    unlink(temporary.c_str());
  } else {
    return socket;
  }
  close(socket);
  return -1;
}

}  // namespace vorn::detail
