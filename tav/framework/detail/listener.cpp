// SPDX-License-Identifier: Apache-2.0
#include "listener.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "frame.h"
#include "peer.h"
#include "unit_vorn.h"

namespace vorn::detail {

namespace {

bool IsMemberOf(const cScmPeer& peer, gid_t group) {
  return peer.gid == group || std::find(peer.groups.begin(), peer.groups.end(), group) != peer.groups.end();
}

bool IsOwnerOrRoot(const cScmPeer& peer) { return peer.uid == 0 || peer.uid == geteuid(); }

// Said on the bare socket: the peer never gets a channel.
void Refuse(int socket, const std::string& reason) {
  cRecord record;
  record.AppendTextPar("reason", reason);
  unsigned char frame[kFrameHeaderSize + 512];
  const std::string_view bytes = record.GetBytes();
  const std::size_t size = kFrameHeaderSize + bytes.size();
  if (size > sizeof frame) return;
  WriteFrameHeader(frame, static_cast<std::uint32_t>(size), eFrameRefused, cUuid());
  std::memcpy(frame + kFrameHeaderSize, bytes.data(), bytes.size());
  ::send(socket, frame, size, MSG_NOSIGNAL | MSG_DONTWAIT);
}

}  // namespace

cListener::cListener(cScmServer* server, cScmService* service, const std::string& name)
    : m_server(server),
      m_service(service),
      m_name(name),
      m_loop(service->GetLoop()),
      m_acceptAlarm(m_loop->GetAlarms(), [this] { ArmAccept(); }) {}

cListener::~cListener() = default;

void cListener::Start() {
  const int socket = m_file.Open(m_service->GetDirectory(), m_name, m_error);
  if (socket >= 0) {
    std::error_code error;
    m_acceptor.emplace(m_loop->GetIo());
    m_acceptor->assign(asio::local::stream_protocol(), socket, error);
    if (!error) {
      ArmAccept();
      return;
    }
    ::close(socket);
    m_acceptor.reset();
    m_error = "service '" + m_name + "': cannot wait for clients: " + error.message();
  }
  Trace(FrameworkUnit(), 2, m_error);
}

void cListener::Detach() {
  m_server = nullptr;
  m_acceptAlarm.Stop();
  m_acceptor.reset();
  Clients clients;
  clients.swap(m_clients);
  for (const cClient& client : clients) client.channel->CloseFor(nullptr);
}

// ---- accepting

void cListener::ArmAccept() {
  if (!m_acceptor) return;
  m_acceptor->async_wait(asio::local::stream_protocol::acceptor::wait_read,
                         [weak = weak_from_this()](const std::error_code& error) {
                           if (const auto self = weak.lock()) self->OnAcceptable(error);
                         });
}

void cListener::OnAcceptable(const std::error_code& error) {
  if (error || !m_acceptor) return;
  int socket;
  while ((socket = accept4(m_acceptor->native_handle(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)) >= 0)
    Adopt(socket);
  if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
    Trace(FrameworkUnit(), 2, "service '", m_name, "': cannot accept a client, ", std::strerror(errno));
    m_acceptAlarm.Start(kAcceptPauseMs);
    return;
  }
  ArmAccept();
}

void cListener::Adopt(int socket) {
  cScmPeer peer = PeerOf(socket);
  std::string reason;
  if (!MayConnect(peer)) {
    reason = "not permitted";
    Trace(FrameworkUnit(), 2, "service '", m_name, "': ", peer.ToString(), " refused, not permitted");
  } else if (m_clients.size() >= cScmServer::kMaxChannels) {
    reason = "too many clients";
    if (!m_fullTraced)
      Trace(FrameworkUnit(), 2, "service '", m_name, "': ", peer.ToString(), " refused, ", m_clients.size(),
            " clients are connected");
    m_fullTraced = true;
  }
  std::error_code error;
  cSocketChannel::Socket adopted(m_loop->GetIo());
  if (reason.empty()) {
    adopted.assign(asio::local::stream_protocol(), socket, error);
  } else {
    Refuse(socket, reason);
  }
  if (!reason.empty() || error) {
    ::close(socket);
    return;
  }
  m_clients.push_back({std::make_shared<cSocketChannel>(m_loop, std::move(adopted), std::move(peer))});
  m_clients.back().channel->Start(shared_from_this());
}

bool cListener::MayConnect(const cScmPeer& peer) const {
  if (m_policy) return m_policy(peer);
  return IsOwnerOrRoot(peer) || IsMemberOf(peer, m_file.GetGroup());
}

// ---- channels

cListener::Clients::iterator cListener::FindClient(const cSocketChannel* channel) {
  return std::find_if(m_clients.begin(), m_clients.end(),
                      [&](const cClient& client) { return client.channel.get() == channel; });
}

std::vector<std::shared_ptr<cScmChannel>> cListener::GetChannels() const {
  std::vector<std::shared_ptr<cScmChannel>> channels;
  for (const cClient& client : m_clients)
    if (client.connected) channels.push_back(client.channel);
  return channels;
}

cRecord cListener::GetHello() const {
  cRecord hello;
  hello.AppendUIntPar("version", kProtocolVersion);
  hello.AppendTextPar("process", m_service->GetProcessName());
  return hello;
}

void cListener::OnEstablished(const std::shared_ptr<cSocketChannel>& channel) {
  m_loop->Deliver([self = shared_from_this(), channel] {
    const auto client = self->FindClient(channel.get());
    if (self->m_server == nullptr || client == self->m_clients.end()) return;
    client->connected = true;
    self->m_server->OnConnect(*channel);
  });
}

void cListener::OnMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) {
  const auto dispatch = [self = shared_from_this()](const cMsg& received) {
    if (self->m_server != nullptr && !self->m_server->DispatchMessage(received))
      self->m_service->DispatchMessage(received);
  };
  if (!m_loop->MustKeep()) {
    dispatch(msg);
    return;
  }
  m_loop->Keep([dispatch, channel, msg] { dispatch(msg); });
}

