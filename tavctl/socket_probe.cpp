// SPDX-License-Identifier: Apache-2.0
#include <tavctl/socket_probe.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <tavctl/failure.h>

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

std::vector<std::string> ServiceNames(const std::string& directory) {
  std::error_code error;
  std::vector<std::string> names;
  for (std::filesystem::directory_iterator at(directory, error), end; !error && at != end; at.increment(error))
    if (at->path().extension() == ".sock") names.push_back(at->path().stem());
  if (error) throw cFailure(eExitUnreachable, "directory " + directory + ": " + error.message() + "; is --dir right?");
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace tav::ctl
