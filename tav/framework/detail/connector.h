// SPDX-License-Identifier: Apache-2.0
// cConnector: behind a cScmServiceIO. Keeps one channel to a service alive: connects, waits, connects again.
#pragma once

#include <memory>
#include <random>
#include <string>

#include <tav/framework/scm_service_io.h>

#include "alarm.h"
#include "socket_channel.h"

namespace vorn::detail {

class cConnector final : public cChannelOwner, public std::enable_shared_from_this<cConnector> {
 public:
  static constexpr std::int64_t kFirstBackOffMs = 20;
  static constexpr std::int64_t kLongestBackOffMs = 1000;

  cConnector(cScmServiceIO* io, cScmService* service, const std::string& name, bool keepAlive);
  ~cConnector() override;

  // The proxy ends: no callback any more.
  void Detach();
  // Null while not connected.
  std::shared_ptr<cSocketChannel> GetChannel() const { return m_connected ? m_channel : nullptr; }
  void HealthRequest();
  // Hands what answers a monitor to the proxy as well; for any other proxy such a message is unexpected.
  void TakeMonitorMessages() { m_monitor = true; }

  cRecord GetHello() const override;
  void OnEstablished(const std::shared_ptr<cSocketChannel>& channel) override;
  void OnMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) override;
  bool OnFrameworkMessage(const std::shared_ptr<cSocketChannel>& channel, const cMsg& msg) override;
  void OnClosed(const std::shared_ptr<cSocketChannel>& channel) override;

 private:
  void TryToConnect();
  void TryAgainLater();

  cScmServiceIO* m_io;  // null once detached
  cScmService* m_service;
  std::string m_path;
  bool m_keepAlive;
  bool m_monitor = false;
  std::shared_ptr<cLoop> m_loop;
  std::shared_ptr<cSocketChannel> m_channel;  // the present one, established or not
  bool m_connected = false;                   // as user code sees it: from OnConnect to OnClose
  std::int64_t m_backOff = kFirstBackOffMs;
  std::minstd_rand m_jitter;
  cAlarm m_alarm;
};

}  // namespace vorn::detail
