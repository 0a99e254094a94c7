// SPDX-License-Identifier: Apache-2.0
#include <tests/support/browser/tiny_server.h>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <sstream>
#include <stdexcept>

namespace {

// As the front end has it, so that nothing works here that is forbidden there.
constexpr const char* kPolicy =
    "default-src 'self'; base-uri 'none'; form-action 'self'; frame-ancestors 'none'; object-src 'none'";

void SendAll(int peer, const std::string& text) {
  for (std::size_t sent = 0; sent < text.size();) {
    const ssize_t size = send(peer, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (size <= 0) return;
    sent += static_cast<std::size_t>(size);
  }
}

std::size_t LengthOf(const std::string& head) {
  const std::string name = "\r\nContent-Length: ";
  const std::size_t at = head.find(name);
  return at == std::string::npos ? 0 : std::stoul(head.substr(at + name.size()));
}

}  // namespace

cTinyServer::cTinyServer(Handler handler)
    : m_handler(std::move(handler)), m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (bind(m_socket, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(m_socket, 16) != 0 ||
      getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    throw std::runtime_error("no free port on the loopback");
  m_host = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  m_thread = std::thread([this] { Accept(); });
}

cTinyServer::~cTinyServer() {
  shutdown(m_socket, SHUT_RDWR);
  m_thread.join();
  for (auto& [peer, thread] : m_peers) {
    shutdown(peer, SHUT_RDWR);
    thread.join();
    close(peer);
  }
  close(m_socket);
}

void cTinyServer::Accept() {
  for (int peer; (peer = accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;)
    m_peers.emplace_back(peer, std::thread([this, peer] { Serve(peer); }));
}

bool cTinyServer::Read(int peer, cRequest& request) const {
  std::string text;
  char bytes[4096];
  for (ssize_t size; (size = recv(peer, bytes, sizeof bytes, 0)) > 0;) {
    text.append(bytes, static_cast<std::size_t>(size));
    const std::size_t end = text.find("\r\n\r\n");
    if (end == std::string::npos || text.size() < end + 4 + LengthOf(text.substr(0, end))) continue;
    std::istringstream(text) >> request.method >> request.path;
    request.body = text.substr(end + 4);
    return true;
  }
  return false;
}

void cTinyServer::Serve(int peer) {
  cRequest request;
  if (!Read(peer, request)) return;
  const std::lock_guard lock(m_mutex);
  const cAnswer answer = m_handler(request);
  const bool isStream = answer.type == "text/event-stream";
  SendAll(peer, "HTTP/1.1 " + std::to_string(answer.status) + " Tested\r\nContent-Type: " + answer.type + "\r\n" +
                    (isStream ? "" : "Content-Length: " + std::to_string(answer.body.size()) + "\r\n") +
                    "Content-Security-Policy: " + kPolicy + "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n" +
                    answer.body);
  if (isStream)
    m_streams.push_back(peer);
  else
    shutdown(peer, SHUT_RDWR);
}

void cTinyServer::Tell(const std::string& event, const std::string& data) {
  const std::lock_guard lock(m_mutex);
  for (const int peer : m_streams) SendAll(peer, "event: " + event + "\ndata: " + data + "\n\n");
}

std::size_t cTinyServer::CountStreams() {
  const std::lock_guard lock(m_mutex);
  return m_streams.size();
}

void cTinyServer::CutStreams() {
  const std::lock_guard lock(m_mutex);
  for (const int peer : m_streams) shutdown(peer, SHUT_RDWR);
  m_streams.clear();
}
