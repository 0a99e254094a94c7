// SPDX-License-Identifier: Apache-2.0
// cScmServer: the service side. Listens on the socket of one service name (mode 0660) and accepts its clients; derive
// from it, one class a service. Destroying it closes its socket and all its channels, without callbacks.
//
// A second server of the same name in the same directory is refused; a socket file left by a dead one is replaced.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <tav/framework/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_channel.h>
#include <tav/framework/scm_service.h>

namespace vorn {

namespace detail {
class cListener;
}

class VORN_API cScmServer {
 public:
  // Whether a peer may connect. By default: the same uid, root, and members of the socket file's group.
  using Policy = std::function<bool(const cScmPeer& peer)>;

  // Most clients at a time; further ones are closed, and a line of trace says so.
  static constexpr std::size_t kMaxChannels = 1024;

  // Names are [a-z0-9-]+. Ask IsListening and GetError for the outcome.
  cScmServer(cScmService* service, const std::string& name);
  virtual ~cScmServer();
  cScmServer(const cScmServer&) = delete;
  cScmServer& operator=(const cScmServer&) = delete;

  // A client is there, its handshake done.
  virtual void OnConnect(cScmChannel& channel);
  virtual void OnClose(cScmChannel& channel);
  // Every message of every client; answer on its reply channel. False leaves it to the owning service.
  virtual bool DispatchMessage(const cMsg& msg);

  bool IsListening() const;
  // Why it does not listen: names the socket, what stood in the way, and who holds it when that is known.
  const std::string& GetError() const;
  void SetPolicy(Policy policy);
  std::vector<std::shared_ptr<cScmChannel>> GetChannels() const;
  const std::string& GetName() const { return m_name; }

 private:
  std::string m_name;
  std::shared_ptr<detail::cListener> m_listener;
};

}  // namespace vorn
