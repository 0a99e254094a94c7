// SPDX-License-Identifier: Apache-2.0
#include "socket_channel.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include <tav/framework/helper.h>

#include "frame.h"
#include "unit_vorn.h"

namespace vorn::detail {

namespace {

constexpr std::size_t kReadSize = 64 << 10;  // as much as one read takes

}  // namespace

cSocketChannel::cSocketChannel(const std::shared_ptr<cLoop>& loop, Socket socket, cScmPeer peer)
    : m_loop(loop),
      m_socket(std::move(socket)),
      m_peer(std::move(peer)),
      m_input(kReadSize),
      m_output(kReadSize),
      m_handshakeAlarm(loop->GetAlarms(), [this] { CloseFor("no hello within 5 s"); }),
      m_pingAlarm(loop->GetAlarms(), [this] { OnPingDue(); }),
      m_keepAliveAlarm(loop->GetAlarms(), [this] { OnKeepAliveDue(); }) {}

cSocketChannel::~cSocketChannel() = default;

void cSocketChannel::Start(const std::shared_ptr<cChannelOwner>& owner) {
  m_owner = owner;
  m_loop->Register(shared_from_this());
  std::error_code ignored;
  m_socket->non_blocking(true, ignored);
  m_handshakeAlarm.Start(kHandshakeMs);
  cMsg hello(eFrameHello);
  hello.Record() = owner->GetHello();
  Append(hello);
  ArmRead();
}

std::string cSocketChannel::Describe() const { return "channel to " + m_peer.ToString(); }

// ---- output

int cSocketChannel::Send(const cMsg& msg) {
  if (!IsOpen() || !m_established || m_writeBroken) return 0;
  if (msg.GetType() < kFirstUserType) {
    Trace(
        FrameworkUnit(), 2, [&] { return Describe(); }, ": message type ", msg.GetType(),
        " refused, types below 256 belong to the framework");
    return 0;
  }
  if (!Append(msg)) return 0;
  const auto owner = m_owner.lock();
  if (owner && owner->IsMonitored()) owner->Mirror(*this, false, msg);
  return 1;
}

bool cSocketChannel::Append(const cMsg& msg) {
  if (!IsOpen() || m_writeBroken) return false;
  const std::string_view record = msg.Record().GetBytes();
  const std::size_t size = kFrameHeaderSize + record.size();
  unsigned char* to = nullptr;
  if (size > kMaxFrameSize || m_output.Size() + size > kMaxOutput || (to = m_output.Reserve(size)) == nullptr) {
    RefuseOutput(msg, size);
    return false;
  }
  WriteFrameHeader(to, static_cast<std::uint32_t>(size), msg.GetType(), msg.GetId());
  if (!record.empty()) std::memcpy(to + kFrameHeaderSize, record.data(), record.size());
  m_output.Commit(size);
  if (!m_dirty && !m_writeArmed) {
    m_dirty = true;
    m_loop->MarkDirty(shared_from_this());
  }
  return true;
}

void cSocketChannel::RefuseOutput(const cMsg& msg, std::size_t frameSize) {
  if (frameSize > kMaxFrameSize) {
    Trace(
        FrameworkUnit(), 2, [&] { return Describe(); }, ": message of type ", msg.GetType(), " refused, its frame of ",
        frameSize, " bytes is over the limit of ", kMaxFrameSize);
  } else if (!m_fullTraced) {
    m_fullTraced = true;  // until there is room again
    Trace(
        FrameworkUnit(), 2, [&] { return Describe(); }, ": output full, message refused; ", m_output.Size(),
        " bytes wait for the peer");
  }
}

void cSocketChannel::Flush() {
  m_dirty = false;
  if (!IsOpen()) return;
  while (!m_output.IsEmpty() && !m_writeBroken) {
    const ssize_t sent =
        ::send(m_socket->native_handle(), m_output.Data(), m_output.Size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0) {
      m_output.Consume(static_cast<std::size_t>(sent));
      m_fullTraced = false;
      NoteProgress();
    } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
      if (m_writeArmed) return;
      m_writeArmed = true;
      m_socket->async_wait(Socket::wait_write, [self = shared_from_this()](const std::error_code& error) {
        self->m_writeArmed = false;
        if (!error) self->Flush();
      });
      return;
    } else if (errno != EINTR) {
      // The peer has gone. What it sent before is still read; reading then finds the end and closes.
      m_writeBroken = true;
      m_output.Clear();
    }
  }
}

