// SPDX-License-Identifier: Apache-2.0
// cScmServiceIO: the client side of one service. Derive from it, one class a service.
//
// It connects and reconnects by itself: a first attempt once the loop runs, then after 20 ms, doubling to 1 s, with
// jitter. The callbacks come from the loop only, never from within Send, HealthRequest or a constructor.
#pragma once

#include <memory>
#include <string>

#include <tav/framework/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_channel.h>
#include <tav/framework/scm_service.h>

namespace vorn {

namespace detail {
class cConnector;
}

class cScmMonitor;

class VORN_API cScmServiceIO {
 public:
  // Mode bit 2: keep alive (pings an idle peer). All other bits are reserved and ignored, so -1 means keep alive.
  cScmServiceIO(cScmService* service, const std::string& name, int mode = 0);
  virtual ~cScmServiceIO();
  // The channel is up: IsConnected() and Send work.
  virtual void OnConnect();
  // The channel is gone: IsConnected() is false. Not called by the destructor.
  virtual void OnClose();
  // Every message of the service. False leaves it to the owning service.
  virtual bool DispatchMessage(const cMsg& msg);
  virtual std::string ToString() const;

  cScmServiceIO(const cScmServiceIO&) = delete;
  cScmServiceIO& operator=(const cScmServiceIO&) = delete;

  // As cScmChannel::Send; 0 while not connected.
  int Send(const cMsg& msg);
  bool IsConnected() const;
  // The present channel; null while not connected.
  std::shared_ptr<cScmChannel> GetChannel() const;
  // While connected a ping that closes the channel when it stays unanswered for 5 s from the peer's last progress;
  // while not, an attempt to connect ahead of its time.
  void HealthRequest();

  const std::string& GetName() const { return m_name; }
  cScmService* GetService() const { return m_service; }

 private:
  friend class cScmMonitor;

  cScmService* m_service;
  std::string m_name;
  std::shared_ptr<detail::cConnector> m_connector;
};

}  // namespace vorn
