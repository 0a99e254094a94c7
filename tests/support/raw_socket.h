// SPDX-License-Identifier: Apache-2.0
// cRawSocket: the bare end of a stream socket, for peers that do not keep to the protocol.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include <tav/framework/record.h>

class cRawSocket {
 public:
  explicit cRawSocket(int socket = -1) : m_socket(socket) {}
  ~cRawSocket() { Close(); }
  cRawSocket(const cRawSocket&) = delete;
  cRawSocket& operator=(const cRawSocket&) = delete;

  bool Connect(const std::string& path) {
    Close();
    m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = AddressOf(path);
    return ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  bool Listen(const std::string& path) {
    Close();
    m_socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const sockaddr_un address = AddressOf(path);
    return ::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(m_socket, 8) == 0;
  }
  // -1 when nobody is there yet.
  int Accept() { return ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC); }
  void Close() {
    if (m_socket >= 0) ::close(m_socket);
    m_socket = -1;
  }

  int Get() const { return m_socket; }
  bool Write(const std::string& bytes) const {
    return ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
  }
  // What is there now, without waiting.
  std::string Read(std::size_t most = 1 << 20) const {
    std::string bytes(most, '\0');
    const ssize_t size = ::recv(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
  }
  bool IsClosedByPeer() const {
    char byte;
    const ssize_t size = ::recv(m_socket, &byte, 1, MSG_DONTWAIT | MSG_PEEK);
    return size == 0 || (size < 0 && errno == ECONNRESET);
  }

  static std::string Frame(unsigned int type, const vorn::cRecord& record) {
    return RawFrame(type, std::string(record.GetBytes()));
  }
  static std::string RawFrame(unsigned int type, const std::string& record) {
    return BigEndian(static_cast<std::uint32_t>(24 + record.size())) + BigEndian(type) + std::string(16, '\0') + record;
  }
  static std::string Hello(unsigned int version = 1) {
    vorn::cRecord record;
    record.AppendUIntPar("version", version);
    return Frame(1, record);
  }
  static std::string BigEndian(std::uint32_t value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
            static_cast<char>(value)};
  }

 private:
  static sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
  }

  int m_socket;
};
