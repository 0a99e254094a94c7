// SPDX-License-Identifier: Apache-2.0
#include <bench/channel/raw_link.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include <bench/support/figures.h>

namespace tav::bench {

namespace {

sockaddr_un AddressIn(const std::string& directory) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (directory + "/raw").c_str(), sizeof address.sun_path - 1);
  return address;
}

// One connection, until it ends.
void Serve(const std::string& directory, const cChild::Ready& ready) {
  const sockaddr_un address = AddressIn(directory);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(listener, 1) != 0)
    return;
  ready();
  cRawEnd end(accept(listener, nullptr, nullptr));
  unsigned int type = 0;
  std::uint64_t number = 0;
  while (end.Read()) {
    while (end.Take(type, number)) end.Put(type + 1, number);
    if (!end.Write()) return;
  }
}

std::unique_ptr<cRawEnd> Connect(const std::string& directory) {
  const sockaddr_un address = AddressIn(directory);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
    return std::make_unique<cRawEnd>(descriptor);
  close(descriptor);
  return nullptr;
}

}  // namespace

cRawLink::cRawLink(const std::string& directory)
    : m_server([&](const cChild::Ready& ready) { Serve(directory, ready); }) {
  if (m_server.IsReady()) m_end = Connect(directory);
}

bool cRawLink::RoundTrip(std::uint64_t number) {
  unsigned int type = 0;
  std::uint64_t answered = 0;
  m_end->Put(kEcho, number);
  if (!m_end->Write()) return false;
  while (!m_end->Take(type, answered))
    if (!m_end->Read()) return false;
  return answered == number;
}

std::uint64_t cRawLink::Stream(unsigned int window, double end) {
  std::uint64_t sent = 0;
  std::uint64_t acknowledged = 0;
  unsigned int type = 0;
  std::uint64_t number = 0;
  while (sent < window) m_end->Put(kStore, ++sent);
  while (acknowledged < sent) {
    if (!m_end->Write() || !m_end->Read()) return 0;
    while (m_end->Take(type, number)) {
      if (number != ++acknowledged) return 0;
      if (Now() < end) m_end->Put(kStore, ++sent);
    }
  }
  return acknowledged;
}

}  // namespace tav::bench
