// SPDX-License-Identifier: Apache-2.0
// Where the front end listens: "127.0.0.1:8080", "[::1]:8080"; port 0 is any free one. "[::]" takes IPv4 as well.
#pragma once

#include <sys/socket.h>

#include <cstdint>
#include <string>

#include <gateway/web/front/descriptor.h>

namespace tav::gateway::web {

struct cListenAddress {
  std::string host;  // numeric, without brackets
  std::uint16_t port = 0;
};

// False: it is no such text; error tells what was expected.
bool ReadListenAddress(const std::string& text, cListenAddress& address, std::string& error);

// A socket that listens there; not open when that cannot be had, and error tells why.
cDescriptor Listen(const cListenAddress& address, std::string& error);
// The port that it has.
std::uint16_t PortOf(int socket);
// The numeric host of a peer's address; an IPv4 address that came in over IPv6 as IPv4.
std::string HostOf(const sockaddr* address);
// "http://127.0.0.1:8080/", brackets around an IPv6 address.
std::string MakeUrl(const cListenAddress& address, bool isTls);

}  // namespace tav::gateway::web
