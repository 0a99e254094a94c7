// SPDX-License-Identifier: Apache-2.0
// cTcpListener: a meter reached over the network, which the test plays; it takes one connection at a time.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>
#include <string>

class cTcpListener {
 public:
  explicit cTcpListener(std::uint16_t port = 0)
      : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    const int on = 1;
    setsockopt(m_socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    if (bind(m_socket, reinterpret_cast<const sockaddr*>(&address), size) != 0 || listen(m_socket, 8) != 0 ||
        getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
      throw std::runtime_error("cannot listen");
    m_port = ntohs(address.sin_port);
  }
  ~cTcpListener() {
    HangUp();
    close(m_socket);
  }
  cTcpListener(const cTcpListener&) = delete;
  cTcpListener& operator=(const cTcpListener&) = delete;

  std::uint16_t GetPort() const { return m_port; }
  bool Accept() {
    if (m_peer < 0) m_peer = accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
    return m_peer >= 0;
  }
  bool Write(const std::string& bytes) const {
    return send(m_peer, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
  }
  // What came and was not read yet.
  std::string Read() const {
    std::string bytes;
    char block[4096];
    for (ssize_t size = 0; (size = recv(m_peer, block, sizeof block, MSG_DONTWAIT)) > 0;)
      bytes.append(block, static_cast<std::size_t>(size));
    return bytes;
  }
  void HangUp() {
    if (m_peer >= 0) close(m_peer);
    m_peer = -1;
  }
  // Drops what is under way, so that the peer sees an error instead of an end.
  void Reset() {
    const linger now{1, 0};
    setsockopt(m_peer, SOL_SOCKET, SO_LINGER, &now, sizeof now);
    HangUp();
  }

 private:
  int m_socket;
  int m_peer = -1;
  std::uint16_t m_port = 0;
};
