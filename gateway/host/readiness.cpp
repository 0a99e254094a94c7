// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/readiness.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace tav::gateway {

bool NotifyManager(const std::string& state) {
  const char* const name = std::getenv("NOTIFY_SOCKET");
  if (name == nullptr) return true;
  const std::string_view path(name);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (path.front() == '@') address.sun_path[0] = '\0';  // a name without a file
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) return false;
  const ssize_t sent =
      sendto(socket, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<const sockaddr*>(&address), length);
  close(socket);
  return sent == static_cast<ssize_t>(state.size());
}

}  // namespace tav::gateway
