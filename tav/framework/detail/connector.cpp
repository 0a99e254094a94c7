// SPDX-License-Identifier: Apache-2.0
#include "connector.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>

#include "frame.h"
#include "peer.h"
#include "unit_vorn.h"

namespace vorn::detail {

namespace {

// A connected socket, or -1. A stream socket in the file system connects at once or not at all.
int Connect(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return -1;
  path.copy(address.sun_path, path.size());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (socket < 0) return -1;
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return socket;
  ::close(socket);
  return -1;
}

}  // namespace

cConnector::cConnector(cScmServiceIO* io, cScmService* service, const std::string& name, bool keepAlive)
    : m_io(io),
      m_service(service),
      m_path(service->GetSocketPath(name)),
      m_keepAlive(keepAlive),
      m_loop(service->GetLoop()),
      m_jitter(static_cast<unsigned>(getpid())),
      m_alarm(m_loop->GetAlarms(), [this] { TryToConnect(); }) {
  if (m_path.size() >= sizeof sockaddr_un::sun_path)
    Trace(FrameworkUnit(), 2, "service '", name, "': socket path is too long to connect to: ", m_path);
  m_alarm.Start(0);
}

cConnector::~cConnector() = default;

void cConnector::Detach() {
  m_io = nullptr;
  m_connected = false;
  m_alarm.Stop();
  if (m_channel) m_channel->CloseFor(nullptr);
}

void cConnector::TryToConnect() {
  if (m_io == nullptr || m_channel) return;
  const int socket = Connect(m_path);
  std::error_code error;
  cSocketChannel::Socket adopted(m_loop->GetIo());
  if (socket >= 0) adopted.assign(asio::local::stream_protocol(), socket, error);
  if (socket < 0 || error) {
    if (socket >= 0) ::close(socket);
    TryAgainLater();
    return;
  }
  m_channel = std::make_shared<cSocketChannel>(m_loop, std::move(adopted), PeerOf(socket));
  m_channel->Start(shared_from_this());
}

void cConnector::TryAgainLater() {
  const std::int64_t spread = m_backOff / 4;
  m_alarm.Start(m_backOff + static_cast<std::int64_t>(m_jitter() % static_cast<unsigned>(spread + 1)));
  m_backOff = std::min(m_backOff * 2, kLongestBackOffMs);
}

void cConnector::HealthRequest() {
  if (m_connected)
    m_channel->Ping();
  else if (!m_channel && m_io != nullptr)
    m_alarm.Start(0);
}

cRecord cConnector::GetHello() const {
  cRecord hello;
  hello.AppendUIntPar("version", kProtocolVersion);
  hello.AppendTextPar("process", m_service->GetProcessName());
  return hello;
}

void cConnector::OnEstablished(const std::shared_ptr<cSocketChannel>& channel) {
  m_backOff = kFirstBackOffMs;
  if (m_keepAlive) channel->KeepAlive();
  m_loop->Deliver([self = shared_from_this(), channel] {
    if (self->m_io == nullptr || self->m_channel != channel) return;
    self->m_connected = true;
    self->m_io->OnConnect();
  });
}

void cConnector::OnMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) {
  const auto dispatch = [self = shared_from_this()](const cMsg& received) {
    if (self->m_io != nullptr && !self->m_io->DispatchMessage(received)) self->m_service->DispatchMessage(received);
  };
  if (!m_loop->MustKeep()) {
    dispatch(msg);
    return;
  }
  m_loop->Keep([dispatch, channel, msg] { dispatch(msg); });
}

bool cConnector::OnFrameworkMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) {
  if (!m_monitor || msg.GetType() < eFrameMonitorOn || msg.GetType() > eFrameMirrored) return false;
  OnMessage(channel, msg);
  return true;
}

void cConnector::OnClosed(const std::shared_ptr<cSocketChannel>& channel) {
  if (m_io == nullptr || m_channel != channel) return;
  // Later: the channel may have been closed from within user code.
  m_loop->Post([self = shared_from_this(), channel] {
    if (self->m_io == nullptr || self->m_channel != channel) return;
    const bool wasConnected = self->m_connected;
    self->m_connected = false;
    self->m_channel.reset();
    self->TryAgainLater();
    if (wasConnected) self->m_io->OnClose();
  });
}

}  // namespace vorn::detail
