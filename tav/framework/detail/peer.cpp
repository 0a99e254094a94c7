// SPDX-License-Identifier: Apache-2.0
#include "peer.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <tav/framework/helper.h>

#ifndef SO_PEERGROUPS
#define SO_PEERGROUPS 59
#endif

namespace vorn {

std::string cScmPeer::ToString() const {
  return FormatString("%s[%d] uid=%u", processName.empty() ? "?" : processName.c_str(), pid, uid);
}

namespace detail {

std::string ProcessName(pid_t pid) {
  const int file = open(FormatString("/proc/%d/comm", pid).c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  char name[64];
  const ssize_t size = read(file, name, sizeof name);
  close(file);
  if (size <= 0) return {};
  std::string text(name, static_cast<std::size_t>(size));
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

cScmPeer PeerOf(int socket) {
  cScmPeer peer;
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0) {
    peer.pid = credentials.pid;
    peer.uid = credentials.uid;
    peer.gid = credentials.gid;
    peer.processName = ProcessName(peer.pid);
  }
  std::vector<gid_t> groups(64);
  size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
  if (getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) {
    // ERANGE: size now tells how much it needs.
    groups.resize(size / sizeof(gid_t));
    if (getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) return peer;
  }
  groups.resize(size / sizeof(gid_t));
  peer.groups = std::move(groups);
  return peer;
}

}  // namespace detail

}  // namespace vorn
