// SPDX-License-Identifier: Apache-2.0
#include <tavctl/socket_probe.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tav::ctl {

namespace {

// 0 or the reason.
int TryToConnect(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return ENAMETOOLONG;
  path.copy(address.sun_path, path.size());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return errno;
  const bool connected = ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  const int reason = connected ? 0 : errno;
  ::close(socket);
  return reason;
}

}  // namespace

cProbe ProbeSocket(const std::string& path) {
  const int reason = TryToConnect(path);
  switch (reason) {
    case 0:
    case EAGAIN:  // its queue is full: somebody is there
      return {eSocket::Listening, ""};
    case ENOENT:
    case ENOTDIR:
      return {eSocket::Missing, "there is no socket " + path + "; does the gateway run, and is --dir right?"};
    case ECONNREFUSED:
      return {eSocket::Dead, "nobody listens on " + path + "; its service has ended"};
    case EACCES:
    case EPERM:
      return {eSocket::Forbidden, "no permission to use " + path +
                                      "; it takes root, the service's own user, or a member of the socket's group"};
    default:
      return {eSocket::Unusable, "cannot connect to " + path + ": " + std::strerror(reason)};
  }
}

}  // namespace tav::ctl