void cListener::OnClosed(const std::shared_ptr<cSocketChannel>& channel) {
  if (m_server == nullptr) return;
  const auto client = FindClient(channel.get());
  if (client != m_clients.end() && client->monitor) {
    client->monitor = false;
    --m_monitors;
  }
  // Later: the channel may have been closed from within user code.
  m_loop->Post([self = shared_from_this(), channel] {
    const auto found = self->FindClient(channel.get());
    if (self->m_server == nullptr || found == self->m_clients.end()) return;
    const bool wasConnected = found->connected;
    self->m_clients.erase(found);
    self->m_fullTraced = false;
    if (wasConnected) self->m_server->OnClose(*channel);
  });
}

// ---- monitors

bool cListener::OnFrameworkMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) {
  const auto client = FindClient(channel.get());
  if (msg.GetType() != eFrameMonitor || client == m_clients.end()) return false;
  cMsg answer(IsOwnerOrRoot(channel->GetPeer()) ? eFrameMonitorOn : eFrameMonitorRefused);
  answer.SetId(msg.GetId());
  if (answer.GetType() == eFrameMonitorRefused) {
    answer.Record().AppendTextPar("reason", "only root and the service's own user may watch");
  } else if (!client->monitor) {
    client->monitor = true;
    ++m_monitors;
  }
  channel->SendFramework(answer);
  return true;
}

void cListener::Mirror(const cSocketChannel& channel, bool incoming, const cMsg& msg) {
  cMsg mirrored(eFrameMirrored);
  cRecord& record = mirrored.Record();
  record.AppendTextPar("direction", incoming ? "in" : "out");
  record.AppendTextPar("process", channel.GetPeer().processName);
  record.AppendUIntPar("pid", static_cast<unsigned int>(channel.GetPeer().pid));
  record.AppendUIntPar("type", msg.GetType());
  record.AppendUuidPar("id", msg.GetId());
  record.AppendRecordPar("record", msg.Record());
  for (const cClient& client : m_clients)
    if (client.monitor && client.channel.get() != &channel) client.channel->SendFramework(mirrored);
}

}  // namespace vorn::detail