void cSocketChannel::CloseFor(const char* why) {
  if (!IsOpen()) return;
  const auto self = shared_from_this();  // the owner may hold the last other reference
  if (why != nullptr)
    Trace(
        FrameworkUnit(), 2, [&] { return Describe(); }, ": closed, ", why);
  if (!m_output.IsEmpty() && !m_writeBroken)
    ::send(m_socket->native_handle(), m_output.Data(), m_output.Size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  Abandon();
  if (const auto owner = m_owner.lock()) owner->OnClosed(self);
}

void cSocketChannel::Abandon() {
  m_handshakeAlarm.Stop();
  m_pingAlarm.Stop();
  m_keepAliveAlarm.Stop();
  m_socket.reset();
  m_input.Clear();
  m_output.Clear();
}

// ---- input

void cSocketChannel::ArmRead() {
  if (!IsOpen() || m_readArmed) return;
  m_readArmed = true;
  m_socket->async_wait(Socket::wait_read, [self = shared_from_this()](const std::error_code& error) {
    self->m_readArmed = false;
    if (error || !self->IsOpen()) return;
    self->Read();
    self->m_loop->FlushDirty();  // before the next wait is armed, so that an answer is on its way first
    self->ArmRead();
  });
}

// One read: a peer that sends without end takes turns with the others.
void cSocketChannel::Read() {
  unsigned char* to = m_input.Reserve(m_input.Room() > kReadSize / 4 ? m_input.Room() : kReadSize);
  if (to == nullptr) {
    CloseFor("no memory for its input");
    return;
  }
  const ssize_t size = ::recv(m_socket->native_handle(), to, m_input.Room(), MSG_DONTWAIT);
  if (size <= 0) {
    OnReadFailed(size == 0 ? ECONNRESET : errno);
    return;
  }
  m_input.Commit(static_cast<std::size_t>(size));
  m_heard = true;
  NoteProgress();
  HandleFrames();
}

void cSocketChannel::OnReadFailed(int code) {
  if (code == EAGAIN || code == EWOULDBLOCK || code == EINTR) return;
  if (code != ECONNRESET)
    CloseFor(std::strerror(code));
  else
    CloseFor(m_input.IsEmpty() ? nullptr : "its peer ended in the middle of a frame");
}

void cSocketChannel::WaitAndRead(int milliseconds) {
  const auto self = shared_from_this();
  Flush();
  if (!IsOpen()) return;
  pollfd ready{m_socket->native_handle(), POLLIN, 0};
  if (!m_output.IsEmpty()) ready.events |= POLLOUT;
  if (poll(&ready, 1, milliseconds) > 0 && (ready.revents & ~POLLOUT) != 0) Read();
}

// Members only: a handler may make a synchronous call on this channel, which goes on reading from within.
void cSocketChannel::HandleFrames() {
  while (IsOpen() && m_input.Size() >= sizeof(std::uint32_t)) {
    const std::size_t size = LoadBigEndian(m_input.Data());
    if (size < kFrameHeaderSize || size > kMaxFrameSize) {
      CloseFor(FormatString("a frame of %zu bytes is announced, %zu to %zu are possible", size, kFrameHeaderSize,
                            kMaxFrameSize)
                   .c_str());
      return;
    }
    if (m_input.Size() < size) return;
    if (!HandleFrame(m_input.Data(), size)) return;
  }
}

// The frame leaves the buffer before anybody hears of it. False when the channel was closed for it.
bool cSocketChannel::HandleFrame(const unsigned char* frame, std::size_t size) {
  cMsg msg(LoadBigEndian(frame + 4));
  std::array<unsigned char, cUuid::kSize> id;
  std::memcpy(id.data(), frame + 8, id.size());
  msg.SetId(cUuid(id));
  std::string fault;
  if (!cRecord::FromBytes(frame + kFrameHeaderSize, size - kFrameHeaderSize, msg.Record(), &fault)) {
    CloseFor(FormatString("malformed record in a message of type 0x%x, %s", msg.GetType(), fault.c_str()).c_str());
    return false;
  }
  m_input.Consume(size);
  if (msg.GetType() >= kFirstUserType && m_established) {
    HandleMessage(msg);
  } else if (!HandleFramework(msg)) {
    CloseFor(FormatString("unexpected message of type 0x%x", msg.GetType()).c_str());
    return false;
  }
  return true;
}

void cSocketChannel::HandleMessage(cMsg& msg) {
  msg.SetReplyChannel(shared_from_this());
  const auto owner = m_owner.lock();
  if (!owner) return;
  if (owner->IsMonitored()) owner->Mirror(*this, true, msg);
  if (!m_loop->TakeReply(*this, msg)) owner->OnMessage(shared_from_this(), msg);
}

bool cSocketChannel::HandleFramework(const cMsg& msg) {
  if (!m_established) return (msg.GetType() == eFrameHello || msg.GetType() == eFrameRefused) && HandleHello(msg);
  switch (msg.GetType()) {
    case eFramePing: {
      cMsg pong(eFramePong);
      pong.SetId(msg.GetId());
      Append(pong);
      return true;
    }
    case eFramePong:
      m_pinging = false;
      m_pingAlarm.Stop();
      return true;
    default: {
      const auto owner = m_owner.lock();
      return owner && owner->OnFrameworkMessage(shared_from_this(), msg);
    }
  }
}

bool cSocketChannel::HandleHello(const cMsg& msg) {
  const auto owner = m_owner.lock();
  if (msg.GetType() == eFrameRefused) {
    CloseFor(("refused by its peer, " + msg.Record().GetTextPar("reason").substr(0, 200)).c_str());
    return true;
  }
  const unsigned int version = msg.Record().GetUIntPar("version");
  if (version != kProtocolVersion) {
    CloseFor(FormatString("unknown handshake version %u, this end speaks %u", version, kProtocolVersion).c_str());
    return true;
  }
  m_established = true;
  m_handshakeAlarm.Stop();
  if (owner) owner->OnEstablished(shared_from_this());
  return true;
}

// ---- health

void cSocketChannel::NoteProgress() {
  if (m_pinging) m_lastProgress = m_loop->GetAlarms().GetClock().Now();
}

void cSocketChannel::Ping() {
  if (!IsOpen() || m_pinging || !m_established) return;
  m_pinging = true;
  NoteProgress();
  Append(cMsg(eFramePing));
  m_pingAlarm.Start(kPingWaitMs);
}

void cSocketChannel::OnPingDue() {
  // What has arrived and was not yet read is progress too: this end may have been busy.
  int waiting = 0;
  if (ioctl(m_socket->native_handle(), FIONREAD, &waiting) == 0 && waiting > 0) NoteProgress();
  const std::int64_t quiet = m_loop->GetAlarms().GetClock().Now() - m_lastProgress;
  if (quiet < kPingWaitMs)
    m_pingAlarm.Start(kPingWaitMs - quiet);
  else
    CloseFor("ping not answered within 5 s");
}

void cSocketChannel::KeepAlive() { m_keepAliveAlarm.Start(kKeepAliveMs, kKeepAliveMs / 4); }

void cSocketChannel::OnKeepAliveDue() {
  if (!m_heard) Ping();
  m_heard = false;
  KeepAlive();
}

}  // namespace vorn::detail
