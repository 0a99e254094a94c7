// SPDX-License-Identifier: Apache-2.0
// cListener: behind a cScmServer. Owns the socket file of one service name, accepts clients, mirrors for monitors.
#pragma once

#include <asio.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tav/framework/scm_server.h>

#include "alarm.h"
#include "socket_channel.h"
#include "socket_file.h"

namespace vorn::detail {

class cListener final : public cChannelOwner, public std::enable_shared_from_this<cListener> {
 public:
  static constexpr std::int64_t kAcceptPauseMs = 100;  // after the process ran out of descriptors

  cListener(cScmServer* server, cScmService* service, const std::string& name);
  ~cListener() override;

  void Start();
  // The server ends: closes everything, no callback any more.
  void Detach();

  bool IsListening() const { return m_acceptor.has_value(); }
  const std::string& GetError() const { return m_error; }
  void SetPolicy(cScmServer::Policy policy) { m_policy = std::move(policy); }
  // Those whose OnConnect has been called.
  std::vector<std::shared_ptr<cScmChannel>> GetChannels() const;

  cRecord GetHello() const override;
  void OnEstablished(const std::shared_ptr<cSocketChannel>& channel) override;
  void OnMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) override;
  bool OnFrameworkMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) override;
  void OnClosed(const std::shared_ptr<cSocketChannel>& channel) override;
  bool IsMonitored() const override { return m_monitors != 0; }
  void Mirror(const cSocketChannel& channel, bool incoming, const cMsg& msg) override;

 private:
  struct cClient {
    std::shared_ptr<cSocketChannel> channel;
    bool connected = false;  // as user code sees it
    bool monitor = false;
  };
  using Clients = std::vector<cClient>;

  void ArmAccept();
  void OnAcceptable(const std::error_code& error);
  void Adopt(int socket);
  bool MayConnect(const cScmPeer& peer) const;
  Clients::iterator FindClient(const cSocketChannel* channel);

  cScmServer* m_server;  // null once detached
  cScmService* m_service;
  std::string m_name;
  std::string m_error;
  std::shared_ptr<cLoop> m_loop;
  cSocketFile m_file;
  std::optional<asio::local::stream_protocol::acceptor> m_acceptor;
  cScmServer::Policy m_policy;
  Clients m_clients;
  unsigned int m_monitors = 0;
  bool m_fullTraced = false;
  cAlarm m_acceptAlarm;
};

}  // namespace vorn::detail
