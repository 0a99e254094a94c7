// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/listen_socket.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cerrno>
#include <charconv>
#include <cstring>

#include <gateway/web/front/web_limits.h>

namespace tav::gateway::web {

namespace {

constexpr int kBacklog = 512;

struct cAddress {
  sockaddr_storage storage{};
  socklen_t size = 0;
};

bool ToAddress(const cListenAddress& listen, cAddress& made) {
  auto* const v4 = reinterpret_cast<sockaddr_in*>(&made.storage);
  auto* const v6 = reinterpret_cast<sockaddr_in6*>(&made.storage);
  if (inet_pton(AF_INET, listen.host.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    v4->sin_port = htons(listen.port);
    made.size = sizeof *v4;
    return true;
  }
  if (inet_pton(AF_INET6, listen.host.c_str(), &v6->sin6_addr) == 1) {
    v6->sin6_family = AF_INET6;
    v6->sin6_port = htons(listen.port);
    made.size = sizeof *v6;
    return true;
  }
  return false;
}

void SetOption(int socket, int level, int option, int value) {
  setsockopt(socket, level, option, &value, sizeof value);
}

}  // namespace

bool ReadListenAddress(const std::string& text, cListenAddress& address, std::string& error) {
  const std::size_t colon = text.rfind(':');
  std::string host = text.substr(0, colon);
  const bool isBracketed = host.size() >= 2 && host.front() == '[' && host.back() == ']';
  if (isBracketed) host = host.substr(1, host.size() - 2);
  const bool isV6 = host.find(':') != std::string::npos;
  const char* const end = text.data() + text.size();
  const char* const digits = colon == std::string::npos ? end : text.data() + colon + 1;
  const auto port = std::from_chars(digits, end, address.port);
  address.host = host;
  cAddress unused;
  if (digits != end && port.ec == std::errc() && port.ptr == end && isBracketed == isV6 && ToAddress(address, unused))
    return true;
  error = "expected ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080, found '" + text + "'";
  return false;
}

cDescriptor Listen(const cListenAddress& address, std::string& error) {
  cAddress at;
  if (!ToAddress(address, at)) {
    error = "'" + address.host + "' is no numeric address";
    return cDescriptor();
  }
  cDescriptor listening(socket(at.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  SetOption(listening.Get(), SOL_SOCKET, SO_REUSEADDR, 1);
  SetOption(listening.Get(), SOL_SOCKET, SO_SNDBUF, kSendBufferBytes);
  if (at.storage.ss_family == AF_INET6) SetOption(listening.Get(), IPPROTO_IPV6, IPV6_V6ONLY, 0);
  if (bind(listening.Get(), reinterpret_cast<const sockaddr*>(&at.storage), at.size) == 0 &&
      listen(listening.Get(), kBacklog) == 0)
    return listening;
  error = "web pages cannot be served at " + MakeUrl(address, false) + ": " + std::strerror(errno);
  return cDescriptor();
}

std::uint16_t PortOf(int socket) {
  sockaddr_storage storage{};
  socklen_t size = sizeof storage;
  getsockname(socket, reinterpret_cast<sockaddr*>(&storage), &size);
  if (storage.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6*>(&storage)->sin6_port);
  return ntohs(reinterpret_cast<const sockaddr_in*>(&storage)->sin_port);
}

std::string HostOf(const sockaddr* address) {
  char text[INET6_ADDRSTRLEN] = "";
  if (address->sa_family == AF_INET) {
    inet_ntop(AF_INET, &reinterpret_cast<const sockaddr_in*>(address)->sin_addr, text, sizeof text);
  } else if (address->sa_family == AF_INET6) {
    const in6_addr& v6 = reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
    if (IN6_IS_ADDR_V4MAPPED(&v6))
      inet_ntop(AF_INET, v6.s6_addr + 12, text, sizeof text);
    else
      inet_ntop(AF_INET6, &v6, text, sizeof text);
  }
  return text;
}

std::string MakeUrl(const cListenAddress& address, bool isTls) {
  const bool isV6 = address.host.find(':') != std::string::npos;
  return std::string(isTls ? "https://" : "http://") + (isV6 ? "[" + address.host + "]" : address.host) + ":" +
         std::to_string(address.port) + "/";
}

}  // namespace tav::gateway::web
