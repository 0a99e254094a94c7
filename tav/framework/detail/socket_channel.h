// SPDX-License-Identifier: Apache-2.0
// cSocketChannel: a cScmChannel over a stream socket: handshake, frames in, frames out, health.
//
// Data flows one way: socket -> input buffer -> frame -> message -> owner, and message -> output buffer -> socket at
// the end of the loop's turn. The owner (a connector or a listener) hears of what happens through cChannelOwner.
#pragma once

#include <asio.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <tav/framework/msg.h>
#include <tav/framework/scm_channel.h>

#include "alarm.h"
#include "byte_buffer.h"
#include "loop.h"

namespace vorn::detail {

class cSocketChannel;

// Called while the channel reads, never from within Send; user code behind it is reached through the loop's Deliver.
class cChannelOwner {
 public:
  virtual ~cChannelOwner() = default;
  // The hello that this end sends.
  virtual cRecord GetHello() const = 0;
  virtual void OnEstablished(const std::shared_ptr<cSocketChannel>& channel) = 0;
  virtual void OnMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) = 0;
  // A frame of the framework that the channel itself does not know; false closes the channel.
  virtual bool OnFrameworkMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) = 0;
  // Once, when the channel is no longer open, for whatever reason.
  virtual void OnClosed(const std::shared_ptr<cSocketChannel>& channel) = 0;
  // Both directions, while somebody watches.
  virtual bool IsMonitored() const { return false; }
  virtual void Mirror(const cSocketChannel&, bool /*incoming*/, const cMsg&) {}
};

class cSocketChannel final : public cScmChannel, public std::enable_shared_from_this<cSocketChannel> {
 public:
  using Socket = asio::local::stream_protocol::socket;

  static constexpr std::int64_t kHandshakeMs = 5000;
  static constexpr std::int64_t kPingWaitMs = 5000;
  static constexpr std::int64_t kKeepAliveMs = 10000;  // idle time after which a peer is pinged

  cSocketChannel(const std::shared_ptr<cLoop>& loop, Socket socket, cScmPeer peer);
  ~cSocketChannel() override;

  // Sends the hello and starts to read. The owner is not kept alive.
  void Start(const std::shared_ptr<cChannelOwner>& owner);
  // Pings the peer whenever it has been idle.
  void KeepAlive();
  // Pings the peer now; closes the channel when that stays unanswered.
  void Ping();

  int Send(const cMsg& msg) override;
  void Close() override { CloseFor(nullptr); }
  bool IsOpen() const override { return m_socket.has_value(); }
  const cScmPeer& GetPeer() const override { return m_peer; }
  bool IsEstablished() const { return m_established; }

  // Appends a frame of the framework itself; mirrors nothing.
  bool SendFramework(const cMsg& msg) { return Append(msg); }
  // Closes with a line of trace that says why; none for null.
  void CloseFor(const char* why);
  // Writes what can be written without waiting.
  void Flush();
  // For a synchronous call, which runs without the loop: handles what is in the input buffer, and waits for more.
  void HandleFrames();
  void WaitAndRead(int milliseconds);
  // The service ends: close without telling anybody.
  void Abandon();

 private:
  bool Append(const cMsg& msg);
  void RefuseOutput(const cMsg& msg, std::size_t frameSize);
  void ArmRead();
  void Read();
  void OnReadFailed(int code);
  bool HandleFrame(const unsigned char* frame, std::size_t size);
  void HandleMessage(cMsg& msg);
  bool HandleFramework(const cMsg& msg);
  bool HandleHello(const cMsg& msg);
  void NoteProgress();
  void OnPingDue();
  void OnKeepAliveDue();
  std::string Describe() const;

  std::shared_ptr<cLoop> m_loop;
  std::optional<Socket> m_socket;
  std::weak_ptr<cChannelOwner> m_owner;
  cScmPeer m_peer;
  cByteBuffer m_input;
  cByteBuffer m_output;
  bool m_established = false;
  bool m_readArmed = false;    // waits until there is something to read
  bool m_dirty = false;        // in the loop's list
  bool m_writeArmed = false;   // waits until the socket takes more
  bool m_writeBroken = false;  // the peer reads no more; what it sent is still read
  bool m_fullTraced = false;
  bool m_pinging = false;
  bool m_heard = false;  // since the last look of keep-alive
  std::int64_t m_lastProgress = 0;
  cAlarm m_handshakeAlarm;
  cAlarm m_pingAlarm;
  cAlarm m_keepAliveAlarm;
};

}  // namespace vorn::detail
