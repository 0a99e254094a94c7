// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/socket_progress.h>

#include <linux/tcp.h>
#include <sys/socket.h>

#include <cstddef>

namespace tav::gateway::web {

namespace {

constexpr int kTcp = 6;  // IPPROTO_TCP: the C library's header has another, shorter tcp_info

}  // namespace

cSocketProgress ReadProgress(int socket) {
  tcp_info info{};
  socklen_t size = sizeof info;
  if (getsockopt(socket, kTcp, TCP_INFO, &info, &size) != 0) return {};
  if (size < offsetof(tcp_info, tcpi_bytes_received) + sizeof info.tcpi_bytes_received) return {};
  return {info.tcpi_bytes_received, info.tcpi_bytes_acked};
}

}  // namespace tav::gateway::web
