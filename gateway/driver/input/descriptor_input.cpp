// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/input/descriptor_input.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace tav {

namespace {

constexpr std::size_t kBlock = 16 << 10;

}  // namespace

cDescriptorInput::cDescriptorInput(vorn::cService* service, cInputSpec spec, cInputEvents events,
                                   unsigned int reopenType)
    : m_service(service),
      m_spec(std::move(spec)),
      m_events(std::move(events)),
      m_reopenType(reopenType),
      m_reopen(service),
      m_writer(service) {
  m_reopen.Start(0, m_reopenType);
}

cDescriptorInput::~cDescriptorInput() { Close(); }

void cDescriptorInput::Open() {
  std::string error;
  m_descriptor = OpenInput(m_spec, m_attempt, error);
  if (m_descriptor < 0) {
    Lose(error);
  } else if (m_spec.kind == eInputKind::Tcp) {
    m_watch.emplace(m_service, m_descriptor, vorn::cWatch::eEvent::Write, [this] { OnConnected(); });
  } else {
    Listen();
  }
}

void cDescriptorInput::OnConnected() {
  int code = 0;
  socklen_t size = sizeof code;
  if (getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &code, &size) != 0) code = errno;
  if (code == 0) {
    Listen();
    return;
  }
  ++m_attempt;
  Lose("cannot connect to " + m_spec.ToString() + ": " + std::strerror(code));
}

void cDescriptorInput::Listen() {
  m_open = true;
  m_watch.reset();
  m_flags = fcntl(m_descriptor, F_GETFL);
  if (m_spec.IsLive()) m_writer.Begin(m_descriptor);
  if (m_events.onOpen) m_events.onOpen();
  if (!m_paused) Resume();
}

void cDescriptorInput::Pause() {
  m_paused = true;
  if (m_open) m_watch.reset();
}

void cDescriptorInput::Resume() {
  m_paused = false;
  if (m_open && !m_watch)
    m_watch.emplace(m_service, m_descriptor, vorn::cWatch::eEvent::Read, [this] { OnReadable(); });
}

void cDescriptorInput::Write(std::string_view bytes) {
  if (!m_open) return;
  m_lossReported = false;
  m_writer.Write(bytes);
}

void cDescriptorInput::ReadNow() {
  if (m_open && !m_paused && m_spec.IsLive()) OnReadable();
}

void cDescriptorInput::SetBaud(unsigned int baud) {
  m_spec.baud = baud;
  std::string error;
  if (m_open && m_spec.kind == eInputKind::Serial && !SetLineSpeed(m_descriptor, m_spec, error)) Lose(error);
}

void cDescriptorInput::OnReadable() {
  std::array<unsigned char, kBlock> block;
  const ssize_t size = read(m_descriptor, block.data(), block.size());
  if (size > 0) {
    m_backOff = kFirstBackOffMs;
    m_lossReported = false;
    m_events.onBytes(block.data(), static_cast<std::size_t>(size));
  } else if (size == 0) {
    Lose(m_spec.IsLive() ? m_spec.ToString() + " ended" : std::string());
  } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
    Lose("cannot read " + m_spec.ToString() + ": " + std::strerror(errno));
  }
}

void cDescriptorInput::Lose(const std::string& reason) {
  Close();
  if (!m_spec.IsLive()) {
    m_events.onEnd(reason);
    return;
  }
  m_reopen.Start(m_backOff, m_reopenType, m_backOff / 4);
  m_backOff = std::min(m_backOff * 2, kLongestBackOffMs);
  // One report a loss: until bytes come again, the attempts that follow are expected to fail.
  if (!std::exchange(m_lossReported, true)) m_events.onLost(reason);
}

void cDescriptorInput::Close() {
  m_watch.reset();
  m_writer.End();
  // Watching may have changed what standard input has in common with other processes, such as the shell.
  if (m_open && m_spec.kind == eInputKind::StandardInput) fcntl(m_descriptor, F_SETFL, m_flags);
  m_open = false;
  if (m_descriptor >= 0) CloseInput(m_spec, m_descriptor);
  m_descriptor = -1;
}

}  // namespace tav
