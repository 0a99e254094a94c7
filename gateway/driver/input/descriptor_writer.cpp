// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/input/descriptor_writer.h>

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace tav {

namespace {

// A connection that the peer has closed is no signal to this process.
ssize_t WriteSome(int descriptor, const std::string& bytes) {
  const ssize_t sent = send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  return sent < 0 && errno == ENOTSOCK ? write(descriptor, bytes.data(), bytes.size()) : sent;
}

bool MayTryAgain() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}  // namespace

void cDescriptorWriter::Begin(int descriptor) {
  End();
  m_descriptor = descriptor;
}

void cDescriptorWriter::End() {
  m_watch.reset();
  m_pending.clear();
  m_descriptor = -1;
}

void cDescriptorWriter::Write(std::string_view bytes) {
  if (m_descriptor < 0) return;
  m_pending += bytes;
  if (!m_watch) Flush();
}

void cDescriptorWriter::Flush() {
  const ssize_t written = WriteSome(m_descriptor, m_pending);
  if (written > 0)
    m_pending.erase(0, static_cast<std::size_t>(written));
  else if (written < 0 && !MayTryAgain())
    m_pending.clear();
  if (m_pending.empty())
    m_watch.reset();
  else if (!m_watch)
    m_watch.emplace(m_service, m_descriptor, vorn::cWatch::eEvent::Write, [this] { Flush(); });
}

}  // namespace tav
