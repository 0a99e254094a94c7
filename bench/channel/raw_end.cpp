// SPDX-License-Identifier: Apache-2.0
#include <bench/channel/raw_end.h>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <bench/channel/link.h>
#include <bench/channel/vorn_link.h>

namespace tav::bench {

namespace {

constexpr std::size_t kBufferSize = 128 << 10;
constexpr std::size_t kHeaderSize = 24;  // length, type, identifier
constexpr int kPatienceMs = 10'000;

// In the host's byte order: both ends are ours.
std::string FrameOf(const vorn::cRecord& record) {
  const auto size = static_cast<std::uint32_t>(kHeaderSize + record.GetBytes().size());
  std::string frame(kHeaderSize, '\0');
  std::memcpy(frame.data(), &size, sizeof size);
  return frame.append(record.GetBytes());
}

}  // namespace

cRawEnd::cRawEnd(int descriptor)
    : m_socket(descriptor),
      m_epoll(epoll_create1(EPOLL_CLOEXEC)),
      m_reading(FrameOf(cVornLink::MakeReading(1'000'001))),
      m_acknowledgement(FrameOf(cVornLink::MakeAcknowledgement(1'000'001))),
      m_output(kBufferSize),
      m_input(kBufferSize) {
  epoll_event event{};
  event.events = EPOLLIN;
  epoll_ctl(m_epoll, EPOLL_CTL_ADD, m_socket, &event);
}

cRawEnd::~cRawEnd() {
  close(m_epoll);
  close(m_socket);
}

void cRawEnd::Put(unsigned int type, std::uint64_t number) {
  const std::string& frame = type == kStored ? m_acknowledgement : m_reading;
  if (m_output.size() - m_put < frame.size()) Write();
  char* const to = m_output.data() + m_put;
  std::memcpy(to, frame.data(), frame.size());
  std::memcpy(to + 4, &type, sizeof type);
  std::memcpy(to + 8, &number, sizeof number);
  m_put += frame.size();
}

bool cRawEnd::Write() {
  for (std::size_t at = 0; at < m_put;) {
    const ssize_t sent = send(m_socket, m_output.data() + at, m_put - at, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0 && errno == EAGAIN) {
      pollfd writable{m_socket, POLLOUT, 0};
      if (poll(&writable, 1, kPatienceMs) != 1) return false;
    } else if (sent <= 0) {
      return false;
    } else {
      at += static_cast<std::size_t>(sent);
    }
  }
  m_put = 0;
  return true;
}

bool cRawEnd::Read() {
  std::memmove(m_input.data(), m_input.data() + m_taken, m_got - m_taken);
  m_got -= m_taken;
  m_taken = 0;
  epoll_event event;
  if (epoll_wait(m_epoll, &event, 1, kPatienceMs) != 1) return false;
  const ssize_t size = recv(m_socket, m_input.data() + m_got, m_input.size() - m_got, MSG_DONTWAIT);
  if (size <= 0) return false;
  m_got += static_cast<std::size_t>(size);
  return true;
}

bool cRawEnd::Take(unsigned int& type, std::uint64_t& number) {
  const char* const frame = m_input.data() + m_taken;
  const std::size_t there = m_got - m_taken;
  std::uint32_t size = 0;
  if (there < kHeaderSize) return false;
  std::memcpy(&size, frame, sizeof size);
  if (there < size) return false;
  std::memcpy(&type, frame + 4, sizeof type);
  std::memcpy(&number, frame + 8, sizeof number);
  m_taken += size;
  return true;
}

}  // namespace tav::bench
